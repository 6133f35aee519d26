#include "ktl/platform/ado/access/field.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "ktl/platform/ado/access/library.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::access {

namespace {

constexpr int kLongSize = std::numeric_limits<int>::max();
constexpr double kLeastDay = -657434;
constexpr double kLastDay = 2958465;
constexpr double kDayMilliseconds = 86400000;
constexpr std::uint32_t kInRow = 0x80000000;
constexpr std::uint32_t kInOnePage = 0x40000000;
constexpr std::size_t kLongHead = 12;
constexpr std::size_t kLinkSize = 4;
constexpr int kMoneyScale = 4;
constexpr int kDecimalScale = 38;

struct TypeFacts {
    FieldType type;
    DataType shown;
    /// Bytes of a value; 0 for one of any length.
    int width;
};
constexpr TypeFacts kTypes[] = {
    {FieldType::Boolean, DataType::Boolean, 2},   {FieldType::Byte, DataType::UnsignedTinyInt, 1},
    {FieldType::SmallInt, DataType::SmallInt, 2}, {FieldType::Integer, DataType::Integer, 4},
    {FieldType::Currency, DataType::Currency, 8}, {FieldType::Single, DataType::Single, 4},
    {FieldType::Double, DataType::Double, 8},     {FieldType::Date, DataType::Date, 8},
    {FieldType::Binary, DataType::VarBinary, 0},  {FieldType::Text, DataType::VarWChar, 0},
    {FieldType::Ole, DataType::LongVarBinary, 0}, {FieldType::Memo, DataType::LongVarWChar, 0},
    {FieldType::Guid, DataType::GUID, 16},        {FieldType::Numeric, DataType::Numeric, 17},
    {FieldType::Complex, DataType::Integer, 4},   {FieldType::BigInt, DataType::BigInt, 8},
};
/// A type that is not known shows its bytes.
constexpr TypeFacts kUnknown{FieldType::Binary, DataType::VarBinary, 0};

const TypeFacts &FactsOf(FieldType type) {
    const auto *found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeFacts &facts) { return facts.type == type; });
    return found == std::end(kTypes) ? kUnknown : *found;
}

template <class T>
T Load(std::string_view bytes, std::size_t position = 0) {
    T value{};
    std::memcpy(&value, bytes.data() + position, sizeof value);
    return value;
}

/// The double with the digits that are seen of the float: 0.1f is 0.1.
double WidenByDigits(float value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    double wide = value;
    std::from_chars(text, end, wide);
    return wide;
}

/// The fraction counts forward from midnight on days before day 0 too.
void ReadDate(double days, Value &value) {
    if (!(days >= kLeastDay && days < kLastDay + 1)) return value.SetNull();
    double day = std::trunc(days);
    double milliseconds = std::round(std::fabs(days - day) * kDayMilliseconds);
    if (milliseconds >= kDayMilliseconds) {
        milliseconds = 0;
        day += 1;
    }
    value.SetDateTime({static_cast<int>(day), static_cast<int>(milliseconds)});
}

/// A sign byte and four 32-bit words, the highest first.
void ReadNumeric(std::string_view bytes, int scale, Value &value) {
    Int128 units = 0;
    for (std::size_t word = 0; word < 4; ++word) {
        units = units * (Int128{1} << 32) + Load<std::uint32_t>(bytes, 1 + 4 * word);
        if (word == 0) units &= std::numeric_limits<std::int32_t>::max();
    }
    value.SetDecimal({bytes[0] & 0x80 ? -units : units, std::clamp(scale, 0, kDecimalScale)});
}

void ReadGuid(std::string_view bytes, Value &value) {
    char text[40];
    const auto part = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[i])); };
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", Load<std::uint32_t>(bytes),
                  unsigned{Load<std::uint16_t>(bytes, 4)}, unsigned{Load<std::uint16_t>(bytes, 6)}, part(8), part(9),
                  part(10), part(11), part(12), part(13), part(14), part(15));
    value.SetText(text);
}

/// Jet 3 files hold text in the code page of the machine that made them; libmdb knows which.
CString TextFromCodePage(MdbHandle *mdb, std::string_view bytes) {
    std::string utf8(4 * bytes.size() + 8, '\0');
    const int size = ::mdb_unicode2ascii(mdb, bytes.data(), bytes.size(), utf8.data(), utf8.size());
    utf8.resize(static_cast<std::size_t>(std::max(size, 0)));
    return FromUtf8(utf8);
}

CString ReadText(MdbHandle *mdb, std::string_view bytes) {
    return IS_JET3(mdb) ? TextFromCodePage(mdb, bytes) : TextFromField(bytes);
}

