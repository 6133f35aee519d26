#include "ktl/platform/ado/dbase/cell.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "ktl/platform/ado/dbase/layout.h"
#include "ktl/platform/ado/error.h"

namespace ktl::ado::dbase {

namespace {

constexpr int kMillisecondsPerDay = 86'400'000;
/// Of 31 December 9999 in days from day 0.
constexpr int kLastDay = 2'958'465;
constexpr int kFirstDay = -693'593;

constexpr std::array<long long, 19> kPowers = [] {
    std::array<long long, 19> powers{};
    long long power = 1;
    for (std::size_t i = 0; i < powers.size(); ++i, power *= i < powers.size() ? 10 : 1) powers[i] = power;
    return powers;
}();

bool BitOf(const Header &header, int bit, const char *record) {
    if (bit < 0 || header.nullField < 0) return false;
    const Field &field = header.fields[static_cast<std::size_t>(header.nullField)];
    const auto byte = static_cast<unsigned char>(record[field.offset + static_cast<std::size_t>(bit / 8)]);
    return (byte >> (bit % 8) & 1U) != 0;
}

void SetBit(const Header &header, int bit, bool on, char *record) {
    if (bit < 0 || header.nullField < 0) return;
    const Field &field = header.fields[static_cast<std::size_t>(header.nullField)];
    char &byte = record[field.offset + static_cast<std::size_t>(bit / 8)];
    const unsigned mask = 1U << (bit % 8);
    byte = static_cast<char>(on ? static_cast<unsigned char>(byte) | mask : static_cast<unsigned char>(byte) & ~mask);
}

std::string_view TrimmedEnd(const char *text, std::size_t size) {
    // Padding is skipped eight bytes at a time.
    constexpr std::uint64_t kBlanks = 0x2020202020202020U;
    while (size >= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + size - 8, 8);
        if (word != kBlanks) break;
        size -= 8;
    }
    while (size > 0 && (text[size - 1] == ' ' || text[size - 1] == '\0')) --size;
    return {text, size};
}

std::string_view Trimmed(const char *text, std::size_t size) {
    std::string_view result = TrimmedEnd(text, size);
    while (!result.empty() && (result.front() == ' ' || result.front() == '\0')) result.remove_prefix(1);
    return result;
}

/// Digits with at most one point and a sign; the common case of `DecodeNumber`.
bool DecodePlainNumber(std::string_view text, Value &value) {
    std::size_t i = text[0] == '-' ? 1 : 0;
    long long units = 0;
    int scale = -1;
    int digits = 0;
    for (; i < text.size(); ++i) {
        if (text[i] == '.' && scale < 0) {
            scale = 0;
            continue;
        }
        if (text[i] < '0' || text[i] > '9') return false;
        units = units * 10 + (text[i] - '0');
        ++digits;
        if (scale >= 0) ++scale;
    }
    if (digits == 0) return false;
    value.SetDecimal({text[0] == '-' ? -units : units, std::max(scale, 0)});
    return true;
}

void DecodeNumber(std::string_view text, Value &value) {
    if (text.size() <= 18 && DecodePlainNumber(text, value)) return;
    if (const auto decimal = DecimalFromText(text)) return value.SetDecimal(*decimal);
    double number = 0;
    const std::size_t plus = text[0] == '+' ? 1 : 0;
    const auto result = std::from_chars(text.data() + plus, text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(number)) {
        return value.SetNull();
    }
    value.SetDouble(number);
}

void DecodeDate(std::string_view text, Value &value) {
    CivilTime time{};
    const auto number = [&](std::size_t at, std::size_t size, int &part) {
        const char *end = text.data() + at + size;
        return std::from_chars(text.data() + at, end, part).ptr == end;
    };
    time.hour = time.minute = time.second = 0;
    if (text.size() != 8 || !number(0, 4, time.year) || !number(4, 2, time.month) || !number(6, 2, time.day)) {
        return value.SetNull();
    }
    const auto date = FromCivil(time);
    if (!date) return value.SetNull();
    value.SetDateTime(*date);
}

void DecodeTimestamp(const char *bytes, Value &value) {
    const auto julian = static_cast<std::int32_t>(LoadLittle32(bytes));
    const auto milliseconds = static_cast<std::int32_t>(LoadLittle32(bytes + 4));
    const long long day = static_cast<long long>(julian) - kJulianDayOfZero;
    const bool good = day >= kFirstDay && day <= kLastDay && milliseconds >= 0 && milliseconds < kMillisecondsPerDay;
    if (julian == 0 || !good) return value.SetNull();
    // Writers store times up to a millisecond short.
    DateTime time{static_cast<int>(day), (milliseconds + 500) / 1000 * 1000};
    if (time.milliseconds == kMillisecondsPerDay) time = {time.day + 1, 0};
    value.SetDateTime(time);
}

void DecodeLogical(char mark, Value &value) {
    if (std::strchr("TtYy", mark) != nullptr && mark != '\0') return value.SetBool(true);
    if (std::strchr("FfNn", mark) != nullptr && mark != '\0') return value.SetBool(false);
    value.SetNull();
}

double LoadDouble(const char *bytes) {
    const std::uint64_t bits = LoadLittle64(bytes);
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// What a blank cell reads as where nulls have marks of their own.
void SetEmptyValue(const Field &field, Value &value) {
    switch (field.type) {
        case 'L':
            return value.SetBool(false);
        case 'D':
        case 'T':
            return value.SetDateTime(kEmptyDate);
        case 'N':
        case 'F':
            return value.SetDecimal({});
        default:
            return;
    }
}

/// The number with exactly `decimals` digits behind the point.
std::string Fixed(const Value &value, int decimals) {
    if (value.GetKind() == Value::Kind::Integer || value.GetKind() == Value::Kind::Bool) {
        return DecimalToFixed({value.Integer(), 0}, decimals);
    }
    if (value.GetKind() == Value::Kind::Decimal) return DecimalToFixed(value.AsDecimal(), decimals);
    std::array<char, 400> buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value.Double(), std::chars_format::fixed, decimals);
    return {buffer.data(), result.ptr};
}

/// The most exact exponent form that fits, or an empty text.
std::string Scientific(double number, std::size_t width) {
    for (int digits = 14; digits >= 0; --digits) {
        std::array<char, 64> buffer;
        const auto result =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific, digits);
        const auto size = static_cast<std::size_t>(result.ptr - buffer.data());
        if (size <= width) return {buffer.data(), size};
    }
    return {};
}

