#include "ktl/platform/ado/sql/parser.h"

#include <array>
#include <charconv>
#include <limits>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

/// How deep brackets, signs and chains of unequal operators may nest.
constexpr int kMaxDepth = 200;
constexpr std::size_t kMaxColumns = 255;

/// True for the keyword itself, and for its first four letters or more.
bool IsKeyword(std::string_view word, std::string_view keyword) {
    if (word.size() > keyword.size() || (word.size() < keyword.size() && word.size() < 4)) return false;
    return EqualNames(word, keyword.substr(0, word.size()));
}

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

struct FunctionName {
    const char *name;
    FunctionId id;
    bool aggregate;
    std::size_t minArguments;
    std::size_t maxArguments;
};

constexpr FunctionName kFunctionNames[] = {
    {"chr", FunctionId::Chr, false, 1, 1},         {"upper", FunctionId::Upper, false, 1, 1},
    {"ucase", FunctionId::Upper, false, 1, 1},     {"lower", FunctionId::Lower, false, 1, 1},
    {"lcase", FunctionId::Lower, false, 1, 1},     {"ltrim", FunctionId::LTrim, false, 1, 1},
    {"rtrim", FunctionId::RTrim, false, 1, 1},     {"trim", FunctionId::RTrim, false, 1, 1},
    {"alltrim", FunctionId::AllTrim, false, 1, 1}, {"len", FunctionId::Len, false, 1, 1},
    {"substr", FunctionId::SubStr, false, 2, 3},   {"substring", FunctionId::SubStr, false, 2, 3},
    {"mid", FunctionId::SubStr, false, 2, 3},      {"abs", FunctionId::Abs, false, 1, 1},
    {"round", FunctionId::Round, false, 1, 2},     {"int", FunctionId::Int, false, 1, 1},
    {"val", FunctionId::Val, false, 1, 1},         {"str", FunctionId::Str, false, 1, 3},
    {"count", FunctionId::Count, true, 1, 1},      {"max", FunctionId::Max, true, 1, 1},
    {"min", FunctionId::Min, true, 1, 1},          {"sum", FunctionId::Sum, true, 1, 1},
    {"avg", FunctionId::Avg, true, 1, 1},
};

struct SymbolOp {
    const char *symbol;
    Op op;
};

constexpr SymbolOp kComparisons[] = {
    {"=", Op::Equal},      {"==", Op::Equal}, {"<>", Op::NotEqual}, {"!=", Op::NotEqual},     {"#", Op::NotEqual},
    {"<=", Op::LessEqual}, {"<", Op::Less},   {">", Op::Greater},   {">=", Op::GreaterEqual},
};

class Parser {
  public:
    explicit Parser(std::string_view text) : m_result(std::make_unique<ParsedStatement>()), m_lexer(text) {
        m_result->text = text;
        m_lexer = Lexer(m_result->text);
        Advance();
    }

    std::unique_ptr<ParsedStatement> Parse() {
        m_result->statement = ParseAny();
        if (IsSymbol(";")) Advance();
        if (m_token.kind != TokenKind::End) Fail("something stands behind the statement's end");
        return std::move(m_result);
    }

  private:
    // Tokens.
    void Advance() {
        m_token = m_lookedAhead ? m_ahead : m_lexer.Next();
        m_lookedAhead = false;
    }
    const Token &Ahead() {
        if (!m_lookedAhead) m_ahead = m_lexer.Next();
        m_lookedAhead = true;
        return m_ahead;
    }
    [[noreturn]] void Fail(const char *what) const { ThrowSyntax(m_result->text, m_token.begin, what); }
    bool IsWord(std::string_view keyword) const {
        return m_token.kind == TokenKind::Word && IsKeyword(m_token.text, keyword);
    }
    bool IsSymbol(std::string_view symbol) const { return m_token.kind == TokenKind::Symbol && m_token.text == symbol; }
    bool TakeWord(std::string_view keyword) {
        if (!IsWord(keyword)) return false;
        Advance();
        return true;
    }
    bool TakeSymbol(std::string_view symbol) {
        if (!IsSymbol(symbol)) return false;
        Advance();
        return true;
    }
    void ExpectWord(std::string_view keyword, const char *what) {
        if (!TakeWord(keyword)) Fail(what);
    }
    void ExpectSymbol(std::string_view symbol, const char *what) {
        if (!TakeSymbol(symbol)) Fail(what);
    }
    std::uint32_t Position() const { return static_cast<std::uint32_t>(m_token.begin); }

