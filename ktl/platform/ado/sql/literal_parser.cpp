#include "ktl/platform/ado/sql/literal_parser.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

namespace {

/// Year, month, day, hour, minute, second as they were written.
struct DateParts {
    std::array<int, 6> numbers{};
    std::size_t count = 0;
};

/// The whole numbers of a text; false when one is too large or there are too many.
bool ReadParts(std::string_view text, DateParts &parts) {
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] < '0' || text[i] > '9') {
            ++i;
            continue;
        }
        if (parts.count == parts.numbers.size()) return false;
        const auto result = std::from_chars(text.data() + i, text.data() + text.size(), parts.numbers[parts.count++]);
        if (result.ec != std::errc()) return false;
        i = static_cast<std::size_t>(result.ptr - text.data());
    }
    return true;
}

/// The month may stand first when the year cannot be meant; "PM" and "AM" count twelve hours.
std::optional<DateTime> ReadDate(std::string_view text) {
    DateParts parts;
    if (!ReadParts(text, parts)) return std::nullopt;
    if (parts.count == 0) return kEmptyDate;
    if (parts.count < 3) return std::nullopt;
    auto &[year, month, day, hour, minute, second] = parts.numbers;
    if (year <= 12 && day > 31) {
        std::swap(year, month);
        std::swap(year, day);
    }
    if (text.find_first_of("Pp") != std::string_view::npos && hour < 12) hour += 12;
    if (text.find_first_of("Aa") != std::string_view::npos && hour == 12) hour = 0;
    return FromCivil({year, month, day, hour, minute, second});
}

}  // namespace

Expression LiteralParser::Constant(const Value &value, bool lifted, std::size_t begin, std::size_t end) {
    Expression node;
    node.position = static_cast<std::uint32_t>(begin);
    node.literal = static_cast<std::uint32_t>(m_statement.literals.size());
    m_statement.literals.push_back(value);
    m_statement.spans.push_back(lifted ? LiteralSpan{node.position, static_cast<std::uint32_t>(end)} : LiteralSpan{});
    return node;
}

Expression LiteralParser::TakeConstant(const Value &value) {
    const Token token = m_tokens.Current();
    m_tokens.Advance();
    return Constant(value, false, token.begin, token.end);
}

Expression LiteralParser::ParseNumberOrText(bool negative, std::size_t begin) {
    Value value;
    std::size_t position = 0;
    const Token token = m_tokens.Current();
    const std::string_view raw = m_tokens.GetStatement().substr(token.begin, token.end - token.begin);
    const bool good = token.kind == TokenKind::String ? ScanString(raw, position, value)
                                                      : ScanNumber(raw, position, value) && position == raw.size();
    if (!good) m_tokens.Fail("a number that cannot be read");
    if (negative) NegateNumber(value);
    m_tokens.Advance();
    return Constant(value, !negative || begin < token.begin, begin, token.end);
}

Expression LiteralParser::ParseDate() {
    const auto date = ReadDate(m_tokens.Current().text);
    if (!date) m_tokens.Fail("a date that cannot be read");
    return TakeConstant(Value::FromDateTime(*date));
}

Expression LiteralParser::ParseBracketedText() {
    return TakeConstant(Value::FromText(m_tokens.Current().text));
}

bool LiteralParser::ParseWord(Expression &result) {
    struct Word {
        const char *word;
        Value value;
    };
    static const Word kWords[] = {
        {"null", {}},
        {".null.", {}},
        {"true", Value::FromBool(true)},
        {".t.", Value::FromBool(true)},
        {".y.", Value::FromBool(true)},
        {"false", Value::FromBool(false)},
        {".f.", Value::FromBool(false)},
        {".n.", Value::FromBool(false)},
    };
    const auto *found = std::find_if(std::begin(kWords), std::end(kWords),
                                     [&](const Word &word) { return EqualNames(m_tokens.Current().text, word.word); });
    if (found == std::end(kWords)) return false;
    result = TakeConstant(found->value);
    return true;
}

}  // namespace ktl::ado::sql
