#pragma once
// CDateTime: a point in time as a signed 64-bit count of 100-nanosecond ticks
// since 1601-01-01 00:00:00 (so 1970-01-01 is 0x19DB1DED53E8000 ticks).
// Proleptic Gregorian calendar, UTC, no time zones, no leap seconds. A
// default-constructed value is 0 ticks, the "empty" time.
//
// Format language (docs/datetime.md has examples):
//   %Y  year, at least four digits        %y  year within the century, 00-99
//   %m  month, 01-12                      %d  day of the month, 01-31
//   %H  hour, 00-23                       %M  minute, 00-59
//   %S  second, 00-59                     %j  day of the year, 001-366
//   %f  fraction of the second, seven digits (100-ns ticks)
//   %1f .. %7f  the first 1 to 7 digits of it, cut, not rounded
//               (%3f milliseconds, %6f microseconds)
//   %(irig)  "%H:%M:%S.%6f", e.g. "13:45:07.123456"; "%j:%(irig)" is an
//            IRIG time stamp, "064:13:45:07.123456"
//   %F  "%Y-%m-%d"                        %T  "%H:%M:%S"
//   %w  day of the week, 0 (Sunday) - 6   %a %A  "Mon", "Monday"
//   %b %B  "Mar", "March" (English, whatever the locale)
//   %%  a '%'
// Any other character after '%' is copied as it stands, '%' included.
// Format(nullptr) uses kDefaultFormat, "%Y-%m-%d %H:%M:%S.%f", which Set reads.
#include <compare>
#include <cstdint>

#include "orv/String.h"

namespace orv {

// The broken-down time of a CDateTime, a plain C-compatible structure.
struct SDateTime {
    int32_t year;      // e.g. 2024
    int32_t month;     // 1-12
    int32_t day;       // 1-31
    int32_t hour;      // 0-23
    int32_t minute;    // 0-59
    int32_t second;    // 0-59
    int32_t ticks;     // 100-ns ticks within the second, 0-9999999
    int32_t dayOfYear; // 1-366
    int32_t dayOfWeek; // 0 Sunday - 6 Saturday
};

class CDateTime {
public:
    static constexpr int64_t kTicksPerSecond = 10000000;
    static constexpr int64_t kTicksPerDay = kTicksPerSecond * 86400;
    // Ticks at 1970-01-01 00:00:00.
    static constexpr int64_t kUnixEpochTicks = 0x19DB1DED53E8000;
    static constexpr const char* kDefaultFormat = "%Y-%m-%d %H:%M:%S.%f";

    // Kinds of GetTimestamp / SetTimestamp.
    enum ETimestamp {
        timestampTicks = 0,       // the tick count itself
        timestampUnixSeconds = 1, // whole seconds since 1970-01-01 (rounded down)
    };

    CDateTime() = default;
    // Set(text); bad text gives the empty time.
    explicit CDateTime(const CString& text);
    static CDateTime FromTicks(int64_t ticks);
    // The system clock, in UTC.
    static CDateTime Now();

    // Reads, leading and trailing blanks allowed:
    //  - "YYYY-MM-DD", optionally followed by 'T' or ' ' and "hh:mm",
    //    "hh:mm:ss" or "hh:mm:ss.fffffff" (1 or more fraction digits, those
    //    past the seventh ignored), optionally followed by 'Z';
    //    so kDefaultFormat and ISO 8601 in UTC;
    //  - "YYYY:DDD:hh:mm:ss[.f...]", a year and a day of the year;
    //  - "DDD:hh:mm:ss[.f...]", an IRIG time stamp as "%j:%(irig)" writes
    //    it; the year is chosen as SetYDHMS chooses it.
    // False for anything else or a field out of range (the time unchanged).
    bool Set(const CString& text);

    CString Format(const char* format = nullptr) const;

    SDateTime ToStruct() const;

    // kind 0: the tick count; 1: Unix seconds. Other kinds give 0.
    int64_t GetTimestamp(int kind = timestampTicks) const;
    // The inverse of GetTimestamp; false (unchanged) for an unknown kind or a
    // value out of range. SetTimestamp(GetTimestamp(0), 0) restores any value.
    bool SetTimestamp(int64_t value, int kind = timestampTicks);

    // A day of the year (1-366) and a time, as an IRIG time code gives them:
    // it carries no year. The year is the one of the three around the time
    // held (this year, the one before, the one after) that puts the result
    // nearest to the time held, so that a recording that runs over New Year
    // stays in order; an empty time is first replaced by Now(). False
    // (unchanged) when a field is out of range: hour 0-23, minute 0-59,
    // second 0-59, millisecond and microsecond 0-999, day 366 only in a leap
    // year.
    bool SetYDHMS(int dayOfYear, int hour, int minute, int second, int millisecond, int microsecond);
    // The same with the year given: a full year 100-9999, or a two-digit
    // year 0-99 (a camera clock's field), taken as 2000-2069 for 0-69 and
    // 1970-1999 for 70-99.
    bool SetYYDHMS(int year, int dayOfYear, int hour, int minute, int second, int millisecond, int microsecond);
    // Calendar date and time; year 1-9999, ticks 0-9999999.
    bool SetYMDHMS(int year, int month, int day, int hour, int minute, int second, int ticks = 0);

    // Month (1-12) and day of the month (1-31) of a day of the year (1-365,
    // or 366 in a leap year); false for a day outside the year.
    static bool GetDayInMonth(int& month, int& day, int year, int dayOfYear);
    static bool IsLeapYear(int year);
    static int DaysInMonth(int year, int month);

    int64_t ticks() const { return m_ticks; }
    bool IsEmpty() const { return m_ticks == 0; }

    friend auto operator<=>(const CDateTime&, const CDateTime&) = default;
    friend bool operator==(const CDateTime&, const CDateTime&) = default;

private:
    int64_t m_ticks = 0;
};

} // namespace orv
