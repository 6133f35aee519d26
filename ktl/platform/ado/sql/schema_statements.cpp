#include "ktl/platform/ado/sql/schema_statements.h"

#include <algorithm>
#include <iterator>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

namespace {

constexpr std::size_t kMaxColumns = 255;

struct TypeName {
    const char *name;
    ColumnType type;
    /// What may stand in brackets behind it: nothing that counts (0), a width (1), a width and decimals (2), decimals
    /// only (3).
    int arguments;
    int width;
    int decimals;
};

constexpr TypeName kTypeNames[] = {
    {"int", ColumnType::Integer, 0, 0, 0},
    {"integer", ColumnType::Integer, 0, 0, 0},
    {"i", ColumnType::Integer, 0, 0, 0},
    {"bigint", ColumnType::BigInteger, 0, 0, 0},
    {"char", ColumnType::Char, 1, 1, 0},
    {"character", ColumnType::Char, 1, 1, 0},
    {"c", ColumnType::Char, 1, 1, 0},
    {"varchar", ColumnType::Char, 1, 1, 0},
    {"v", ColumnType::Char, 1, 1, 0},
    {"nvarchar", ColumnType::Char, 1, 1, 0},
    {"numeric", ColumnType::Numeric, 2, 10, 0},
    {"num", ColumnType::Numeric, 2, 10, 0},
    {"n", ColumnType::Numeric, 2, 10, 0},
    {"decimal", ColumnType::Numeric, 2, 10, 0},
    {"float", ColumnType::Float, 2, 20, 4},
    {"f", ColumnType::Float, 2, 20, 4},
    {"double", ColumnType::Double, 3, 8, 2},
    {"b", ColumnType::Double, 3, 8, 2},
    {"currency", ColumnType::Currency, 0, 0, 0},
    {"y", ColumnType::Currency, 0, 0, 0},
    {"money", ColumnType::Currency, 0, 0, 0},
    {"date", ColumnType::Date, 0, 0, 0},
    {"d", ColumnType::Date, 0, 0, 0},
    {"datetime", ColumnType::DateTime, 0, 0, 0},
    {"t", ColumnType::DateTime, 0, 0, 0},
    {"logical", ColumnType::Logical, 0, 0, 0},
    {"l", ColumnType::Logical, 0, 0, 0},
    {"bit", ColumnType::Logical, 0, 0, 0},
    {"bool", ColumnType::Logical, 0, 0, 0},
    {"memo", ColumnType::Memo, 0, 0, 0},
    {"m", ColumnType::Memo, 0, 0, 0},
    {"text", ColumnType::Memo, 0, 0, 0},
    {"general", ColumnType::General, 0, 0, 0},
    {"g", ColumnType::General, 0, 0, 0},
    {"image", ColumnType::General, 0, 0, 0},
    {"blob", ColumnType::Blob, 0, 0, 0},
    {"w", ColumnType::Blob, 0, 0, 0},
};

const TypeName *FindType(std::string_view name) {
    const auto *found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                     [&](const TypeName &type) { return EqualNames(name, type.name); });
    return found == std::end(kTypeNames) ? nullptr : found;
}

void ParseWidth(TokenStream &tokens, const TypeName &type, ColumnDefinition &definition) {
    definition.width = type.width;
    definition.decimals = type.decimals;
    if (!tokens.TakeSymbol("(")) return;
    const int first = tokens.ParseSmallNumber();
    int second = 0;
    if (tokens.TakeSymbol(",")) second = tokens.ParseSmallNumber();
    tokens.ExpectSymbol(")", "the bracket behind a column's width is not closed");
    if (type.arguments == 1 || type.arguments == 2) definition.width = first;
    if (type.arguments == 2) definition.decimals = second;
    if (type.arguments == 3) definition.decimals = first;
}

ColumnDefinition ParseDefinition(TokenStream &tokens) {
    ColumnDefinition definition;
    const Name name = tokens.ParseName("the definition of a column was expected");
    definition.name = name.text;
    definition.position = name.position;
    if (!tokens.Is(TokenKind::Word) && !tokens.Is(TokenKind::Bracketed)) tokens.Fail("a column's type was expected");
    const TypeName *type = FindType(tokens.Current().text);
    if (!type) tokens.Fail("no column type has this name");
    tokens.Advance();
    definition.type = type->type;
    ParseWidth(tokens, *type, definition);
    if (tokens.TakeWord("not")) {
        tokens.ExpectWord("null", "Null was expected");
    } else {
        tokens.TakeWord("null");
    }
    return definition;
}

/// The word Column, unless it is itself the name of a column.
void TakeColumnWord(TokenStream &tokens, bool definition) {
    if (!tokens.IsWord("column")) return;
    const Token &next = tokens.Ahead();
    const bool isName = next.kind == TokenKind::End || (definition && next.kind == TokenKind::Symbol);
    if (!isName) tokens.Advance();
}

