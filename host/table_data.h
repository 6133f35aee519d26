#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace ktl::host {

/// A column as it is shown. Texts are UTF-8.
struct TableColumn {
    std::string name;
    /// In a word: text, memo, integer, number, yes/no, date, bytes.
    std::string type;
    /// Characters or bytes; 0 where that has no meaning.
    int width = 0;
    bool isNumber = false;
};

/// A table, or what a statement gave, in memory. Texts are UTF-8; a cell without a value is empty.
struct TableData {
    std::vector<TableColumn> columns;
    std::vector<std::vector<std::optional<std::string>>> rows;
    /// Rows in all, of which `rows` may hold the first.
    long long count = 0;
    /// What a person should know, a line each.
    std::vector<std::string> notes;
};

constexpr long long kAllRows = std::numeric_limits<long long>::max();

/// Reads a .dbf file in place, a table of an .mdb file, or the attributes of a layer of whatever else OGR opens (an
/// empty name takes the first), at most `most` rows. With a word, only the rows count of which a cell holds it, letter
/// case and all. Throws `Error`.
TableData ReadTable(const std::string &path, const std::string &layer, const std::string &word, long long most);

/// Sends a statement to a folder of .dbf files, an .mdb file or the store that a connection string names. A statement
/// that gives no rows leaves the columns empty and tells in `count` how many it touched. Throws `Error`.
TableData RunStatement(const std::string &store, const std::string &statement);

}  // namespace ktl::host
