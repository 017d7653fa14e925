#pragma once
// Text conversions of single values: the forms used in XML attributes, frame
// information entries and user input.
//
// Parsing rules, common to every class here:
//  - leading and trailing white space is ignored; anything else that is not
//    part of the number makes the text bad ("12abc", "", null);
//  - integers are decimal, with an optional sign ('-' only for signed types);
//    a value outside the type's range is bad;
//  - floating point follows the C locale whatever the process locale is:
//    "1.5", "-2e-3", "inf", "nan"; a value too large for the type is bad;
//  - Parse(text) returns the value, or 0 / false for bad text;
//    Parse(text, out) returns false for bad text and leaves out unchanged.
//    Use the second form wherever bad text must be told apart from 0.
//
// ToString writes the shortest decimal text that parses back to the same
// value, in the C locale: 0.1f gives "0.1", 1e20 gives "1e+20".
#include <cstdint>

#include "orv/String.h"

namespace orv {

// Booleans are written "T" and "F", the texts of frame information flags and
// region files. Parse accepts, ignoring case: "T", "F", "true", "false",
// "1", "0", "yes", "no".
class CBool {
public:
    static bool Parse(const char* text);
    static bool Parse(const char* text, bool& out);
    static CString ToString(bool value);
};

class CInt32 {
public:
    static int32_t Parse(const char* text);
    static bool Parse(const char* text, int32_t& out);
    static CString ToString(int32_t value);
};

class CUInt8 {
public:
    static uint8_t Parse(const char* text);
    static bool Parse(const char* text, uint8_t& out);
    // Hexadecimal digits of either case, an optional "0x" before them:
    // "FF", "0a", "0x7f". At most 255; bad text gives 0.
    static uint8_t ParseHex(const char* text);
    static bool ParseHex(const char* text, uint8_t& out);
    static CString ToString(uint8_t value);
};

class CUInt16 {
public:
    static uint16_t Parse(const char* text);
    static bool Parse(const char* text, uint16_t& out);
    static CString ToString(uint16_t value);
};

class CUInt32 {
public:
    static uint32_t Parse(const char* text);
    static bool Parse(const char* text, uint32_t& out);
    static CString ToString(uint32_t value);
};

class CUInt64 {
public:
    static uint64_t Parse(const char* text);
    static bool Parse(const char* text, uint64_t& out);
    static CString ToString(uint64_t value);
};

class CFlt32 {
public:
    static float Parse(const char* text);
    static bool Parse(const char* text, float& out);
    static CString ToString(float value);
};

class CFlt64 {
public:
    static double Parse(const char* text);
    static bool Parse(const char* text, double& out);
    static CString ToString(double value);
};

// A value held as text, converted on demand. Integer conversions read the
// text as a decimal integer and keep the low bits of the target type
// ("200" gives int8 -56, "-1" gives uint64 0xFFFFFFFFFFFFFFFF), so that a
// byte written as unsigned text comes back as the same byte. Text that is a
// floating-point number converts as the element conversion rule does
// (truncation toward zero, then the low bits). Bad text gives 0 / false.
class CVariant {
public:
    CVariant() = default;
    CVariant(const CString& text) : m_text(text) {}
    CVariant(const char* text) : m_text(text) {}

    const CString& ToString() const { return m_text; }
    bool IsEmpty() const { return m_text.empty(); }

    bool ToBool() const;
    int8_t ToInt8() const;
    uint8_t ToUInt8() const;
    int16_t ToInt16() const;
    uint16_t ToUInt16() const;
    int32_t ToInt32() const;
    uint32_t ToUInt32() const;
    int64_t ToInt64() const;
    uint64_t ToUInt64() const;
    float ToFlt32() const;
    double ToFlt64() const;

private:
    CString m_text;
};

} // namespace orv
