#pragma once

#include <string_view>

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

/// How deep brackets, signs and chains of unequal operators may nest.
inline constexpr int kMaxDepth = 200;

/// The tokens of one statement with a look at the next but one, and the small pieces that all statements are made of.
/// Every fault is thrown as Error (syntax) with the place of the current token. The text must outlive the stream.
class TokenStream {
  public:
    explicit TokenStream(std::string_view statement) : m_statement(statement), m_lexer(statement) { Advance(); }

    std::string_view GetStatement() const { return m_statement; }
    const Token &Current() const { return m_token; }
    /// Where the current token begins.
    std::uint32_t Position() const { return static_cast<std::uint32_t>(m_token.begin); }
    /// The token behind the current one.
    const Token &Ahead();
    void Advance();
    [[noreturn]] void Fail(const char *what) const { ThrowSyntax(m_statement, m_token.begin, what); }

    bool Is(TokenKind kind) const { return m_token.kind == kind; }
    /// The keyword itself, or its first four letters or more, without regard to case.
    bool IsWord(std::string_view keyword) const { return IsKeyword(m_token, keyword); }
    bool IsSymbol(std::string_view symbol) const { return m_token.kind == TokenKind::Symbol && m_token.text == symbol; }
    bool IsAheadWord(std::string_view keyword) { return IsKeyword(Ahead(), keyword); }
    bool IsAheadSymbol(std::string_view symbol) { return Ahead().kind == TokenKind::Symbol && Ahead().text == symbol; }
    /// These move on when the token is the one asked for, and else say so or fail.
    bool TakeWord(std::string_view keyword);
    bool TakeSymbol(std::string_view symbol);
    void ExpectWord(std::string_view keyword, const char *what);
    void ExpectSymbol(std::string_view symbol, const char *what);

    /// A bare or bracketed name.
    Name ParseName(const char *what);
    /// A name with any number of qualifiers in front, of which the last part counts; a part "dbf" behind a name is its
    /// file's extension.
    Name ParseTableName();
    /// A whole number that an int holds.
    int ParseSmallNumber();

    /// Counts the nesting of the scope that it lives in; throws when it is too deep.
    class Depth {
      public:
        explicit Depth(TokenStream &tokens) : m_tokens(tokens) {
            if (++tokens.m_depth > kMaxDepth) tokens.Fail("the statement is nested too deeply");
        }
        Depth(const Depth &) = delete;
        Depth &operator=(const Depth &) = delete;
        ~Depth() { --m_tokens.m_depth; }

      private:
        TokenStream &m_tokens;
    };

  private:
    static bool IsKeyword(const Token &token, std::string_view keyword);

    std::string_view m_statement;
    Lexer m_lexer;
    Token m_token;
    Token m_ahead;
    bool m_lookedAhead = false;
    int m_depth = 0;
};

}  // namespace ktl::ado::sql
