#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <unordered_set>

#include "orv/String.h"

using orv::CString;
using orv::TArray;

namespace {

std::string Joined(const TArray<CString>& parts)
{
    std::string out;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i) out += '|';
        out += parts[i].c_str();
    }
    return out;
}

} // namespace

TEST(CString, ConstructAssignCopy)
{
    CString empty;
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(empty.length(), 0u);
    EXPECT_TRUE(empty.empty());

    CString whole("hello");
    CString part("hello", 3);
    EXPECT_EQ(whole.length(), 5u);
    EXPECT_STREQ(part.c_str(), "hel");
    EXPECT_EQ(CString("hello", -1).length(), 5u);
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)).length(), 0u);

    CString copy(whole);
    copy = "changed";
    EXPECT_STREQ(whole.c_str(), "hello");
    CString moved(std::move(copy));
    EXPECT_STREQ(moved.c_str(), "changed");
    EXPECT_STREQ(copy.c_str(), "");
    copy = std::move(moved);
    EXPECT_STREQ(copy.c_str(), "changed");
    copy = copy;
    EXPECT_STREQ(copy.c_str(), "changed");
    copy = static_cast<const char*>(nullptr);
    EXPECT_TRUE(copy.empty());

    // Copy from inside the string's own text.
    CString self("abcdefgh");
    self.Copy(self.c_str() + 2, 3);
    EXPECT_STREQ(self.c_str(), "cde");
    self = self.c_str() + 1;
    EXPECT_STREQ(self.c_str(), "de");
}

TEST(CString, CompareAndEquality)
{
    // A prefix sorts first, case is exact, bytes above 127 compare as unsigned.
    const std::tuple<const char*, const char*, int> order[] = {{"abc", "abc", 0}, {"abc", "abd", -1}, {"abd", "abc", 1},
                                                               {"ab", "abc", -1}, {"abc", "ab", 1}, {"abc", "ABC", 1},
                                                               {"\xE9", "e", 1}};
    for (const auto& [a, b, sign] : order) {
        const int c = CString(a).compare(CString(b));
        EXPECT_EQ((c > 0) - (c < 0), sign) << a << " " << b;
        EXPECT_EQ(CString(a) < CString(b), sign < 0) << a << " " << b;
        EXPECT_EQ(CString(a) == CString(b), sign == 0) << a << " " << b;
    }
    CString abc("abc");
    EXPECT_TRUE(abc.Equals("abc"));
    EXPECT_FALSE(abc.Equals("ABC"));
    EXPECT_TRUE(CString().Equals(nullptr));
    EXPECT_TRUE(abc.EqualsNoCase(CString("ABC")));
    EXPECT_FALSE(abc.EqualsNoCase(CString("ab")));
    std::unordered_set<CString> set{CString("x"), CString("y"), CString("x")};
    EXPECT_EQ(set.size(), 2u);
}

TEST(CString, FromFormatAndConcatenation)
{
    EXPECT_STREQ(CString::FromFormat("%d-%s-%.2f-%05X", 42, "ab", 1.005, 0xBEEF).c_str(), "42-ab-1.00-0BEEF");
    EXPECT_TRUE(CString::FromFormat("%s", "").empty());
    std::string big(5000, 'q');
    CString long1 = CString::FromFormat("<%s>", big.c_str());
    EXPECT_EQ(long1.length(), 5002u);
    EXPECT_EQ(long1.c_str()[5001], '>');
    EXPECT_STREQ(orv::strprintf("%u/%u", 3u, 4u).c_str(), "3/4");

    CString a("foo"), b("bar");
    EXPECT_STREQ((a + b).c_str(), "foobar");
    EXPECT_STREQ((a + "!").c_str(), "foo!");
    EXPECT_STREQ(("<" + a).c_str(), "<foo");
    EXPECT_STREQ((CString() + CString()).c_str(), "");
    a += b;
    a += "-";
    a += a;
    EXPECT_STREQ(a.c_str(), "foobar-foobar-");
    EXPECT_EQ(a.length(), 14u);
}

TEST(CString, Split)
{
    // Empty pieces are kept: between neighbours and at both ends; an empty
    // string is one empty piece; no separator found is one piece.
    const std::tuple<const char*, const char*, size_t, const char*> cases[] = {
        {"a,b;c", ",;", 3, "a|b|c"}, {",a,,b;", ",;", 5, "|a||b|"}, {"", ",", 1, ""}, {"1.6", ",", 1, "1.6"}};
    TArray<CString> parts;
    for (const auto& [text, separators, count, joined] : cases) {
        parts.clear();
        EXPECT_EQ(CString(text).Split(parts, separators), count) << text;
        EXPECT_EQ(Joined(parts), joined) << text;
    }

    // Pieces are appended to what the array holds.
    parts.clear();
    parts.add(CString("keep"));
    EXPECT_EQ(CString("1.6").Split(parts, "."), 2u);
    EXPECT_EQ(Joined(parts), "keep|1|6");
    parts.clear();
    EXPECT_EQ(CString("x y").Split(parts, nullptr), 1u);
}

