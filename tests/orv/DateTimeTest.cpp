#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <random>
#include <string>
#include <tuple>

#include "orv/DateTime.h"

using orv::CDateTime;
using orv::CString;
using orv::SDateTime;

namespace {

// Ticks of a few instants, computed apart from this code (Python's
// datetime: whole seconds since 1601-01-01 times 10^7, plus the fraction).
constexpr int64_t kTicks20240304 = 133540335071234567;  // 2024-03-04 13:45:07.1234567, a Monday
constexpr int64_t kTicks20000229 = 125963423999999999;  // 2000-02-29 23:59:59.9999999
constexpr int64_t kTicks99991231 = 2650467743999999999; // 9999-12-31 23:59:59.9999999
constexpr int64_t kTicks00010101 = -504911232000000000; // 0001-01-01 00:00:00

CDateTime At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, int ticks = 0)
{
    CDateTime t;
    EXPECT_TRUE(t.SetYMDHMS(y, mo, d, h, mi, s, ticks));
    return t;
}

std::string Text(const CDateTime& t, const char* format = nullptr) { return t.Format(format).c_str(); }

} // namespace

TEST(DateTime, TicksAndCalendar)
{
    EXPECT_EQ(At(1970, 1, 1).ticks(), 116444736000000000);
    EXPECT_EQ(At(2024, 3, 4, 13, 45, 7, 1234567).ticks(), kTicks20240304);
    EXPECT_EQ(At(2000, 2, 29, 23, 59, 59, 9999999).ticks(), kTicks20000229);
    EXPECT_EQ(At(9999, 12, 31, 23, 59, 59, 9999999).ticks(), kTicks99991231);
    EXPECT_EQ(At(1, 1, 1).ticks(), kTicks00010101);

    // Leap years, and what is refused.
    for (int year : {2000, 2024}) EXPECT_TRUE(CDateTime::IsLeapYear(year)) << year;
    for (int year : {1900, 2100, 2023}) EXPECT_FALSE(CDateTime::IsLeapYear(year)) << year;
    CDateTime t = CDateTime::FromTicks(42);
    const int refused[][7] = {{2023, 2, 29, 0, 0, 0, 0}, {2024, 13, 1, 0, 0, 0, 0}, {2024, 4, 31, 0, 0, 0, 0},
                              {2024, 1, 1, 24, 0, 0, 0}, {2024, 1, 1, 0, 0, 60, 0}, {2024, 1, 1, 0, 0, 0, 10000000},
                              {0, 1, 1, 0, 0, 0, 0}};
    for (const auto& r : refused) EXPECT_FALSE(t.SetYMDHMS(r[0], r[1], r[2], r[3], r[4], r[5], r[6])) << r[0] << "-" << r[1];
    EXPECT_EQ(t.ticks(), 42);

    // Ordinary days are checked against the C library below; here the ends.
    int month = 0, day = 0;
    EXPECT_TRUE(CDateTime::GetDayInMonth(month, day, 2024, 366));
    EXPECT_EQ(month * 100 + day, 1231);
    EXPECT_FALSE(CDateTime::GetDayInMonth(month, day, 2023, 366));
    EXPECT_FALSE(CDateTime::GetDayInMonth(month, day, 2023, 0));
    EXPECT_EQ(month * 100 + day, 1231);
}

TEST(DateTime, AgreesWithTheCLibrary)
{
    // gmtime_r is an independent proleptic Gregorian calendar.
    std::mt19937_64 rng(3);
    std::uniform_int_distribution<int64_t> seconds(-11644473600LL, 253402300799LL); // 1601 to 9999
    for (int k = 0; k < 20000; ++k) {
        time_t when = static_cast<time_t>(seconds(rng));
        tm ref{};
        ASSERT_NE(gmtime_r(&when, &ref), nullptr);
        CDateTime t;
        ASSERT_TRUE(t.SetTimestamp(when, CDateTime::timestampUnixSeconds));
        SDateTime s = t.ToStruct();
        ASSERT_EQ(std::tuple(s.year, s.month, s.day, s.hour, s.minute, s.second, s.dayOfYear, s.dayOfWeek),
                  std::tuple(ref.tm_year + 1900, ref.tm_mon + 1, ref.tm_mday, ref.tm_hour, ref.tm_min, ref.tm_sec,
                             ref.tm_yday + 1, ref.tm_wday))
            << when;
        ASSERT_EQ(t.GetTimestamp(CDateTime::timestampUnixSeconds), static_cast<int64_t>(when));
        int month, day;
        ASSERT_TRUE(CDateTime::GetDayInMonth(month, day, s.year, s.dayOfYear));
        ASSERT_EQ(std::tuple(month, day), std::tuple(s.month, s.day)) << when;
    }
}

