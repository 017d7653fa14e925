#include "orv/DateTime.h"

#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

namespace orv {

namespace {

constexpr int64_t kTicksPerMinute = CDateTime::kTicksPerSecond * 60;
constexpr int64_t kTicksPerHour = kTicksPerMinute * 60;

int64_t FloorDiv(int64_t a, int64_t b)
{
    int64_t q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's method).
int64_t DaysFromCivil(int64_t y, int m, int d)
{
    y -= m <= 2;
    int64_t era = FloorDiv(y, 400);
    int64_t yoe = y - era * 400;
    int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int64_t& y, int& m, int& d)
{
    z += 719468;
    int64_t era = FloorDiv(z, 146097);
    int64_t doe = z - era * 146097;
    int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = yoe + era * 400;
    int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    int64_t mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y += m <= 2;
}

int64_t TicksOf(int64_t year, int month, int day, int hour, int minute, int second, int64_t ticks)
{
    int64_t days = DaysFromCivil(year, month, day);
    return CDateTime::kUnixEpochTicks + days * CDateTime::kTicksPerDay + hour * kTicksPerHour +
           minute * kTicksPerMinute + second * CDateTime::kTicksPerSecond + ticks;
}

struct SBroken {
    int64_t year;
    int month, day, hour, minute, second, ticks, dayOfYear, dayOfWeek;
};

// Days from 1601-01-01 to 1970-01-01.
constexpr int64_t kUnixEpochDays = CDateTime::kUnixEpochTicks / CDateTime::kTicksPerDay;
static_assert(kUnixEpochDays * CDateTime::kTicksPerDay == CDateTime::kUnixEpochTicks, "epoch on a day boundary");

SBroken Break(int64_t t)
{
    SBroken b{};
    // Counted from 1601 so that no tick value overflows.
    int64_t days1601 = FloorDiv(t, CDateTime::kTicksPerDay);
    int64_t rest = t % CDateTime::kTicksPerDay;
    if (rest < 0) rest += CDateTime::kTicksPerDay;
    int64_t days = days1601 - kUnixEpochDays;
    CivilFromDays(days, b.year, b.month, b.day);
    b.hour = static_cast<int>(rest / kTicksPerHour);
    rest %= kTicksPerHour;
    b.minute = static_cast<int>(rest / kTicksPerMinute);
    rest %= kTicksPerMinute;
    b.second = static_cast<int>(rest / CDateTime::kTicksPerSecond);
    b.ticks = static_cast<int>(rest % CDateTime::kTicksPerSecond);
    b.dayOfYear = static_cast<int>(days - DaysFromCivil(b.year, 1, 1) + 1);
    // 1970-01-01 was a Thursday.
    int64_t weekday = (days + 4) % 7;
    b.dayOfWeek = static_cast<int>(weekday < 0 ? weekday + 7 : weekday);
    return b;
}

bool TimeInRange(int hour, int minute, int second)
{
    return hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 59;
}

const char* const kDayNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
const char* const kMonthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};

void AppendNumber(std::string& out, int64_t value, int width)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*lld", width, static_cast<long long>(value));
    out += buffer;
}

void AppendFraction(std::string& out, int ticks, int digits)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%07d", ticks);
    out.append(buffer, static_cast<size_t>(digits));
}

// A small cursor over the text for Set.
class CScanner {
public:
    explicit CScanner(std::string_view s) : m_s(s) {}
    bool AtEnd() const { return m_pos == m_s.size(); }
    char Peek() const { return AtEnd() ? '\0' : m_s[m_pos]; }
    bool Accept(char c)
    {
        if (Peek() != c || AtEnd()) return false;
        ++m_pos;
        return true;
    }
    // Between min and max decimal digits.
    bool Number(int minDigits, int maxDigits, int& value)
    {
        int n = 0;
        value = 0;
        while (n < maxDigits && !AtEnd() && m_s[m_pos] >= '0' && m_s[m_pos] <= '9') {
            value = value * 10 + (m_s[m_pos] - '0');
            ++m_pos;
            ++n;
        }
        return n >= minDigits;
    }
    // Digits after a '.': the first seven as ticks, the rest ignored.
    bool Fraction(int& ticks)
    {
        int n = 0;
        ticks = 0;
        while (!AtEnd() && m_s[m_pos] >= '0' && m_s[m_pos] <= '9') {
            if (n < 7) ticks = ticks * 10 + (m_s[m_pos] - '0');
            ++m_pos;
            ++n;
        }
        for (int i = n; i < 7; ++i) ticks *= 10;
        return n > 0;
    }
    size_t Position() const { return m_pos; }
    void Reset(size_t pos) { m_pos = pos; }

private:
    std::string_view m_s;
    size_t m_pos = 0;
};

