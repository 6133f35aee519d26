#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

namespace ktl::ado {

__extension__ using Int128 = __int128;

/// An exact decimal number: units divided by ten to the power `scale`.
struct Decimal {
    Int128 units = 0;
    /// 0 to 38.
    int scale = 0;
};

/// The number that `text` spells: an optional sign, digits, an optional point; empty when it is anything else (an
/// exponent, blanks, more than 38 digits).
KTL_API std::optional<Decimal> DecimalFromText(std::string_view text);
/// Without trailing zeros behind the point, with a zero in front of it, never with an exponent.
KTL_API std::string DecimalToText(const Decimal &value);
/// With exactly `decimals` digits behind the point, halves rounded away from zero.
KTL_API std::string DecimalToFixed(const Decimal &value, int decimals);
KTL_API double DecimalToDouble(const Decimal &value);

/// A point in time without a zone. Day 0 is 30 December 1899, the platform's zero date.
struct DateTime {
    int day = 0;
    /// Of the day, 0 to 86,399,999.
    int milliseconds = 0;

    friend constexpr auto operator<=>(const DateTime &, const DateTime &) = default;
};

/// The date of a cell that is empty without being null: before day 0, and written as blanks. Its text is that of day 0.
inline constexpr DateTime kEmptyDate{0, -1};

/// Year, month, day and time of day as people write them (proleptic Gregorian calendar).
struct CivilTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// The nearest second's calendar form.
KTL_API CivilTime ToCivil(DateTime time);
/// Empty when a part is out of its range (years 1 to 9999).
KTL_API std::optional<DateTime> FromCivil(const CivilTime &time);

/// One cell: null or a value of one of seven kinds. Text is GBK without the padding of a fixed-width column.
///
///     Value value = Value::FromInteger(7);
///     CString text = value.IsNull() ? CString() : value.ToText();
class KTL_API Value {
  public:
    enum class Kind : std::uint8_t { Null, Integer, Double, Decimal, Bool, DateTime, Text, Bytes };

    /// Null.
    Value() {}
    static Value FromInteger(long long value);
    static Value FromDouble(double value);
    static Value FromDecimal(const Decimal &value);
    static Value FromBool(bool value);
    static Value FromDateTime(DateTime value);
    static Value FromText(std::string_view gbk);
    static Value FromBytes(std::string_view bytes);

    /// The same, in place: text and bytes keep the buffer that is there.
    void SetNull() { m_kind = Kind::Null; }
    void SetInteger(long long value) { m_kind = Kind::Integer, m_integer = value; }
    void SetDouble(double value) { m_kind = Kind::Double, m_double = value; }
    void SetDecimal(const Decimal &value) {
        m_kind = Kind::Decimal, m_units = value.units, m_scale = static_cast<std::uint8_t>(value.scale);
    }
    void SetBool(bool value) { m_kind = Kind::Bool, m_integer = value; }
    void SetDateTime(DateTime value) { m_kind = Kind::DateTime, m_time = value; }
    void SetText(std::string_view gbk) { m_kind = Kind::Text, m_text.assign(gbk); }
    void SetBytes(std::string_view bytes) { m_kind = Kind::Bytes, m_text.assign(bytes); }
    /// The text buffer, for building a text in place; the kind becomes Text.
    std::string &MutableText() {
        m_kind = Kind::Text;
        return m_text;
    }

    Kind GetKind() const { return m_kind; }
    bool IsNull() const { return m_kind == Kind::Null; }
    bool IsNumber() const { return m_kind >= Kind::Integer && m_kind <= Kind::Decimal; }

    /// The stored value; meaningful for its own kind only.
    long long Integer() const { return m_integer; }
    double Double() const { return m_double; }
    ktl::ado::Decimal AsDecimal() const { return {m_units, m_scale}; }
    bool Bool() const { return m_integer != 0; }
    ktl::ado::DateTime Time() const { return m_time; }
    /// Of Text and Bytes.
    std::string_view Bytes() const { return m_text; }
    std::string_view Text() const { return m_text; }

    /// Any number kind, and Bool as 1 or 0; other kinds give 0.
    double ToDouble() const;
    /// The number when it is whole and fits, else empty.
    std::optional<long long> ToInteger() const;

    /// As the platform turns a variant into text: whole numbers in plain decimal; doubles with at most 15 significant
    /// digits; decimals without trailing zeros; booleans as "-1" and "0"; dates as "2009/2/20 8:09:36", without a
    /// midnight time, and only the time on day 0. Throws Error for null and for bytes, which have no text.
    CString ToText() const;

  private:
    Kind m_kind = Kind::Null;
    std::uint8_t m_scale = 0;
    union {
        long long m_integer = 0;
        double m_double;
        Int128 m_units;
        ktl::ado::DateTime m_time;
    };
    std::string m_text;
};

/// A double in the text form that `Value::ToText` gives.
KTL_API std::string DoubleToText(double value);

}  // namespace ktl::ado