TEST(DateTime, TimestampsRoundTrip)
{
    for (int64_t v : {int64_t(0), int64_t(-1), int64_t(1), kTicks20240304, INT64_MAX, INT64_MIN}) {
        CDateTime t;
        EXPECT_TRUE(t.SetTimestamp(v, 0));
        EXPECT_EQ(t.GetTimestamp(0), v);
        (void)t.ToStruct(); // defined for every tick count
        (void)t.Format(nullptr);
    }
    // The camera time conversion: seconds * 10^7 + 0x19DB1DED53E8000 + ms * 10^4.
    CDateTime camera;
    camera.SetTimestamp(int64_t(1000000000) * 10000000 + 0x19DB1DED53E8000 + 250 * 10000, 0);
    EXPECT_EQ(Text(camera), "2001-09-09 01:46:40.2500000");
    EXPECT_EQ(camera.GetTimestamp(CDateTime::timestampUnixSeconds), 1000000000);
    // Unix seconds before 1970 round down.
    CDateTime before = CDateTime::FromTicks(CDateTime::kUnixEpochTicks - 1);
    EXPECT_EQ(before.GetTimestamp(CDateTime::timestampUnixSeconds), -1);
    // Unknown kinds and overflow are refused.
    CDateTime t = CDateTime::FromTicks(5);
    EXPECT_EQ(t.GetTimestamp(7), 0);
    EXPECT_FALSE(t.SetTimestamp(1, 7));
    EXPECT_FALSE(t.SetTimestamp(INT64_MAX / 1000, CDateTime::timestampUnixSeconds));
    EXPECT_EQ(t.ticks(), 5);

    // Now is the system clock.
    int64_t before1 = static_cast<int64_t>(time(nullptr));
    int64_t now = CDateTime::Now().GetTimestamp(CDateTime::timestampUnixSeconds);
    int64_t after = static_cast<int64_t>(time(nullptr));
    EXPECT_GE(now, before1 - 1);
    EXPECT_LE(now, after + 1);

    // Ordering follows the tick count.
    CDateTime a = CDateTime::FromTicks(-5), b = CDateTime::FromTicks(7), c;
    c = b;
    EXPECT_TRUE(a < b && b > a && b == c && a != c && a <= b && b <= c && c >= b);
    EXPECT_FALSE(b < a || a > b || a == c || b != c || b <= a || a >= b);
}

TEST(DateTime, Format)
{
    CDateTime t = CDateTime::FromTicks(kTicks20240304);
    const char* const formats[][2] = {{CDateTime::kDefaultFormat, "2024-03-04 13:45:07.1234567"},
                                      {"%j:%(irig)", "064:13:45:07.123456"},
                                      {"%Y%m%d %H%M%S", "20240304 134507"},
                                      {"%3f|%6f|%1f|%7f|%f", "123|123456|1|1234567|1234567"},
                                      {"%y %a %A %b %B %w", "24 Mon Monday Mar March 1"},
                                      {"%FT%TZ", "2024-03-04T13:45:07Z"},
                                      {"100%% %q %(x) %8f end%", "100% %q %(x) %8f end%"},
                                      {"", ""}};
    EXPECT_EQ(Text(t), "2024-03-04 13:45:07.1234567");
    for (const auto& [format, want] : formats) EXPECT_EQ(Text(t, format), want) << format;
    EXPECT_EQ(Text(CDateTime::FromTicks(kTicks00010101), "%Y-%m-%d %j"), "0001-01-01 001");
    EXPECT_EQ(Text(At(2023, 12, 31, 0, 0, 0, 5), "%j %f %6f"), "365 0000005 000000");
    EXPECT_EQ(Text(CDateTime(), "%Y-%m-%d %H:%M:%S %A"), "1601-01-01 00:00:00 Monday");
}

