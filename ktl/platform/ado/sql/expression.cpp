#include "ktl/platform/ado/sql/expression.h"

#include <array>

#include "ktl/platform/ado/sql/functions.h"

namespace ktl::ado::sql {

namespace {

bool Fulfils(Op comparison, int order) {
    switch (comparison) {
        case Op::Equal:
            return order == 0;
        case Op::NotEqual:
            return order != 0;
        case Op::Less:
            return order < 0;
        case Op::LessEqual:
            return order <= 0;
        case Op::Greater:
            return order > 0;
        default:
            return order >= 0;
    }
}

std::string_view WithoutPadding(std::string_view text) {
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

}  // namespace

void BoundExpression::Prepare() {
    for (BoundExpression &operand : m_operands) operand.Prepare();
    m_patternReady = false;
    if (m_aggregate) m_aggregate->Reset();
    if (m_op != Op::Like) return;
    const Value *pattern = m_operands[1].m_literal;
    const Value *escape = m_operands.size() > 2 ? m_operands[2].m_literal : nullptr;
    if (!pattern || pattern->IsNull() || (m_operands.size() > 2 && (!escape || escape->Bytes().empty()))) return;
    m_pattern = LikePattern(pattern->Text(), escape ? escape->Text()[0] : '\0');
    m_patternReady = true;
}

bool BoundExpression::IsTrue(Table &row) {
    const Value &value = Evaluate(row);
    return value.GetKind() == Value::Kind::Bool && value.Bool();
}

const Value &BoundExpression::Evaluate(Table &row) {
    switch (m_op) {
        case Op::Literal:
            return *m_literal;
        case Op::Column:
            row.ReadCell(m_column, m_value);
            return m_value;
        case Op::Add:
            return m_type == TypeClass::Text ? EvaluateJoin(row) : EvaluateSum(row);
        case Op::Subtract:
            return m_type == TypeClass::Text ? EvaluateDifference(row) : EvaluateArithmetic('-', row);
        case Op::Multiply:
            return EvaluateArithmetic('*', row);
        case Op::Divide:
            return EvaluateArithmetic('/', row);
        case Op::Modulo:
            return EvaluateArithmetic('%', row);
        case Op::Power:
            return EvaluateArithmetic('^', row);
        case Op::Negate:
            return EvaluateNegation(row);
        case Op::Like:
            return EvaluateLike(row);
        case Op::In:
            return EvaluateIn(row);
        case Op::Between:
            return EvaluateBetween(row);
        case Op::IsNull:
            m_value.SetBool(m_operands[0].Evaluate(row).IsNull() != m_flag);
            return m_value;
        case Op::And:
            return EvaluateChain(row, false);
        case Op::Or:
            return EvaluateChain(row, true);
        case Op::Not:
            return EvaluateNot(row);
        case Op::Function:
            return EvaluateFunction(row);
        case Op::Aggregate:
            return m_aggregate->GetResult();
        default:
            return EvaluateComparison(row);
    }
}

/// A column's text with its padding, as joining and measuring see it.
const Value &BoundExpression::Padded(Table &row) {
    const Value &value = Evaluate(row);
    if (m_width == 0 || value.GetKind() != Value::Kind::Text) return value;
    std::string &text = m_value.MutableText();
    if (text.size() < m_width) text.append(m_width - text.size(), ' ');
    return m_value;
}

const Value &BoundExpression::EvaluateSum(Table &row) {
    Value sum = m_operands[0].Evaluate(row);
    for (std::size_t i = 1; i < m_operands.size(); ++i) {
        const Value &operand = m_operands[i].Evaluate(row);
        if (sum.IsNull() || operand.IsNull()) {
            sum.SetNull();
        } else {
            Calculate('+', Value(sum), operand, sum);
        }
    }
    m_value = sum;
    return m_value;
}

const Value &BoundExpression::EvaluateJoin(Table &row) {
    std::string &text = m_value.MutableText();
    text.clear();
    for (BoundExpression &operand : m_operands) {
        const Value &part = operand.Padded(row);
        if (part.IsNull()) {
            m_value.SetNull();
            return m_value;
        }
        text += part.Text();
    }
    return m_value;
}

const Value &BoundExpression::EvaluateNegation(Table &row) {
    const Value &operand = m_operands[0].Evaluate(row);
    if (operand.IsNull()) {
        m_value.SetNull();
    } else {
        Calculate('-', Value::FromInteger(0), operand, m_value);
    }
    return m_value;
}

const Value &BoundExpression::EvaluateNot(Table &row) {
    const Value &operand = m_operands[0].Evaluate(row);
    if (operand.IsNull()) {
        m_value.SetNull();
    } else {
        m_value.SetBool(!operand.Bool());
    }
    return m_value;
}

/// Joins texts and moves the blanks at the left one's end to the end of all.
const Value &BoundExpression::EvaluateDifference(Table &row) {
    const Value &left = m_operands[0].Padded(row);
    const Value &right = m_operands[1].Padded(row);
    if (left.IsNull() || right.IsNull()) {
        m_value.SetNull();
        return m_value;
    }
    const std::string_view head = WithoutPadding(left.Text());
    std::string text(head);
    text += right.Text();
    text.append(left.Text().size() - head.size(), ' ');
    m_value.SetText(text);
    return m_value;
}

const Value &BoundExpression::EvaluateArithmetic(char operation, Table &row) {
    const Value &left = m_operands[0].Evaluate(row);
    const Value &right = m_operands[1].Evaluate(row);
    if (left.IsNull() || right.IsNull()) {
        m_value.SetNull();
    } else {
        Calculate(operation, left, right, m_value);
    }
    return m_value;
}

const Value &BoundExpression::EvaluateComparison(Table &row) {
    const Value &left = m_operands[0].Evaluate(row);
    const Value &right = m_operands[1].Evaluate(row);
    if (left.IsNull() || right.IsNull()) {
        m_value.SetNull();
    } else {
        m_value.SetBool(Fulfils(m_op, CompareValues(left, right)));
    }
    return m_value;
}

/// The operand's text; null data for a null.
std::string_view BoundExpression::TextOperand(std::size_t index, Table &row) {
    BoundExpression &operand = m_operands[index];
    if (operand.m_op == Op::Column) return row.ViewText(operand.m_column, operand.m_value);
    const Value &value = operand.Evaluate(row);
    return value.IsNull() ? std::string_view() : value.Text();
}

const Value &BoundExpression::EvaluateLike(Table &row) {
    const std::string_view text = TextOperand(0, row);
    if (text.data() == nullptr) {
        m_value.SetNull();
        return m_value;
    }
    if (!m_patternReady) {
        const std::string_view pattern = TextOperand(1, row);
        const std::string_view escape = m_operands.size() > 2 ? TextOperand(2, row) : std::string_view();
        if (pattern.data() == nullptr) {
            m_value.SetNull();
            return m_value;
        }
        m_pattern = LikePattern(pattern, escape.empty() ? '\0' : escape[0]);
    }
    m_value.SetBool(m_pattern.Matches(WithoutPadding(text)) != m_flag);
    return m_value;
}

const Value &BoundExpression::EvaluateIn(Table &row) {
    const Value &left = m_operands[0].Evaluate(row);
    bool unknown = left.IsNull();
    for (std::size_t i = 1; i < m_operands.size() && !left.IsNull(); ++i) {
        const Value &item = m_operands[i].Evaluate(row);
        if (item.IsNull()) {
            unknown = true;
        } else if (CompareValues(left, item) == 0) {
            m_value.SetBool(!m_flag);
            return m_value;
        }
    }
    if (unknown) {
        m_value.SetNull();
    } else {
        m_value.SetBool(m_flag);
    }
    return m_value;
}

const Value &BoundExpression::EvaluateBetween(Table &row) {
    const Value &value = m_operands[0].Evaluate(row);
    const Value &low = m_operands[1].Evaluate(row);
    const Value &high = m_operands[2].Evaluate(row);
    if (value.IsNull() || low.IsNull() || high.IsNull()) {
        m_value.SetNull();
    } else {
        m_value.SetBool((CompareValues(value, low) >= 0 && CompareValues(value, high) <= 0) != m_flag);
    }
    return m_value;
}

/// And (`stop` false) and Or (`stop` true): the first operand of that value decides, else a null leaves it open.
const Value &BoundExpression::EvaluateChain(Table &row, bool stop) {
    bool unknown = false;
    for (BoundExpression &operand : m_operands) {
        const Value &value = operand.Evaluate(row);
        if (value.IsNull()) {
            unknown = true;
        } else if (value.Bool() == stop) {
            m_value.SetBool(stop);
            return m_value;
        }
    }
    if (unknown) {
        m_value.SetNull();
    } else {
        m_value.SetBool(!stop);
    }
    return m_value;
}

const Value &BoundExpression::EvaluateFunction(Table &row) {
    constexpr std::size_t kMostArguments = 3;
    std::array<const Value *, kMostArguments> arguments{};
    bool unknown = false;
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        // Measuring sees a column's padding.
        arguments[i] = m_function == FunctionId::Len ? &m_operands[i].Padded(row) : &m_operands[i].Evaluate(row);
        unknown = unknown || arguments[i]->IsNull();
    }
    if (unknown) {
        m_value.SetNull();
    } else {
        CallFunction(m_function, {arguments.data(), m_operands.size()}, m_value);
    }
    return m_value;
}

void BoundExpression::Accumulate(Table &row) {
    if (m_op != Op::Aggregate) {
        for (BoundExpression &operand : m_operands) operand.Accumulate(row);
    } else {
        m_aggregate->Take(m_flag ? Value::FromInteger(1) : m_operands[0].Evaluate(row));
    }
}

}  // namespace ktl::ado::sql