/// First with the column's decimals, then with fewer, then with an exponent.
std::string FittingNumber(const Value &value, int decimals, std::size_t width) {
    std::string text = Fixed(value, decimals);
    while (text.size() > width && decimals > 0) {
        // As many decimals as the whole part leaves room for; rounding may lengthen it once more.
        const std::size_t whole = std::min(text.find('.'), text.size());
        const auto room = static_cast<int>(width) - static_cast<int>(whole) - 1;
        decimals = std::clamp(room, 0, decimals - 1);
        text = Fixed(value, decimals);
    }
    return text.size() <= width ? text : Scientific(value.ToDouble(), width);
}

/// Right-aligned digits without any intermediate text; false when this is not the simple case.
bool EncodePlainNumber(const Field &field, const Value &value, char *cell) {
    if (value.GetKind() != Value::Kind::Integer && value.GetKind() != Value::Kind::Decimal) return false;
    const Decimal decimal = value.GetKind() == Value::Kind::Integer ? Decimal{value.Integer(), 0} : value.AsDecimal();
    const int missing = field.decimals - decimal.scale;
    const Int128 size = decimal.units < 0 ? -decimal.units : decimal.units;
    if (missing < 0 || missing > 17 || size >= kPowers[static_cast<std::size_t>(18 - missing)]) return false;
    auto digits = static_cast<unsigned long long>(size) *
                  static_cast<unsigned long long>(kPowers[static_cast<std::size_t>(missing)]);
    std::array<char, 24> buffer;
    std::size_t at = buffer.size();
    int count = 0;
    const int least = field.decimals > 0 ? field.decimals + 1 : 1;
    for (; digits > 0 || count < least; digits /= 10, ++count) {
        if (count == field.decimals && count > 0) buffer[--at] = '.';
        buffer[--at] = static_cast<char>('0' + digits % 10);
        if (at < 3) return false;
    }
    if (decimal.units < 0) buffer[--at] = '-';
    const std::size_t length = buffer.size() - at;
    if (length > field.width) return false;
    std::memset(cell, ' ', field.width - length);
    std::memcpy(cell + field.width - length, buffer.data() + at, length);
    return true;
}

