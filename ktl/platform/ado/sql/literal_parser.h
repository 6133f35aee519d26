#pragma once

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/token_stream.h"

namespace ktl::ado::sql {

/// Reads the constants of a statement into its list of literals. One that is lifted may have another text in the next
/// statement of the same shape; the others are part of the shape.
class LiteralParser {
  public:
    /// Borrows both.
    LiteralParser(TokenStream &tokens, ParsedStatement &statement) : m_tokens(tokens), m_statement(statement) {}

    /// The number or text that is the current token. `begin` is where its sign stands; a minus apart from its number
    /// is part of the shape, so that such a literal is not lifted.
    Expression ParseNumberOrText(bool negative, std::size_t begin);
    /// `{^2020-01-31 8:09:36}`, the empty date `{}`, and between `#` also the month first: 1/31/2020.
    Expression ParseDate();
    /// A logical constant or Null; false when the current word is none.
    bool ParseWord(Expression &result);
    /// A bracketed text.
    Expression ParseBracketedText();

  private:
    Expression Constant(const Value &value, bool lifted, std::size_t begin, std::size_t end);
    /// The current token's value, which is not lifted.
    Expression TakeConstant(const Value &value);

    TokenStream &m_tokens;
    ParsedStatement &m_statement;
};

}  // namespace ktl::ado::sql
