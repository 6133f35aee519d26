#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ktl::host {

enum class ColumnType { kText, kMemo, kInteger, kNumber, kYesNo, kDate, kTime, kDateTime, kBytes };

/// In a word: text, memo, integer, number, yes/no, date, time, date+time, bytes.
const char *WordFor(ColumnType type);
inline bool IsNumber(ColumnType type) {
    return type == ColumnType::kInteger || type == ColumnType::kNumber;
}

/// A column of a table of any kind. Texts are UTF-8.
struct TableColumn {
    std::string name;
    ColumnType type = ColumnType::kText;
    /// Characters, or bytes of a binary number; 0 where that has no meaning.
    int width = 0;
    int decimals = 0;
    /// Of an integer: 32 bits don't hold it.
    bool isLong = false;
};

enum class CellKind : char { kNull, kText, kNumber, kYesNo, kBytes };

/// A value as UTF-8 text: a number with a point and without blanks ("nan" and "inf" where it is none), "true" or
/// "false", a date as 2009-02-20, a date and time as 2009-02-20 17:13:05. Bytes are as they are.
struct TableCell {
    CellKind kind = CellKind::kNull;
    std::string text;
};
using TableRow = std::vector<TableCell>;

/// As few digits as give the same number back; without an exponent unless it is far from 1.
std::string NumberText(double value);
std::string NumberText(float value);

/// Takes a table from front to back.
class TableSink {
  public:
    virtual ~TableSink() = default;
    /// Comes once, before the rows.
    virtual void TakeColumns(const std::vector<TableColumn> &columns) = 0;
    /// A cell a column. False for no more rows.
    virtual bool TakeRow(const TableRow &row) = 0;
};

/// Rows that can be walked over more than once.
struct RowSupply {
    long long count = 0;
    std::function<void(TableSink &sink)> walk;
};

/// Where a table is: a file, or whatever else OGR opens, and the layer in it (of an .mdb file: the table), whose empty
/// name takes the first.
struct TableSource {
    std::string path;
    std::string layer;
};

struct TableInfo {
    std::string layer;
    /// All of the source's.
    std::vector<std::string> layers;
    std::vector<TableColumn> columns;
    long long rows = 0;
};

}  // namespace ktl::host
