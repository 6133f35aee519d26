#include "tests/support/tds_server/translate.h"

#include <strings.h>

#include <algorithm>
#include <cctype>

#include "tests/support/tds_server/databases.h"

namespace ktl::test::tds {
namespace {

using Kind = SqlToken::Kind;

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || std::string_view("_@#$.").find(c) < 4 || (c & 0x80);
}
bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c));
}

/// Cuts a batch into tokens.
class Lexer {
  public:
    explicit Lexer(std::string_view text) : m_text(text) {}

    /// False at the end.
    bool Next(SqlToken &token) {
        SkipBlanks();
        if (m_at >= m_text.size()) return false;
        const char c = m_text[m_at];
        if (c == '[') return token = {Kind::Name, Quoted(']')}, true;
        if (c == '"') return token = {Kind::Name, Quoted('"')}, true;
        if (c == '\'') return token = {Kind::Text, Quoted('\'')}, true;
        if ((c == 'N' || c == 'n') && At(1) == '\'') return ++m_at, token = {Kind::Text, Quoted('\'')}, true;
        if (c == '0' && (At(1) == 'x' || At(1) == 'X')) return m_at += 2, token = {Kind::Bytes, Word()}, true;
        if (IsDigit(c)) return token = {Kind::Word, Number()}, true;
        if (IsWordCharacter(c)) return token = {Kind::Word, Word()}, true;
        ++m_at;
        return token = {Kind::Symbol, std::string(1, c)}, true;
    }

