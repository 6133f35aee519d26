#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ktl::test::tds {

/// A piece of a statement: a word, a quoted name (without its quotes), a text literal (with its quotes doubled inside,
/// as written), a byte literal's digits, or one other character.
struct SqlToken {
    enum class Kind { Word, Name, Text, Bytes, Symbol };
    Kind kind;
    std::string text;

    bool IsName() const { return kind == Kind::Word || kind == Kind::Name; }
    /// Without regard to case.
    bool Is(std::string_view word) const;
};
using SqlTokens = std::vector<SqlToken>;

/// What a statement asks for.
struct SqlStatement {
    /// Sql: `text` is in SQLite's language. Use and CreateDatabase: `text` is the name. NoCount: ON or OFF. Wait: how
    /// long, as hours:minutes:seconds. Ignore: a setting that has no meaning here.
    enum class Kind { Sql, Use, CreateDatabase, NoCount, Wait, Ignore };
    Kind kind;
    std::string text;
    /// The parameter that holds a statement whose columns are asked for.
    std::string described = {};
};

/// The statements of a batch, parted by semicolons. Throws SqlError for a text that doesn't end.
std::vector<SqlTokens> SplitBatch(std::string_view batch);
/// Tables without a database are those of `database`. Throws SqlError for an unknown column type.
SqlStatement Translate(const SqlTokens &tokens, const std::string &database);

}  // namespace ktl::test::tds
