#pragma once
// Plain value types shared by the base layer and the reduce library.
#include <cstdint>
#include <cstring>

namespace orv {

// 16-byte identifier: unsigned 32-bit, unsigned 16-bit, unsigned 16-bit,
// 8 bytes. Equal when all 16 bytes are.
struct SGuid {
    uint32_t Data1 = 0;
    uint16_t Data2 = 0;
    uint16_t Data3 = 0;
    uint8_t Data4[8] = {0, 0, 0, 0, 0, 0, 0, 0};

    friend constexpr bool operator==(const SGuid& a, const SGuid& b)
    {
        if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
        for (int i = 0; i < 8; ++i)
            if (a.Data4[i] != b.Data4[i]) return false;
        return true;
    }
    friend constexpr bool operator!=(const SGuid& a, const SGuid& b) { return !(a == b); }
    constexpr bool isEmpty() const { return *this == SGuid{}; }
};
static_assert(sizeof(SGuid) == 16, "SGuid is 16 bytes");

namespace detail {
constexpr int HexDigit(char c)
{
    return (c >= '0' && c <= '9') ? c - '0'
         : (c >= 'a' && c <= 'f') ? c - 'a' + 10
         : (c >= 'A' && c <= 'F') ? c - 'A' + 10
         : -1;
}
constexpr uint64_t HexField(const char* s, int n)
{
    uint64_t v = 0;
    for (int i = 0; i < n; ++i) {
        int d = HexDigit(s[i]);
        v = v * 16 + static_cast<uint64_t>(d < 0 ? 0 : d);
    }
    return v;
}
} // namespace detail

// Compile-time identifier from its text "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX",
// braces optional. The caller supplies well-formed text; a character that is
// not a hexadecimal digit counts as 0 (ParseGuid is the checked form).
constexpr SGuid MakeGuid(const char* text)
{
    const char* s = text[0] == '{' ? text + 1 : text;
    SGuid g;
    g.Data1 = static_cast<uint32_t>(detail::HexField(s, 8));
    g.Data2 = static_cast<uint16_t>(detail::HexField(s + 9, 4));
    g.Data3 = static_cast<uint16_t>(detail::HexField(s + 14, 4));
    g.Data4[0] = static_cast<uint8_t>(detail::HexField(s + 19, 2));
    g.Data4[1] = static_cast<uint8_t>(detail::HexField(s + 21, 2));
    for (int i = 0; i < 6; ++i) g.Data4[2 + i] = static_cast<uint8_t>(detail::HexField(s + 24 + 2 * i, 2));
    return g;
}

// Element types of typed buffers, in table order.
enum EDataType : int32_t {
    dtInt8 = 0,
    dtUInt8 = 1,
    dtInt16 = 2,
    dtUInt16 = 3,
    dtInt32 = 4,
    dtUInt32 = 5,
    dtInt64 = 6,
    dtUInt64 = 7,
    dtFlt32 = 8,
    dtFlt64 = 9,
    dtRGB24 = 10,
    dtRGB48 = 11,
    dtNoData = 12,
};

// Measurement units; texts and parsing live with the converters.
enum EUnit : int32_t {
    unitCounts = 0,
    unitRadianceUser = 1,
    unitTemperatureUser = 2,
    unitObjectSignal = 3,
    unitRadianceFactory = 4,
    unitTemperatureFactory = 5,
    unitRGB24 = 6,
    unitRGB48 = 7,
    unitRedChannel = 8,
    unitGreenChannel = 9,
    unitBlueChannel = 10,
    unitRGBAverage = 11,
    unitError = 12,
};

enum ETempType : int32_t {
    tempCelsius = 0,
    tempFahrenheit = 1,
    tempKelvin = 2,
    tempRankine = 3,
};

// A caller's buffer: first element and element type. Owns nothing.
struct STypedData {
    void* data = nullptr;
    EDataType type = dtNoData;

    STypedData() = default;
    STypedData(void* d, EDataType t) : data(d), type(t) {}
    STypedData(const void* d, EDataType t) : data(const_cast<void*>(d)), type(t) {}
};

// Bytes of one element of a numeric type 0 to 9 (3 and 6 for the RGB forms,
// 0 for anything else).
constexpr unsigned DataTypeSize(EDataType type)
{
    switch (type) {
    case dtInt8: case dtUInt8: return 1;
    case dtInt16: case dtUInt16: return 2;
    case dtInt32: case dtUInt32: case dtFlt32: return 4;
    case dtInt64: case dtUInt64: case dtFlt64: return 8;
    case dtRGB24: return 3;
    case dtRGB48: return 6;
    default: return 0;
    }
}

struct SPoint {
    int32_t x = 0;
    int32_t y = 0;
    SPoint() = default;
    SPoint(int x_, int y_) : x(x_), y(y_) {}
    bool operator!=(const SPoint& o) const { return x != o.x || y != o.y; }
    bool operator==(const SPoint& o) const { return x == o.x && y == o.y; }
};

// Four signed 32-bit fields; the users of a rectangle say which is which
// (frame offsets use the first two as left and top).
struct SRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
    SRect() = default;
    SRect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}
    bool operator==(const SRect& o) const
    {
        return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
    }
};

// A 24-bit image (three bytes a pixel, blue-green-red) or any other depth.
struct SBitmap {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bytesPerRow = 0;
    uint32_t bitsPerPixel = 0;
    unsigned char* pixels = nullptr;
};

} // namespace orv
