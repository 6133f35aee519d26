#include "ktl/platform/ado/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "ktl/platform/ado/error.h"

namespace ktl::ado {

namespace {

constexpr int kMaxDigits = 38;
/// Days from 1 March of year 0 (proleptic Gregorian) to 30 December 1899.
constexpr int kZeroDay = 693'899;

constexpr Int128 PowerOfTen(int exponent) {
    Int128 power = 1;
    for (int i = 0; i < exponent; ++i) power *= 10;
    return power;
}

/// The digits of a non-negative number, without leading zeros (zero is "0").
std::string Digits(Int128 units) {
    if (units <= std::numeric_limits<long long>::max()) return std::to_string(static_cast<long long>(units));
    std::string digits;
    for (; units > 0; units /= 10) digits.push_back(static_cast<char>('0' + static_cast<int>(units % 10)));
    std::reverse(digits.begin(), digits.end());
    return digits;
}

/// Sign, digits and point of a number with `scale` digits behind the point.
std::string PointedDigits(Int128 units, int scale) {
    const bool negative = units < 0;
    std::string text = Digits(negative ? -units : units);
    if (scale > 0) {
        if (static_cast<int>(text.size()) <= scale)
            text.insert(0, static_cast<std::size_t>(scale) + 1 - text.size(), '0');
        text.insert(text.size() - static_cast<std::size_t>(scale), 1, '.');
    }
    if (negative) text.insert(0, 1, '-');
    return text;
}

/// Division by a positive power of ten with halves away from zero.
Int128 DivideRounded(Int128 units, int digits) {
    if (digits > kMaxDigits) return 0;
    const Int128 power = PowerOfTen(digits);
    const Int128 quotient = units / power;
    const Int128 rest = units % power;
    const Int128 size = rest < 0 ? -rest : rest;
    if (size < power - size) return quotient;
    return quotient + (units < 0 ? -1 : 1);
}

std::string DateText(const CivilTime &time) {
    return std::to_string(time.year) + '/' + std::to_string(time.month) + '/' + std::to_string(time.day);
}

std::string TimeText(const CivilTime &time) {
    std::string text = std::to_string(time.hour);
    for (const int part : {time.minute, time.second}) {
        text += part < 10 ? ":0" : ":";
        text += std::to_string(part);
    }
    return text;
}

std::string DateTimeToText(DateTime time) {
    const CivilTime civil = ToCivil(time);
    const bool hasTime = civil.hour != 0 || civil.minute != 0 || civil.second != 0;
    const bool hasDate = civil.year != 1899 || civil.month != 12 || civil.day != 30;
    if (!hasDate) return TimeText(civil);
    return hasTime ? DateText(civil) + ' ' + TimeText(civil) : DateText(civil);
}

}  // namespace

std::optional<Decimal> DecimalFromText(std::string_view text) {
    Decimal result;
    std::size_t i = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) ++i;
    int digits = 0;
    int significant = 0;
    bool point = false;
    std::uint64_t low = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.' && !point) {
            point = true;
            continue;
        }
        if (c < '0' || c > '9') return std::nullopt;
        ++digits;
        if (significant > 0 || c != '0') ++significant;
        if (significant > kMaxDigits || (point && result.scale >= kMaxDigits)) return std::nullopt;
        if (point) ++result.scale;
        // Eighteen digits fit the machine's own word; only longer numbers take the wide road.
        if (significant <= 18) {
            low = low * 10 + static_cast<unsigned>(c - '0');
            result.units = static_cast<Int128>(low);
        } else {
            result.units = result.units * 10 + (c - '0');
        }
    }
    if (digits == 0) return std::nullopt;
    if (negative) result.units = -result.units;
    return result;
}

std::string DecimalToText(const Decimal &value) {
    Int128 units = value.units;
    int scale = value.scale;
    while (scale > 0 && units % 10 == 0) units /= 10, --scale;
    return PointedDigits(units, scale);
}

std::string DecimalToFixed(const Decimal &value, int decimals) {
    if (decimals < value.scale) return PointedDigits(DivideRounded(value.units, value.scale - decimals), decimals);
    std::string text = PointedDigits(value.units, value.scale);
    if (decimals > value.scale) {
        if (value.scale == 0) text += '.';
        text.append(static_cast<std::size_t>(decimals - value.scale), '0');
    }
    return text;
}

double DecimalToDouble(const Decimal &value) {
    const std::string text = PointedDigits(value.units, value.scale);
    double result = 0;
    std::from_chars(text.data(), text.data() + text.size(), result);
    return result;
}