  private:
    char At(std::size_t ahead) const { return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : '\0'; }
    void SkipBlanks() {
        while (m_at < m_text.size()) {
            if (m_text.compare(m_at, 2, "--") == 0) {
                m_at = std::min(m_text.find('\n', m_at), m_text.size());
            } else if (std::isspace(static_cast<unsigned char>(m_text[m_at]))) {
                ++m_at;
            } else {
                return;
            }
        }
    }
    std::string Word() {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && IsWordCharacter(m_text[m_at])) ++m_at;
        return std::string(m_text.substr(start, m_at - start));
    }
    std::string Number() {
        const std::size_t start = m_at;
        while (IsWordCharacter(At(0)) || At(0) == '.' ||
               ((At(0) == '+' || At(0) == '-') && std::toupper(m_text[m_at - 1]) == 'E')) {
            ++m_at;
        }
        return std::string(m_text.substr(start, m_at - start));
    }
    /// The text up to the closing character, which stands for itself when doubled.
    std::string Quoted(char close) {
        std::string text;
        for (++m_at; m_at < m_text.size(); ++m_at) {
            if (m_text[m_at] == close && At(1) != close) return ++m_at, text;
            if (m_text[m_at] == close) ++m_at;
            text += m_text[m_at];
        }
        throw SqlError(105, "Unclosed quotation mark after the character string '" + text + "'.");
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

std::string Quote(std::string_view text, char quote) {
    std::string quoted(1, quote);
    for (const char c : text) quoted.append(c == quote ? 2 : 1, c);
    return quoted + quote;
}

/// Functions whose names differ.
struct FunctionName {
    const char *server;
    const char *sqlite;
};
constexpr FunctionName kFunctions[] = {{"LEN", "length"}, {"ISNULL", "ifnull"}};
constexpr const char *kRowCount = "@@ROWCOUNT";

/// Words behind which a table is named.
constexpr const char *kTableWords[] = {"FROM", "JOIN", "INTO", "UPDATE", "TABLE"};
/// Words that begin a table's constraint rather than a column.
constexpr const char *kConstraintWords[] = {"CONSTRAINT", "PRIMARY", "UNIQUE", "CHECK", "FOREIGN"};

template <std::size_t N>
bool IsOneOf(const SqlToken &token, const char *const (&words)[N]) {
    return token.kind == Kind::Word && std::any_of(words, words + N, [&](const char *word) { return token.Is(word); });
}

/// Writes one statement anew, from left to right.
class Rewriter {
  public:
    Rewriter(const SqlTokens &tokens, std::string database) : m_tokens(tokens), m_database(std::move(database)) {}

    /// The parameter whose statement's columns are asked for, behind `Run`; else empty.
    const std::string &Described() const { return m_described; }

    std::string Run() {
        if (Is(0, "CREATE") && Is(1, "TABLE")) return CreateTable();
        if (Is(0, "ALTER") && Is(1, "TABLE")) return AlterTable();
        while (m_at < m_tokens.size()) Step();
        if (!m_limit.empty()) Put("LIMIT " + m_limit);
        return m_sql;
    }

  private:
    bool Is(std::size_t position, std::string_view word) const {
        return position < m_tokens.size() && m_tokens[position].Is(word);
    }
    void Put(const std::string &piece) { m_sql += (m_sql.empty() ? "" : " ") + piece; }
    void PutToken() {
        const SqlToken &token = m_tokens[m_at++];
        switch (token.kind) {
            case Kind::Name:
                return Put(Quote(token.text, '"'));
            case Kind::Text:
                return Put(Quote(token.text, '\''));
            case Kind::Bytes:
                return Put("X'" + token.text + "'");
            case Kind::Symbol:
                // Pairs such as "<=" stay together.
                m_sql += (m_at > 1 && m_tokens[m_at - 2].kind == Kind::Symbol ? "" : " ") + token.text;
                return;
            case Kind::Word:
                return Put(token.text);
        }
    }
    void Step() {
        const SqlToken &token = m_tokens[m_at];
        if (IsOneOf(token, kTableWords)) {
            PutToken();
            PutTable();
        } else if (token.Is("SELECT")) {
            PutToken();
            TakeTop();
        } else if (token.kind == Kind::Word && Is(m_at + 1, "(")) {
            PutFunction();
        } else if (token.Is(kRowCount)) {
            ++m_at;
            Put("changes()");
        } else {
            PutToken();
        }
    }
    void TakeTop() {
        if (!Is(m_at, "TOP")) return;
        ++m_at;
        const bool bracketed = Is(m_at, "(");
        if (m_at + (bracketed ? 1 : 0) >= m_tokens.size()) return;
        m_at += bracketed ? 1 : 0;
        m_limit = m_tokens[m_at++].text;
        m_at += bracketed ? 1 : 0;
    }
    void PutFunction() {
        for (const FunctionName &name : kFunctions) {
            if (!m_tokens[m_at].Is(name.server)) continue;
            ++m_at;
            return Put(name.sqlite);
        }
        PutToken();
    }
    /// A name of one to three parts, or none when no name stands here.
    std::vector<std::string> TakeParts() {
        std::vector<std::string> parts;
        while (m_at < m_tokens.size() && m_tokens[m_at].IsName()) {
            parts.push_back(m_tokens[m_at++].text);
            while (Is(m_at, ".")) {
                if (Is(++m_at, ".")) parts.emplace_back();
            }
            if (!m_tokens[m_at - 1].Is(".")) break;
        }
        return parts;
    }
    /// Puts a table by its database's and its own name; commas lead to further ones.
    void PutTable() {
        const std::vector<std::string> parts = TakeParts();
        if (parts.empty()) return;
        const std::string &database = parts.size() == 3 ? parts[0] : m_database;
        if (parts.size() > 1 && strcasecmp(parts[parts.size() - 2].c_str(), "INFORMATION_SCHEMA") == 0) {
            Put("(" + Databases::TableList(database) + ")");
        } else if (strcasecmp(parts.back().c_str(), Databases::kDescription) == 0 && Is(m_at, "(")) {
            Put("master." + parts.back());
            if (m_at + 1 < m_tokens.size()) m_described = m_tokens[m_at + 1].text;
            while (m_at < m_tokens.size() && !m_tokens[m_at++].Is(")")) {
            }
        } else {
            Put(Quote(database, '"') + "." + Quote(parts.back(), '"'));
        }
        if (Is(m_at, ",")) {
            PutToken();
            PutTable();
        }
    }
    /// A column's name, type and the rest of its definition, up to a comma or the closing bracket.
    void PutColumnDefinition() {
        const SqlToken &name = m_tokens[m_at++];
        std::string declared = m_at < m_tokens.size() ? m_tokens[m_at++].text : std::string();
        if (Is(m_at, "(")) {
            while (m_at < m_tokens.size() && !Is(m_at, ")")) declared += m_tokens[m_at++].text;
            declared += ")";
            ++m_at;
        }
        const std::optional<SqlType> type = ParseType(declared);
        if (!type) {
            throw SqlError(
                2715, "Column, parameter, or variable '" + name.text + "': Cannot find data type " + declared + ".");
        }
        const std::string column = Quote(name.text, '"');
        // SQLite takes numbers only.
        if (type->length == SqlType::kMax) declared = type->facts->name + std::string("(-1)");
        Put(column + " " + declared);
        if (type->IsText()) Put(std::string("Collate ") + Databases::kCollation);
        if (type->facts->form == Form::DateTime) Put(std::string("Collate ") + Databases::kDateCollation);
        if (const auto check = CheckOfType(*type, column)) {
            Put("Constraint \"" + std::to_string(check->errorNumber) + "\" Check (" + check->condition + ")");
        }
        for (int depth = 0; m_at < m_tokens.size() && (depth > 0 || (!Is(m_at, ",") && !Is(m_at, ")")));) {
            depth += Is(m_at, "(") - Is(m_at, ")");
            PutToken();
        }
    }
    std::string CreateTable() {
        PutToken();
        PutToken();
        PutTable();
        for (int depth = 0; m_at < m_tokens.size();) {
            const bool opens = Is(m_at, "(");
            depth += opens - Is(m_at, ")");
            const bool definition = depth == 1 && (opens || Is(m_at, ","));
            PutToken();
            if (definition && m_at + 1 < m_tokens.size() && !IsOneOf(m_tokens[m_at], kConstraintWords)) {
                PutColumnDefinition();
            }
        }
        return m_sql;
    }
    std::string AlterTable() {
        PutToken();
        PutToken();
        PutTable();
        const bool add = Is(m_at, "ADD");
        if (m_at < m_tokens.size()) PutToken();
        if (add && m_at + 1 < m_tokens.size()) PutColumnDefinition();
        while (m_at < m_tokens.size()) PutToken();
        return m_sql;
    }

    const SqlTokens &m_tokens;
    std::string m_database;
    std::size_t m_at = 0;
    std::string m_sql;
    std::string m_limit;
    std::string m_described;
};

}  // namespace

