#pragma once

#include <cstddef>
#include <string_view>

#include "ktl/platform/ado/value.h"

namespace ktl::ado::sql {

enum class TokenKind {
    End,
    /// A bare word: a keyword or a name.
    Word,
    /// A word in square brackets; its text is what they enclose.
    Bracketed,
    Number,
    /// A quoted text; its text is what the quotes enclose, with inner quotes still doubled.
    String,
    /// A date between `{^` and `}` or between two `#`; its text is what they enclose.
    Date,
    /// An operator or a bracket, of one or two characters.
    Symbol,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view text;
    /// Where the token begins and ends in the statement, its quotes included.
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Cuts a statement into tokens. Text is GBK: a trail byte is never a quote, a bracket or an operator. `&&` starts a
/// remark up to the line's end; `;` joins lines and ends a statement.
class Lexer {
  public:
    explicit Lexer(std::string_view statement) : m_statement(statement) {}

    /// The next token, and End for ever after the last. Throws Error (syntax) for an unfinished quote or bracket or a
    /// character that begins nothing.
    Token Next();

  private:
    void SkipBlanks();
    Token Quoted(char quote);
    Token Bracketed();
    Token NumberOrWord();
    Token Dotted();
    Token Date();
    Token Symbol();
    Token Made(TokenKind kind, std::size_t begin, std::size_t end, std::size_t textBegin, std::size_t textEnd);

    std::string_view m_statement;
    std::size_t m_position = 0;
};

/// True for the bytes that a bare word may hold, lead and trail bytes apart.
constexpr bool IsWordByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Reads the number that starts at `position` (no sign) and moves behind it; false when there is none. Whole numbers
/// become integers, others decimals, and doubles where they have an exponent or too many digits.
bool ScanNumber(std::string_view text, std::size_t &position, Value &value);
/// Turns the sign of a number around.
void NegateNumber(Value &value);
/// Reads the quoted text that starts at `position` and moves behind it; false when the quote is not closed. Doubled
/// quotes become one.
bool ScanString(std::string_view text, std::size_t &position, Value &value);

/// Throws Error (syntax): what, the place counted from 1, and the text found there.
[[noreturn]] void ThrowSyntax(std::string_view statement, std::size_t position, const char *what);
/// The same with another number.
[[noreturn]] void ThrowAt(std::string_view statement, std::size_t position, const CString &what, int number);

}  // namespace ktl::ado::sql
