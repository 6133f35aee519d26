#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "ktl/platform/ado/value.h"
#include "ktl/platform/string.h"

namespace ktl::ado::sql {

enum class Op : std::uint8_t {
    Literal,
    Column,
    Add,
    Subtract,
    Multiply,
    Divide,
    Modulo,
    Power,
    Negate,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Like,
    In,
    Between,
    IsNull,
    And,
    Or,
    Not,
    Function,
    Aggregate,
};

enum class FunctionId : std::uint8_t {
    None,
    Chr,
    Upper,
    Lower,
    LTrim,
    RTrim,
    AllTrim,
    Len,
    SubStr,
    Abs,
    Round,
    Int,
    Val,
    Str,
    Count,
    Max,
    Min,
    Sum,
    Avg,
};

/// A node of an expression as it was written. Add, And and Or take two operands or more, so that a long chain of
/// literals is no deep tree.
struct Expression {
    Op op = Op::Literal;
    /// Of Function and Aggregate.
    FunctionId function = FunctionId::None;
    /// Of Like, In, Between and IsNull: written with Not. Of Aggregate: Count of all rows.
    bool flag = false;
    /// Of Literal: the place among the statement's literals.
    std::uint32_t literal = 0;
    /// Where it stands in the statement.
    std::uint32_t position = 0;
    /// Of Column; the qualifier in front of a point is kept apart.
    CString name;
    CString qualifier;
    std::vector<Expression> operands;
};

/// What a column is asked to be by Create Table and Alter Table.
enum class ColumnType : std::uint8_t {
    Integer,
    BigInteger,
    Char,
    Numeric,
    Float,
    Double,
    Currency,
    Date,
    DateTime,
    Logical,
    Memo,
    General,
    Blob,
};

struct ColumnDefinition {
    CString name;
    ColumnType type = ColumnType::Char;
    /// Of Char, Numeric and Float.
    int width = 0;
    /// Of Numeric, Float and Double.
    int decimals = 0;
    std::uint32_t position = 0;
};

/// A name with its place.
struct Name {
    CString text;
    std::uint32_t position = 0;
};

struct SelectItem {
    /// All columns of the table.
    bool star = false;
    Expression expression;
    CString alias;
};

/// What rows are put in order or in groups by.
struct OrderKey {
    /// A result column counted from 1, or 0 and the expression.
    int number = 0;
    Expression expression;
    bool descending = false;
    std::uint32_t position = 0;
};

struct SelectStatement {
    bool distinct = false;
    /// -1: all rows.
    double top = -1;
    bool topPercent = false;
    std::vector<SelectItem> items;
    Name table;
    CString alias;
    std::vector<Expression> where;
    std::vector<OrderKey> groups;
    std::vector<Expression> having;
    std::vector<OrderKey> order;
};

struct InsertStatement {
    Name table;
    /// Empty: all columns in the table's order.
    std::vector<Name> columns;
    std::vector<Expression> values;
    /// One element for the form with Select, then `values` is empty.
    std::vector<SelectStatement> select;
};

struct Assignment {
    Name column;
    Expression value;
    /// Of Replace: the text goes behind what is there.
    bool additive = false;
};

struct UpdateStatement {
    Name table;
    std::vector<Assignment> assignments;
    std::vector<Expression> where;
};

struct DeleteStatement {
    Name table;
    std::vector<Expression> where;
};

struct CreateTableStatement {
    Name table;
    std::vector<ColumnDefinition> columns;
};

struct DropTableStatement {
    Name table;
};

struct AlterTableStatement {
    enum class Change : std::uint8_t { Add, Drop, Alter, Rename };
    Name table;
    Change change = Change::Add;
    /// Of Add and Alter.
    ColumnDefinition definition;
    /// Of Drop and Rename.
    Name column;
    Name newName;
};

struct ReplaceStatement {
    enum class Scope : std::uint8_t { Default, All, Rest, Next, Record };
    /// Empty text: the current work area.
    Name table;
    std::vector<Assignment> assignments;
    Scope scope = Scope::Default;
    long long count = 0;
    std::vector<Expression> forCondition;
    std::vector<Expression> whileCondition;
};

struct UseStatement {
    /// Empty text: closes the area, or the one that `area` names.
    Name table;
    /// The table of `In t` or `In Select('t')`.
    Name area;
    bool exclusive = false;
};

/// Takes the deleted rows out of a table's file.
struct PackStatement {
    /// Empty text: the current work area.
    Name table;
};

using Statement = std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement, CreateTableStatement,
                               DropTableStatement, AlterTableStatement, ReplaceStatement, UseStatement, PackStatement>;

/// Where a literal stands in the text of its statement, its sign and quotes included.
struct LiteralSpan {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
};

struct ParsedStatement {
    std::string text;
    Statement statement;
    std::vector<Value> literals;
    std::vector<LiteralSpan> spans;
};

}  // namespace ktl::ado::sql