    // Statements.
    Statement ParseAny();
    SelectStatement ParseSelect();
    void ParseTop(SelectStatement &select);
    SelectItem ParseSelectItem();
    void ParseFrom(SelectStatement &select);
    void ParseOrder(SelectStatement &select);
    InsertStatement ParseInsert();
    UpdateStatement ParseUpdate();
    DeleteStatement ParseDelete();
    CreateTableStatement ParseCreate();
    DropTableStatement ParseDrop();
    AlterTableStatement ParseAlter();
    ReplaceStatement ParseReplace();
    bool ParseReplaceScope(ReplaceStatement &replace);
    UseStatement ParseUse();
    std::vector<Expression> ParseWhere();

    // Names and definitions.
    Name ParseName(const char *what);
    Name ParseTableName();
    ColumnDefinition ParseDefinition();
    void ParseWidth(const TypeName &type, ColumnDefinition &definition);
    int ParseSmallNumber();

    // Expressions, from the loosest binding to the tightest.
    Expression ParseOr();
    Expression ParseAnd();
    Expression ParseNot();
    Expression ParseComparison();
    Expression ParsePredicate(Expression left);
    Expression ParseSum();
    Expression ParseProduct();
    Expression ParsePower();
    Expression ParseUnary();
    Expression ParsePrimary();
    Expression ParseWordPrimary();
    Expression ParseCall();
    Expression ParseLiteral(bool negative, std::size_t begin);
    Expression ParseDateLiteral();
    Expression ConstantLiteral(const Value &value, bool lifted, std::size_t begin, std::size_t end);
    Expression Node(Op op, std::uint32_t position) const {
        Expression node;
        node.op = op;
        node.position = position;
        return node;
    }
    void Append(Expression &left, Op op, Expression right, std::uint32_t position, bool joins) const;

    /// Counts the nesting of the scope that it lives in.
    class Depth {
      public:
        explicit Depth(Parser &parser) : m_parser(parser) {
            if (++parser.m_depth > kMaxDepth) parser.Fail("the statement is nested too deeply");
        }
        Depth(const Depth &) = delete;
        Depth &operator=(const Depth &) = delete;
        ~Depth() { --m_parser.m_depth; }

      private:
        Parser &m_parser;
    };

    std::unique_ptr<ParsedStatement> m_result;
    Lexer m_lexer;
    Token m_token;
    Token m_ahead;
    bool m_lookedAhead = false;
    int m_depth = 0;
    /// In a list of values a bracketed text is a literal, elsewhere the name of a column.
    bool m_bracketsAreText = false;
};

Statement Parser::ParseAny() {
    if (m_token.kind == TokenKind::End) Fail("the statement is empty");
    if (TakeWord("select")) return ParseSelect();
    if (TakeWord("insert")) return ParseInsert();
    if (TakeWord("update")) return ParseUpdate();
    if (TakeWord("delete")) return ParseDelete();
    if (TakeWord("create")) return ParseCreate();
    if (TakeWord("drop")) return ParseDrop();
    if (TakeWord("alter")) return ParseAlter();
    if (TakeWord("replace")) return ParseReplace();
    if (TakeWord("use")) return ParseUse();
    Fail("no statement begins like this");
}

Name Parser::ParseName(const char *what) {
    Name name{CString(m_token.text), Position()};
    const bool word = m_token.kind == TokenKind::Word && m_token.text[0] != '.';
    if (!word && m_token.kind != TokenKind::Bracketed) Fail(what);
    if (name.text.IsEmpty()) Fail(what);
    Advance();
    return name;
}

