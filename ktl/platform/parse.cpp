#include "ktl/platform/parse.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace ktl {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Drops blanks and a '+'; answers whether a '-' was dropped.
bool TakeSign(std::string_view &text) {
    text.remove_prefix(std::min(text.find_first_not_of("\t\n\v\f\r "), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    return negative;
}

// The value of a decimal whose exponent lies beyond the double's range: 0 or infinity.
double BeyondRange(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, exponent);
    const bool hasNegativeExponent = exponent != std::string_view::npos && number.substr(exponent + 1).starts_with('-');
    const bool isFraction = digits.find_first_of("123456789") > digits.find('.');
    const bool isTiny = exponent == std::string_view::npos ? isFraction : hasNegativeExponent;
    return isTiny ? 0.0 : std::numeric_limits<double>::infinity();
}

}  // namespace

double ParseDouble(std::string_view text) {
    const bool negative = TakeSign(text);
    const bool startsNumber =
        !text.empty() && (IsDigit(text[0]) || (text[0] == '.' && text.size() > 1 && IsDigit(text[1])));
    if (!startsNumber) return 0.0;
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = BeyondRange(text.substr(0, static_cast<std::size_t>(result.ptr - text.data())));
    }
    return negative ? -value : value;
}

int ParseInt(std::string_view text) {
    const bool negative = TakeSign(text);
    long long value = 0;
    for (const char c : text) {
        if (!IsDigit(c)) break;
        value = std::min(value * 10 + (c - '0'), 1LL << 40);
    }
    if (negative) value = -value;
    return static_cast<int>(
        std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace ktl