bool SqlToken::Is(std::string_view word) const {
    return kind != Kind::Name && kind != Kind::Text && text.size() == word.size() &&
           strncasecmp(text.data(), word.data(), word.size()) == 0;
}

std::vector<SqlTokens> SplitBatch(std::string_view batch) {
    std::vector<SqlTokens> statements(1);
    Lexer lexer(batch);
    for (SqlToken token{}; lexer.Next(token);) {
        if (token.Is(";")) {
            statements.emplace_back();
        } else {
            statements.back().push_back(token);
        }
    }
    std::erase_if(statements, [](const SqlTokens &tokens) { return tokens.empty(); });
    return statements;
}

SqlStatement Translate(const SqlTokens &tokens, const std::string &database) {
    const auto is = [&](std::size_t position, std::string_view word) {
        return position < tokens.size() && tokens[position].Is(word);
    };
    if (is(0, "SET") && is(1, "NOCOUNT") && tokens.size() == 3) return {SqlStatement::Kind::NoCount, tokens[2].text};
    if (is(0, "SET")) return {SqlStatement::Kind::Ignore, {}};
    if (is(0, "WAITFOR") && is(1, "DELAY") && tokens.size() == 3) return {SqlStatement::Kind::Wait, tokens[2].text};
    if (is(0, "USE") && tokens.size() == 2) return {SqlStatement::Kind::Use, tokens[1].text};
    if (is(0, "CREATE") && is(1, "DATABASE") && tokens.size() == 3) {
        return {SqlStatement::Kind::CreateDatabase, tokens[2].text};
    }
    Rewriter rewriter(tokens, database);
    const std::string text = rewriter.Run();
    return {SqlStatement::Kind::Sql, text, rewriter.Described()};
}

}  // namespace ktl::test::tds
