#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ktl/platform/ado/dbase/layout.h"
#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/ado/sql/ast.h"

namespace ktl::ado::dbase {

class CodePage;

/// One column as the file's header tells it.
struct Field {
    /// In GBK.
    CString name;
    char type = 'C';
    /// In the record, the deletion mark counted.
    std::uint32_t offset = 0;
    std::uint32_t width = 0;
    std::uint8_t decimals = 0;
    std::uint8_t flags = 0;
    /// Of an autoincrement column.
    std::uint32_t nextValue = 0;
    std::uint8_t step = 0;
    /// Bits in the hidden column: null, and for V and Q "the last byte is the length"; -1 is none.
    int nullBit = -1;
    int lengthBit = -1;

    /// A column that statements do not see.
    bool IsHidden() const { return type == '0' || (flags & kColumnSystem) != 0; }
    bool IsMemo() const {
        return type == 'M' || type == 'G' || type == 'P' || type == 'W' || (type == 'B' && width == 10);
    }
    /// A memo of text.
    bool IsTextMemo() const { return type == 'M' && (flags & kColumnBinary) == 0; }
    /// What a recordset tells of it.
    Column Describe() const;
};

/// A table file's header.
struct Header {
    std::uint8_t version = kVersionFoxPro;
    std::uint32_t recordCount = 0;
    std::uint32_t headerLength = 0;
    std::uint32_t recordLength = 0;
    std::uint8_t tableFlags = 0;
    std::uint8_t codePageMark = kCodePageGbk;
    std::vector<Field> fields;
    /// The field that holds the null bits, or -1.
    int nullField = -1;
    /// The area behind the entries, as it is in the file.
    std::string backlink;

    bool IsFoxProFamily() const { return version >= 0x30 && version <= 0x32; }
    bool HasMemo() const;
    /// The column's field, or -1; hidden ones are not found.
    int FindField(std::string_view name) const;
    /// Gives fields their offsets and null bits, sets lengths, flags and the version; throws Error when the record
    /// becomes too long.
    void Arrange();
};

/// Reads a header. `bytes` begins with the file's first byte and holds the whole header or what there is of it. Names
/// come through `codePage`. Throws Error (not a table) for anything that does not add up.
Header ParseHeader(std::string_view bytes, const CodePage &codePage);
/// The header's bytes, backlink area included.
std::string BuildHeader(const Header &header, const CodePage &codePage);
/// The field for a definition; throws Error (column name, width).
Field MakeField(const sql::ColumnDefinition &definition);
/// Year, month and day as bytes 1 to 3 of a header.
std::string TodayBytes();

}  // namespace ktl::ado::dbase
