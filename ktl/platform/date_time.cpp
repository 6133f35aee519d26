#include "ktl/platform/date_time.h"

#include <locale.h>
#include <time.h>

#include <atomic>
#include <chrono>

#include "ktl/platform/exception.h"

namespace {

constexpr int kFirstYear = 1970;
constexpr int kLastYear = 3000;

std::atomic<ktl::Clock> g_clock{nullptr};

LONGLONG MachineNow() {
    using std::chrono::seconds;
    using std::chrono::system_clock;
    return std::chrono::duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

std::tm TmOf(int year, int month, int day, int hour, int minute, int second, int isDaylight) {
    std::tm parts = {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = isDaylight;
    return parts;
}

// Drops the leading zeros of a number.
std::string WithoutLeadingZeros(const std::string &text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return text;
    const std::size_t first = text.find_first_not_of('0');
    return first == std::string::npos ? "0" : text.substr(first);
}

std::string FormatCode(char code, const std::tm &parts) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const char format[] = {'%', code, '\0'};
    char buffer[128];
    return std::string(buffer, strftime_l(buffer, sizeof buffer, format, &parts, cLocale));
}

CString FormatParts(const char *format, const std::tm &parts) {
    const int year = parts.tm_year + 1900;
    if (year < kFirstYear || year > kLastYear) throw CInvalidArgException();
    std::string text;
    for (const char *at = format ? format : ""; *at != '\0'; ++at) {
        if (*at != '%') {
            text += *at;
            continue;
        }
        const bool isShort = at[1] == '#';
        at += isShort ? 2 : 1;
        if (*at == '\0') break;
        const std::string piece = FormatCode(*at, parts);
        text += isShort ? WithoutLeadingZeros(piece) : piece;
    }
    return CString(std::move(text));
}

std::string TwoDigits(LONG value) {
    const LONG magnitude = value < 0 ? -value : value;
    return (value < 0 ? "-" : "") + std::string(magnitude < 10 ? "0" : "") + std::to_string(magnitude);
}

}  // namespace

CString CTimeSpan::Format(const char *format) const {
    std::string text;
    for (const char *at = format ? format : ""; *at != '\0'; ++at) {
        if (*at != '%' || at[1] == '\0') {
            text += *at;
            continue;
        }
        switch (*++at) {
            case 'D':
                text += std::to_string(GetDays());
                break;
            case 'H':
                text += TwoDigits(GetHours());
                break;
            case 'M':
                text += TwoDigits(GetMinutes());
                break;
            case 'S':
                text += TwoDigits(GetSeconds());
                break;
            default:
                text += *at;
        }
    }
    return CString(std::move(text));
}

CTime::CTime(int year, int month, int day, int hour, int minute, int second, int isDaylight) {
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31) {
        throw CInvalidArgException();
    }
    std::tm parts = TmOf(year, month, day, hour, minute, second, isDaylight);
    m_seconds = std::mktime(&parts);
    if (m_seconds < 0) throw CInvalidArgException();
}

CTime CTime::GetCurrentTime() {
    return CTime(ktl::Now());
}

std::tm CTime::GetLocalTm() const {
    const time_t seconds = m_seconds;
    std::tm parts = {};
    localtime_r(&seconds, &parts);
    return parts;
}

std::tm CTime::GetGmtTm() const {
    const time_t seconds = m_seconds;
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    return parts;
}

int CTime::GetYear() const {
    return GetLocalTm().tm_year + 1900;
}

int CTime::GetMonth() const {
    return GetLocalTm().tm_mon + 1;
}

int CTime::GetDay() const {
    return GetLocalTm().tm_mday;
}

int CTime::GetHour() const {
    return GetLocalTm().tm_hour;
}

int CTime::GetMinute() const {
    return GetLocalTm().tm_min;
}

int CTime::GetSecond() const {
    return GetLocalTm().tm_sec;
}

int CTime::GetDayOfWeek() const {
    return GetLocalTm().tm_wday + 1;
}

CString CTime::Format(const char *format) const {
    return FormatParts(format, GetLocalTm());
}

CString CTime::FormatGmt(const char *format) const {
    return FormatParts(format, GetGmtTm());
}

namespace ktl {

Clock SetClock(Clock clock) {
    return g_clock.exchange(clock);
}

LONGLONG Now() {
    const Clock clock = g_clock.load();
    return clock ? clock() : MachineNow();
}

LONGLONG SecondsFromGmt(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts = TmOf(year, month, day, hour, minute, second, 0);
    const std::tm given = parts;
    const time_t seconds = timegm(&parts);
    const bool isDate = parts.tm_mday == given.tm_mday && parts.tm_mon == given.tm_mon &&
                        parts.tm_hour == given.tm_hour && parts.tm_min == given.tm_min && parts.tm_sec == given.tm_sec;
    return isDate ? seconds : -1;
}

}  // namespace ktl