TEST(DateTime, SetParsesIsoAndItsOwnFormat)
{
    CDateTime t;
    // Digits past the seventh are ignored.
    for (const char* text : {"2024-03-04 13:45:07.1234567", " 2024-03-04T13:45:07.1234567Z ",
                             "2024-03-04t13:45:07.123456789", "2024:064:13:45:07.1234567"}) {
        t = CDateTime();
        EXPECT_TRUE(t.Set(CString(text))) << text;
        EXPECT_EQ(t.ticks(), kTicks20240304) << text;
    }
    EXPECT_TRUE(t.Set(CString("2024-03-04T13:45:07.5")));
    EXPECT_EQ(t.ToStruct().ticks, 5000000);
    EXPECT_TRUE(t.Set(CString("2024-03-04 13:45")));
    EXPECT_EQ(Text(t), "2024-03-04 13:45:00.0000000");
    EXPECT_TRUE(t.Set(CString("2024-03-04")));
    EXPECT_EQ(Text(t), "2024-03-04 00:00:00.0000000");
    EXPECT_EQ(CDateTime(CString("2000-02-29 23:59:59.9999999")).ticks(), kTicks20000229);

    const int64_t kept = t.ticks();
    for (const char* bad :
         {"", "hello", "2024-02-30", "2023-02-29", "2024-13-01", "2024-3-4", "2024-03-04 24:00:00",
          "2024-03-04 12:60:00", "2024-03-04 12:00:60", "2024-03-04x", "2024-03-04T", "2024-03-04 12:00:00+02:00",
          "2024-03-04 12:00:00.", "2023:366:00:00:00", "400:00:00:00", "064:13:45", "12024-03-04"}) {
        EXPECT_FALSE(t.Set(CString(bad))) << bad;
        EXPECT_EQ(t.ticks(), kept) << bad;
    }
    EXPECT_TRUE(CDateTime(CString("not a time")).IsEmpty());

    // Whatever Format writes by default, Set reads back exactly.
    std::mt19937_64 rng(9);
    std::uniform_int_distribution<int64_t> any(kTicks00010101, kTicks99991231);
    for (int k = 0; k < 5000; ++k) {
        CDateTime x = CDateTime::FromTicks(any(rng));
        CDateTime y(x.Format());
        ASSERT_EQ(y, x) << x.Format().c_str();
    }
}

TEST(DateTime, DayOfYearSetters)
{
    CDateTime t;
    // Full year, day of the year, time, milliseconds, microseconds.
    EXPECT_TRUE(t.SetYYDHMS(2024, 64, 13, 45, 7, 123, 456));
    EXPECT_EQ(Text(t), "2024-03-04 13:45:07.1234560");
    // Two-digit years of a camera clock.
    EXPECT_TRUE(t.SetYYDHMS(24, 366, 0, 0, 0, 0, 0));
    EXPECT_EQ(Text(t, "%F"), "2024-12-31");
    EXPECT_TRUE(t.SetYYDHMS(99, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(Text(t, "%F"), "1999-01-01");
    const int64_t kept = t.ticks();
    const int refused[][7] = {{2023, 366, 0, 0, 0, 0, 0}, {2023, 0, 0, 0, 0, 0, 0},    {2023, 1, 24, 0, 0, 0, 0},
                              {2023, 1, 0, 0, 0, 1000, 0}, {2023, 1, 0, 0, 0, 0, -1}, {-5, 1, 0, 0, 0, 0, 0}};
    for (const auto& r : refused) EXPECT_FALSE(t.SetYYDHMS(r[0], r[1], r[2], r[3], r[4], r[5], r[6])) << r[0] << ":" << r[1];
    EXPECT_EQ(t.ticks(), kept);

    // Without a year: the year that puts the result nearest the time held.
    t = At(2024, 3, 1);
    EXPECT_TRUE(t.SetYDHMS(64, 13, 45, 7, 123, 456));
    EXPECT_EQ(Text(t), "2024-03-04 13:45:07.1234560");
    t = At(2024, 12, 31, 23, 59, 59);
    EXPECT_TRUE(t.SetYDHMS(1, 0, 0, 1, 0, 0)); // the IRIG day rolled over
    EXPECT_EQ(Text(t, "%F %T"), "2025-01-01 00:00:01");
    t = At(2025, 1, 1, 0, 0, 10);
    EXPECT_TRUE(t.SetYDHMS(366, 23, 59, 59, 999, 999)); // a late frame of the old year
    EXPECT_EQ(Text(t), "2024-12-31 23:59:59.9999990");
    t = At(2022, 6, 1);
    EXPECT_FALSE(t.SetYDHMS(366, 0, 0, 0, 0, 0)); // no leap year among 2021 to 2023
    EXPECT_FALSE(t.SetYDHMS(10, 0, 64, 0, 0, 0));
    EXPECT_EQ(Text(t, "%F"), "2022-06-01");

    // An empty time starts from now.
    CDateTime fresh;
    SDateTime now = CDateTime::Now().ToStruct();
    EXPECT_TRUE(fresh.SetYDHMS(now.dayOfYear, 12, 0, 0, 0, 0));
    EXPECT_EQ(fresh.ToStruct().year, now.year);

    // The IRIG text that the frame information shows comes back.
    CDateTime shown = At(2024, 3, 1);
    EXPECT_TRUE(shown.Set(CString("064:13:45:07.123456")));
    EXPECT_EQ(Text(shown), "2024-03-04 13:45:07.1234560");
    CDateTime again = shown;
    again.SetTimestamp(again.ticks() + 3 * CDateTime::kTicksPerDay, 0);
    EXPECT_TRUE(again.Set(shown.Format("%j:%(irig)")));
    EXPECT_EQ(again, shown);
}
