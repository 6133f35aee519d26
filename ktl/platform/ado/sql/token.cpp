#include "ktl/platform/ado/sql/token.h"

#include <charconv>
#include <cstring>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

namespace {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The end of the number at `position`: digits, a point, digits, an exponent.
std::size_t NumberEnd(std::string_view text, std::size_t position) {
    const auto digits = [&](std::size_t at) {
        while (at < text.size() && IsDigit(text[at])) ++at;
        return at;
    };
    std::size_t end = digits(position);
    if (end < text.size() && text[end] == '.') end = digits(end + 1);
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t power = end + 1;
        if (power < text.size() && (text[power] == '+' || text[power] == '-')) ++power;
        if (power < text.size() && IsDigit(text[power])) end = digits(power);
    }
    return end;
}

/// The end of the word at `position`, whole characters.
std::size_t WordEnd(std::string_view text, std::size_t position) {
    while (position < text.size() && IsWordByte(text[position])) position += GbkLength(text, position);
    return position;
}

constexpr std::string_view kBlanks = " \t\r\n";

}  // namespace

void ThrowAt(std::string_view statement, std::size_t position, const CString &what, int number) {
    constexpr std::size_t kShown = 24;
    std::string text = what.GetString();
    if (position >= statement.size()) {
        text += " at the end of the statement.";
    } else {
        text += " at byte " + std::to_string(position + 1) + " near \"";
        text += CutText(statement.substr(position), kShown);
        text += "\".";
    }
    throw Error(CString(text), number);
}

void ThrowSyntax(std::string_view statement, std::size_t position, const char *what) {
    ThrowAt(statement, position, CString("Syntax error: ") + what, error_number::kSyntax);
}

void Lexer::SkipBlanks() {
    while (m_position < m_statement.size()) {
        const char c = m_statement[m_position];
        if (c == '&' && m_statement.substr(m_position, 2) == "&&") {
            m_position = m_statement.find('\n', m_position);
            if (m_position == std::string_view::npos) m_position = m_statement.size();
        } else if (c == ';') {
            const std::size_t next = m_statement.find_first_not_of(kBlanks, m_position + 1);
            if (next != std::string_view::npos && m_statement.find('\n', m_position) > next) return;
            m_position = next == std::string_view::npos ? m_statement.size() : next;
        } else if (c != '\0' && kBlanks.find(c) != std::string_view::npos) {
            ++m_position;
        } else {
            return;
        }
    }
}

Token Lexer::Made(TokenKind kind, std::size_t begin, std::size_t end, std::size_t textBegin, std::size_t textEnd) {
    m_position = end;
    return {kind, m_statement.substr(textBegin, textEnd - textBegin), begin, end};
}

Token Lexer::Next() {
    SkipBlanks();
    if (m_position >= m_statement.size()) return {TokenKind::End, {}, m_statement.size(), m_statement.size()};
    const char c = m_statement[m_position];
    if (c == '\'' || c == '"') return Quoted(c);
    if (c == '[') return Bracketed();
    if (c == '{' || c == '#') return Date();
    if (IsWordByte(c)) return NumberOrWord();
    if (c == '.') return Dotted();
    return Symbol();
}

Token Lexer::Quoted(char quote) {
    const std::size_t begin = m_position;
    for (std::size_t i = begin + 1; i < m_statement.size(); i += GbkLength(m_statement, i)) {
        if (m_statement[i] != quote) continue;
        if (i + 1 >= m_statement.size() || m_statement[i + 1] != quote) {
            return Made(TokenKind::String, begin, i + 1, begin + 1, i);
        }
        ++i;
    }
    ThrowSyntax(m_statement, begin, "a quoted text is not closed");
}

Token Lexer::Bracketed() {
    const std::size_t begin = m_position;
    for (std::size_t i = begin + 1; i < m_statement.size(); i += GbkLength(m_statement, i)) {
        if (m_statement[i] == ']') return Made(TokenKind::Bracketed, begin, i + 1, begin + 1, i);
    }
    ThrowSyntax(m_statement, begin, "a square bracket is not closed");
}

Token Lexer::NumberOrWord() {
    const std::size_t begin = m_position;
    if (!IsDigit(m_statement[begin])) {
        const std::size_t end = WordEnd(m_statement, begin);
        return Made(TokenKind::Word, begin, end, begin, end);
    }
    std::size_t end = NumberEnd(m_statement, begin);
    if (end >= m_statement.size() || !IsWordByte(m_statement[end])) {
        return Made(TokenKind::Number, begin, end, begin, end);
    }
    // A column of a foreign table may be named 2010POP.
    end = WordEnd(m_statement, begin);
    return Made(TokenKind::Word, begin, end, begin, end);
}