void ParseRename(TokenStream &tokens, AlterTableStatement &alter) {
    alter.change = AlterTableStatement::Change::Rename;
    if (tokens.IsWord("column") && !tokens.IsAheadWord("to")) tokens.Advance();
    alter.column = tokens.ParseName("a column's name was expected");
    tokens.ExpectWord("to", "To was expected");
    alter.newName = tokens.ParseName("a column's new name was expected");
}

/// The name in quotes of `Select('t')`.
Name ParseArea(TokenStream &tokens) {
    tokens.ExpectSymbol("(", "a bracket was expected");
    const Name area{CString(tokens.Current().text), tokens.Position()};
    if (!tokens.Is(TokenKind::String) && !tokens.Is(TokenKind::Bracketed)) {
        tokens.Fail("the name of a table in quotes was expected");
    }
    tokens.Advance();
    tokens.ExpectSymbol(")", "a closing bracket was expected");
    return area;
}

void ParseUseIn(TokenStream &tokens, UseStatement &use) {
    if (tokens.Is(TokenKind::Number)) {
        tokens.ParseSmallNumber();
    } else if (tokens.TakeWord("select")) {
        use.area = ParseArea(tokens);
    } else {
        use.area = tokens.ParseName("a table's name was expected");
    }
}

}  // namespace

CreateTableStatement ParseCreate(TokenStream &tokens) {
    if (!tokens.TakeWord("table")) tokens.ExpectWord("dbf", "Table was expected");
    CreateTableStatement create;
    create.table = tokens.ParseTableName();
    tokens.TakeWord("free");
    tokens.ExpectSymbol("(", "the list of columns was expected");
    do {
        const ColumnDefinition column = ParseDefinition(tokens);
        if (create.columns.size() >= kMaxColumns) tokens.Fail("a table has at most 255 columns");
        const bool taken = std::any_of(
            create.columns.begin(), create.columns.end(),
            [&](const ColumnDefinition &other) { return EqualNames(other.name.View(), column.name.View()); });
        if (taken) {
            ThrowAt(tokens.GetStatement(), column.position, "Two columns have one name", error_number::kColumnName);
        }
        create.columns.push_back(column);
    } while (tokens.TakeSymbol(","));
    tokens.ExpectSymbol(")", "a comma or the end of the list of columns was expected");
    return create;
}

DropTableStatement ParseDrop(TokenStream &tokens) {
    tokens.ExpectWord("table", "Table was expected");
    return {tokens.ParseTableName()};
}

AlterTableStatement ParseAlter(TokenStream &tokens) {
    using Change = AlterTableStatement::Change;
    tokens.ExpectWord("table", "Table was expected");
    AlterTableStatement alter;
    alter.table = tokens.ParseTableName();
    if (tokens.TakeWord("add")) {
        alter.change = Change::Add;
        TakeColumnWord(tokens, true);
        alter.definition = ParseDefinition(tokens);
    } else if (tokens.TakeWord("drop")) {
        alter.change = Change::Drop;
        TakeColumnWord(tokens, false);
        alter.column = tokens.ParseName("a column's name was expected");
    } else if (tokens.TakeWord("alter")) {
        alter.change = Change::Alter;
        TakeColumnWord(tokens, true);
        alter.definition = ParseDefinition(tokens);
    } else if (tokens.TakeWord("rename")) {
        ParseRename(tokens, alter);
    } else {
        tokens.Fail("Add, Drop, Alter or Rename was expected");
    }
    return alter;
}

UseStatement ParseUse(TokenStream &tokens) {
    UseStatement use;
    if (!tokens.Is(TokenKind::End) && !tokens.IsWord("in") && !tokens.IsSymbol(";")) {
        use.table = tokens.ParseTableName();
    }
    while (tokens.Is(TokenKind::Word)) {
        if (tokens.TakeWord("exclusive")) {
            use.exclusive = true;
        } else if (tokens.TakeWord("shared") || tokens.TakeWord("again")) {
            continue;
        } else if (tokens.TakeWord("alias")) {
            tokens.ParseName("an alias was expected");
        } else if (tokens.TakeWord("in")) {
            ParseUseIn(tokens, use);
        } else {
            tokens.Fail("Exclusive, Shared or In was expected");
        }
    }
    return use;
}

PackStatement ParsePack(TokenStream &tokens) {
    PackStatement pack;
    if (tokens.IsWord("memo") && tokens.Ahead().kind == TokenKind::End) {
        tokens.Fail("memo files are not packed; copying the rows into a new table makes a compact one");
    }
    tokens.TakeWord("in");
    if (!tokens.Is(TokenKind::End)) pack.table = tokens.ParseTableName();
    return pack;
}

}  // namespace ktl::ado::sql
