#pragma once

#include <string>

#include "host/table_rows.h"

namespace ktl::host {

/// The columns and the number of rows.
TableInfo DescribeTable(const TableSource &source);

/// Hands a table's rows to the sink: of a .dbf file through the library's own engine, memos and all, of a table of an
/// .mdb file, or the attributes of a layer of whatever else OGR opens. Large .dbf files and layers are never held
/// whole. Throws `Error`.
void ReadTable(const TableSource &source, TableSink &sink);

struct StatementResult {
    /// False: the statement gave no columns, and the sink has seen nothing.
    bool gaveRows = false;
    /// Rows that such a statement changed.
    long long touched = 0;
};

/// Sends a statement to a store: a folder of .dbf files (or one of its files), an .mdb file, or what a connection
/// string names. Throws `Error` that says what was wrong and where.
StatementResult RunStatement(const std::string &store, const std::string &statement, TableSink &sink);

/// True for a statement that may change files of a store: it has to come to its end, or may leave half of its work.
bool MayChangeFiles(const std::string &store, const std::string &statement);

}  // namespace ktl::host
