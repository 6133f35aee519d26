#pragma once

#include <string>

#include "ktl/platform/ado/dbase/table.h"
#include "ktl/platform/ado/sql/ast.h"

namespace ktl::ado::dbase {

/// Writes the table anew with a column added, dropped, changed or renamed, beside the old file, and puts it in the old
/// one's place. `table` is in a writing statement; afterwards it is an open file without a name. The new file is of
/// the 0x30 family whatever the old one was, with the memos in an .fpt. Rows keep their numbers, deleted ones too.
/// Throws Error and leaves the old table as it was.
void ChangeTable(Table &table, const sql::AlterTableStatement &change);

/// Writes the table anew without its deleted rows, as `ChangeTable` does; memo texts stay where they are.
void PackTable(Table &table);

/// Writes an empty table and its memo file in place of one of that name, if any.
void MakeTable(const std::string &systemPath, const std::vector<sql::ColumnDefinition> &columns);

}  // namespace ktl::ado::dbase
