#pragma once

#include <string_view>

#include "ktl/platform/ado/data_type.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::sql {

/// What values can be compared with and assigned to each other.
enum class TypeClass { Null, Number, Text, Bool, Date, Bytes };

TypeClass ClassOf(DataType type);
TypeClass ClassOf(const Value &value);
/// "number", "text" and so on, for messages.
const char *ClassName(TypeClass type);

/// Negative, 0 or positive. The values are of one class and not null. Texts compare bytewise, the shorter one as if
/// padded with blanks; booleans compare with numbers as their truth.
int CompareValues(const Value &a, const Value &b);
int CompareTexts(std::string_view a, std::string_view b);

/// Exact for whole numbers and decimals while the digits fit, otherwise in doubles. `operation` is one of + - * / % ^.
/// Throws Error for a division by zero.
void Calculate(char operation, const Value &a, const Value &b, Value &result);

/// Turns a value into the class that a column holds, as Insert … Select and a changed column do: text to its leading
/// number, numbers to text, truth to 1 and 0; what cannot be turned becomes null.
void ConvertTo(TypeClass type, Value &value);

}  // namespace ktl::ado::sql