/// A name with any number of qualifiers in front, of which the last part counts; a part "dbf" behind a name is its
/// file's extension.
Name Parser::ParseTableName() {
    Name name = ParseName("a table's name was expected");
    while (IsSymbol(".")) {
        Advance();
        while (IsSymbol(".")) Advance();
        const Name part = ParseName("a table's name was expected");
        if (!EqualNames(part.text.View(), "dbf")) name = part;
    }
    return name;
}

int Parser::ParseSmallNumber() {
    int number = 0;
    const char *end = m_token.text.data() + m_token.text.size();
    const auto result = std::from_chars(m_token.text.data(), end, number);
    if (m_token.kind != TokenKind::Number || result.ec != std::errc() || result.ptr != end) {
        Fail("a whole number was expected");
    }
    Advance();
    return number;
}

void Parser::ParseWidth(const TypeName &type, ColumnDefinition &definition) {
    definition.width = type.width;
    definition.decimals = type.decimals;
    if (!TakeSymbol("(")) return;
    const int first = ParseSmallNumber();
    int second = 0;
    if (TakeSymbol(",")) second = ParseSmallNumber();
    ExpectSymbol(")", "the bracket behind a column's width is not closed");
    if (type.arguments == 1 || type.arguments == 2) definition.width = first;
    if (type.arguments == 2) definition.decimals = second;
    if (type.arguments == 3) definition.decimals = first;
}

ColumnDefinition Parser::ParseDefinition() {
    ColumnDefinition definition;
    const Name name = ParseName("the definition of a column was expected");
    definition.name = name.text;
    definition.position = name.position;
    if (m_token.kind != TokenKind::Word && m_token.kind != TokenKind::Bracketed) Fail("a column's type was expected");
    const TypeName *found = nullptr;
    for (const TypeName &type : kTypeNames) {
        if (EqualNames(m_token.text, type.name)) found = &type;
    }
    if (!found) Fail("no column type has this name");
    Advance();
    definition.type = found->type;
    ParseWidth(*found, definition);
    if (TakeWord("not")) {
        ExpectWord("null", "Null was expected");
    } else {
        TakeWord("null");
    }
    return definition;
}

CreateTableStatement Parser::ParseCreate() {
    if (!TakeWord("table")) ExpectWord("dbf", "Table was expected");
    CreateTableStatement create;
    create.table = ParseTableName();
    TakeWord("free");
    ExpectSymbol("(", "the list of columns was expected");
    do {
        create.columns.push_back(ParseDefinition());
        const ColumnDefinition &last = create.columns.back();
        if (create.columns.size() > kMaxColumns) Fail("a table has at most 255 columns");
        for (std::size_t i = 0; i + 1 < create.columns.size(); ++i) {
            if (EqualNames(create.columns[i].name.View(), last.name.View())) {
                ThrowAt(m_result->text, last.position, "Two columns have one name", error_number::kColumnName);
            }
        }
    } while (TakeSymbol(","));
    ExpectSymbol(")", "a comma or the end of the list of columns was expected");
    return create;
}

DropTableStatement Parser::ParseDrop() {
    ExpectWord("table", "Table was expected");
    return {ParseTableName()};
}

AlterTableStatement Parser::ParseAlter() {
    ExpectWord("table", "Table was expected");
    AlterTableStatement alter;
    using Change = AlterTableStatement::Change;
    alter.table = ParseTableName();
    // A word that is followed by a type is a column's name, even if it is "Column".
    const auto takeColumnWord = [&](bool definition) {
        if (!IsWord("column")) return;
        const Token &next = Ahead();
        const bool isName = next.kind == TokenKind::End || (definition && next.kind == TokenKind::Symbol);
        if (!isName) Advance();
    };
    if (TakeWord("add")) {
        alter.change = Change::Add;
        takeColumnWord(true);
        alter.definition = ParseDefinition();
    } else if (TakeWord("drop")) {
        alter.change = Change::Drop;
        takeColumnWord(false);
        alter.column = ParseName("a column's name was expected");
    } else if (TakeWord("alter")) {
        alter.change = Change::Alter;
        takeColumnWord(true);
        alter.definition = ParseDefinition();
    } else if (TakeWord("rename")) {
        alter.change = Change::Rename;
        if (IsWord("column") && !(Ahead().kind == TokenKind::Word && IsKeyword(Ahead().text, "to"))) Advance();
        alter.column = ParseName("a column's name was expected");
        ExpectWord("to", "To was expected");
        alter.newName = ParseName("a column's new name was expected");
    } else {
        Fail("Add, Drop, Alter or Rename was expected");
    }
    return alter;
}