// "hh:mm:ss[.f...]" with seconds required, or "hh:mm" when allowShort.
bool ScanTime(CScanner& s, bool allowShort, int& hour, int& minute, int& second, int& ticks)
{
    second = 0;
    ticks = 0;
    if (!s.Number(2, 2, hour) || !s.Accept(':') || !s.Number(2, 2, minute)) return false;
    if (!s.Accept(':')) return allowShort;
    if (!s.Number(2, 2, second)) return false;
    if (s.Accept('.') && !s.Fraction(ticks)) return false;
    return true;
}

} // namespace

CDateTime::CDateTime(const CString& text)
{
    Set(text);
}

CDateTime CDateTime::FromTicks(int64_t ticks)
{
    CDateTime t;
    t.m_ticks = ticks;
    return t;
}

CDateTime CDateTime::Now()
{
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    return FromTicks(kUnixEpochTicks + static_cast<int64_t>(ts.tv_sec) * kTicksPerSecond + ts.tv_nsec / 100);
}

bool CDateTime::IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int CDateTime::DaysInMonth(int year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    return month == 2 && IsLeapYear(year) ? 29 : days[month - 1];
}

bool CDateTime::GetDayInMonth(int& month, int& day, int year, int dayOfYear)
{
    if (dayOfYear < 1 || dayOfYear > (IsLeapYear(year) ? 366 : 365)) return false;
    int m = 1, d = dayOfYear;
    while (d > DaysInMonth(year, m)) d -= DaysInMonth(year, m++);
    month = m;
    day = d;
    return true;
}

bool CDateTime::SetYMDHMS(int year, int month, int day, int hour, int minute, int second, int ticks)
{
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) ||
        !TimeInRange(hour, minute, second) || ticks < 0 || ticks >= kTicksPerSecond)
        return false;
    m_ticks = TicksOf(year, month, day, hour, minute, second, ticks);
    return true;
}

bool CDateTime::SetYYDHMS(int year, int dayOfYear, int hour, int minute, int second, int millisecond,
                          int microsecond)
{
    if (year >= 0 && year <= 69) year += 2000;
    else if (year >= 70 && year <= 99) year += 1900;
    if (year < 100 || year > 9999 || millisecond < 0 || millisecond > 999 || microsecond < 0 || microsecond > 999)
        return false;
    int month, day;
    if (!GetDayInMonth(month, day, year, dayOfYear)) return false;
    return SetYMDHMS(year, month, day, hour, minute, second, millisecond * 10000 + microsecond * 10);
}

bool CDateTime::SetYDHMS(int dayOfYear, int hour, int minute, int second, int millisecond, int microsecond)
{
    int64_t reference = IsEmpty() ? Now().m_ticks : m_ticks;
    int year = static_cast<int>(Break(reference).year);
    bool found = false;
    CDateTime best;
    uint64_t bestDistance = 0;
    for (int y : {year, year - 1, year + 1}) {
        CDateTime candidate;
        if (!candidate.SetYYDHMS(y, dayOfYear, hour, minute, second, millisecond, microsecond)) continue;
        int64_t diff = candidate.m_ticks - reference;
        uint64_t distance = diff < 0 ? static_cast<uint64_t>(-diff) : static_cast<uint64_t>(diff);
        if (!found || distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
            found = true;
        }
    }
    if (!found) return false;
    m_ticks = best.m_ticks;
    return true;
}

int64_t CDateTime::GetTimestamp(int kind) const
{
    switch (kind) {
    case timestampTicks: return m_ticks;
    case timestampUnixSeconds: return FloorDiv(m_ticks - kUnixEpochTicks, kTicksPerSecond);
    default: return 0;
    }
}

bool CDateTime::SetTimestamp(int64_t value, int kind)
{
    switch (kind) {
    case timestampTicks: m_ticks = value; return true;
    case timestampUnixSeconds: {
        int64_t t;
        if (__builtin_mul_overflow(value, kTicksPerSecond, &t) || __builtin_add_overflow(t, kUnixEpochTicks, &t))
            return false;
        m_ticks = t;
        return true;
    }
    default: return false;
    }
}

SDateTime CDateTime::ToStruct() const
{
    SBroken b = Break(m_ticks);
    SDateTime s;
    s.year = static_cast<int32_t>(b.year);
    s.month = b.month;
    s.day = b.day;
    s.hour = b.hour;
    s.minute = b.minute;
    s.second = b.second;
    s.ticks = b.ticks;
    s.dayOfYear = b.dayOfYear;
    s.dayOfWeek = b.dayOfWeek;
    return s;
}