CivilTime ToCivil(DateTime time) {
    int seconds = (time.milliseconds + 500) / 1000;
    // Days are counted from 1 March, so that the leap day is the last of its year.
    long long day = static_cast<long long>(time.day) + kZeroDay;
    if (seconds >= 86'400) seconds -= 86'400, ++day;
    const long long era = (day >= 0 ? day : day - 146'096) / 146'097;
    const auto dayOfEra = static_cast<int>(day - era * 146'097);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shifted = (5 * dayOfYear + 2) / 153;
    CivilTime civil;
    civil.day = dayOfYear - (153 * shifted + 2) / 5 + 1;
    civil.month = shifted < 10 ? shifted + 3 : shifted - 9;
    civil.year = static_cast<int>(era * 400) + yearOfEra + (civil.month <= 2 ? 1 : 0);
    civil.hour = seconds / 3600;
    civil.minute = seconds / 60 % 60;
    civil.second = seconds % 60;
    return civil;
}

std::optional<DateTime> FromCivil(const CivilTime &time) {
    static constexpr std::array<int, 12> kDays = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (time.year % 4 == 0 && time.year % 100 != 0) || time.year % 400 == 0;
    if (time.year < 1 || time.year > 9999 || time.month < 1 || time.month > 12 || time.day < 1) return std::nullopt;
    if (time.day > kDays[static_cast<std::size_t>(time.month - 1)] || (time.month == 2 && time.day == 29 && !leap)) {
        return std::nullopt;
    }
    if (time.hour < 0 || time.hour > 23 || time.minute < 0 || time.minute > 59) return std::nullopt;
    if (time.second < 0 || time.second > 59) return std::nullopt;
    const int year = time.month <= 2 ? time.year - 1 : time.year;
    const int era = year / 400;
    const int yearOfEra = year - era * 400;
    const int dayOfYear = (153 * (time.month > 2 ? time.month - 3 : time.month + 9) + 2) / 5 + time.day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    DateTime result;
    result.day = era * 146'097 + dayOfEra - kZeroDay;
    result.milliseconds = ((time.hour * 60 + time.minute) * 60 + time.second) * 1000;
    return result;
}

std::string DoubleToText(double value) {
    if (std::isnan(value)) return std::signbit(value) ? "-1.#IND" : "1.#QNAN";
    if (std::isinf(value)) return value < 0 ? "-1.#INF" : "1.#INF";
    if (value == 0) return "0";
    std::array<char, 40> buffer;
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(value), std::chars_format::scientific, 14)
            .ptr;
    const std::string_view all(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
    const std::size_t mark = all.find('e');
    std::string digits(1, all[0]);
    digits += all.substr(2, mark - 2);
    int exponent = 0;
    std::from_chars(all.data() + mark + (all[mark + 1] == '+' ? 2 : 1), end, exponent);
    digits.erase(digits.find_last_not_of('0') + 1);

    const int count = static_cast<int>(digits.size());
    const int decimals = std::max(0, count - 1 - exponent);
    std::string text;
    if (exponent > 14 || decimals > 15) {
        text = digits.substr(0, 1) + (count > 1 ? "." + digits.substr(1) : "") + (exponent < 0 ? "E-" : "E+");
        const std::string power = std::to_string(std::abs(exponent));
        text += (power.size() < 2 ? "0" : "") + power;
    } else if (exponent < 0) {
        text = "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    } else {
        if (count <= exponent) digits.append(static_cast<std::size_t>(exponent + 1 - count), '0');
        text = digits.substr(0, static_cast<std::size_t>(exponent) + 1);
        if (decimals > 0) text += "." + digits.substr(static_cast<std::size_t>(exponent) + 1);
    }
    return value < 0 ? "-" + text : text;
}

Value Value::FromInteger(long long value) {
    Value result;
    result.SetInteger(value);
    return result;
}

Value Value::FromDouble(double value) {
    Value result;
    result.SetDouble(value);
    return result;
}

Value Value::FromDecimal(const ktl::ado::Decimal &value) {
    Value result;
    result.SetDecimal(value);
    return result;
}

Value Value::FromBool(bool value) {
    Value result;
    result.SetBool(value);
    return result;
}

Value Value::FromDateTime(ktl::ado::DateTime value) {
    Value result;
    result.SetDateTime(value);
    return result;
}

Value Value::FromText(std::string_view gbk) {
    Value result;
    result.SetText(gbk);
    return result;
}

Value Value::FromBytes(std::string_view bytes) {
    Value result;
    result.SetBytes(bytes);
    return result;
}

double Value::ToDouble() const {
    switch (m_kind) {
        case Kind::Integer:
        case Kind::Bool:
            return static_cast<double>(m_integer);
        case Kind::Double:
            return m_double;
        case Kind::Decimal:
            return DecimalToDouble(AsDecimal());
        default:
            return 0;
    }
}

std::optional<long long> Value::ToInteger() const {
    constexpr double kLimit = 9223372036854775808.0;
    switch (m_kind) {
        case Kind::Integer:
        case Kind::Bool:
            return m_integer;
        case Kind::Double:
            if (m_double != std::floor(m_double) || !(m_double >= -kLimit && m_double < kLimit)) return std::nullopt;
            return static_cast<long long>(m_double);
        case Kind::Decimal: {
            const Int128 power = PowerOfTen(m_scale);
            const Int128 whole = m_units / power;
            if (whole * power != m_units || whole != static_cast<long long>(whole)) return std::nullopt;
            return static_cast<long long>(whole);
        }
        default:
            return std::nullopt;
    }
}

CString Value::ToText() const {
    switch (m_kind) {
        case Kind::Integer:
            return std::to_string(m_integer);
        case Kind::Double:
            return DoubleToText(m_double);
        case Kind::Decimal:
            return DecimalToText(AsDecimal());
        case Kind::Bool:
            return Bool() ? "-1" : "0";
        case Kind::DateTime:
            return DateTimeToText(m_time);
        case Kind::Text:
            return CString(std::string_view(m_text));
        case Kind::Null:
        case Kind::Bytes:
            break;
    }
    throw Error("Type mismatch: a null or a byte block has no text.", error_number::kTypeMismatch);
}

}  // namespace ktl::ado