[[noreturn]] void ThrowOverflow(const Field &field) {
    throw Error("Numeric overflow: a number is too large for column \"" + field.name + "\".",
                error_number::kNumericOverflow);
}

void EncodeNumber(const Field &field, const Value &value, bool lossy, char *cell) {
    if (EncodePlainNumber(field, value, cell)) return;
    std::string text = std::isfinite(value.ToDouble()) ? FittingNumber(value, field.decimals, field.width) : "";
    if (text.empty() && !lossy) ThrowOverflow(field);
    if (text.empty()) text.assign(field.width, '*');
    std::memset(cell, ' ', field.width);
    text.copy(cell + field.width - text.size(), text.size());
}

void EncodeInteger(const Field &field, const Value &value, bool lossy, char *cell) {
    const double rounded = std::round(value.ToDouble());
    const auto exact = value.ToInteger();
    const bool fits =
        rounded >= std::numeric_limits<std::int32_t>::min() && rounded <= std::numeric_limits<std::int32_t>::max();
    if (!fits && !lossy) ThrowOverflow(field);
    const long long number = !fits ? 0 : exact ? *exact : static_cast<long long>(rounded);
    StoreLittle32(cell, static_cast<std::uint32_t>(static_cast<std::int32_t>(number)));
}

void EncodeCurrency(const Field &field, const Value &value, bool lossy, char *cell) {
    const auto exact = DecimalFromText(Fixed(value, 4));
    const bool fits = exact && exact->units >= std::numeric_limits<std::int64_t>::min() &&
                      exact->units <= std::numeric_limits<std::int64_t>::max();
    if (!fits && !lossy) ThrowOverflow(field);
    StoreLittle64(cell, static_cast<std::uint64_t>(fits ? static_cast<std::int64_t>(exact->units) : 0));
}

void StoreDouble(double number, char *cell) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    StoreLittle64(cell, bits);
}

void EncodeTimestamp(DateTime time, char *cell) {
    const bool empty = time == kEmptyDate;
    StoreLittle32(cell, empty ? 0 : static_cast<std::uint32_t>(time.day + kJulianDayOfZero));
    StoreLittle32(cell + 4, empty ? 0 : static_cast<std::uint32_t>(time.milliseconds));
}

void EncodeDate(DateTime time, char *cell) {
    if (time == kEmptyDate) {
        std::memset(cell, ' ', 8);
        return;
    }
    const CivilTime civil = ToCivil({time.day, 0});
    const int digits = civil.year * 10'000 + civil.month * 100 + civil.day;
    for (int i = 7, rest = digits; i >= 0; --i, rest /= 10) cell[i] = static_cast<char>('0' + rest % 10);
}

}  // namespace

std::string_view FieldText(const Header &header, const Field &field, const char *record) {
    const char *cell = record + field.offset;
    if (field.type != 'V' && field.type != 'Q') return TrimmedEnd(cell, field.width);
    if (!BitOf(header, field.lengthBit, record)) return {cell, field.width};
    const std::size_t length = field.width == 0 ? 0 : static_cast<unsigned char>(cell[field.width - 1]);
    return {cell, std::min<std::size_t>(length, field.width)};
}

