#include "ktl/platform/ado/sql/functions.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

namespace {

constexpr TypeClass kAny = TypeClass::Null;
constexpr TypeClass kNumber = TypeClass::Number;
constexpr TypeClass kText = TypeClass::Text;

constexpr FunctionFacts kFunctions[] = {
    {"chr", FunctionId::Chr, false, 1, 1, kText, kNumber, kAny},
    {"upper", FunctionId::Upper, false, 1, 1, kText, kText, kAny},
    {"ucase", FunctionId::Upper, false, 1, 1, kText, kText, kAny},
    {"lower", FunctionId::Lower, false, 1, 1, kText, kText, kAny},
    {"lcase", FunctionId::Lower, false, 1, 1, kText, kText, kAny},
    {"ltrim", FunctionId::LTrim, false, 1, 1, kText, kText, kAny},
    {"rtrim", FunctionId::RTrim, false, 1, 1, kText, kText, kAny},
    {"trim", FunctionId::RTrim, false, 1, 1, kText, kText, kAny},
    {"alltrim", FunctionId::AllTrim, false, 1, 1, kText, kText, kAny},
    {"len", FunctionId::Len, false, 1, 1, kNumber, kText, kAny},
    {"substr", FunctionId::SubStr, false, 2, 3, kText, kText, kNumber},
    {"substring", FunctionId::SubStr, false, 2, 3, kText, kText, kNumber},
    {"mid", FunctionId::SubStr, false, 2, 3, kText, kText, kNumber},
    {"abs", FunctionId::Abs, false, 1, 1, kNumber, kNumber, kAny},
    {"round", FunctionId::Round, false, 1, 2, kNumber, kNumber, kNumber},
    {"int", FunctionId::Int, false, 1, 1, kNumber, kNumber, kAny},
    {"val", FunctionId::Val, false, 1, 1, kNumber, kText, kAny},
    {"str", FunctionId::Str, false, 1, 3, kText, kNumber, kNumber},
    {"count", FunctionId::Count, true, 1, 1, kNumber, kAny, kAny},
    {"max", FunctionId::Max, true, 1, 1, kAny, kAny, kAny},
    {"min", FunctionId::Min, true, 1, 1, kAny, kAny, kAny},
    {"sum", FunctionId::Sum, true, 1, 1, kNumber, kNumber, kAny},
    {"avg", FunctionId::Avg, true, 1, 1, kNumber, kNumber, kAny},
};

template <class Condition>
const FunctionFacts *Find(Condition condition) {
    const auto *found = std::find_if(std::begin(kFunctions), std::end(kFunctions), condition);
    return found == std::end(kFunctions) ? nullptr : found;
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

/// Right-aligned in `width` characters with `decimals` digits; asterisks when it does not fit.
std::string NumberText(const Value &value, long long width, long long decimals) {
    width = std::clamp<long long>(width, 0, 254);
    decimals = std::clamp<long long>(decimals, 0, 18);
    std::string text;
    if (value.GetKind() == Value::Kind::Double) {
        CString formatted;
        formatted.Format("%.*f", static_cast<int>(decimals), value.Double());
        text = formatted.GetString();
    } else {
        const bool decimal = value.GetKind() == Value::Kind::Decimal;
        text = DecimalToFixed(decimal ? value.AsDecimal() : Decimal{value.Integer(), 0}, static_cast<int>(decimals));
    }
    const auto size = static_cast<std::size_t>(width);
    if (text.size() > size) return std::string(size, '*');
    return std::string(size - text.size(), ' ') + text;
}

void RoundTo(const Value &number, long long decimals, Value &result) {
    decimals = std::clamp<long long>(decimals, -18, 18);
    if (number.GetKind() == Value::Kind::Decimal && decimals >= 0) {
        if (const auto rounded = DecimalFromText(DecimalToFixed(number.AsDecimal(), static_cast<int>(decimals)))) {
            return result.SetDecimal(*rounded);
        }
    }
    if (number.GetKind() == Value::Kind::Integer && decimals >= 0) return result.SetInteger(number.Integer());
    const double power = std::pow(10.0, static_cast<double>(decimals));
    result.SetDouble(std::round(number.ToDouble() * power) / power);
}

void TakeAbs(const Value &number, Value &result) {
    if (number.ToDouble() >= 0) {
        result = number;
    } else {
        Calculate('-', Value::FromInteger(0), number, result);
    }
}

void TakeInt(const Value &number, Value &result) {
    if (const auto whole = number.ToInteger()) {
        result.SetInteger(*whole);
    } else {
        result.SetDouble(std::trunc(number.ToDouble()));
    }
}

void TakeVal(const Value &text, Value &result) {
    result = text;
    ConvertTo(TypeClass::Number, result);
    if (result.IsNull()) result.SetInteger(0);
}

std::string Character(const Value &number) {
    const auto code = number.ToInteger();
    if (!code || *code < 0 || *code > 255) {
        throw Error("CHR() takes a whole number from 0 to 255.", error_number::kOperandTypes);
    }
    return std::string(1, static_cast<char>(*code));
}

std::string_view Part(std::string_view text, long long begin, long long length) {
    const auto from = std::min(static_cast<std::size_t>(std::max<long long>(begin - 1, 0)), text.size());
    return text.substr(from, static_cast<std::size_t>(std::max<long long>(length, 0)));
}

}  // namespace

const FunctionFacts *FindFunction(std::string_view name) {
    return Find([&](const FunctionFacts &row) { return EqualNames(name, row.name); });
}

const FunctionFacts *FindFunction(FunctionId id) {
    return Find([&](const FunctionFacts &row) { return row.id == id; });
}

void CallFunction(FunctionId function, std::span<const Value *const> arguments, Value &result) {
    using enum FunctionId;
    const Value &first = *arguments[0];
    // A whole number argument, held at the limits of what texts can be long.
    const auto number = [&](std::size_t index, long long otherwise) {
        if (index >= arguments.size()) return otherwise;
        return static_cast<long long>(std::clamp(arguments[index]->ToDouble(), -1e9, 1e9));
    };
    switch (function) {
        case Len:
            return result.SetInteger(static_cast<long long>(first.Text().size()));
        case Abs:
            return TakeAbs(first, result);
        case Round:
            return RoundTo(first, number(1, 0), result);
        case Int:
            return TakeInt(first, result);
        case Val:
            return TakeVal(first, result);
        case Chr:
            return result.SetText(Character(first));
        case Str:
            return result.SetText(NumberText(first, number(1, 10), number(2, 0)));
        case Upper:
        case Lower:
            return result.SetText(Folded(first.Text(), function == Upper));
        case SubStr:
            return result.SetText(Part(first.Text(), number(1, 1), number(2, 1'000'000'000)));
        default:
            return result.SetText(Trimmed(first.Text(), function != RTrim, function != LTrim));
    }
}

}  // namespace ktl::ado::sql
