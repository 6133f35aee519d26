#pragma once

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/expression_parser.h"
#include "ktl/platform/ado/sql/token_stream.h"

namespace ktl::ado::sql {

/// \file
/// Parsers of the statements that read and change rows. Each begins behind its first word.

SelectStatement ParseSelect(TokenStream &tokens, ExpressionParser &expressions);
InsertStatement ParseInsert(TokenStream &tokens, ExpressionParser &expressions);
UpdateStatement ParseUpdate(TokenStream &tokens, ExpressionParser &expressions);
DeleteStatement ParseDelete(TokenStream &tokens, ExpressionParser &expressions);
ReplaceStatement ParseReplace(TokenStream &tokens, ExpressionParser &expressions);

}  // namespace ktl::ado::sql
