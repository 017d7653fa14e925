#include "orv/Convert.h"

#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "orv/ValueConvert.h"

namespace orv {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

std::string_view Trim(const char* text)
{
    if (!text) return {};
    std::string_view s(text);
    while (!s.empty() && IsSpace(s.front())) s.remove_prefix(1);
    while (!s.empty() && IsSpace(s.back())) s.remove_suffix(1);
    return s;
}

// A '+' is allowed before the digits; from_chars itself takes only '-'.
std::string_view SkipPlus(std::string_view s)
{
    if (s.size() >= 2 && s[0] == '+' && s[1] != '-' && s[1] != '+') s.remove_prefix(1);
    return s;
}

template <class T>
bool ParseWhole(std::string_view s, T& out, int base = 10)
{
    s = SkipPlus(s);
    if (s.empty()) return false;
    T v{};
    std::from_chars_result r;
    if constexpr (std::is_floating_point_v<T>) {
        r = std::from_chars(s.data(), s.data() + s.size(), v, std::chars_format::general);
    } else {
        if (std::is_unsigned_v<T> && s[0] == '-') return false;
        r = std::from_chars(s.data(), s.data() + s.size(), v, base);
    }
    if (r.ec != std::errc() || r.ptr != s.data() + s.size()) return false;
    out = v;
    return true;
}

template <class T>
bool ParseText(const char* text, T& out)
{
    return ParseWhole(Trim(text), out);
}

template <class T>
T ParseOrZero(const char* text)
{
    T v{};
    return ParseText(text, v) ? v : T{};
}

template <class T>
CString NumberText(T value)
{
    char buffer[64];
    auto r = std::to_chars(buffer, buffer + sizeof buffer, value);
    return CString(buffer, static_cast<int>(r.ptr - buffer));
}

bool EqualsNoCase(std::string_view a, const char* b)
{
    size_t n = std::char_traits<char>::length(b);
    if (a.size() != n) return false;
    for (size_t i = 0; i < n; ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

} // namespace

// --- CBool -------------------------------------------------------------------

bool CBool::Parse(const char* text, bool& out)
{
    std::string_view s = Trim(text);
    for (const char* t : {"t", "true", "1", "yes"})
        if (EqualsNoCase(s, t)) return out = true, true;
    for (const char* f : {"f", "false", "0", "no"})
        if (EqualsNoCase(s, f)) return out = false, true;
    return false;
}

bool CBool::Parse(const char* text)
{
    bool v = false;
    return Parse(text, v) && v;
}

CString CBool::ToString(bool value) { return CString(value ? "T" : "F"); }

// --- integers and floats ------------------------------------------------------

int32_t CInt32::Parse(const char* text) { return ParseOrZero<int32_t>(text); }
bool CInt32::Parse(const char* text, int32_t& out) { return ParseText(text, out); }
CString CInt32::ToString(int32_t value) { return NumberText(value); }

uint8_t CUInt8::Parse(const char* text) { return ParseOrZero<uint8_t>(text); }
bool CUInt8::Parse(const char* text, uint8_t& out) { return ParseText(text, out); }
CString CUInt8::ToString(uint8_t value) { return NumberText(value); }

bool CUInt8::ParseHex(const char* text, uint8_t& out)
{
    std::string_view s = Trim(text);
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) s.remove_prefix(2);
    if (s.empty() || s[0] == '-' || s[0] == '+') return false;
    return ParseWhole(s, out, 16);
}

uint8_t CUInt8::ParseHex(const char* text)
{
    uint8_t v = 0;
    return ParseHex(text, v) ? v : 0;
}

uint16_t CUInt16::Parse(const char* text) { return ParseOrZero<uint16_t>(text); }
bool CUInt16::Parse(const char* text, uint16_t& out) { return ParseText(text, out); }
CString CUInt16::ToString(uint16_t value) { return NumberText(value); }

uint32_t CUInt32::Parse(const char* text) { return ParseOrZero<uint32_t>(text); }
bool CUInt32::Parse(const char* text, uint32_t& out) { return ParseText(text, out); }
CString CUInt32::ToString(uint32_t value) { return NumberText(value); }

uint64_t CUInt64::Parse(const char* text) { return ParseOrZero<uint64_t>(text); }
bool CUInt64::Parse(const char* text, uint64_t& out) { return ParseText(text, out); }
CString CUInt64::ToString(uint64_t value) { return NumberText(value); }

float CFlt32::Parse(const char* text) { return ParseOrZero<float>(text); }
bool CFlt32::Parse(const char* text, float& out) { return ParseText(text, out); }
CString CFlt32::ToString(float value) { return NumberText(value); }

double CFlt64::Parse(const char* text) { return ParseOrZero<double>(text); }
bool CFlt64::Parse(const char* text, double& out) { return ParseText(text, out); }
CString CFlt64::ToString(double value) { return NumberText(value); }

// --- CVariant -------------------------------------------------------------------

namespace {

// Integer text keeps its bits; other numeric text follows the element
// conversion rule; bad text is 0.
template <class T>
T VariantTo(const CString& text)
{
    std::string_view s = Trim(text.c_str());
    int64_t i;
    if (ParseWhole(s, i)) return ConvertValue<T>(i);
    uint64_t u;
    if (ParseWhole(s, u)) return ConvertValue<T>(u);
    double d;
    if (ParseWhole(s, d)) return ConvertValue<T>(d);
    return T{};
}

} // namespace

bool CVariant::ToBool() const
{
    bool b;
    if (CBool::Parse(m_text.c_str(), b)) return b;
    return VariantTo<double>(m_text) != 0.0;
}

int8_t CVariant::ToInt8() const { return VariantTo<int8_t>(m_text); }
uint8_t CVariant::ToUInt8() const { return VariantTo<uint8_t>(m_text); }
int16_t CVariant::ToInt16() const { return VariantTo<int16_t>(m_text); }
uint16_t CVariant::ToUInt16() const { return VariantTo<uint16_t>(m_text); }
int32_t CVariant::ToInt32() const { return VariantTo<int32_t>(m_text); }
uint32_t CVariant::ToUInt32() const { return VariantTo<uint32_t>(m_text); }
int64_t CVariant::ToInt64() const { return VariantTo<int64_t>(m_text); }
uint64_t CVariant::ToUInt64() const { return VariantTo<uint64_t>(m_text); }
float CVariant::ToFlt32() const { return VariantTo<float>(m_text); }
double CVariant::ToFlt64() const { return VariantTo<double>(m_text); }

} // namespace orv
