#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tests/support/tds_server/bytes.h"

namespace ktl::test::tds {

struct Blob {
    std::string bytes;
};
/// Null, integer, floating number, UTF-8 text or bytes, as SQLite holds a cell. Dates are text in the form
/// "yyyy-mm-dd hh:mm:ss.mmm".
using Cell = std::variant<std::monostate, long long, double, std::string, Blob>;

/// How the values of a type look on the wire.
enum class Form : std::uint8_t { Integer, Float, Money, DateTime, Decimal, Text, Bytes, LongText, LongBytes };

/// One row of the table of types.
struct TypeFacts {
    const char *name;
    std::uint8_t token;
    Form form;
    /// Bytes of a number or date; of a character otherwise.
    int size;
    /// Text in two-byte characters.
    bool wide = false;
    /// Values are padded to the declared length.
    bool padded = false;
};

/// A column's declared type.
struct SqlType {
    const TypeFacts *facts;
    /// Characters, bytes or digits; kMax for "(max)".
    int length = 0;
    int scale = 0;

    static constexpr int kMax = -1;
    bool IsText() const { return facts->form == Form::Text || facts->form == Form::LongText; }
};

/// The type that a declaration such as "numeric(31,15)" or "[nvarchar](40)" names; empty for an unknown one.
std::optional<SqlType> ParseType(std::string_view declaration);
/// The type of an expression, which has no declaration, by a value of it.
SqlType TypeOfValue(const Cell &value);

/// A condition in SQLite's language that a column's values must meet, with the number of the error when they don't.
struct TypeCheck {
    std::string condition;
    int errorNumber = 0;
};
std::optional<TypeCheck> CheckOfType(const SqlType &type, const std::string &column);

/// The type as a column's description tells it; `table` goes with the long types only.
void WriteTypeInfo(ByteWriter &writer, const SqlType &type, std::string_view table);
void WriteValue(ByteWriter &writer, const SqlType &type, const Cell &value);

/// Reads a parameter's type and value.
Cell ReadTypedValue(ByteReader &reader);

/// Milliseconds since 1 January 1900 of a date as statements write it; empty for anything else.
std::optional<long long> ParseDateTime(std::string_view text);

}  // namespace ktl::test::tds