UseStatement Parser::ParseUse() {
    UseStatement use;
    if (m_token.kind != TokenKind::End && !IsWord("in") && !IsSymbol(";")) use.table = ParseTableName();
    while (m_token.kind == TokenKind::Word) {
        if (TakeWord("exclusive")) {
            use.exclusive = true;
        } else if (TakeWord("shared") || TakeWord("again")) {
        } else if (TakeWord("alias")) {
            ParseName("an alias was expected");
        } else if (TakeWord("in")) {
            if (m_token.kind == TokenKind::Number) {
                ParseSmallNumber();
            } else if (TakeWord("select")) {
                ExpectSymbol("(", "a bracket was expected");
                use.area = {CString(m_token.text), Position()};
                if (m_token.kind != TokenKind::String && m_token.kind != TokenKind::Bracketed) {
                    Fail("the name of a table in quotes was expected");
                }
                Advance();
                ExpectSymbol(")", "a closing bracket was expected");
            } else {
                use.area = ParseName("a table's name was expected");
            }
        } else {
            Fail("Exclusive, Shared or In was expected");
        }
    }
    return use;
}

std::vector<Expression> Parser::ParseWhere() {
    std::vector<Expression> where;
    if (TakeWord("where")) where.push_back(ParseOr());
    return where;
}

void Parser::ParseTop(SelectStatement &select) {
    Value value;
    std::size_t position = 0;
    const Token number = m_token;
    if (number.kind != TokenKind::Number || !ScanNumber(number.text, position, value)) {
        Fail("a number was expected behind Top");
    }
    Advance();
    select.top = value.ToDouble();
    select.topPercent = TakeWord("percent");
    if (select.top < 0 || (!select.topPercent && !value.ToInteger()) || (select.topPercent && select.top > 100)) {
        ThrowSyntax(m_result->text, number.begin, "a whole number of rows was expected behind Top");
    }
}

SelectItem Parser::ParseSelectItem() {
    SelectItem item;
    if (TakeSymbol("*")) {
        item.star = true;
        return item;
    }
    item.expression = ParseOr();
    const bool named = TakeWord("as");
    const bool name = m_token.kind == TokenKind::Bracketed || (m_token.kind == TokenKind::Word && !IsWord("from"));
    if (named || name) item.alias = ParseName("a name for the column was expected").text;
    return item;
}

void Parser::ParseFrom(SelectStatement &select) {
    ExpectWord("from", "a comma or From was expected");
    select.table = ParseTableName();
    if (IsSymbol(",") || IsWord("inner") || IsWord("left") || IsWord("join")) {
        Fail("a statement reads one table; joins are not supported");
    }
    if (IsWord("group") || IsWord("having") || IsWord("union")) Fail("this clause is not supported");
    const bool named = TakeWord("as");
    if (named || (m_token.kind == TokenKind::Word && !IsWord("where") && !IsWord("order"))) {
        select.alias = ParseName("a name for the table was expected").text;
    }
}

void Parser::ParseOrder(SelectStatement &select) {
    if (!TakeWord("order")) return;
    ExpectWord("by", "By was expected behind Order");
    do {
        OrderKey key;
        const bool number = m_token.kind == TokenKind::Number;
        const std::uint32_t position = Position();
        if (number) {
            key.number = ParseSmallNumber();
            if (key.number < 1) ThrowSyntax(m_result->text, position, "result columns are counted from 1");
        } else {
            key.expression = ParseOr();
        }
        if (TakeWord("descending")) {
            key.descending = true;
        } else if (!TakeWord("ascending")) {
            TakeWord("asc");
        }
        select.order.push_back(std::move(key));
    } while (TakeSymbol(","));
}

