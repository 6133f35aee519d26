#include "tests/support/tds_server/sql_type.h"

#include <strings.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "ktl/platform/encoding.h"

namespace ktl::test::tds {
namespace {

__extension__ using Int128 = __int128;

constexpr TypeFacts kTypes[] = {
    {"bit", 0x68, Form::Integer, 1},          {"tinyint", 0x26, Form::Integer, 1},
    {"smallint", 0x26, Form::Integer, 2},     {"int", 0x26, Form::Integer, 4},
    {"bigint", 0x26, Form::Integer, 8},       {"real", 0x6D, Form::Float, 4},
    {"float", 0x6D, Form::Float, 8},          {"smallmoney", 0x6E, Form::Money, 4},
    {"money", 0x6E, Form::Money, 8},          {"datetime", 0x6F, Form::DateTime, 8},
    {"numeric", 0x6C, Form::Decimal, 0},      {"decimal", 0x6A, Form::Decimal, 0},
    {"nvarchar", 0xE7, Form::Text, 2, true},  {"nchar", 0xEF, Form::Text, 2, true, true},
    {"varchar", 0xA7, Form::Text, 1},         {"char", 0xAF, Form::Text, 1, false, true},
    {"varbinary", 0xA5, Form::Bytes, 1},      {"binary", 0xAD, Form::Bytes, 1, false, true},
    {"ntext", 0x63, Form::LongText, 2, true}, {"text", 0x23, Form::LongText, 1},
    {"image", 0x22, Form::LongBytes, 1},
};

/// Types of parameters that no column here has: the fixed-length numbers, and the dates of newer servers.
struct FixedType {
    std::uint8_t token;
    Form form;
    int size;
};
constexpr FixedType kFixedTypes[] = {{0x30, Form::Integer, 1}, {0x32, Form::Integer, 1}, {0x34, Form::Integer, 2},
                                     {0x38, Form::Integer, 4}, {0x7F, Form::Integer, 8}, {0x3B, Form::Float, 4},
                                     {0x3E, Form::Float, 8},   {0x3C, Form::Money, 8},   {0x7A, Form::Money, 4},
                                     {0x3D, Form::DateTime, 8}};
constexpr std::uint8_t kDate = 0x28;
constexpr std::uint8_t kDateTime2 = 0x2A;

/// Chinese, without regard to case: code page 936 for one-byte text.
constexpr std::string_view kCollation("\x04\x08\xD0\x00\x00", 5);
constexpr std::uint16_t kPartlyLengthPrefixed = 0xFFFF;
constexpr std::uint64_t kPartsNull = ~0ull;
constexpr long long kDayMilliseconds = 86'400'000;

const TypeFacts *FindType(std::string_view name) {
    for (const TypeFacts &facts : kTypes) {
        if (name.size() == std::string_view(facts.name).size() &&
            strncasecmp(name.data(), facts.name, name.size()) == 0) {
            return &facts;
        }
    }
    return nullptr;
}

/// Days since 1 January 1900 in the Gregorian calendar.
long long DaysFromCivil(long long year, unsigned month, unsigned day) {
    year -= month <= 2;
    const long long era = (year >= 0 ? year : year - 399) / 400;
    const long long yearOfEra = year - era * 400;
    const long long dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 693901;
}

std::string DateTimeText(long long milliseconds) {
    long long days = milliseconds / kDayMilliseconds;
    long long rest = milliseconds % kDayMilliseconds;
    if (rest < 0) rest += kDayMilliseconds, --days;
    long long year = 1900 + days / 366 - (days < 0);
    while (DaysFromCivil(year + 1, 1, 1) <= days) ++year;
    unsigned month = 1;
    while (month < 12 && DaysFromCivil(year, month + 1, 1) <= days) ++month;
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02u-%02lld %02lld:%02lld:%02lld.%03lld", year, month,
                  days - DaysFromCivil(year, month, 1) + 1, rest / 3600000, rest / 60000 % 60, rest / 1000 % 60,
                  rest % 1000);
    return text;
}

std::string TextOf(const Cell &value) {
    if (const auto *text = std::get_if<std::string>(&value)) return *text;
    if (const auto *blob = std::get_if<Blob>(&value)) return blob->bytes;
    if (const auto *integer = std::get_if<long long>(&value)) return std::to_string(*integer);
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", std::get<double>(value));
    return text;
}
double NumberOf(const Cell &value) {
    if (const auto *integer = std::get_if<long long>(&value)) return static_cast<double>(*integer);
    if (const auto *real = std::get_if<double>(&value)) return *real;
    return std::strtod(TextOf(value).c_str(), nullptr);
}
long long IntegerOf(const Cell &value) {
    if (const auto *integer = std::get_if<long long>(&value)) return *integer;
    return std::llround(NumberOf(value));
}

/// The value times ten to the power `scale`, from its fifteen significant digits.
Int128 DecimalUnits(const Cell &value, int scale) {
    Int128 units = 0;
    int exponent = scale;
    if (const auto *integer = std::get_if<long long>(&value)) {
        units = *integer;
    } else {
        char text[40];
        std::snprintf(text, sizeof text, "%.14e", NumberOf(value));
        const char *digit = text + (text[0] == '-');
        for (; *digit != 'e'; ++digit) {
            if (*digit != '.') units = units * 10 + (*digit - '0');
        }
        exponent += std::atoi(digit + 1) - 14;
        if (text[0] == '-') units = -units;
    }
    for (; exponent > 0; --exponent) units *= 10;
    for (; exponent < -1; ++exponent) units /= 10;
    return exponent == -1 ? (units + (units < 0 ? -5 : 5)) / 10 : units;
}

int DecimalBytes(int precision) {
    return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

std::string EncodeText(const std::string &utf8, bool wide) {
    if (wide) return Utf16FromUtf8(utf8);
    const CString gbk = FromUtf8(utf8);
    return std::string(gbk.View());
}
std::string DecodeText(std::string_view bytes, bool wide) {
    return wide ? Utf8FromUtf16(bytes) : ToUtf8(bytes);
}

/// A text or byte block as its type holds it on the wire.
std::string EncodeBlock(const SqlType &type, const Cell &value) {
    std::string bytes = type.IsText() ? EncodeText(TextOf(value), type.facts->wide) : TextOf(value);
    if (type.facts->padded && type.length > 0) {
        const std::string pad = type.IsText() ? EncodeText(" ", type.facts->wide) : std::string(1, '\0');
        while (bytes.size() < static_cast<std::size_t>(type.length * type.facts->size)) bytes += pad;
    }
    return bytes;
}

void WriteMoney(ByteWriter &writer, int size, const Cell &value) {
    const auto units = static_cast<std::int64_t>(DecimalUnits(value, 4));
    if (size == 8) writer.I32(units >> 32);
    writer.U32(static_cast<std::uint64_t>(units) & 0xFFFFFFFF);
}

void WriteDateTime(ByteWriter &writer, const Cell &value) {
    const long long time = ParseDateTime(TextOf(value)).value_or(0);
    const long long day = (time >= 0 ? time : time - kDayMilliseconds + 1) / kDayMilliseconds;
    writer.I32(day);
    writer.U32(static_cast<std::uint64_t>(((time - day * kDayMilliseconds) * 3 + 5) / 10));
}

void WriteFloat(ByteWriter &writer, int size, double value) {
    if (size == 8) return writer.U64(std::bit_cast<std::uint64_t>(value));
    writer.U32(std::bit_cast<std::uint32_t>(static_cast<float>(value)));
}

void WriteDecimal(ByteWriter &writer, const SqlType &type, const Cell &value) {
    const Int128 units = DecimalUnits(value, type.scale);
    Int128 magnitude = units < 0 ? -units : units;
    writer.U8(units < 0 ? 0 : 1);
    for (int i = 1; i < DecimalBytes(type.length); ++i, magnitude >>= 8) {
        writer.U8(static_cast<unsigned>(magnitude & 0xFF));
    }
}

void WriteBlock(ByteWriter &writer, const SqlType &type, const Cell &value) {
    const bool null = std::holds_alternative<std::monostate>(value);
    if (type.length == SqlType::kMax) {
        if (null) return writer.U64(kPartsNull);
        const std::string bytes = EncodeBlock(type, value);
        writer.U64(bytes.size());
        if (!bytes.empty()) {
            writer.U32(bytes.size());
            writer.Bytes(bytes);
        }
        return writer.U32(0);
    }
    if (null) return writer.U16(0xFFFF);
    const std::string bytes = EncodeBlock(type, value);
    writer.U16(bytes.size());
    writer.Bytes(bytes);
}

void WriteLongBlock(ByteWriter &writer, const SqlType &type, const Cell &value) {
    if (std::holds_alternative<std::monostate>(value)) return writer.U8(0);
    const std::string bytes = EncodeBlock(type, value);
    writer.U8(16);
    writer.Bytes(std::string(16 + 8, 'p'));
    writer.U32(bytes.size());
    writer.Bytes(bytes);
}

Cell ReadNumber(Form form, std::string_view bytes) {
    ByteReader reader(bytes);
    const int size = static_cast<int>(bytes.size());
    switch (form) {
        case Form::Integer:
            return size == 1 ? static_cast<long long>(reader.U8()) : static_cast<long long>(reader.Signed(size));
        case Form::Float:
            if (size == 4) return static_cast<double>(std::bit_cast<float>(reader.U32()));
            return std::bit_cast<double>(reader.Unsigned(8));
        case Form::Money: {
            const std::int64_t high = size == 8 ? reader.I32() : 0;
            const std::int64_t low = size == 8 ? static_cast<std::int64_t>(reader.U32()) : reader.I32();
            return static_cast<double>(high * 4294967296 + low) / 10000.0;
        }
        case Form::DateTime: {
            const long long days = reader.I32();
            return DateTimeText(days * kDayMilliseconds + (reader.U32() * 10 + 1) / 3);
        }
        default:
            throw ProtocolError("no number");
    }
}

Cell ReadDecimal(std::string_view bytes, int scale) {
    std::string text;
    Int128 units = 0;
    for (std::size_t i = bytes.size(); i-- > 1;) units = units * 256 + static_cast<std::uint8_t>(bytes[i]);
    for (int digits = 0; units > 0 || digits <= scale; ++digits, units /= 10) {
        if (digits == scale && scale > 0) text += '.';
        text += static_cast<char>('0' + static_cast<int>(units % 10));
    }
    if (bytes[0] == 0) text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

Cell ReadDateTime2(std::string_view bytes, int scale) {
    ByteReader reader(bytes);
    std::uint64_t ticks = reader.Unsigned(static_cast<int>(bytes.size()) - 3);
    for (; scale < 3; ++scale) ticks *= 10;
    for (; scale > 3; --scale) ticks /= 10;
    const long long days = static_cast<long long>(reader.Unsigned(3)) - 693595;
    return DateTimeText(days * kDayMilliseconds + static_cast<long long>(ticks));
}

std::optional<std::string> ReadParts(ByteReader &reader) {
    if (reader.Unsigned(8) == kPartsNull) return std::nullopt;
    std::string bytes;
    while (const std::uint32_t size = reader.U32()) bytes += reader.Bytes(size);
    return bytes;
}

Cell BlockCell(const TypeFacts &facts, std::optional<std::string> bytes) {
    if (!bytes) return {};
    if (facts.form == Form::Text || facts.form == Form::LongText) return DecodeText(*bytes, facts.wide);
    return Blob{std::move(*bytes)};
}

Cell ReadBlock(ByteReader &reader, const TypeFacts &facts) {
    const std::uint16_t limit = reader.U16();
    if (facts.form == Form::Text) reader.Bytes(kCollation.size());
    if (limit == kPartlyLengthPrefixed) return BlockCell(facts, ReadParts(reader));
    const std::uint16_t size = reader.U16();
    if (size == 0xFFFF) return {};
    return BlockCell(facts, std::string(reader.Bytes(size)));
}

Cell ReadLongBlock(ByteReader &reader, const TypeFacts &facts) {
    reader.U32();
    if (facts.form == Form::LongText) reader.Bytes(kCollation.size());
    const std::uint32_t size = reader.U32();
    if (size == 0xFFFFFFFF) return {};
    return BlockCell(facts, std::string(reader.Bytes(size)));
}

/// A value behind its length in one byte; null when that is 0.
template <class Read>
Cell ReadShort(ByteReader &reader, Read &&read) {
    const std::uint8_t size = reader.U8();
    return size == 0 ? Cell() : read(reader.Bytes(size));
}

}  // namespace

std::optional<SqlType> ParseType(std::string_view declaration) {
    std::string plain;
    for (const char c : declaration) {
        if (c != '[' && c != ']' && c != '"' && c != ' ') plain += c;
    }
    const std::size_t open = plain.find('(');
    const TypeFacts *facts = FindType(std::string_view(plain).substr(0, open));
    if (!facts) return std::nullopt;
    SqlType type{facts, facts->form == Form::Decimal ? 18 : 1, 0};
    if (open == std::string::npos) return type;
    if (strcasecmp(plain.c_str() + open, "(max)") == 0) {
        type.length = SqlType::kMax;
        return type;
    }
    const std::size_t comma = plain.find(',', open);
    type.length = std::atoi(plain.c_str() + open + 1);
    if (comma != std::string::npos) type.scale = std::atoi(plain.c_str() + comma + 1);
    return type;
}

SqlType TypeOfValue(const Cell &value) {
    if (const auto *integer = std::get_if<long long>(&value)) {
        return {FindType(*integer == static_cast<std::int32_t>(*integer) ? "int" : "bigint")};
    }
    if (std::holds_alternative<double>(value)) return {FindType("float")};
    if (std::holds_alternative<std::string>(value)) return {FindType("nvarchar"), 4000};
    if (std::holds_alternative<Blob>(value)) return {FindType("image")};
    return {FindType("int")};
}

std::optional<TypeCheck> CheckOfType(const SqlType &type, const std::string &column) {
    switch (type.facts->form) {
        case Form::Integer:
            return TypeCheck{"typeof(" + column + ") In ('integer','null')", 245};
        case Form::Float:
        case Form::Money:
        case Form::Decimal:
            return TypeCheck{"typeof(" + column + ") In ('integer','real','null')", 8114};
        case Form::DateTime:
            return TypeCheck{column + " Is Null Or is_datetime(" + column + ")", 241};
        case Form::Text:
        case Form::Bytes:
            if (type.length == SqlType::kMax) return std::nullopt;
            return TypeCheck{"length(" + column + ")<=" + std::to_string(type.length), 8152};
        default:
            return std::nullopt;
    }
}

void WriteTypeInfo(ByteWriter &writer, const SqlType &type, std::string_view table) {
    writer.U8(type.facts->token);
    switch (type.facts->form) {
        case Form::Integer:
        case Form::Float:
        case Form::Money:
        case Form::DateTime:
            return writer.U8(static_cast<unsigned>(type.facts->size));
        case Form::Decimal:
            writer.U8(static_cast<unsigned>(DecimalBytes(type.length)));
            writer.U8(static_cast<unsigned>(type.length));
            return writer.U8(static_cast<unsigned>(type.scale));
        case Form::Text:
        case Form::Bytes:
            writer.U16(type.length == SqlType::kMax ? kPartlyLengthPrefixed : type.length * type.facts->size);
            if (type.IsText()) writer.Bytes(kCollation);
            return;
        case Form::LongText:
        case Form::LongBytes:
            writer.U32(type.facts->wide ? 0x7FFFFFFE : 0x7FFFFFFF);
            if (type.IsText()) writer.Bytes(kCollation);
            writer.U8(1);
            return writer.LongText(table);
    }
}

void WriteValue(ByteWriter &writer, const SqlType &type, const Cell &value) {
    const TypeFacts &facts = *type.facts;
    if (facts.form == Form::Text || facts.form == Form::Bytes) return WriteBlock(writer, type, value);
    if (facts.form == Form::LongText || facts.form == Form::LongBytes) return WriteLongBlock(writer, type, value);
    if (std::holds_alternative<std::monostate>(value)) return writer.U8(0);
    writer.U8(static_cast<unsigned>(facts.form == Form::Decimal ? DecimalBytes(type.length) : facts.size));
    switch (facts.form) {
        case Form::Integer:
            return writer.Unsigned(static_cast<std::uint64_t>(IntegerOf(value)), facts.size);
        case Form::Float:
            return WriteFloat(writer, facts.size, NumberOf(value));
        case Form::Money:
            return WriteMoney(writer, facts.size, value);
        case Form::DateTime:
            return WriteDateTime(writer, value);
        default:
            return WriteDecimal(writer, type, value);
    }
}

Cell ReadTypedValue(ByteReader &reader) {
    const std::uint8_t token = reader.U8();
    for (const FixedType &fixed : kFixedTypes) {
        if (fixed.token == token) return ReadNumber(fixed.form, reader.Bytes(static_cast<std::size_t>(fixed.size)));
    }
    if (token == kDate || token == kDateTime2) {
        const int scale = token == kDateTime2 ? reader.U8() : 0;
        return ReadShort(reader, [&](std::string_view bytes) { return ReadDateTime2(bytes, scale); });
    }
    for (const TypeFacts &facts : kTypes) {
        if (facts.token != token) continue;
        if (facts.form == Form::Text || facts.form == Form::Bytes) return ReadBlock(reader, facts);
        if (facts.form == Form::LongText || facts.form == Form::LongBytes) return ReadLongBlock(reader, facts);
        reader.U8();
        if (facts.form != Form::Decimal) {
            return ReadShort(reader, [&](std::string_view bytes) { return ReadNumber(facts.form, bytes); });
        }
        reader.U8();
        const int scale = reader.U8();
        return ReadShort(reader, [&](std::string_view bytes) { return ReadDecimal(bytes, scale); });
    }
    throw ProtocolError("unknown type of a parameter");
}

std::optional<long long> ParseDateTime(std::string_view text) {
    const std::string copy(text);
    int year = 0;
    int month = 0;
    int day = 0;
    int used = 0;
    char between[2][2] = {};
    if (std::sscanf(copy.c_str(), "%4d%1[-/]%2d%1[-/]%2d%n", &year, between[0], &month, between[1], &day, &used) < 5 &&
        std::sscanf(copy.c_str(), "%4d%2d%2d%n", &year, &month, &day, &used) < 3) {
        return std::nullopt;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || year < 1753) return std::nullopt;
    const long long date = DaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
    int hour = 0;
    int minute = 0;
    double second = 0;
    const char *rest = copy.c_str() + used;
    if (*rest == ' ' || *rest == 'T') {
        if (std::sscanf(rest + 1, "%2d:%2d:%lf", &hour, &minute, &second) < 2) return std::nullopt;
    } else if (*rest != '\0') {
        return std::nullopt;
    }
    if (hour > 23 || minute > 59 || second < 0 || second >= 60) return std::nullopt;
    return date * kDayMilliseconds + hour * 3'600'000LL + minute * 60'000LL + std::llround(second * 1000);
}

}  // namespace ktl::test::tds
