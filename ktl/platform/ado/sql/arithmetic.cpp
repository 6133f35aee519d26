#include "ktl/platform/ado/sql/arithmetic.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "ktl/platform/ado/error.h"

namespace ktl::ado::sql {

namespace {

constexpr Int128 kDecimalLimit = [] {
    Int128 limit = 1;
    for (int i = 0; i < 37; ++i) limit *= 10;
    return limit;
}();

/// Brings both to one scale; false when the digits do not fit.
bool Align(Decimal &a, Decimal &b) {
    const auto widen = [](Decimal &value, int scale) {
        while (value.scale < scale) {
            if (value.units > kDecimalLimit || value.units < -kDecimalLimit) return false;
            value.units *= 10;
            ++value.scale;
        }
        return true;
    };
    return widen(a, b.scale) && widen(b, a.scale);
}

Decimal ExactOf(const Value &value) {
    if (value.GetKind() == Value::Kind::Decimal) return value.AsDecimal();
    return {value.Integer(), 0};
}

bool IsExact(const Value &value) {
    return value.GetKind() == Value::Kind::Integer || value.GetKind() == Value::Kind::Decimal;
}

int Order(double a, double b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

template <class T>
int Order(T a, T b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

void SetExact(const Decimal &value, bool whole, Value &result) {
    if (whole && value.scale == 0 && value.units == static_cast<long long>(value.units)) {
        result.SetInteger(static_cast<long long>(value.units));
    } else {
        result.SetDecimal(value);
    }
}

bool CalculateExact(char operation, const Value &a, const Value &b, Value &result) {
    const bool whole = a.GetKind() == Value::Kind::Integer && b.GetKind() == Value::Kind::Integer;
    Decimal left = ExactOf(a);
    Decimal right = ExactOf(b);
    if (operation == '*') {
        Decimal product;
        product.scale = left.scale + right.scale;
        if (product.scale > 38 || __builtin_mul_overflow(left.units, right.units, &product.units)) return false;
        if (product.units > kDecimalLimit * 10 || product.units < -kDecimalLimit * 10) return false;
        SetExact(product, whole, result);
        return true;
    }
    if (!Align(left, right)) return false;
    if (operation == '-') right.units = -right.units;
    if (operation == '+' || operation == '-') {
        left.units += right.units;
        if (left.units > kDecimalLimit * 10 || left.units < -kDecimalLimit * 10) return false;
    } else {
        // The sign of a remainder is the divisor's.
        Int128 rest = left.units % right.units;
        if (rest != 0 && (rest < 0) != (right.units < 0)) rest += right.units;
        left.units = rest;
    }
    SetExact(left, whole, result);
    return true;
}

double LeadingNumber(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    double number = 0;
    if (begin == std::string_view::npos) return 0;
    const std::size_t plus = text[begin] == '+' ? 1 : 0;
    std::from_chars(text.data() + begin + plus, text.data() + text.size(), number);
    return std::isfinite(number) ? number : 0;
}

void ConvertToNumber(Value &value) {
    if (value.GetKind() == Value::Kind::Bool) {
        value.SetInteger(value.Bool() ? 1 : 0);
    } else if (value.GetKind() == Value::Kind::Text) {
        const std::string_view text = value.Text();
        const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
        if (begin == text.size()) {
            value.SetNull();
        } else if (const auto exact = DecimalFromText(text.substr(begin))) {
            value.SetDecimal(*exact);
        } else {
            value.SetDouble(LeadingNumber(text));
        }
    } else if (!value.IsNumber()) {
        value.SetNull();
    }
}

/// A text that spells a date in the order year, month, day, with or without a time.
void ConvertToDate(Value &value) {
    int parts[6] = {};
    int count = 0;
    const std::string text(value.GetKind() == Value::Kind::Text ? value.Text() : std::string_view());
    for (std::size_t i = 0; i < text.size() && count < 6;) {
        if (text[i] < '0' || text[i] > '9') {
            ++i;
            continue;
        }
        const auto result = std::from_chars(text.data() + i, text.data() + text.size(), parts[count++]);
        if (result.ec != std::errc()) return value.SetNull();
        i = static_cast<std::size_t>(result.ptr - text.data());
    }
    const auto time = FromCivil({parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]});
    if (count < 3 || !time) return value.SetNull();
    value.SetDateTime(*time);
}

}  // namespace

TypeClass ClassOf(DataType type) {
    switch (type) {
        case DataType::Boolean:
            return TypeClass::Bool;
        case DataType::Date:
        case DataType::DBDate:
        case DataType::DBTime:
        case DataType::DBTimeStamp:
        case DataType::FileTime:
            return TypeClass::Date;
        case DataType::BSTR:
        case DataType::Char:
        case DataType::WChar:
        case DataType::VarChar:
        case DataType::LongVarChar:
        case DataType::VarWChar:
        case DataType::LongVarWChar:
        case DataType::GUID:
            return TypeClass::Text;
        case DataType::Binary:
        case DataType::VarBinary:
        case DataType::LongVarBinary:
            return TypeClass::Bytes;
        case DataType::Empty:
            return TypeClass::Null;
        default:
            return TypeClass::Number;
    }
}

TypeClass ClassOf(const Value &value) {
    switch (value.GetKind()) {
        case Value::Kind::Null:
            return TypeClass::Null;
        case Value::Kind::Bool:
            return TypeClass::Bool;
        case Value::Kind::DateTime:
            return TypeClass::Date;
        case Value::Kind::Text:
            return TypeClass::Text;
        case Value::Kind::Bytes:
            return TypeClass::Bytes;
        default:
            return TypeClass::Number;
    }
}

const char *ClassName(TypeClass type) {
    static constexpr const char *kNames[] = {"null", "number", "text", "logical value", "date", "byte block"};
    return kNames[static_cast<std::size_t>(type)];
}

int CompareTexts(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    if (const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common)) return order;
    const auto restOrder = [](std::string_view rest) {
        for (const char c : rest) {
            if (c != ' ') return static_cast<unsigned char>(c) < ' ' ? -1 : 1;
        }
        return 0;
    };
    return restOrder(a.substr(common)) - restOrder(b.substr(common));
}

int CompareValues(const Value &a, const Value &b) {
    using Kind = Value::Kind;
    if (a.GetKind() == Kind::Integer && b.GetKind() == Kind::Integer) return Order(a.Integer(), b.Integer());
    if (a.GetKind() == Kind::Text || a.GetKind() == Kind::Bytes) return CompareTexts(a.Bytes(), b.Bytes());
    if (a.GetKind() == Kind::DateTime && b.GetKind() == Kind::DateTime) {
        return a.Time() < b.Time() ? -1 : b.Time() < a.Time() ? 1 : 0;
    }
    if (a.GetKind() == Kind::Bool || b.GetKind() == Kind::Bool) {
        return Order<int>(a.ToDouble() != 0, b.ToDouble() != 0);
    }
    if (IsExact(a) && IsExact(b)) {
        Decimal left = ExactOf(a);
        Decimal right = ExactOf(b);
        if (Align(left, right)) return Order(left.units, right.units);
    }
    return Order(a.ToDouble(), b.ToDouble());
}

void Calculate(char operation, const Value &a, const Value &b, Value &result) {
    const bool divides = operation == '/' || operation == '%';
    if (divides && b.ToDouble() == 0) throw Error("Cannot divide by 0.", error_number::kNumericOverflow);
    if (IsExact(a) && IsExact(b) && operation != '/' && operation != '^') {
        if (CalculateExact(operation, a, b, result)) return;
    }
    const double left = a.ToDouble();
    const double right = b.ToDouble();
    double number = 0;
    switch (operation) {
        case '+':
            number = left + right;
            break;
        case '-':
            number = left - right;
            break;
        case '*':
            number = left * right;
            break;
        case '/':
            number = left / right;
            break;
        case '%':
            number = left - right * std::floor(left / right);
            break;
        default:
            number = std::pow(left, right);
            break;
    }
    if (!std::isfinite(number)) throw Error("Numeric overflow.", error_number::kNumericOverflow);
    result.SetDouble(number);
}

void ConvertTo(TypeClass type, Value &value) {
    if (value.IsNull() || ClassOf(value) == type) return;
    switch (type) {
        case TypeClass::Number:
            return ConvertToNumber(value);
        case TypeClass::Text: {
            if (value.GetKind() == Value::Kind::Bytes) return value.SetText(std::string(value.Bytes()));
            const CString text = value.ToText();
            return value.SetText(text.View());
        }
        case TypeClass::Bool:
            if (value.IsNumber()) return value.SetBool(value.ToDouble() != 0);
            return value.SetNull();
        case TypeClass::Date:
            return ConvertToDate(value);
        case TypeClass::Bytes:
            if (value.GetKind() == Value::Kind::Text) return value.SetBytes(std::string(value.Text()));
            return value.SetNull();
        case TypeClass::Null:
            return;
    }
}

}  // namespace ktl::ado::sql