SelectStatement Parser::ParseSelect() {
    SelectStatement select;
    while (true) {
        if (TakeWord("distinct")) {
            select.distinct = true;
        } else if (IsWord("top") && Ahead().kind == TokenKind::Number) {
            Advance();
            ParseTop(select);
        } else if (IsWord("all") && Ahead().kind != TokenKind::Symbol && !IsKeyword(Ahead().text, "from")) {
            Advance();
        } else {
            break;
        }
    }
    do {
        select.items.push_back(ParseSelectItem());
    } while (TakeSymbol(","));
    ParseFrom(select);
    select.where = ParseWhere();
    ParseOrder(select);
    return select;
}

InsertStatement Parser::ParseInsert() {
    InsertStatement insert;
    ExpectWord("into", "Into was expected");
    insert.table = ParseTableName();
    if (TakeSymbol("(")) {
        do {
            insert.columns.push_back(ParseName("a column's name was expected"));
        } while (TakeSymbol(","));
        ExpectSymbol(")", "a comma or the end of the list of columns was expected");
    }
    if (TakeWord("select")) {
        insert.select.push_back(ParseSelect());
        return insert;
    }
    ExpectWord("values", "Values or Select was expected");
    ExpectSymbol("(", "the list of values was expected");
    m_bracketsAreText = true;
    do {
        if (IsSymbol(",") || IsSymbol(")")) Fail("a value is missing in the list");
        insert.values.push_back(ParseOr());
    } while (TakeSymbol(","));
    m_bracketsAreText = false;
    ExpectSymbol(")", "a comma or the end of the list of values was expected");
    return insert;
}

UpdateStatement Parser::ParseUpdate() {
    UpdateStatement update;
    update.table = ParseTableName();
    ExpectWord("set", "Set was expected");
    do {
        Assignment assignment;
        assignment.column = ParseName("a column's name was expected");
        ExpectSymbol("=", "an equals sign was expected behind the column");
        assignment.value = ParseOr();
        update.assignments.push_back(std::move(assignment));
    } while (TakeSymbol(","));
    update.where = ParseWhere();
    return update;
}

DeleteStatement Parser::ParseDelete() {
    DeleteStatement remove;
    TakeWord("from");
    remove.table = ParseTableName();
    remove.where = ParseWhere();
    return remove;
}

bool Parser::ParseReplaceScope(ReplaceStatement &replace) {
    using Scope = ReplaceStatement::Scope;
    if (TakeWord("all")) {
        replace.scope = Scope::All;
    } else if (TakeWord("rest")) {
        replace.scope = Scope::Rest;
    } else if (TakeWord("next")) {
        replace.scope = Scope::Next;
        replace.count = ParseSmallNumber();
    } else if (TakeWord("record")) {
        replace.scope = Scope::Record;
        replace.count = ParseSmallNumber();
    } else {
        return false;
    }
    return true;
}

ReplaceStatement Parser::ParseReplace() {
    ReplaceStatement replace;
    ParseReplaceScope(replace);
    do {
        Assignment assignment;
        assignment.column = ParseName("a column's name was expected");
        ExpectWord("with", "With was expected behind the column");
        assignment.value = ParseOr();
        assignment.additive = TakeWord("additive");
        replace.assignments.push_back(std::move(assignment));
    } while (TakeSymbol(","));
    while (m_token.kind == TokenKind::Word) {
        if (TakeWord("for")) {
            if (!replace.forCondition.empty()) Fail("a second For");
            replace.forCondition.push_back(ParseOr());
        } else if (TakeWord("while")) {
            if (!replace.whileCondition.empty()) Fail("a second While");
            replace.whileCondition.push_back(ParseOr());
        } else if (TakeWord("in")) {
            replace.table = ParseTableName();
        } else if (!ParseReplaceScope(replace)) {
            Fail("For, While, In or a scope was expected");
        }
    }
    return replace;
}