TEST(CString, SubstrBounds)
{
    const CString s("abcdef");
    const std::tuple<size_t, long, const char*> cases[] = {
        {0, -1, "abcdef"}, {2, -1, "cdef"}, {1, 3, "bcd"}, {4, 100, "ef"}, {5, 1, "f"},
        {2, 0, ""}, {6, -1, ""}, {7, 2, ""}, {static_cast<size_t>(-1), -1, ""}};
    for (const auto& [position, length, want] : cases)
        EXPECT_STREQ(s.substr(position, length).c_str(), want) << position << " " << length;
    EXPECT_STREQ(CString().substr(0, 5).c_str(), "");
}

TEST(CString, GetBufferReleaseBuffer)
{
    CString s("abc");
    char* p = s.GetBuffer(10);
    EXPECT_STREQ(p, "abc"); // the text stays
    std::memcpy(p, "0123456789", 10); // fills the whole room, no terminator
    s.ReleaseBuffer();
    EXPECT_EQ(s.length(), 10u);
    EXPECT_STREQ(s.c_str(), "0123456789");

    p = s.GetBuffer(4); // smaller than the text: the text stays whole
    EXPECT_EQ(std::strlen(p), 10u);
    std::strcpy(p, "xy");
    s.ReleaseBuffer();
    EXPECT_EQ(s.length(), 2u);
    EXPECT_STREQ(s.c_str(), "xy");

    CString fresh;
    std::strcpy(fresh.GetBuffer(5), "hello");
    fresh.ReleaseBuffer();
    EXPECT_STREQ(fresh.c_str(), "hello");
    CString none;
    none.ReleaseBuffer();
    EXPECT_TRUE(none.empty());
}

TEST(StringHelpers, CaseCompareAndNumbers)
{
    EXPECT_EQ(orv::scasecmp("Camera", "CAMERA"), 0);
    EXPECT_LT(orv::scasecmp("abc", "ABD"), 0);
    EXPECT_GT(orv::scasecmp("b", "A"), 0);
    EXPECT_EQ(orv::scasecmp(nullptr, ""), 0);

    size_t end = 99;
    EXPECT_DOUBLE_EQ(orv::stod(CString("1.5e3xyz"), &end), 1500.0);
    EXPECT_EQ(end, 5u);
    EXPECT_EQ(orv::stod(CString("abc"), &end), 0.0);
    EXPECT_EQ(end, 0u);
    EXPECT_DOUBLE_EQ(orv::stod(CString("-0.25")), -0.25);

    EXPECT_EQ(orv::stoi(CString("  42 rest"), &end), 42);
    EXPECT_EQ(end, 4u);
    EXPECT_EQ(orv::stoi(CString("ff"), nullptr, 16), 255);
    EXPECT_EQ(orv::stoi(CString("-17")), -17);
    // Out of range saturates instead of wrapping.
    EXPECT_EQ(orv::stoi(CString("99999999999")), INT_MAX);
    EXPECT_EQ(orv::stoi(CString("-99999999999")), INT_MIN);
    EXPECT_EQ(orv::stoll(CString("9000000000")), 9000000000LL);
    EXPECT_EQ(orv::stoll(CString("-9223372036854775808")), LLONG_MIN);
}

TEST(StringHelpers, StrCpyNeverPassesTheLimit)
{
    // Guard bytes after the limit must survive every call.
    char buffer[16];
    auto reset = [&] { std::memset(buffer, 0xAA, sizeof buffer); };
    auto guardIntact = [&](int from) {
        for (int i = from; i < 16; ++i)
            if (static_cast<unsigned char>(buffer[i]) != 0xAA) return false;
        return true;
    };

    // A limit of 0 or less leaves no room at all: nothing is written.
    const struct {
        const char* source;
        int limit;
        const char* result; // null: nothing written
        int guardFrom;
    } cases[] = {{"0123456789", 8, "0123456", 8}, {"abc", 8, "abc", 4}, {"1234567", 8, "1234567", 8},
                 {"abc", 1, "", 1},               {"abc", 0, nullptr, 0}, {"abc", -5, nullptr, 0},
                 {nullptr, 8, "", 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.source ? c.source : "(null)") << " limit " << c.limit);
        reset();
        orv::StrCpy(buffer, c.source, c.limit);
        if (c.result) {
            EXPECT_STREQ(buffer, c.result);
        }
        EXPECT_TRUE(guardIntact(c.guardFrom));
    }

    char* dup = orv::orvStrDup("copy me");
    ASSERT_NE(dup, nullptr);
    EXPECT_STREQ(dup, "copy me");
    std::free(dup);
    EXPECT_EQ(orv::orvStrDup(nullptr), nullptr);
}

TEST(StringHelpers, GuidText)
{
    const orv::SGuid id = orv::MakeGuid("{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}");
    EXPECT_STREQ(orv::GuidToString(id).c_str(), "{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}");
    orv::SGuid parsed;
    EXPECT_TRUE(orv::ParseGuid("9c3c13f6-1a10-49c5-86c9-acf8a928dcc6", parsed));
    EXPECT_EQ(parsed, id);
    orv::SGuid untouched = orv::CGUID::empty();
    for (const char* bad : {"{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6", "9C3C13F6-1A10-49C5-86C9-ACF8A928DCCG", (const char*)nullptr})
        EXPECT_FALSE(orv::ParseGuid(bad, untouched)) << (bad ? bad : "(null)");
    EXPECT_TRUE(untouched.isEmpty());
}
