#include "ktl/platform/ado/sql/statement_cache.h"

#include <algorithm>
#include <cstring>

#include "ktl/platform/ado/sql/parser.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

constexpr std::size_t kMaxStatements = 32;
constexpr std::size_t kMaxText = 8192;
constexpr std::size_t kMaxLiterals = 300;

bool ReadLiteral(std::string_view text, std::size_t &position, Value &value) {
    if (value.GetKind() == Value::Kind::Text) return ScanString(text, position, value);
    const bool negative = position < text.size() && text[position] == '-';
    std::size_t begin = position + (negative ? 1 : 0);
    if (!ScanNumber(text, begin, value)) {
        value.SetInteger(0);
        return false;
    }
    position = begin;
    if (negative) NegateNumber(value);
    return true;
}

/// Reads the text's literals into the statement when the rest of the text is the same; false otherwise.
bool Match(ParsedStatement &parsed, std::string_view text) {
    const std::string_view shape = parsed.text;
    std::size_t from = 0;
    std::size_t position = 0;
    const auto samePiece = [&](std::size_t end) {
        const std::size_t size = end - from;
        if (text.size() - position < size || std::memcmp(text.data() + position, shape.data() + from, size) != 0) {
            return false;
        }
        position += size;
        return true;
    };
    for (std::size_t i = 0; i < parsed.spans.size(); ++i) {
        const LiteralSpan span = parsed.spans[i];
        if (span.end == 0) continue;
        if (!samePiece(span.begin) || !ReadLiteral(text, position, parsed.literals[i])) return false;
        from = span.end;
    }
    return samePiece(shape.size()) && position == text.size();
}

bool IsWorthKeeping(const ParsedStatement &parsed) {
    return parsed.statement.index() <= 3 && parsed.text.size() <= kMaxText && parsed.literals.size() <= kMaxLiterals;
}

}  // namespace

PreparedStatement &StatementCache::Get(std::string_view statement) {
    for (std::size_t i = 0; i < m_statements.size(); ++i) {
        if (!Match(*m_statements[i]->parsed, statement)) continue;
        m_statements[i]->reused = true;
        std::rotate(m_statements.begin(), m_statements.begin() + static_cast<std::ptrdiff_t>(i),
                    m_statements.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        return *m_statements.front();
    }
    auto fresh = std::make_unique<PreparedStatement>();
    Refresh(*fresh, statement);
    if (!IsWorthKeeping(*fresh->parsed)) {
        m_uncached = std::move(fresh);
        return *m_uncached;
    }
    if (m_statements.size() >= kMaxStatements) m_statements.pop_back();
    m_statements.insert(m_statements.begin(), std::move(fresh));
    return *m_statements.front();
}

void StatementCache::Refresh(PreparedStatement &prepared, std::string_view statement) {
    // The plan borrows from the tree and goes first.
    prepared.plan.reset();
    prepared.parsed = ParseStatement(statement);
    prepared.reused = false;
}

}  // namespace ktl::ado::sql
