#include "ktl/platform/ado/sql/parser.h"

#include "ktl/platform/ado/sql/expression_parser.h"
#include "ktl/platform/ado/sql/row_statements.h"
#include "ktl/platform/ado/sql/schema_statements.h"
#include "ktl/platform/ado/sql/token_stream.h"

namespace ktl::ado::sql {

namespace {

Statement ParseAny(TokenStream &tokens, ParsedStatement &statement) {
    ExpressionParser expressions(tokens, statement);
    if (tokens.Is(TokenKind::End)) tokens.Fail("the statement is empty");
    if (tokens.TakeWord("select")) return ParseSelect(tokens, expressions);
    if (tokens.TakeWord("insert")) return ParseInsert(tokens, expressions);
    if (tokens.TakeWord("update")) return ParseUpdate(tokens, expressions);
    if (tokens.TakeWord("delete")) return ParseDelete(tokens, expressions);
    if (tokens.TakeWord("replace")) return ParseReplace(tokens, expressions);
    if (tokens.TakeWord("create")) return ParseCreate(tokens);
    if (tokens.TakeWord("drop")) return ParseDrop(tokens);
    if (tokens.TakeWord("alter")) return ParseAlter(tokens);
    if (tokens.TakeWord("use")) return ParseUse(tokens);
    if (tokens.TakeWord("pack")) return ParsePack(tokens);
    tokens.Fail("no statement begins like this");
}

}  // namespace

std::unique_ptr<ParsedStatement> ParseStatement(std::string_view statement) {
    auto parsed = std::make_unique<ParsedStatement>();
    parsed->text = statement;
    TokenStream tokens(parsed->text);
    parsed->statement = ParseAny(tokens, *parsed);
    tokens.TakeSymbol(";");
    if (!tokens.Is(TokenKind::End)) tokens.Fail("something stands behind the statement's end");
    return parsed;
}

}  // namespace ktl::ado::sql
