#include "ktl/platform/ado/dbase/header.h"

#include <algorithm>
#include <limits>

#include "ktl/platform/ado/dbase/code_page.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"
#include "ktl/platform/date_time.h"

namespace ktl::ado::dbase {

namespace {

constexpr std::uint8_t kKnownVersions[] = {0x03, 0x83, 0x8B, 0xCB, 0x30, 0x31, 0x32, 0xF5, 0xFB};
constexpr int kUnlimited = std::numeric_limits<int>::max();

struct TypeFacts {
    sql::ColumnType type;
    char letter;
    /// 0: what the definition says.
    std::uint32_t width;
    bool binary;
};

constexpr TypeFacts kTypeFacts[] = {
    {sql::ColumnType::Integer, 'I', 4, true},  {sql::ColumnType::BigInteger, 'N', 20, false},
    {sql::ColumnType::Char, 'C', 0, false},    {sql::ColumnType::Numeric, 'N', 0, false},
    {sql::ColumnType::Float, 'F', 0, false},   {sql::ColumnType::Double, 'B', 8, true},
    {sql::ColumnType::Currency, 'Y', 8, true}, {sql::ColumnType::Date, 'D', 8, false},
    {sql::ColumnType::DateTime, 'T', 8, true}, {sql::ColumnType::Logical, 'L', 1, false},
    {sql::ColumnType::Memo, 'M', 4, false},    {sql::ColumnType::General, 'G', 4, true},
    {sql::ColumnType::Blob, 'W', 4, true},
};

/// What a recordset tells of a column by its letter; a size of 0 is the column's width. Memos are told apart.
struct LetterFacts {
    char letter;
    DataType type;
    int size;
};

constexpr LetterFacts kLetterFacts[] = {
    {'C', DataType::Char, 0},     {'V', DataType::VarChar, 0},  {'Q', DataType::VarBinary, 0},
    {'N', DataType::Numeric, 19}, {'F', DataType::Numeric, 19}, {'I', DataType::Integer, 4},
    {'+', DataType::Integer, 4},  {'B', DataType::Double, 8},   {'Y', DataType::Currency, 8},
    {'L', DataType::Boolean, 2},  {'D', DataType::DBDate, 6},   {'T', DataType::DBTimeStamp, 16},
};

[[noreturn]] void ThrowNotATable(const char *why) {
    throw Error(CString("Not a table: ") + why + ".", error_number::kNotATable);
}

[[noreturn]] void ThrowDefinition(const sql::ColumnDefinition &definition, const char *why, int number) {
    CString text;
    text.Format("Column \"%s\" at byte %d: %s.", definition.name.GetString(), static_cast<int>(definition.position) + 1,
                why);
    throw Error(text, number);
}

Field ParseEntry(const char *entry, const CodePage &codePage) {
    Field field;
    const std::string_view raw(entry, kNameSize);
    std::string_view name = raw.substr(0, std::min(raw.find('\0'), kNameSize));
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    field.name = codePage.ToGbk(name);
    field.type = entry[kTypeAt];
    field.width = static_cast<unsigned char>(entry[kWidthAt]);
    field.decimals = static_cast<std::uint8_t>(entry[kDecimalsAt]);
    field.flags = static_cast<std::uint8_t>(entry[kFlagsAt]);
    field.nextValue = LoadLittle32(entry + kNextValueAt);
    field.step = static_cast<std::uint8_t>(entry[kStepAt]);
    return field;
}

std::uint32_t SumOfWidths(const Header &header) {
    std::uint32_t sum = 1;
    for (const Field &field : header.fields) sum += field.width;
    return sum;
}

/// Some writers keep the high byte of a long text column's width in the place of the decimals: believed when only
/// then the widths add up.
void WidenLongTexts(Header &header) {
    if (SumOfWidths(header) == header.recordLength) return;
    const std::vector<Field> plain = header.fields;
    for (Field &field : header.fields) {
        if (field.type != 'C') continue;
        field.width += static_cast<std::uint32_t>(field.decimals) << 8;
        field.decimals = 0;
    }
    if (SumOfWidths(header) != header.recordLength) header.fields = plain;
}

void PlaceFields(Header &header) {
    std::uint32_t offset = 1;
    int bit = 0;
    header.nullField = -1;
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        Field &field = header.fields[i];
        field.offset = offset;
        offset += field.width;
        field.lengthBit = field.type == 'V' || field.type == 'Q' ? bit++ : -1;
        field.nullBit = (field.flags & kColumnNullable) != 0 ? bit++ : -1;
        if (field.type == '0') header.nullField = static_cast<int>(i);
    }
    const int bits = header.nullField < 0
                         ? 0
                         : static_cast<int>(header.fields[static_cast<std::size_t>(header.nullField)].width) * 8;
    for (Field &field : header.fields) {
        if (field.nullBit >= bits) field.nullBit = -1;
        if (field.lengthBit >= bits) field.lengthBit = -1;
    }
}

/// Reads the columns' entries; behind them and their end mark there are `tail` bytes.
void ReadFields(std::string_view entries, std::size_t tail, const CodePage &codePage, Header &header) {
    header.fields.clear();
    header.backlink.clear();
    for (std::size_t at = 0; at + kEntrySize + tail <= entries.size(); at += kEntrySize) {
        // The header's length is what counts; the end mark only tells where the entries stop before it.
        if (static_cast<std::uint8_t>(entries[at]) == kHeaderEnd || entries[at] == '\0') break;
        header.fields.push_back(ParseEntry(entries.data() + at, codePage));
    }
    const std::size_t behind = header.fields.size() * kEntrySize + 1;
    if (tail != 0 && behind + tail <= entries.size()) header.backlink = entries.substr(behind, tail);
    WidenLongTexts(header);
    PlaceFields(header);
}

}  // namespace

