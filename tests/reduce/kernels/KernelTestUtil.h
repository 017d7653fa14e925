#pragma once
// Typed buffers and an independent reference of the element conversion for
// the kernel tests: values travel as long double, which holds every value of
// the ten element types exactly.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "orv/Types.h"

namespace kt {

using orv::EDataType;

constexpr EDataType kTypes[10] = {orv::dtInt8,  orv::dtUInt8,  orv::dtInt16, orv::dtUInt16, orv::dtInt32,
                                  orv::dtUInt32, orv::dtInt64, orv::dtUInt64, orv::dtFlt32, orv::dtFlt64};

inline bool IsFloat(EDataType t) { return t == orv::dtFlt32 || t == orv::dtFlt64; }
inline bool IsSigned(EDataType t) { return t == orv::dtInt8 || t == orv::dtInt16 || t == orv::dtInt32 || t == orv::dtInt64; }
inline int Bits(EDataType t) { return int(orv::DataTypeSize(t)) * 8; }

// A buffer of n elements of a run-time type, filled with a guard byte.
struct SBuf {
    EDataType type;
    std::vector<unsigned char> bytes;
    SBuf(EDataType t, size_t n, unsigned char fill = 0xA5) : type(t), bytes(n * orv::DataTypeSize(t) + 1, fill) {}
    void* data() { return bytes.data(); }
    orv::STypedData typed() { return orv::STypedData(bytes.data(), type); }
    size_t size() const { return (bytes.size() - 1) / orv::DataTypeSize(type); }

    long double Get(size_t i) const
    {
        const unsigned char* p = bytes.data() + i * orv::DataTypeSize(type);
        switch (type) {
        case orv::dtInt8: { int8_t v; std::memcpy(&v, p, 1); return v; }
        case orv::dtUInt8: { uint8_t v; std::memcpy(&v, p, 1); return v; }
        case orv::dtInt16: { int16_t v; std::memcpy(&v, p, 2); return v; }
        case orv::dtUInt16: { uint16_t v; std::memcpy(&v, p, 2); return v; }
        case orv::dtInt32: { int32_t v; std::memcpy(&v, p, 4); return v; }
        case orv::dtUInt32: { uint32_t v; std::memcpy(&v, p, 4); return v; }
        case orv::dtInt64: { int64_t v; std::memcpy(&v, p, 8); return v; }
        case orv::dtUInt64: { uint64_t v; std::memcpy(&v, p, 8); return v; }
        case orv::dtFlt32: { float v; std::memcpy(&v, p, 4); return v; }
        default: { double v; std::memcpy(&v, p, 8); return v; }
        }
    }
    // v must be representable in the type.
    void Set(size_t i, long double v)
    {
        unsigned char* p = bytes.data() + i * orv::DataTypeSize(type);
        switch (type) {
        case orv::dtInt8: { int8_t x = int8_t(v); std::memcpy(p, &x, 1); break; }
        case orv::dtUInt8: { uint8_t x = uint8_t(v); std::memcpy(p, &x, 1); break; }
        case orv::dtInt16: { int16_t x = int16_t(v); std::memcpy(p, &x, 2); break; }
        case orv::dtUInt16: { uint16_t x = uint16_t(v); std::memcpy(p, &x, 2); break; }
        case orv::dtInt32: { int32_t x = int32_t(v); std::memcpy(p, &x, 4); break; }
        case orv::dtUInt32: { uint32_t x = uint32_t(v); std::memcpy(p, &x, 4); break; }
        case orv::dtInt64: { int64_t x = int64_t(v); std::memcpy(p, &x, 8); break; }
        case orv::dtUInt64: { uint64_t x = uint64_t(v); std::memcpy(p, &x, 8); break; }
        case orv::dtFlt32: { float x = float(v); std::memcpy(p, &x, 4); break; }
        default: { double x = double(v); std::memcpy(p, &x, 8); break; }
        }
    }
};

// Wraps an integer into the range of an integer type of the given width and
// signedness, by arithmetic on the value (not by casts).
inline long double WrapInteger(__int128 t, int bits, bool isSigned)
{
    const __int128 m = __int128(1) << bits;
    __int128 r = t % m;
    if (r < 0) r += m;
    if (isSigned && r >= m / 2) r -= m;
    return static_cast<long double>(r);
}

// The element conversion worked out on the value: truncation toward zero,
// then the low bits; float results rounded once to the destination.
inline long double RefConvert(long double v, EDataType from, EDataType to)
{
    if (IsFloat(to)) return to == orv::dtFlt32 ? (long double)(float)v : (long double)(double)v;
    __int128 t;
    if (IsFloat(from)) {
        const long double tr = std::trunc(v);
        if (to == orv::dtUInt64 && tr >= 9223372036854775808.0L) {
            return tr; // reduced, truncated and given back its top bit: the magnitude is kept
        }
        t = static_cast<__int128>(tr);
    } else {
        t = static_cast<__int128>(v);
    }
    return WrapInteger(t, Bits(to), IsSigned(to));
}

// A value representable in type t; floats carry fractions and stay well
// inside the signed 32-bit range so that every conversion rule applies.
inline long double Sample(EDataType t, std::mt19937& rng)
{
    std::uniform_int_distribution<int64_t> any(INT64_MIN, INT64_MAX);
    const int64_t r = any(rng);
    switch (t) {
    case orv::dtInt8: return int8_t(r);
    case orv::dtUInt8: return uint8_t(r);
    case orv::dtInt16: return int16_t(r);
    case orv::dtUInt16: return uint16_t(r);
    case orv::dtInt32: return int32_t(r);
    case orv::dtUInt32: return uint32_t(r);
    case orv::dtInt64: return r;
    case orv::dtUInt64: return uint64_t(r);
    case orv::dtFlt32: return (long double)(float)(double(r % 2000000) / 16.0 - 300.7);
    default: return (long double)(double(r % 200000000) / 64.0 - 1.5);
    }
}

inline bool SameValue(long double a, long double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace kt
