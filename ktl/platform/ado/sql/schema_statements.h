#pragma once

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/token_stream.h"

namespace ktl::ado::sql {

/// \file
/// Parsers of the statements that make, change, open and close tables. Each begins behind its first word.

CreateTableStatement ParseCreate(TokenStream &tokens);
DropTableStatement ParseDrop(TokenStream &tokens);
AlterTableStatement ParseAlter(TokenStream &tokens);
UseStatement ParseUse(TokenStream &tokens);
PackStatement ParsePack(TokenStream &tokens);

}  // namespace ktl::ado::sql