/// Puts a right operand behind `left`; `joins` adds it to the chain that `left` is.
void Parser::Append(Expression &left, Op op, Expression right, std::uint32_t position, bool joins) const {
    if (!joins) {
        Expression node = Node(op, position);
        node.operands.push_back(std::move(left));
        left = std::move(node);
    }
    left.operands.push_back(std::move(right));
}

Expression Parser::ParseOr() {
    const Depth depth(*this);
    Expression left = ParseAnd();
    for (bool joins = false; IsWord("or") || IsWord(".or."); joins = true) {
        const std::uint32_t position = Position();
        Advance();
        Append(left, Op::Or, ParseAnd(), position, joins);
    }
    return left;
}

Expression Parser::ParseAnd() {
    Expression left = ParseNot();
    for (bool joins = false; IsWord("and") || IsWord(".and."); joins = true) {
        const std::uint32_t position = Position();
        Advance();
        Append(left, Op::And, ParseNot(), position, joins);
    }
    return left;
}

Expression Parser::ParseNot() {
    if (!IsWord("not") && !IsWord(".not.") && !IsSymbol("!")) return ParseComparison();
    const Depth depth(*this);
    Expression node = Node(Op::Not, Position());
    Advance();
    node.operands.push_back(ParseNot());
    return node;
}

Expression Parser::ParseComparison() {
    Expression left = ParseSum();
    if (m_token.kind == TokenKind::Symbol) {
        for (const SymbolOp &comparison : kComparisons) {
            if (!IsSymbol(comparison.symbol)) continue;
            Expression node = Node(comparison.op, Position());
            Advance();
            node.operands.push_back(std::move(left));
            node.operands.push_back(ParseSum());
            return node;
        }
        return left;
    }
    return ParsePredicate(std::move(left));
}

Expression Parser::ParsePredicate(Expression left) {
    if (m_token.kind != TokenKind::Word) return left;
    const std::uint32_t position = Position();
    bool negated = false;
    if (IsWord("not")) {
        const Token &next = Ahead();
        const bool follows =
            next.kind == TokenKind::Word &&
            (IsKeyword(next.text, "like") || IsKeyword(next.text, "in") || IsKeyword(next.text, "between"));
        if (!follows) return left;
        negated = true;
        Advance();
    }
    Expression node;
    if (TakeWord("like")) {
        node = Node(Op::Like, position);
        node.operands.push_back(std::move(left));
        node.operands.push_back(ParseSum());
        if (TakeWord("escape")) node.operands.push_back(ParsePrimary());
    } else if (IsWord("in") && Ahead().kind == TokenKind::Symbol && Ahead().text == "(") {
        Advance();
        Advance();
        node = Node(Op::In, position);
        node.operands.push_back(std::move(left));
        do {
            node.operands.push_back(ParseSum());
        } while (TakeSymbol(","));
        ExpectSymbol(")", "a comma or the end of the list was expected");
    } else if (TakeWord("between")) {
        node = Node(Op::Between, position);
        node.operands.push_back(std::move(left));
        node.operands.push_back(ParseSum());
        if (!TakeWord(".and.")) ExpectWord("and", "And was expected");
        node.operands.push_back(ParseSum());
    } else if (TakeWord("is")) {
        negated = TakeWord("not");
        if (!TakeWord(".null.")) ExpectWord("null", "Null was expected");
        node = Node(Op::IsNull, position);
        node.operands.push_back(std::move(left));
    } else {
        return left;
    }
    node.flag = negated;
    return node;
}