void DecodeCell(const Header &header, const Field &field, const char *record, Value &value) {
    const char *cell = record + field.offset;
    value.SetNull();
    switch (field.type) {
        case 'I':
        case '+':
            if (field.width == 4) value.SetInteger(static_cast<std::int32_t>(LoadLittle32(cell)));
            return;
        case 'N':
        case 'F': {
            const std::string_view text = Trimmed(cell, field.width);
            if (!text.empty()) DecodeNumber(text, value);
            if (text.empty() && header.nullField >= 0) SetEmptyValue(field, value);
            return;
        }
        case 'B':
            if (field.width == 8) value.SetDouble(LoadDouble(cell));
            return;
        case 'Y':
            if (field.width == 8) value.SetDecimal({static_cast<std::int64_t>(LoadLittle64(cell)), 4});
            return;
        case 'L':
            if (field.width == 1) DecodeLogical(*cell, value);
            break;
        case 'D':
            if (field.width == 8) DecodeDate({cell, 8}, value);
            break;
        case 'T':
            if (field.width == 8) DecodeTimestamp(cell, value);
            break;
        default:
            value.SetBytes({cell, field.width});
            return;
    }
    if (value.IsNull() && header.nullField >= 0) SetEmptyValue(field, value);
}

std::uint32_t MemoPointer(const Field &field, const char *record) {
    const char *cell = record + field.offset;
    if (field.width == 4) return LoadLittle32(cell);
    const std::string_view text = Trimmed(cell, field.width);
    std::uint32_t block = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), block);
    return result.ec == std::errc() ? block : 0;
}

void SetMemoPointer(const Field &field, std::uint32_t block, char *record) {
    char *cell = record + field.offset;
    if (field.width == 4) return StoreLittle32(cell, block);
    const std::string text = block == 0 ? "" : std::to_string(block);
    std::memset(cell, ' ', field.width);
    if (text.size() > field.width) throw Error("The memo file is full.", error_number::kMemoFile);
    text.copy(cell + field.width - text.size(), text.size());
}

bool IsMarkedNull(const Header &header, const Field &field, const char *record) {
    return BitOf(header, field.nullBit, record);
}

void MarkNull(const Header &header, const Field &field, bool null, char *record) {
    SetBit(header, field.nullBit, null, record);
}

void BlankCell(const Field &field, char *record) {
    const bool binary = std::strchr("IBYTVQ0+", field.type) != nullptr && !(field.type == 'B' && field.width == 10);
    const bool pointer = field.IsMemo() && field.width == 4;
    std::memset(record + field.offset, binary || pointer ? 0 : ' ', field.width);
}

void EncodeText(const Header &header, const Field &field, std::string_view text, char *record) {
    char *cell = record + field.offset;
    const std::size_t size = std::min<std::size_t>(text.size(), field.width);
    const bool counted = field.type == 'V' || field.type == 'Q';
    std::memcpy(cell, text.data(), size);
    std::memset(cell + size, counted ? 0 : ' ', field.width - size);
    if (!counted) return;
    const bool shorter = size < field.width;
    if (shorter) cell[field.width - 1] = static_cast<char>(size);
    SetBit(header, field.lengthBit, shorter, record);
}

void EncodeCell(const Field &field, const Value &value, bool lossy, char *record) {
    char *cell = record + field.offset;
    switch (field.type) {
        case 'I':
        case '+':
            if (field.width == 4) return EncodeInteger(field, value, lossy, cell);
            break;
        case 'N':
        case 'F':
            return EncodeNumber(field, value, lossy, cell);
        case 'B':
            if (field.width == 8) return StoreDouble(value.ToDouble(), cell);
            break;
        case 'Y':
            if (field.width == 8) return EncodeCurrency(field, value, lossy, cell);
            break;
        case 'L':
            if (field.width == 1) {
                *cell = value.ToDouble() != 0 ? 'T' : 'F';
                return;
            }
            break;
        case 'D':
            if (field.width == 8) return EncodeDate(value.Time(), cell);
            break;
        case 'T':
            if (field.width == 8) return EncodeTimestamp(value.Time(), cell);
            break;
        default:
            break;
    }
    throw Error("Column \"" + field.name + "\" is of a kind that cannot be written.", error_number::kUnsupported);
}

}  // namespace ktl::ado::dbase