CString CDateTime::Format(const char* format) const
{
    if (!format) format = kDefaultFormat;
    SBroken b = Break(m_ticks);
    std::string out;
    for (const char* p = format; *p; ++p) {
        if (*p != '%') {
            out += *p;
            continue;
        }
        const char* spec = p + 1;
        switch (*spec) {
        case 'Y': AppendNumber(out, b.year, 4); break;
        case 'y': AppendNumber(out, ((b.year % 100) + 100) % 100, 2); break;
        case 'm': AppendNumber(out, b.month, 2); break;
        case 'd': AppendNumber(out, b.day, 2); break;
        case 'H': AppendNumber(out, b.hour, 2); break;
        case 'M': AppendNumber(out, b.minute, 2); break;
        case 'S': AppendNumber(out, b.second, 2); break;
        case 'j': AppendNumber(out, b.dayOfYear, 3); break;
        case 'f': AppendFraction(out, b.ticks, 7); break;
        case 'w': AppendNumber(out, b.dayOfWeek, 1); break;
        case 'a': out.append(kDayNames[b.dayOfWeek], 3); break;
        case 'A': out += kDayNames[b.dayOfWeek]; break;
        case 'b': out.append(kMonthNames[b.month - 1], 3); break;
        case 'B': out += kMonthNames[b.month - 1]; break;
        case 'F':
            AppendNumber(out, b.year, 4);
            out += '-';
            AppendNumber(out, b.month, 2);
            out += '-';
            AppendNumber(out, b.day, 2);
            break;
        case 'T':
            AppendNumber(out, b.hour, 2);
            out += ':';
            AppendNumber(out, b.minute, 2);
            out += ':';
            AppendNumber(out, b.second, 2);
            break;
        case '%': out += '%'; break;
        case '(':
            if (std::string_view(spec).substr(0, 6) == "(irig)") {
                AppendNumber(out, b.hour, 2);
                out += ':';
                AppendNumber(out, b.minute, 2);
                out += ':';
                AppendNumber(out, b.second, 2);
                out += '.';
                AppendFraction(out, b.ticks, 6);
                p += 6;
                continue;
            }
            out += '%';
            continue;
        default:
            if (*spec >= '1' && *spec <= '7' && spec[1] == 'f') {
                AppendFraction(out, b.ticks, *spec - '0');
                p += 2;
                continue;
            }
            // Unknown: the '%' stands for itself; the next character is
            // copied by the loop (also when it is the terminator).
            out += '%';
            continue;
        }
        ++p; // past the conversion character
    }
    return CString(out.data(), static_cast<int>(out.size()));
}

bool CDateTime::Set(const CString& text)
{
    std::string_view s = text.view();
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\n' || s.back() == '\r'))
        s.remove_suffix(1);
    CScanner sc(s);
    int a = 0, hour = 0, minute = 0, second = 0, ticks = 0;
    if (!sc.Number(1, 4, a)) return false;
    size_t firstLength = sc.Position();

    if (sc.Peek() == '-' && firstLength == 4) {
        // YYYY-MM-DD[(T| )hh:mm[:ss[.f]]][Z]
        int month = 0, day = 0;
        if (!sc.Accept('-') || !sc.Number(2, 2, month) || !sc.Accept('-') || !sc.Number(2, 2, day)) return false;
        if (sc.Accept('T') || sc.Accept('t') || sc.Accept(' ')) {
            if (!ScanTime(sc, true, hour, minute, second, ticks)) return false;
        }
        if (!sc.Accept('Z')) sc.Accept('z');
        if (!sc.AtEnd()) return false;
        return SetYMDHMS(a, month, day, hour, minute, second, ticks);
    }

    if (!sc.Accept(':')) return false;
    if (firstLength == 4) {
        // YYYY:DDD:hh:mm:ss[.f]
        int dayOfYear = 0;
        if (!sc.Number(1, 3, dayOfYear) || !sc.Accept(':')) return false;
        if (!ScanTime(sc, false, hour, minute, second, ticks) || !sc.AtEnd()) return false;
        int month, day;
        if (!GetDayInMonth(month, day, a, dayOfYear)) return false;
        return SetYMDHMS(a, month, day, hour, minute, second, ticks);
    }
    // DDD:hh:mm:ss[.f], the IRIG form: the year is chosen as SetYDHMS does.
    if (!ScanTime(sc, false, hour, minute, second, ticks) || !sc.AtEnd()) return false;
    CDateTime t = *this;
    if (!t.SetYDHMS(a, hour, minute, second, 0, 0)) return false;
    m_ticks = t.m_ticks + ticks;
    return true;
}

} // namespace orv