/// A number that begins with its point, a dotted word as in `.T.` and `.And.`, or the point between two names.
Token Lexer::Dotted() {
    const std::size_t begin = m_position;
    std::size_t end = begin + 1;
    if (end < m_statement.size() && IsDigit(m_statement[end])) {
        end = NumberEnd(m_statement, begin);
        return Made(TokenKind::Number, begin, end, begin, end);
    }
    while (end < m_statement.size() && IsLetter(m_statement[end])) ++end;
    const std::string word = FoldedName(m_statement.substr(begin, end + 1 - begin));
    for (const char *known : {".t.", ".f.", ".y.", ".n.", ".null.", ".and.", ".or.", ".not."}) {
        if (word == known) return Made(TokenKind::Word, begin, end + 1, begin, end + 1);
    }
    return Made(TokenKind::Symbol, begin, begin + 1, begin, begin + 1);
}

Token Lexer::Date() {
    const std::size_t begin = m_position;
    const bool braces = m_statement[begin] == '{';
    const std::size_t end = m_statement.find(braces ? '}' : '#', begin + 1);
    const std::size_t textBegin = begin + (m_statement.substr(begin, 2) == "{^" ? 2 : 1);
    if (end != std::string_view::npos) {
        const std::string_view text = m_statement.substr(textBegin, end - textBegin);
        if (text.find_first_not_of("0123456789-/:. AMPamp") == std::string_view::npos) {
            return Made(TokenKind::Date, begin, end + 1, textBegin, end);
        }
    }
    if (braces) ThrowSyntax(m_statement, begin, "a date is not closed or holds other characters");
    return Symbol();
}

Token Lexer::Symbol() {
    const std::size_t begin = m_position;
    const std::string_view two = m_statement.substr(begin, 2);
    for (const char *symbol : {"<>", "!=", "<=", ">=", "==", "**"}) {
        if (two == symbol) return Made(TokenKind::Symbol, begin, begin + 2, begin, begin + 2);
    }
    if (std::strchr("=<>#+-*/^%(),;.!", m_statement[begin]) == nullptr || m_statement[begin] == '\0') {
        ThrowSyntax(m_statement, begin, "a character that begins nothing");
    }
    return Made(TokenKind::Symbol, begin, begin + 1, begin, begin + 1);
}

bool ScanNumber(std::string_view text, std::size_t &position, Value &value) {
    std::size_t end = position;
    // The common case, a short whole number, in one pass.
    long long whole = 0;
    while (end < text.size() && IsDigit(text[end]) && end - position < 18) whole = whole * 10 + (text[end++] - '0');
    const char stop = end < text.size() ? text[end] : ' ';
    if (end > position && !IsDigit(stop) && stop != '.' && stop != 'e' && stop != 'E') {
        value.SetInteger(whole);
        position = end;
        return true;
    }
    if (position >= text.size() || (!IsDigit(text[position]) && text[position] != '.')) return false;
    end = NumberEnd(text, position);
    const std::string_view number = text.substr(position, end - position);
    if (number == ".") return false;
    if (const auto decimal = DecimalFromText(number)) {
        value.SetDecimal(*decimal);
        if (decimal->scale == 0 && number.size() < 18) value.SetInteger(static_cast<long long>(decimal->units));
    } else {
        double real = 0;
        const auto result = std::from_chars(number.data(), number.data() + number.size(), real);
        if (result.ec == std::errc::result_out_of_range) return false;
        value.SetDouble(real);
    }
    position = end;
    return true;
}

void NegateNumber(Value &value) {
    if (value.GetKind() == Value::Kind::Integer) {
        value.SetInteger(-value.Integer());
    } else if (value.GetKind() == Value::Kind::Double) {
        value.SetDouble(-value.Double());
    } else {
        const Decimal decimal = value.AsDecimal();
        value.SetDecimal({-decimal.units, decimal.scale});
    }
}

bool ScanString(std::string_view text, std::size_t &position, Value &value) {
    if (position >= text.size() || (text[position] != '\'' && text[position] != '"')) return false;
    const char quote = text[position];
    std::size_t begin = position + 1;
    std::string &out = value.MutableText();
    out.clear();
    for (std::size_t i = begin; i < text.size(); i += GbkLength(text, i)) {
        if (text[i] != quote) continue;
        out.append(text, begin, i - begin);
        if (i + 1 >= text.size() || text[i + 1] != quote) {
            position = i + 1;
            return true;
        }
        // The first quote of the pair is dropped, the second kept with what follows.
        begin = ++i;
    }
    return false;
}

}  // namespace ktl::ado::sql
