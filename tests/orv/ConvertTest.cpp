#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <cstring>
#include <random>
#include <string>

#include "orv/Convert.h"

using namespace orv;

TEST(TextConvert, Bool)
{
    for (const char* t : {"T", "t", "true", "TRUE", "True", "1", "yes", " T "}) {
        bool v = false;
        EXPECT_TRUE(CBool::Parse(t, v)) << t;
        EXPECT_TRUE(v) << t;
        EXPECT_TRUE(CBool::Parse(t)) << t;
    }
    for (const char* f : {"F", "f", "false", "FALSE", "0", "No"}) {
        bool v = true;
        EXPECT_TRUE(CBool::Parse(f, v)) << f;
        EXPECT_FALSE(v) << f;
    }
    for (const char* bad : {"", "2", "tru", "T F", "on", "-1"}) {
        bool v = true;
        EXPECT_FALSE(CBool::Parse(bad, v)) << bad;
        EXPECT_TRUE(v) << "unchanged on bad text: " << bad;
        EXPECT_FALSE(CBool::Parse(bad)) << bad;
    }
    EXPECT_FALSE(CBool::Parse(nullptr));
    EXPECT_STREQ(CBool::ToString(true).c_str(), "T");
    EXPECT_STREQ(CBool::ToString(false).c_str(), "F");
    EXPECT_TRUE(CBool::Parse(CBool::ToString(true).c_str()));
}

TEST(TextConvert, IntegersParseWithinRangeOnly)
{
    int32_t i = 7;
    EXPECT_TRUE(CInt32::Parse("-2147483648", i));
    EXPECT_EQ(i, INT32_MIN);
    EXPECT_TRUE(CInt32::Parse(" +2147483647\n", i));
    EXPECT_EQ(i, INT32_MAX);
    EXPECT_FALSE(CInt32::Parse("2147483648", i));
    EXPECT_EQ(i, INT32_MAX);
    for (const char* bad : {"", " ", "12abc", "1.5", "0x10", "+", "-", "+-1", "1 2"}) EXPECT_FALSE(CInt32::Parse(bad, i)) << bad;
    EXPECT_EQ(CInt32::Parse("12abc"), 0);
    EXPECT_EQ(CInt32::Parse("-42"), -42);
    EXPECT_EQ(CInt32::Parse(nullptr), 0);

    uint8_t b = 1;
    EXPECT_EQ(CUInt8::Parse("255"), 255);
    EXPECT_FALSE(CUInt8::Parse("256", b));
    EXPECT_FALSE(CUInt8::Parse("-1", b));
    EXPECT_EQ(b, 1);
    EXPECT_EQ(CUInt8::Parse("007"), 7);

    uint32_t u = 0;
    EXPECT_TRUE(CUInt32::Parse("4294967295", u));
    EXPECT_EQ(u, UINT32_MAX);
    EXPECT_FALSE(CUInt32::Parse("4294967296", u));
    EXPECT_FALSE(CUInt32::Parse("-0", u)); // no sign on unsigned text
    EXPECT_EQ(CUInt32::Parse("-5"), 0u);

    EXPECT_EQ(CUInt16::Parse("65535"), 65535);
    EXPECT_EQ(CUInt16::Parse("65536"), 0);
    EXPECT_EQ(CUInt64::Parse("18446744073709551615"), UINT64_MAX);
    EXPECT_EQ(CUInt64::Parse("18446744073709551616"), 0u);

    // Hexadecimal bytes, as in "#RRGGBB" colours.
    EXPECT_EQ(CUInt8::ParseHex("FF"), 0xFF);
    EXPECT_EQ(CUInt8::ParseHex("0a"), 0x0A);
    EXPECT_EQ(CUInt8::ParseHex("0x7f"), 0x7F);
    EXPECT_EQ(CUInt8::ParseHex("7"), 7);
    for (const char* bad : {"", "G0", "100", "-1", "0x", "f f"}) {
        b = 9;
        EXPECT_FALSE(CUInt8::ParseHex(bad, b)) << bad;
        EXPECT_EQ(b, 9);
    }
    EXPECT_EQ(CUInt8::ParseHex("zz"), 0);
}

TEST(TextConvert, IntegerTextRoundTrips)
{
    EXPECT_STREQ(CInt32::ToString(INT32_MIN).c_str(), "-2147483648");
    EXPECT_STREQ(CInt32::ToString(0).c_str(), "0");
    EXPECT_STREQ(CUInt8::ToString(200).c_str(), "200");
    EXPECT_STREQ(CUInt16::ToString(65535).c_str(), "65535");
    EXPECT_STREQ(CUInt32::ToString(4000000000u).c_str(), "4000000000");
    EXPECT_STREQ(CUInt64::ToString(UINT64_MAX).c_str(), "18446744073709551615");
    std::mt19937_64 rng(5);
    for (int k = 0; k < 2000; ++k) {
        uint64_t x = rng();
        EXPECT_EQ(CUInt64::Parse(CUInt64::ToString(x).c_str()), x);
        int32_t y = static_cast<int32_t>(x >> 7);
        EXPECT_EQ(CInt32::Parse(CInt32::ToString(y).c_str()), y);
    }
}

