#pragma once

#include <memory>
#include <string_view>

#include "ktl/platform/ado/sql/ast.h"

namespace ktl::ado::sql {

/// The tree of one statement. Throws Error (syntax, column name) with what is wrong and where; names are not looked
/// up. Keywords ignore case and may be cut to four letters.
std::unique_ptr<ParsedStatement> ParseStatement(std::string_view statement);

}  // namespace ktl::ado::sql
