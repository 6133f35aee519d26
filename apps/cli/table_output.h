#pragma once

#include <string>

#include "host/table_data.h"

namespace ktl::cli {

enum class TableForm { kAligned, kCsv, kJson };

/// The rows in a form, UTF-8: aligned columns under their names (numbers to the right, line ends and other control
/// characters as blanks), CSV with quotes where they are needed, or a JSON array of objects with null for empty cells.
std::string TableText(const host::TableData &data, TableForm form);

/// How many columns of a terminal a text takes: two for a wide character.
int DisplayWidth(std::string_view utf8);

}  // namespace ktl::cli
