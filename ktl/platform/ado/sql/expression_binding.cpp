// How an expression finds its columns and checks its types. expression.cpp evaluates it.

#include <algorithm>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/expression.h"
#include "ktl/platform/ado/sql/functions.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

[[noreturn]] void ThrowTypes(const Expression &expression, const BindScope &scope, TypeClass a, TypeClass b) {
    ThrowAt(scope.statement.text, expression.position,
            CString("Operand types do not fit (") + ClassName(a) + " and " + ClassName(b) + ")",
            error_number::kOperandTypes);
}

}  // namespace

BoundExpression::BoundExpression(const Expression &expression, const BindScope &scope)
    : m_op(expression.op), m_function(expression.function), m_flag(expression.flag) {
    BindScope inner = scope;
    if (m_op == Op::Aggregate) {
        if (!scope.aggregates) {
            ThrowSyntax(scope.statement.text, expression.position, "a sum over rows cannot stand here");
        }
        inner.aggregates = false;
        m_aggregate = std::make_unique<Aggregate>(m_function);
    }
    m_operands.reserve(expression.operands.size());
    for (const Expression &operand : expression.operands) m_operands.emplace_back(operand, inner);
    if (m_op == Op::Literal) {
        m_literal = &scope.statement.literals[expression.literal];
        m_type = ClassOf(*m_literal);
    } else if (m_op == Op::Column) {
        BindColumn(expression, scope);
    } else {
        CheckTypes(expression, scope);
    }
}

void BoundExpression::BindColumn(const Expression &expression, const BindScope &scope) {
    const auto fail = [&](const CString &what) {
        ThrowAt(scope.statement.text, expression.position, what, error_number::kColumnNotFound);
    };
    if (!scope.columns) fail("A constant was expected, not the name \"" + expression.name + "\",");
    const std::string_view qualifier = expression.qualifier.View();
    if (!qualifier.empty() && !EqualNames(qualifier, scope.table) && !EqualNames(qualifier, scope.alias)) {
        fail("The statement has no table \"" + expression.qualifier + "\"");
    }
    for (std::size_t i = 0; i < scope.columns->size(); ++i) {
        const Column &column = (*scope.columns)[i];
        if (!EqualNames(column.name.View(), expression.name.View())) continue;
        m_column = static_cast<int>(i);
        m_type = ClassOf(column.type);
        if (column.type == DataType::Char) m_width = static_cast<std::size_t>(column.definedSize);
        return;
    }
    fail("Column \"" + expression.name + "\" is not found");
}

void BoundExpression::RequireOperands(std::size_t from, TypeClass type, const Expression &expression,
                                      const BindScope &scope) const {
    for (std::size_t i = from; i < m_operands.size(); ++i) {
        const TypeClass given = m_operands[i].m_type;
        if (given != TypeClass::Null && given != type) ThrowTypes(expression, scope, given, type);
    }
}

void BoundExpression::CheckTypes(const Expression &expression, const BindScope &scope) {
    m_type = TypeClass::Bool;
    switch (m_op) {
        case Op::Add:
        case Op::Subtract:
            return CheckSum(expression, scope);
        case Op::Multiply:
        case Op::Divide:
        case Op::Modulo:
        case Op::Power:
        case Op::Negate:
            m_type = TypeClass::Number;
            return RequireOperands(0, TypeClass::Number, expression, scope);
        case Op::Like:
            return RequireOperands(0, TypeClass::Text, expression, scope);
        case Op::And:
        case Op::Or:
        case Op::Not:
            return RequireOperands(0, TypeClass::Bool, expression, scope);
        case Op::IsNull:
            return;
        case Op::Function:
        case Op::Aggregate:
            return CheckFunction(expression, scope);
        default:
            return CheckComparison(expression, scope);
    }
}

/// Numbers are added and subtracted, texts joined.
void BoundExpression::CheckSum(const Expression &expression, const BindScope &scope) {
    m_type = TypeClass::Null;
    for (const BoundExpression &operand : m_operands) {
        if (m_type == TypeClass::Null) m_type = operand.m_type;
    }
    if (m_type == TypeClass::Null) return;
    RequireOperands(0, m_type, expression, scope);
    if (m_type != TypeClass::Number && m_type != TypeClass::Text) ThrowTypes(expression, scope, m_type, m_type);
}

/// Values of one class are compared; a truth may be equal to a number.
void BoundExpression::CheckComparison(const Expression &expression, const BindScope &scope) {
    const TypeClass left = m_operands[0].m_type;
    const bool equals = m_op == Op::Equal || m_op == Op::NotEqual;
    const bool truths = equals && ((left == TypeClass::Bool && m_operands[1].m_type == TypeClass::Number) ||
                                   (left == TypeClass::Number && m_operands[1].m_type == TypeClass::Bool));
    if (!truths && left != TypeClass::Null) RequireOperands(1, left, expression, scope);
}

void BoundExpression::CheckFunction(const Expression &expression, const BindScope &scope) {
    const FunctionFacts &facts = *FindFunction(m_function);
    // Count of all rows has no argument.
    const TypeClass first = m_operands.empty() ? TypeClass::Null : m_operands[0].m_type;
    if (facts.first != TypeClass::Null && first != TypeClass::Null && first != facts.first) {
        ThrowTypes(expression, scope, first, facts.first);
    }
    if (facts.rest != TypeClass::Null) RequireOperands(1, facts.rest, expression, scope);
    m_type = facts.result == TypeClass::Null ? first : facts.result;
}

bool BoundExpression::HasAggregate() const {
    return m_op == Op::Aggregate || std::any_of(m_operands.begin(), m_operands.end(),
                                                [](const BoundExpression &operand) { return operand.HasAggregate(); });
}

bool BoundExpression::ReadsRow() const {
    return m_op == Op::Column || std::any_of(m_operands.begin(), m_operands.end(),
                                             [](const BoundExpression &operand) { return operand.ReadsRow(); });
}

bool BoundExpression::CanFail() const {
    const bool calculates = m_op >= Op::Add && m_op <= Op::Negate && m_type == TypeClass::Number;
    if (calculates || m_function == FunctionId::Chr || m_function == FunctionId::Sum) return true;
    return std::any_of(m_operands.begin(), m_operands.end(),
                       [](const BoundExpression &operand) { return operand.CanFail(); });
}

}  // namespace ktl::ado::sql
