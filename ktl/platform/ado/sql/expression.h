#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ktl/platform/ado/sql/aggregate.h"
#include "ktl/platform/ado/sql/arithmetic.h"
#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/like.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// What the names of an expression are looked up in.
struct BindScope {
    const ParsedStatement &statement;
    /// The table's columns; null where only constants may stand.
    const std::vector<Column> *columns = nullptr;
    /// The names that a qualifier may have.
    std::string_view table;
    std::string_view alias;
    /// Where Count, Max and their like may stand.
    bool aggregates = false;
};

/// An expression with its columns found and its types checked, ready to be evaluated row by row. It borrows the
/// literals of its statement, whose values may change between two executions (`Prepare`).
class BoundExpression {
  public:
    /// Throws Error (column not found, operand types) with the place in the statement.
    BoundExpression(const Expression &expression, const BindScope &scope);

    TypeClass GetType() const { return m_type; }
    /// The table's column that the whole expression is, or -1.
    int GetColumn() const { return m_op == Op::Column ? m_column : -1; }
    Op GetOp() const { return m_op; }
    FunctionId GetFunction() const { return m_function; }
    const std::vector<BoundExpression> &GetOperands() const { return m_operands; }
    /// Written with Not: of In, Like, Between and IsNull.
    bool IsNegated() const { return m_flag; }
    /// The value of a literal, else null.
    const Value *GetLiteral() const { return m_literal; }
    bool HasAggregate() const;
    /// True when the value may differ from row to row.
    bool ReadsRow() const;
    /// True when some row's values may end in an Error.
    bool CanFail() const;

    /// To be called before the rows of an execution.
    void Prepare();
    /// The value for the table's current row; good until the next call.
    const Value &Evaluate(Table &row);
    /// True when the value is the truth: neither false nor null.
    bool IsTrue(Table &row);
    /// Takes the current row into the aggregates below; after the last row `Evaluate` gives their results.
    void Accumulate(Table &row);

  private:
    void BindColumn(const Expression &expression, const BindScope &scope);
    void CheckTypes(const Expression &expression, const BindScope &scope);
    void CheckSum(const Expression &expression, const BindScope &scope);
    void CheckComparison(const Expression &expression, const BindScope &scope);
    void CheckFunction(const Expression &expression, const BindScope &scope);
    /// The operands from that one on have to be of the type, or null.
    void RequireOperands(std::size_t from, TypeClass type, const Expression &expression, const BindScope &scope) const;

    std::string_view TextOperand(std::size_t index, Table &row);
    const Value &EvaluateSum(Table &row);
    const Value &EvaluateJoin(Table &row);
    const Value &EvaluateDifference(Table &row);
    const Value &EvaluateArithmetic(char operation, Table &row);
    const Value &EvaluateComparison(Table &row);
    const Value &EvaluateLike(Table &row);
    const Value &EvaluateIn(Table &row);
    const Value &EvaluateBetween(Table &row);
    const Value &EvaluateChain(Table &row, bool stop);
    const Value &EvaluateFunction(Table &row);
    const Value &EvaluateNegation(Table &row);
    const Value &EvaluateNot(Table &row);
    const Value &Padded(Table &row);

    Op m_op;
    FunctionId m_function = FunctionId::None;
    bool m_flag = false;
    TypeClass m_type = TypeClass::Null;
    int m_column = -1;
    /// The width of a fixed-width text column, else 0.
    std::size_t m_width = 0;
    const Value *m_literal = nullptr;
    std::vector<BoundExpression> m_operands;
    Value m_value;
    LikePattern m_pattern;
    bool m_patternReady = false;
    /// Of Op::Aggregate only.
    std::unique_ptr<Aggregate> m_aggregate;
};

}  // namespace ktl::ado::sql
