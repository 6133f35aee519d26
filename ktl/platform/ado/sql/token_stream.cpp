#include "ktl/platform/ado/sql/token_stream.h"

#include <charconv>

#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

bool TokenStream::IsKeyword(const Token &token, std::string_view keyword) {
    constexpr std::size_t kLeastLetters = 4;
    const std::size_t size = token.text.size();
    if (token.kind != TokenKind::Word || size > keyword.size()) return false;
    if (size < keyword.size() && size < kLeastLetters) return false;
    return EqualNames(token.text, keyword.substr(0, size));
}

const Token &TokenStream::Ahead() {
    if (!m_lookedAhead) m_ahead = m_lexer.Next();
    m_lookedAhead = true;
    return m_ahead;
}

void TokenStream::Advance() {
    m_token = m_lookedAhead ? m_ahead : m_lexer.Next();
    m_lookedAhead = false;
}

bool TokenStream::TakeWord(std::string_view keyword) {
    if (!IsWord(keyword)) return false;
    Advance();
    return true;
}

bool TokenStream::TakeSymbol(std::string_view symbol) {
    if (!IsSymbol(symbol)) return false;
    Advance();
    return true;
}

void TokenStream::ExpectWord(std::string_view keyword, const char *what) {
    if (!TakeWord(keyword)) Fail(what);
}

void TokenStream::ExpectSymbol(std::string_view symbol, const char *what) {
    if (!TakeSymbol(symbol)) Fail(what);
}

Name TokenStream::ParseName(const char *what) {
    Name name{CString(m_token.text), Position()};
    const bool word = Is(TokenKind::Word) && m_token.text[0] != '.';
    if (!word && !Is(TokenKind::Bracketed)) Fail(what);
    if (name.text.IsEmpty()) Fail(what);
    Advance();
    return name;
}

Name TokenStream::ParseTableName() {
    Name name = ParseName("a table's name was expected");
    while (TakeSymbol(".")) {
        while (TakeSymbol(".")) {
        }
        const Name part = ParseName("a table's name was expected");
        if (!EqualNames(part.text.View(), "dbf")) name = part;
    }
    return name;
}

int TokenStream::ParseSmallNumber() {
    int number = 0;
    const char *end = m_token.text.data() + m_token.text.size();
    const auto result = std::from_chars(m_token.text.data(), end, number);
    if (!Is(TokenKind::Number) || result.ec != std::errc() || result.ptr != end) {
        Fail("a whole number was expected");
    }
    Advance();
    return number;
}

}  // namespace ktl::ado::sql