/// The bytes of the row that a memo or byte block lies in; good until the next call.
std::string_view FollowLink(MdbHandle *mdb, std::uint32_t link) {
    void *page = nullptr;
    int offset = 0;
    std::size_t size = 0;
    if (::mdb_find_pg_row(mdb, static_cast<int>(link), &page, &offset, &size) != 0) {
        ThrowDamaged("a memo or byte block leads nowhere");
    }
    return {static_cast<const char *>(page) + (offset & kOffsetMask), size};
}

std::string ReadLong(const Database &database, std::string_view bytes) {
    if (bytes.size() < kLongHead) ThrowDamaged("a memo or byte block has no head");
    MdbHandle *mdb = database.GetHandle().mdb;
    const auto head = Load<std::uint32_t>(bytes);
    const std::size_t length = head & ~(kInRow | kInOnePage);
    auto link = Load<std::uint32_t>(bytes, 4);
    if (length > database.GetFileSize()) ThrowDamaged("a memo or byte block is longer than the file");
    std::string content;
    if (head & kInRow) {
        content = bytes.substr(kLongHead, length);
    } else if (head & kInOnePage) {
        content = FollowLink(mdb, link).substr(0, length);
    } else {
        // Each piece adds a byte at least, so that links in a circle come to an end.
        while (content.size() < length && link != 0) {
            const std::string_view piece = FollowLink(mdb, link);
            if (piece.size() <= kLinkSize) break;
            link = Load<std::uint32_t>(piece);
            content += piece.substr(kLinkSize, length - content.size());
        }
    }
    if (content.size() < length) ThrowDamaged("a memo or byte block ends too early");
    return content;
}

}  // namespace

Column DescribeField(FieldType type, int bytes, int characterBytes, int precision, int scale) {
    const TypeFacts &facts = FactsOf(type);
    Column column;
    column.type = facts.shown;
    column.definedSize = facts.width > 0 ? facts.width : bytes;
    if (type == FieldType::Text) column.definedSize = bytes / characterBytes;
    if (type == FieldType::Memo || type == FieldType::Ole) column.definedSize = kLongSize;
    if (type == FieldType::Numeric) {
        column.precision = precision;
        column.scale = scale;
    }
    column.nullable = type != FieldType::Boolean;
    return column;
}

CString TextFromField(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return static_cast<char16_t>(static_cast<unsigned char>(bytes[i])); };
    const auto pair = [&](std::size_t i) { return static_cast<char16_t>(byte(i) | byte(i + 1) << 8); };
    std::u16string text;
    text.reserve(bytes.size());
    bool marked = bytes.substr(0, 2) == "\xFF\xFE";
    bool single = marked;
    for (std::size_t i = marked ? 2 : 0; i < bytes.size();) {
        if (marked && bytes[i] == '\0') {
            single = !single;
            ++i;
        } else if (single) {
            text += byte(i++);
        } else if (i + 1 < bytes.size()) {
            text += pair(i);
            i += 2;
        } else {
            break;
        }
    }
    return GbkFromUtf16(text);
}

void ReadField(Database &database, FieldType type, int scale, std::string_view bytes, Value &value) {
    const TypeFacts &facts = FactsOf(type);
    if (bytes.size() < static_cast<std::size_t>(facts.width)) ThrowDamaged("a field is too short");
    switch (facts.type) {
        case FieldType::Boolean:
            break;
        case FieldType::Byte:
            return value.SetInteger(Load<std::uint8_t>(bytes));
        case FieldType::SmallInt:
            return value.SetInteger(Load<std::int16_t>(bytes));
        case FieldType::Integer:
        case FieldType::Complex:
            return value.SetInteger(Load<std::int32_t>(bytes));
        case FieldType::BigInt:
            return value.SetInteger(Load<std::int64_t>(bytes));
        case FieldType::Currency:
            return value.SetDecimal({Load<std::int64_t>(bytes), kMoneyScale});
        case FieldType::Single:
            return value.SetDouble(WidenByDigits(Load<float>(bytes)));
        case FieldType::Double:
            return value.SetDouble(Load<double>(bytes));
        case FieldType::Date:
            return ReadDate(Load<double>(bytes), value);
        case FieldType::Guid:
            return ReadGuid(bytes, value);
        case FieldType::Numeric:
            return ReadNumeric(bytes, scale, value);
        case FieldType::Text:
            return value.SetText(ReadText(database.GetHandle().mdb, bytes).View());
        case FieldType::Memo:
            return value.SetText(ReadText(database.GetHandle().mdb, ReadLong(database, bytes)).View());
        case FieldType::Ole:
            return value.SetBytes(ReadLong(database, bytes));
        case FieldType::Binary:
            return value.SetBytes(bytes);
    }
}

}  // namespace ktl::ado::access
