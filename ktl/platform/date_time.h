#pragma once

#include <compare>
#include <ctime>

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// A length of time in seconds, negative too.
class KTL_API CTimeSpan {
  public:
    constexpr CTimeSpan() = default;
    constexpr explicit CTimeSpan(LONGLONG seconds) : m_seconds(seconds) {}
    constexpr CTimeSpan(LONG days, int hours, int minutes, int seconds)
        : m_seconds(seconds + 60LL * (minutes + 60LL * (hours + 24LL * days))) {}

    constexpr LONGLONG GetDays() const { return m_seconds / 86400; }
    constexpr LONGLONG GetTotalHours() const { return m_seconds / 3600; }
    /// -23 to 23.
    constexpr LONG GetHours() const { return static_cast<LONG>(GetTotalHours() - GetDays() * 24); }
    constexpr LONGLONG GetTotalMinutes() const { return m_seconds / 60; }
    /// -59 to 59.
    constexpr LONG GetMinutes() const { return static_cast<LONG>(GetTotalMinutes() - GetTotalHours() * 60); }
    constexpr LONGLONG GetTotalSeconds() const { return m_seconds; }
    /// -59 to 59.
    constexpr LONG GetSeconds() const { return static_cast<LONG>(m_seconds - GetTotalMinutes() * 60); }
    constexpr LONGLONG GetTimeSpan() const { return m_seconds; }
    /// %D days, %H %M %S two digits each, %%.
    CString Format(const char *format) const;

    friend constexpr auto operator<=>(CTimeSpan, CTimeSpan) = default;
    friend constexpr CTimeSpan operator+(CTimeSpan a, CTimeSpan b) { return CTimeSpan(a.m_seconds + b.m_seconds); }
    friend constexpr CTimeSpan operator-(CTimeSpan a, CTimeSpan b) { return CTimeSpan(a.m_seconds - b.m_seconds); }

  private:
    LONGLONG m_seconds = 0;
};

/// A moment: seconds since 1970 UTC, 0 by default. The six numbers and the getters are local time.
class KTL_API CTime {
  public:
    constexpr CTime() = default;
    constexpr explicit CTime(LONGLONG seconds) : m_seconds(seconds) {}
    /// Month and day count from 1; the years are 1970 to 3000. `isDaylight` below 0 lets the zone's rules decide.
    /// Throws CInvalidArgException for what has no place in that range.
    CTime(int year, int month, int day, int hour, int minute, int second, int isDaylight = -1);

    /// Now, by the clock in use.
    static CTime GetCurrentTime();

    constexpr LONGLONG GetTime() const { return m_seconds; }
    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    /// 1 is Sunday.
    int GetDayOfWeek() const;
    std::tm GetLocalTm() const;
    std::tm GetGmtTm() const;

    /// strftime's codes, always with English names; '#' drops leading zeros. Throws CInvalidArgException for a year
    /// outside 1970 to 3000.
    CString Format(const char *format) const;
    CString FormatGmt(const char *format) const;

    friend constexpr auto operator<=>(CTime, CTime) = default;
    friend constexpr CTimeSpan operator-(CTime a, CTime b) { return CTimeSpan(a.m_seconds - b.m_seconds); }
    friend constexpr CTime operator+(CTime a, CTimeSpan b) { return CTime(a.m_seconds + b.GetTotalSeconds()); }
    friend constexpr CTime operator-(CTime a, CTimeSpan b) { return CTime(a.m_seconds - b.GetTotalSeconds()); }

  private:
    LONGLONG m_seconds = 0;
};

namespace ktl {

/// Gives the seconds since 1970 UTC; called from any thread.
using Clock = LONGLONG (*)();
/// Puts another clock in use (null for the machine's) and returns the one before (null for the machine's).
KTL_API Clock SetClock(Clock clock);
/// Seconds since 1970 UTC by the clock in use.
KTL_API LONGLONG Now();
/// Seconds since 1970 for six numbers in UTC; -1 when they are no date.
KTL_API LONGLONG SecondsFromGmt(int year, int month, int day, int hour, int minute, int second);

}  // namespace ktl
