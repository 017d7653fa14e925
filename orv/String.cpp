#include "orv/String.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace orv {

namespace {

// The text lives behind this header: {length, capacity} then the bytes.
struct SHeader {
    size_t length;
    size_t capacity;
};

SHeader* HeaderOf(char* data) { return reinterpret_cast<SHeader*>(data) - 1; }

char* AllocText(size_t capacity)
{
    auto* h = static_cast<SHeader*>(Alloc(sizeof(SHeader) + capacity + 1));
    if (!h) ThrowBadAllocException();
    h->length = 0;
    h->capacity = capacity;
    char* data = reinterpret_cast<char*>(h + 1);
    data[0] = '\0';
    return data;
}

void FreeText(char* data)
{
    if (data) Free(HeaderOf(data));
}

} // namespace

CString::~CString() { FreeText(m_data); }

CString& CString::operator=(CString&& other) noexcept
{
    if (this != &other) {
        FreeText(m_data);
        m_data = other.m_data;
        other.m_data = nullptr;
    }
    return *this;
}

void CString::Copy(const char* text, int length)
{
    if (!text) {
        FreeText(m_data);
        m_data = nullptr;
        return;
    }
    size_t n = length < 0 ? std::strlen(text) : static_cast<size_t>(length);
    char* fresh = AllocText(n); // text may point into our own buffer
    std::memcpy(fresh, text, n);
    fresh[n] = '\0';
    HeaderOf(fresh)->length = n;
    FreeText(m_data);
    m_data = fresh;
}

size_t CString::length() const { return m_data ? HeaderOf(m_data)->length : 0; }

int CString::compare(const CString& other) const
{
    size_t a = length(), b = other.length();
    int r = std::memcmp(c_str(), other.c_str(), a < b ? a : b);
    if (r != 0) return r;
    return a < b ? -1 : (a > b ? 1 : 0);
}

bool CString::Equals(const char* text) const { return std::strcmp(c_str(), text ? text : "") == 0; }

bool CString::EqualsNoCase(const CString& other) const { return strcasecmp(c_str(), other.c_str()) == 0; }

CString CString::FromFormatV(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    CString result;
    if (n <= 0) return result;
    char* buffer = result.GetBuffer(n);
    std::vsnprintf(buffer, static_cast<size_t>(n) + 1, format, args);
    result.ReleaseBuffer();
    return result;
}

CString CString::FromFormat(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CString s = FromFormatV(format, args);
    va_end(args);
    return s;
}

size_t CString::Split(TArray<CString>& out, const char* separators) const
{
    const char* s = c_str();
    size_t n = length();
    size_t start = 0, pieces = 0;
    for (size_t i = 0; i <= n; ++i) {
        if (i == n || (separators && std::strchr(separators, s[i]) && s[i] != '\0')) {
            out.add(CString(s + start, static_cast<int>(i - start)));
            ++pieces;
            start = i + 1;
        }
    }
    return pieces;
}

CString CString::substr(size_t position, long length) const
{
    size_t n = this->length();
    if (position >= n) return CString();
    size_t count = n - position;
    if (length >= 0 && static_cast<size_t>(length) < count) count = static_cast<size_t>(length);
    return CString(c_str() + position, static_cast<int>(count));
}

char* CString::GetBuffer(int size)
{
    size_t want = size < 0 ? 0 : static_cast<size_t>(size);
    size_t have = length();
    if (!m_data || HeaderOf(m_data)->capacity < want) {
        char* fresh = AllocText(want > have ? want : have);
        std::memcpy(fresh, c_str(), have + 1);
        HeaderOf(fresh)->length = have;
        FreeText(m_data);
        m_data = fresh;
    }
    return m_data;
}

void CString::ReleaseBuffer()
{
    if (!m_data) return;
    SHeader* h = HeaderOf(m_data);
    m_data[h->capacity] = '\0';
    h->length = std::strlen(m_data);
}

CString& CString::operator+=(const CString& other)
{
    *this = *this + other;
    return *this;
}

CString& CString::operator+=(const char* text)
{
    *this = *this + text;
    return *this;
}

CString operator+(const CString& a, const CString& b)
{
    size_t la = a.length(), lb = b.length();
    CString r;
    char* p = r.GetBuffer(static_cast<int>(la + lb));
    std::memcpy(p, a.c_str(), la);
    std::memcpy(p + la, b.c_str(), lb);
    p[la + lb] = '\0';
    HeaderOf(p)->length = la + lb;
    return r;
}

CString operator+(const CString& a, const char* b) { return a + CString(b); }
CString operator+(const char* a, const CString& b) { return CString(a) + b; }

int scasecmp(const char* a, const char* b) { return strcasecmp(a ? a : "", b ? b : ""); }

namespace {
// strtod and friends follow the C locale; we never change it, but guard the
// decimal point against a host program that did.
locale_t CLocale()
{
    static locale_t loc = newlocale(LC_ALL_MASK, "C", nullptr);
    return loc;
}
} // namespace

double stod(const CString& text, size_t* end)
{
    const char* s = text.c_str();
    char* e = nullptr;
    double v = strtod_l(s, &e, CLocale());
    if (end) *end = static_cast<size_t>(e - s);
    return v;
}

int stoi(const CString& text, size_t* end, int base)
{
    const char* s = text.c_str();
    char* e = nullptr;
    long v = std::strtol(s, &e, base);
    if (end) *end = static_cast<size_t>(e - s);
    // Saturate as strtol itself does, instead of keeping the low 32 bits.
    if (v > INT_MAX) return INT_MAX;
    if (v < INT_MIN) return INT_MIN;
    return static_cast<int>(v);
}

long long stoll(const CString& text, size_t* end, int base)
{
    const char* s = text.c_str();
    char* e = nullptr;
    long long v = std::strtoll(s, &e, base);
    if (end) *end = static_cast<size_t>(e - s);
    return v;
}

CString strprintf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CString s = CString::FromFormatV(format, args);
    va_end(args);
    return s;
}

void StrCpy(char* target, const char* source, int limit)
{
    if (!target || limit <= 0) return;
    int i = 0;
    if (source)
        for (; i < limit - 1 && source[i]; ++i) target[i] = source[i];
    target[i] = '\0';
}

char* orvStrDup(const char* text)
{
    if (!text) return nullptr;
    size_t n = std::strlen(text) + 1;
    char* p = static_cast<char*>(std::malloc(n));
    if (p) std::memcpy(p, text, n);
    return p;
}

CString GuidToString(const SGuid& g)
{
    return CString::FromFormat("{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1, g.Data2, g.Data3,
                               g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6],
                               g.Data4[7]);
}

bool ParseGuid(const char* text, SGuid& id)
{
    if (!text) return false;
    size_t n = std::strlen(text);
    const char* s = text;
    if (n == 38) {
        if (s[0] != '{' || s[37] != '}') return false;
        ++s;
    } else if (n != 36) {
        return false;
    }
    for (int i = 0; i < 36; ++i) {
        bool dash = (i == 8 || i == 13 || i == 18 || i == 23);
        if (dash ? s[i] != '-' : detail::HexDigit(s[i]) < 0) return false;
    }
    id = MakeGuid(s);
    return true;
}

} // namespace orv

// The free that matches orvStrDup, in plain C: the flat interface
// (reduce/capi/orvreduce.h declares it) hands out such copies.
extern "C" void orvStrFree(char* text) { free(text); }
