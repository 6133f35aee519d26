#pragma once

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/literal_parser.h"
#include "ktl/platform/ado/sql/token_stream.h"

namespace ktl::ado::sql {

/// Parses the expressions of one statement.
class ExpressionParser {
  public:
    /// Borrows both.
    ExpressionParser(TokenStream &tokens, ParsedStatement &statement)
        : m_tokens(tokens), m_literals(tokens, statement) {}

    Expression Parse() { return ParseOr(); }
    /// In a list of values a bracketed text is a literal, elsewhere the name of a column.
    void SetBracketsAreText(bool text) { m_bracketsAreText = text; }

  private:
    // From the loosest binding to the tightest.
    Expression ParseOr();
    Expression ParseAnd();
    Expression ParseNot();
    Expression ParseComparison();
    Expression ParsePredicate(Expression left);
    Expression ParseIn(Expression left, std::uint32_t position);
    Expression ParseBetween(Expression left, std::uint32_t position);
    Expression ParseSum();
    Expression ParseProduct();
    Expression ParsePower();
    Expression ParseUnary();
    Expression ParsePrimary();
    Expression ParseBracket();
    Expression ParseWordPrimary();
    Expression ParseColumn();
    Expression ParseCall();
    bool TakeNotOfPredicate();

    TokenStream &m_tokens;
    LiteralParser m_literals;
    bool m_bracketsAreText = false;
};

}  // namespace ktl::ado::sql