Column Field::Describe() const {
    Column column;
    column.name = name;
    const auto *facts = std::find_if(std::begin(kLetterFacts), std::end(kLetterFacts),
                                     [this](const LetterFacts &row) { return row.letter == type; });
    column.type = facts == std::end(kLetterFacts) ? DataType::Binary : facts->type;
    column.definedSize = facts == std::end(kLetterFacts) || facts->size == 0 ? static_cast<int>(width) : facts->size;
    const bool binary = (flags & kColumnBinary) != 0;
    if (type == 'C' && binary) column.type = DataType::Binary;
    if (IsMemo()) {
        column.type = IsTextMemo() ? DataType::LongVarChar : DataType::LongVarBinary;
        column.definedSize = kUnlimited;
    }
    if (column.type == DataType::Numeric) {
        column.precision = static_cast<int>(width);
        column.scale = decimals;
    }
    return column;
}

bool Header::HasMemo() const {
    return std::any_of(fields.begin(), fields.end(), [](const Field &field) { return field.IsMemo(); });
}

int Header::FindField(std::string_view name) const {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!fields[i].IsHidden() && EqualNames(fields[i].name.View(), name)) return static_cast<int>(i);
    }
    return -1;
}

void Header::Arrange() {
    PlaceFields(*this);
    if (SumOfWidths(*this) > kMaxRecordLength) throw Error("The record is too long.", error_number::kRecordTooLong);
    recordLength = SumOfWidths(*this);
    headerLength = static_cast<std::uint32_t>(kHeaderStart + fields.size() * kEntrySize + 1 + kBacklinkSize);
    backlink.resize(kBacklinkSize, '\0');
    version = kVersionFoxPro;
    for (const Field &field : fields) {
        if ((field.flags & kColumnAutoIncrement) != 0) version = std::max(version, kVersionAutoIncrement);
        if (field.type == 'V' || field.type == 'Q' || field.type == 'W') version = kVersionVarchar;
    }
    tableFlags = HasMemo() ? kTableHasMemo : 0;
}

Header ParseHeader(std::string_view bytes, const CodePage &codePage) {
    if (bytes.size() < kHeaderStart + 1) ThrowNotATable("the file is too short");
    Header header;
    header.version = static_cast<std::uint8_t>(bytes[kVersionAt]);
    if (std::find(std::begin(kKnownVersions), std::end(kKnownVersions), header.version) == std::end(kKnownVersions)) {
        ThrowNotATable("its first byte is none of a table's");
    }
    header.recordCount = LoadLittle32(bytes.data() + kCountAt);
    header.headerLength = LoadLittle16(bytes.data() + kHeaderLengthAt);
    header.recordLength = LoadLittle16(bytes.data() + kRecordLengthAt);
    header.tableFlags = static_cast<std::uint8_t>(bytes[kTableFlagsAt]);
    header.codePageMark = static_cast<std::uint8_t>(bytes[kCodePageAt]);
    if (header.headerLength < kHeaderStart + 1) ThrowNotATable("its header is too short");
    if (header.headerLength > bytes.size()) ThrowNotATable("the file ends within its header");

    const std::size_t entryBytes = header.headerLength - kHeaderStart;
    const bool family = header.IsFoxProFamily() && entryBytes >= kBacklinkSize + 1;
    ReadFields(bytes.substr(kHeaderStart, entryBytes), family ? kBacklinkSize : 0, codePage, header);
    if (family && SumOfWidths(header) != header.recordLength) {
        // Some writers leave the backlink area out.
        Header bare = header;
        ReadFields(bytes.substr(kHeaderStart, entryBytes), 0, codePage, bare);
        if (SumOfWidths(bare) == header.recordLength) header = bare;
    }
    if (header.fields.empty()) ThrowNotATable("it has no columns");
    if (SumOfWidths(header) > header.recordLength) ThrowNotATable("its columns are wider than its records");
    return header;
}