TEST(TextConvert, FloatsAreShortestAndLocaleFree)
{
    EXPECT_STREQ(CFlt32::ToString(0.1f).c_str(), "0.1");
    EXPECT_STREQ(CFlt32::ToString(-1.5f).c_str(), "-1.5");
    EXPECT_STREQ(CFlt64::ToString(0.1).c_str(), "0.1");
    EXPECT_STREQ(CFlt64::ToString(1e300).c_str(), "1e+300");
    EXPECT_STREQ(CFlt64::ToString(100.0).c_str(), "100");

    double d = 0;
    EXPECT_TRUE(CFlt64::Parse("  -2.5e-3 ", d));
    EXPECT_EQ(d, -2.5e-3);
    EXPECT_TRUE(CFlt64::Parse("+4", d));
    EXPECT_EQ(d, 4.0);
    EXPECT_TRUE(CFlt64::Parse("inf", d));
    EXPECT_TRUE(std::isinf(d));
    EXPECT_TRUE(CFlt64::Parse("nan", d));
    EXPECT_TRUE(std::isnan(d));
    d = 3;
    for (const char* bad : {"", "1,5", "1.5x", "e5", "1e999", ".", "--1"}) {
        EXPECT_FALSE(CFlt64::Parse(bad, d)) << bad;
        EXPECT_EQ(d, 3.0);
    }
    EXPECT_EQ(CFlt64::Parse("1,5"), 0.0);
    float f = 0;
    EXPECT_FALSE(CFlt32::Parse("1e39", f)); // beyond float
    EXPECT_TRUE(CFlt32::Parse("3.4e38", f));

    // Every value comes back bit for bit.
    std::mt19937_64 rng(11);
    for (int k = 0; k < 5000; ++k) {
        uint64_t bits = rng();
        double x;
        std::memcpy(&x, &bits, 8);
        if (!std::isfinite(x)) continue;
        double back = CFlt64::Parse(CFlt64::ToString(x).c_str());
        EXPECT_EQ(std::memcmp(&back, &x, 8), 0) << CFlt64::ToString(x).c_str();
        float y;
        uint32_t b32 = static_cast<uint32_t>(bits);
        std::memcpy(&y, &b32, 4);
        if (!std::isfinite(y)) continue;
        EXPECT_EQ(CFlt32::Parse(CFlt32::ToString(y).c_str()), y);
    }

    // A host program's locale with a decimal comma changes nothing.
    const char* old = std::setlocale(LC_NUMERIC, nullptr);
    std::string saved = old ? old : "C";
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_NUMERIC, name)) break;
    }
    EXPECT_STREQ(CFlt64::ToString(1.25).c_str(), "1.25");
    EXPECT_EQ(CFlt64::Parse("1.25"), 1.25);
    std::setlocale(LC_NUMERIC, saved.c_str());
}

TEST(TextConvert, Variant)
{
    // A byte written as unsigned text comes back as the same byte.
    EXPECT_EQ(CVariant(CString("200")).ToInt8(), static_cast<int8_t>(200));
    EXPECT_EQ(CVariant(CString("7")).ToInt8(), 7);
    EXPECT_EQ(CVariant(CString("-1")).ToInt8(), -1);
    EXPECT_EQ(CVariant(CString("18446744073709551615")).ToUInt64(), UINT64_MAX);
    EXPECT_EQ(CVariant(CString("-1")).ToUInt64(), UINT64_MAX);
    EXPECT_EQ(CVariant(CString(" 123456789012 ")).ToUInt64(), 123456789012ull);
    // Floating text truncates toward zero.
    EXPECT_EQ(CVariant(CString("3.9")).ToInt8(), 3);
    EXPECT_EQ(CVariant(CString("-3.9")).ToInt32(), -3);
    EXPECT_EQ(CVariant(CString("1e3")).ToUInt64(), 1000u);
    EXPECT_EQ(CVariant(CString("2.5")).ToFlt64(), 2.5);
    // Bad text is 0.
    EXPECT_EQ(CVariant(CString("abc")).ToUInt64(), 0u);
    EXPECT_EQ(CVariant(CString()).ToInt8(), 0);
    EXPECT_TRUE(CVariant(CString()).IsEmpty());
    EXPECT_TRUE(CVariant(CString("T")).ToBool());
    EXPECT_TRUE(CVariant(CString("5")).ToBool());
    EXPECT_FALSE(CVariant(CString("0.0")).ToBool());
    EXPECT_STREQ(CVariant("x").ToString().c_str(), "x");
}