Expression Parser::ParseSum() {
    Expression left = ParseProduct();
    int chain = 0;
    for (bool joins = false; IsSymbol("+") || IsSymbol("-");) {
        const Op op = IsSymbol("+") ? Op::Add : Op::Subtract;
        const std::uint32_t position = Position();
        joins = joins && op == Op::Add;
        if (!joins && ++chain > kMaxDepth) Fail("the statement is nested too deeply");
        Advance();
        Append(left, op, ParseProduct(), position, joins);
        joins = op == Op::Add;
    }
    return left;
}

Expression Parser::ParseProduct() {
    Expression left = ParsePower();
    for (int chain = 0; IsSymbol("*") || IsSymbol("/") || IsSymbol("%");) {
        const Op op = IsSymbol("*") ? Op::Multiply : IsSymbol("/") ? Op::Divide : Op::Modulo;
        const std::uint32_t position = Position();
        if (++chain > kMaxDepth) Fail("the statement is nested too deeply");
        Advance();
        Append(left, op, ParsePower(), position, false);
    }
    return left;
}

Expression Parser::ParsePower() {
    Expression left = ParseUnary();
    for (int chain = 0; IsSymbol("^") || IsSymbol("**");) {
        const std::uint32_t position = Position();
        if (++chain > kMaxDepth) Fail("the statement is nested too deeply");
        Advance();
        Append(left, Op::Power, ParseUnary(), position, false);
    }
    return left;
}

Expression Parser::ParseUnary() {
    if (!IsSymbol("-") && !IsSymbol("+")) return ParsePrimary();
    const Depth depth(*this);
    const bool minus = IsSymbol("-");
    const std::size_t begin = m_token.begin;
    const std::uint32_t position = Position();
    Advance();
    if (m_token.kind == TokenKind::Number) {
        const bool adjacent = minus && m_token.begin == begin + 1;
        return ParseLiteral(minus, adjacent ? begin : m_token.begin);
    }
    Expression operand = ParseUnary();
    if (!minus) return operand;
    Expression node = Node(Op::Negate, position);
    node.operands.push_back(std::move(operand));
    return node;
}

/// A lifted literal's text may differ in the next statement of the same shape.
Expression Parser::ConstantLiteral(const Value &value, bool lifted, std::size_t begin, std::size_t end) {
    Expression node = Node(Op::Literal, static_cast<std::uint32_t>(begin));
    node.literal = static_cast<std::uint32_t>(m_result->literals.size());
    m_result->literals.push_back(value);
    m_result->spans.push_back(lifted ? LiteralSpan{static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)}
                                     : LiteralSpan{});
    return node;
}

/// The number or text that is the current token. `begin` is where its sign stands; a minus apart from its number is
/// part of the statement's shape, so that such a literal is not lifted.
Expression Parser::ParseLiteral(bool negative, std::size_t begin) {
    Value value;
    std::size_t position = 0;
    const Token token = m_token;
    const std::string_view raw = std::string_view(m_result->text).substr(token.begin, token.end - token.begin);
    const bool good = token.kind == TokenKind::String ? ScanString(raw, position, value)
                                                      : ScanNumber(raw, position, value) && position == raw.size();
    if (!good) Fail("a number that cannot be read");
    if (negative) NegateNumber(value);
    Advance();
    const bool lifted = !negative || begin < token.begin;
    return ConstantLiteral(value, lifted, begin, token.end);
}

/// `{^2020-01-31 8:09:36}`, `{}`, and between `#` also the month first: 1/31/2020.
Expression Parser::ParseDateLiteral() {
    std::array<int, 6> parts{};
    std::size_t count = 0;
    const std::string_view text = m_token.text;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] < '0' || text[i] > '9') {
            ++i;
            continue;
        }
        if (count == parts.size()) Fail("a date that cannot be read");
        const auto result = std::from_chars(text.data() + i, text.data() + text.size(), parts[count++]);
        if (result.ec != std::errc()) Fail("a date that cannot be read");
        i = static_cast<std::size_t>(result.ptr - text.data());
    }
    DateTime time;
    if (count > 0) {
        if (parts[0] <= 12 && count >= 3 && parts[2] > 31)
            parts = {parts[2], parts[0], parts[1], parts[3], parts[4], parts[5]};
        const bool afternoon = text.find_first_of("Pp") != std::string_view::npos;
        const bool morning = text.find_first_of("Aa") != std::string_view::npos;
        if ((afternoon && parts[3] < 12)) parts[3] += 12;
        if (morning && parts[3] == 12) parts[3] = 0;
        const auto read = FromCivil({parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]});
        if (count < 3 || !read) Fail("a date that cannot be read");
        time = *read;
    }
    const Token token = m_token;
    Advance();
    return ConstantLiteral(Value::FromDateTime(time), false, token.begin, token.end);
}