std::string BuildHeader(const Header &header, const CodePage &codePage) {
    std::string bytes(header.headerLength, '\0');
    bytes[kVersionAt] = static_cast<char>(header.version);
    bytes.replace(kDateAt, 3, TodayBytes());
    StoreLittle32(&bytes[kCountAt], header.recordCount);
    StoreLittle16(&bytes[kHeaderLengthAt], header.headerLength);
    StoreLittle16(&bytes[kRecordLengthAt], header.recordLength);
    bytes[kTableFlagsAt] = static_cast<char>(header.tableFlags);
    bytes[kCodePageAt] = static_cast<char>(header.codePageMark);
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        const Field &field = header.fields[i];
        char *entry = &bytes[kHeaderStart + i * kEntrySize];
        const std::string name = codePage.FromGbk(field.name.View(), kNameSize - 1);
        name.copy(entry, name.size());
        entry[kTypeAt] = field.type;
        StoreLittle32(entry + kOffsetAt, field.offset);
        // A text wider than a byte tells keeps its high byte where the decimals stand.
        entry[kWidthAt] = static_cast<char>(field.width);
        entry[kDecimalsAt] = static_cast<char>(field.width > 255 ? field.width >> 8 : field.decimals);
        entry[kFlagsAt] = static_cast<char>(field.flags);
        StoreLittle32(entry + kNextValueAt, field.nextValue);
        entry[kStepAt] = static_cast<char>(field.step);
    }
    const std::size_t end = kHeaderStart + header.fields.size() * kEntrySize;
    bytes[end] = static_cast<char>(kHeaderEnd);
    bytes.replace(end + 1, header.backlink.size(), header.backlink);
    bytes.resize(header.headerLength);
    return bytes;
}

namespace {

/// Statements can name the column without brackets, as most do.
bool IsPlainName(std::string_view name) {
    constexpr const char *kOperands[] = {"not", "null", "true", "false"};
    const auto isName = [&](const char *word) { return EqualNames(name, word); };
    if (name.empty() || std::any_of(std::begin(kOperands), std::end(kOperands), isName)) return false;
    for (std::size_t i = 0; i < name.size(); i += GbkLength(name, i)) {
        if (!sql::IsWordByte(name[i])) return false;
    }
    std::size_t end = 0;
    Value number;
    return !sql::ScanNumber(name, end, number) || end < name.size();
}

}  // namespace

Field MakeField(const sql::ColumnDefinition &definition) {
    const auto *facts = std::find_if(std::begin(kTypeFacts), std::end(kTypeFacts),
                                     [&](const TypeFacts &row) { return row.type == definition.type; });
    const std::string_view name = definition.name.View();
    if (name.size() >= kNameSize) {
        ThrowDefinition(definition, "a column's name has at most 10 bytes", error_number::kColumnName);
    }
    if (!IsPlainName(name)) {
        ThrowDefinition(definition, "a column's name is a word, and neither a number nor Not, Null, True or False",
                        error_number::kColumnName);
    }
    Field field;
    field.name = definition.name;
    field.type = facts->letter;
    field.flags = facts->binary ? kColumnBinary : 0;
    field.width = facts->width;
    field.decimals = static_cast<std::uint8_t>(std::clamp(definition.decimals, 0, 255));
    if (facts->width != 0) {
        if (field.type != 'B') field.decimals = 0;
        return field;
    }
    const bool text = field.type == 'C';
    const int most = text ? kMaxCharWidth : kMaxNumberWidth;
    if (definition.width < 1 || definition.width > most) {
        ThrowDefinition(definition, text ? "a text is 1 to 254 bytes wide" : "a number is 1 to 20 digits wide",
                        error_number::kSyntax);
    }
    if (!text && definition.decimals > 0 && definition.decimals > definition.width - 2) {
        ThrowDefinition(definition, "the decimals leave no room for the number", error_number::kSyntax);
    }
    if (text) field.decimals = 0;
    field.width = static_cast<std::uint32_t>(definition.width);
    return field;
}

std::string TodayBytes() {
    // The calendar is only asked once a day, or when the clock goes back.
    thread_local LONGLONG validFrom = 0;
    thread_local LONGLONG validTo = 0;
    thread_local std::string bytes(3, '\0');
    const LONGLONG now = Now();
    if (now < validFrom || now >= validTo) {
        const CTime time(now);
        bytes[0] = static_cast<char>(time.GetYear() % 100);
        bytes[1] = static_cast<char>(time.GetMonth());
        bytes[2] = static_cast<char>(time.GetDay());
        validFrom = now;
        validTo = now + (60 - time.GetSecond());
    }
    return bytes;
}

}  // namespace ktl::ado::dbase
