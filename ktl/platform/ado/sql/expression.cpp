#include "ktl/platform/ado/sql/expression.h"

#include <algorithm>
#include <cmath>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

[[noreturn]] void ThrowTypes(const Expression &expression, const BindScope &scope, TypeClass a, TypeClass b) {
    ThrowAt(scope.statement.text, expression.position,
            CString("Operand types do not fit (") + ClassName(a) + " and " + ClassName(b) + ")",
            error_number::kOperandTypes);
}

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

std::string_view Trimmed(std::string_view text, bool left, bool right) {
    while (left && !text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (right && !text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

std::string Folded(std::string_view text, bool upper) {
    std::string result(text);
    for (std::size_t i = 0; i < text.size(); i += GbkLength(text, i)) {
        if (GbkLength(text, i) != 1) continue;
        const char c = text[i];
        if (upper && c >= 'a' && c <= 'z') result[i] = static_cast<char>(c - 32);
        if (!upper && c >= 'A' && c <= 'Z') result[i] = static_cast<char>(c + 32);
    }
    return result;
}

/// A whole number argument, held at the limits of what texts can be long.
long long WholeArgument(const Value &value) {
    return static_cast<long long>(std::clamp(value.ToDouble(), -1e9, 1e9));
}

/// Right-aligned in `width` characters with `decimals` digits; asterisks when it does not fit.
std::string NumberText(const Value &value, long long width, long long decimals) {
    width = std::clamp<long long>(width, 0, 254);
    decimals = std::clamp<long long>(decimals, 0, 18);
    Decimal exact{value.GetKind() == Value::Kind::Integer ? value.Integer() : 0, 0};
    std::string text;
    if (value.GetKind() == Value::Kind::Decimal) exact = value.AsDecimal();
    if (value.GetKind() == Value::Kind::Double) {
        CString formatted;
        formatted.Format("%.*f", static_cast<int>(decimals), value.Double());
        text = formatted.GetString();
    } else {
        text = DecimalToFixed(exact, static_cast<int>(decimals));
    }
    const auto size = static_cast<std::size_t>(width);
    if (text.size() > size) return std::string(size, '*');
    return std::string(size - text.size(), ' ') + text;
}

void RoundTo(const Value &number, long long decimals, Value &result) {
    decimals = std::clamp<long long>(decimals, -18, 18);
    if (number.GetKind() == Value::Kind::Decimal && decimals >= 0) {
        if (const auto rounded = DecimalFromText(DecimalToFixed(number.AsDecimal(), static_cast<int>(decimals)))) {
            result.SetDecimal(*rounded);
            return;
        }
    }
    if (number.GetKind() == Value::Kind::Integer && decimals >= 0) {
        result.SetInteger(number.Integer());
        return;
    }
    const double power = std::pow(10.0, static_cast<double>(decimals));
    result.SetDouble(std::round(number.ToDouble() * power) / power);
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

void BoundExpression::CheckTypes(const Expression &expression, const BindScope &scope) {
    const auto require = [&](const BoundExpression &operand, TypeClass type) {
        if (operand.m_type != TypeClass::Null && operand.m_type != type) {
            ThrowTypes(expression, scope, operand.m_type, type);
        }
    };
    switch (m_op) {
        case Op::Add:
        case Op::Subtract: {
            for (const BoundExpression &operand : m_operands) {
                if (m_type == TypeClass::Null) m_type = operand.m_type;
                require(operand, m_type);
            }
            if (m_type != TypeClass::Null && m_type != TypeClass::Number && m_type != TypeClass::Text) {
                ThrowTypes(expression, scope, m_type, m_type);
            }
            break;
        }
        case Op::Multiply:
        case Op::Divide:
        case Op::Modulo:
        case Op::Power:
        case Op::Negate:
            m_type = TypeClass::Number;
            for (const BoundExpression &operand : m_operands) require(operand, TypeClass::Number);
            break;
        case Op::Like:
            m_type = TypeClass::Bool;
            for (const BoundExpression &operand : m_operands) require(operand, TypeClass::Text);
            break;
        case Op::And:
        case Op::Or:
        case Op::Not:
            m_type = TypeClass::Bool;
            for (const BoundExpression &operand : m_operands) require(operand, TypeClass::Bool);
            break;
        case Op::IsNull:
            m_type = TypeClass::Bool;
            break;
        case Op::Function:
        case Op::Aggregate:
            CheckFunction(expression, scope);
            break;
        default: {
            m_type = TypeClass::Bool;
            const TypeClass left = m_operands[0].m_type;
            for (const BoundExpression &operand : m_operands) {
                const bool truths = (left == TypeClass::Bool && operand.m_type == TypeClass::Number) ||
                                    (left == TypeClass::Number && operand.m_type == TypeClass::Bool);
                if (truths && (m_op == Op::Equal || m_op == Op::NotEqual)) continue;
                if (left != TypeClass::Null) require(operand, left);
            }
            break;
        }
    }
}

void BoundExpression::CheckFunction(const Expression &expression, const BindScope &scope) {
    using enum FunctionId;
    const TypeClass first = m_operands.empty() ? TypeClass::Null : m_operands[0].m_type;
    const auto require = [&](std::size_t from, TypeClass type) {
        for (std::size_t i = from; i < m_operands.size(); ++i) {
            const TypeClass given = m_operands[i].m_type;
            if (given != TypeClass::Null && given != type) ThrowTypes(expression, scope, given, type);
        }
    };
    switch (m_function) {
        case Chr:
        case Str:
            m_type = TypeClass::Text;
            require(0, TypeClass::Number);
            break;
        case Upper:
        case Lower:
        case LTrim:
        case RTrim:
        case AllTrim:
        case SubStr:
            m_type = TypeClass::Text;
            if (first != TypeClass::Null && first != TypeClass::Text) {
                ThrowTypes(expression, scope, first, TypeClass::Text);
            }
            require(1, TypeClass::Number);
            break;
        case Len:
        case Val:
            m_type = TypeClass::Number;
            require(0, TypeClass::Text);
            break;
        case Count:
            m_type = TypeClass::Number;
            break;
        case Max:
        case Min:
            m_type = first;
            break;
        default:
            m_type = TypeClass::Number;
            require(0, TypeClass::Number);
            break;
    }
}

bool BoundExpression::HasAggregate() const {
    return m_op == Op::Aggregate || std::any_of(m_operands.begin(), m_operands.end(),
                                                [](const BoundExpression &operand) { return operand.HasAggregate(); });
}

void BoundExpression::Prepare() {
    for (BoundExpression &operand : m_operands) operand.Prepare();
    m_patternReady = false;
    if (m_op == Op::Aggregate) {
        m_count = 0;
        m_value.SetNull();
        if (m_function == FunctionId::Count) m_value.SetInteger(0);
    }
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
            return EvaluateAdd(row);
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
        case Op::Negate: {
            const Value &operand = m_operands[0].Evaluate(row);
            if (operand.IsNull()) {
                m_value.SetNull();
            } else {
                Calculate('-', Value::FromInteger(0), operand, m_value);
            }
            return m_value;
        }
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
        case Op::Not: {
            const Value &operand = m_operands[0].Evaluate(row);
            if (operand.IsNull()) {
                m_value.SetNull();
            } else {
                m_value.SetBool(!operand.Bool());
            }
            return m_value;
        }
        case Op::Function:
            return EvaluateFunction(row);
        case Op::Aggregate:
            return m_value;
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

const Value &BoundExpression::EvaluateAdd(Table &row) {
    if (m_type != TypeClass::Text) {
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

/// Joins texts and moves the blanks at the left one's end to the end of all.
const Value &BoundExpression::EvaluateDifference(Table &row) {
    const Value &left = m_operands[0].Padded(row);
    const Value &right = m_operands[1].Padded(row);
    if (left.IsNull() || right.IsNull()) {
        m_value.SetNull();
        return m_value;
    }
    const std::string_view head = Trimmed(left.Text(), false, true);
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
    m_value.SetBool(m_pattern.Matches(Trimmed(text, false, true)) != m_flag);
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
    using enum FunctionId;
    const bool measures = m_function == Len;
    const Value &first = measures ? m_operands[0].Padded(row) : m_operands[0].Evaluate(row);
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        if (i == 0 ? first.IsNull() : m_operands[i].Evaluate(row).IsNull()) {
            m_value.SetNull();
            return m_value;
        }
    }
    switch (m_function) {
        case Len:
            m_value.SetInteger(static_cast<long long>(first.Text().size()));
            return m_value;
        case Abs:
            if (first.ToDouble() >= 0) {
                m_value = first;
            } else {
                Calculate('-', Value::FromInteger(0), first, m_value);
            }
            return m_value;
        case Round:
            RoundTo(first, m_operands.size() > 1 ? WholeArgument(m_operands[1].Evaluate(row)) : 0, m_value);
            return m_value;
        case Int:
            if (first.ToInteger()) {
                m_value.SetInteger(*first.ToInteger());
            } else {
                m_value.SetDouble(std::trunc(first.ToDouble()));
            }
            return m_value;
        case Val:
            m_value = first;
            ConvertTo(TypeClass::Number, m_value);
            if (m_value.IsNull()) m_value.SetInteger(0);
            return m_value;
        default:
            return EvaluateText(row);
    }
}

/// The functions that give a text; no argument is null.
const Value &BoundExpression::EvaluateText(Table &row) {
    using enum FunctionId;
    const Value &first = m_operands[0].Evaluate(row);
    const auto number = [&](std::size_t index, long long otherwise) {
        return index < m_operands.size() ? WholeArgument(m_operands[index].Evaluate(row)) : otherwise;
    };
    switch (m_function) {
        case Chr: {
            const auto code = first.ToInteger();
            if (!code || *code < 0 || *code > 255) {
                throw Error("CHR() takes a whole number from 0 to 255.", error_number::kOperandTypes);
            }
            m_value.SetText(std::string(1, static_cast<char>(*code)));
            break;
        }
        case Str:
            m_value.SetText(NumberText(first, number(1, 10), number(2, 0)));
            break;
        case Upper:
        case Lower:
            m_value.SetText(Folded(first.Text(), m_function == Upper));
            break;
        case SubStr: {
            const std::string_view text = first.Text();
            const long long begin = std::max<long long>(number(1, 1) - 1, 0);
            const long long length = std::max<long long>(number(2, static_cast<long long>(text.size())), 0);
            const auto from = std::min(static_cast<std::size_t>(begin), text.size());
            m_value.SetText(std::string(text.substr(from, static_cast<std::size_t>(length))));
            break;
        }
        default:
            m_value.SetText(std::string(Trimmed(first.Text(), m_function != RTrim, m_function != LTrim)));
            break;
    }
    return m_value;
}

void BoundExpression::Accumulate(Table &row) {
    if (m_op != Op::Aggregate) {
        for (BoundExpression &operand : m_operands) operand.Accumulate(row);
        return;
    }
    if (m_flag) {
        m_value.SetInteger(++m_count);
        return;
    }
    const Value &value = m_operands[0].Evaluate(row);
    if (value.IsNull()) return;
    ++m_count;
    switch (m_function) {
        case FunctionId::Count:
            m_value.SetInteger(m_count);
            break;
        case FunctionId::Max:
            if (m_count == 1 || CompareValues(value, m_value) > 0) m_value = value;
            break;
        case FunctionId::Min:
            if (m_count == 1 || CompareValues(value, m_value) < 0) m_value = value;
            break;
        default:
            break;
    }
    if (m_function == FunctionId::Sum) {
        if (m_count == 1) {
            m_value = value;
        } else {
            Calculate('+', Value(m_value), value, m_value);
        }
    }
    if (m_function == FunctionId::Avg) {
        // The running mean, so that no second value is kept.
        const double mean = m_count == 1 ? 0 : m_value.ToDouble();
        m_value.SetDouble(mean + (value.ToDouble() - mean) / static_cast<double>(m_count));
    }
}

}  // namespace ktl::ado::sql