Expression Parser::ParsePrimary() {
    switch (m_token.kind) {
        case TokenKind::Number:
        case TokenKind::String:
            return ParseLiteral(false, m_token.begin);
        case TokenKind::Date:
            return ParseDateLiteral();
        case TokenKind::Word:
        case TokenKind::Bracketed:
            return ParseWordPrimary();
        case TokenKind::Symbol:
            if (IsSymbol("(")) {
                Advance();
                const bool brackets = m_bracketsAreText;
                Expression inner = ParseOr();
                m_bracketsAreText = brackets;
                ExpectSymbol(")", "a closing bracket was expected");
                return inner;
            }
            break;
        case TokenKind::End:
            break;
    }
    Fail("a value or a column was expected");
}

Expression Parser::ParseWordPrimary() {
    const Token token = m_token;
    if (token.kind == TokenKind::Bracketed && m_bracketsAreText) {
        Advance();
        return ConstantLiteral(Value::FromText(token.text), false, token.begin, token.end);
    }
    if (token.kind == TokenKind::Word) {
        struct Constant {
            const char *word;
            Value value;
        };
        static const Constant kConstants[] = {
            {"null", {}},
            {".null.", {}},
            {"true", Value::FromBool(true)},
            {"false", Value::FromBool(false)},
            {".t.", Value::FromBool(true)},
            {".y.", Value::FromBool(true)},
            {".f.", Value::FromBool(false)},
            {".n.", Value::FromBool(false)},
        };
        for (const Constant &constant : kConstants) {
            if (!EqualNames(token.text, constant.word)) continue;
            Advance();
            return ConstantLiteral(constant.value, false, token.begin, token.end);
        }
        for (const char *word : {"from", "where", "order", "and", "or", "set", "values", "into", "like", "is"}) {
            if (EqualNames(token.text, word)) Fail("a value or a column was expected");
        }
        if (Ahead().kind == TokenKind::Symbol && Ahead().text == "(") return ParseCall();
    }
    const Name name = ParseName("a value or a column was expected");
    Expression node = Node(Op::Column, name.position);
    node.name = name.text;
    while (TakeSymbol(".")) {
        node.qualifier = node.name;
        node.name = ParseName("a column's name was expected").text;
    }
    return node;
}

Expression Parser::ParseCall() {
    const FunctionName *found = nullptr;
    for (const FunctionName &function : kFunctionNames) {
        if (EqualNames(m_token.text, function.name)) found = &function;
    }
    if (!found) Fail("no function has this name");
    Expression node = Node(found->aggregate ? Op::Aggregate : Op::Function, Position());
    node.function = found->id;
    Advance();
    ExpectSymbol("(", "a bracket was expected");
    const bool brackets = m_bracketsAreText;
    if (found->id == FunctionId::Count && TakeSymbol("*")) {
        node.flag = true;
    } else {
        do {
            node.operands.push_back(ParseOr());
        } while (TakeSymbol(","));
        if (node.operands.size() < found->minArguments || node.operands.size() > found->maxArguments) {
            ThrowSyntax(m_result->text, node.position, "a function has the wrong number of arguments");
        }
    }
    m_bracketsAreText = brackets;
    ExpectSymbol(")", "a closing bracket was expected");
    return node;
}

}  // namespace

std::unique_ptr<ParsedStatement> ParseStatement(std::string_view statement) {
    return Parser(statement).Parse();
}

}  // namespace ktl::ado::sql
