#pragma once
// CString: a one-pointer string, and the free string helpers.
#include <cstdarg>
#include <cstddef>
#include <functional>
#include <string_view>

#include "orv/Array.h"
#include "orv/Types.h"

namespace orv {

class CString {
public:
    CString() = default;
    // length -1 means up to the terminator.
    CString(const char* text, int length = -1) { Copy(text, length); }
    CString(std::string_view text) { Copy(text.data(), static_cast<int>(text.size())); }
    CString(const CString& other) { Copy(other.c_str(), static_cast<int>(other.length())); }
    CString(CString&& other) noexcept : m_data(other.m_data) { other.m_data = nullptr; }
    ~CString();

    // Assigns length bytes of text (-1: up to the terminator; null: empty).
    void Copy(const char* text, int length = -1);

    CString& operator=(const char* text)
    {
        Copy(text, -1);
        return *this;
    }
    CString& operator=(const CString& other)
    {
        if (this != &other) Copy(other.c_str(), static_cast<int>(other.length()));
        return *this;
    }
    CString& operator=(CString&& other) noexcept;

    const char* c_str() const { return m_data ? m_data : ""; }
    size_t length() const;
    bool empty() const { return length() == 0; }
    std::string_view view() const { return std::string_view(c_str(), length()); }

    // 0 when equal with exact case; otherwise the sign of the first difference.
    int compare(const CString& other) const;
    bool Equals(const char* text) const;
    bool EqualsNoCase(const CString& other) const;

    static CString FromFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static CString FromFormatV(const char* format, va_list args);

    // Splits at any of the separator characters; empty pieces are kept, so
    // "" gives one empty piece and ",a," three. Appends to out and returns
    // the number of pieces appended.
    size_t Split(TArray<CString>& out, const char* separators) const;

    // Up to length bytes from position (-1: to the end); empty past the end.
    CString substr(size_t position, long length = -1) const;

    // Direct write access to a buffer of at least size bytes plus terminator;
    // ReleaseBuffer takes the length from the terminator.
    char* GetBuffer(int size);
    void ReleaseBuffer();

    CString& operator+=(const CString& other);
    CString& operator+=(const char* text);

    friend CString operator+(const CString& a, const CString& b);
    friend CString operator+(const CString& a, const char* b);
    friend CString operator+(const char* a, const CString& b);
    friend bool operator==(const CString& a, const CString& b) { return a.compare(b) == 0; }
    friend bool operator==(const CString& a, const char* b) { return a.Equals(b); }
    friend bool operator<(const CString& a, const CString& b) { return a.compare(b) < 0; }

private:
    char* m_data = nullptr; // heap text behind a small length header, or null
};
static_assert(sizeof(CString) == sizeof(void*), "CString is one pointer wide");

// A name and a value, e.g. an XML attribute.
struct SNameValuePair {
    CString name;
    CString value;
    SNameValuePair() = default;
    SNameValuePair(const CString& n, const CString& v) : name(n), value(v) {}
};

// Case-blind compare: <0, 0, >0.
int scasecmp(const char* a, const char* b);
inline int scasecmp(const CString& a, const CString& b) { return scasecmp(a.c_str(), b.c_str()); }

// Number parsing in the C locale. end (optional) receives the index of the
// first character not used; 0 when nothing was parsed. Integers out of range
// saturate at the type's limits.
double stod(const CString& text, size_t* end = nullptr);
int stoi(const CString& text, size_t* end = nullptr, int base = 10);
long long stoll(const CString& text, size_t* end = nullptr, int base = 10);

CString strprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Copies at most limit - 1 bytes and always terminates; never writes past
// target[limit - 1]. A limit of 0 writes nothing.
void StrCpy(char* target, const char* source, int limit);

// malloc'ed copy that the caller frees with free(); null for null.
char* orvStrDup(const char* text);

// Identifier text "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case.
CString GuidToString(const SGuid& guid);
// Parses the text with or without braces; false (and id unchanged) on bad text.
bool ParseGuid(const char* text, SGuid& id);

class CGUID {
public:
    static SGuid empty() { return SGuid{}; }
    static CString ToString(const SGuid& id) { return GuidToString(id); }
    static bool Parse(const char* text, SGuid& id) { return ParseGuid(text, id); }
};

} // namespace orv

template <>
struct std::hash<orv::CString> {
    size_t operator()(const orv::CString& s) const noexcept { return std::hash<std::string_view>()(s.view()); }
};
