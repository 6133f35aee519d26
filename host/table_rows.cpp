#include "host/table_rows.h"

#include <charconv>
#include <cmath>

namespace ktl::host {

namespace {

template <class Real>
std::string ShortestText(Real value) {
    const Real size = std::fabs(value);
    const bool plain = size == 0 || (size >= Real(1e-6) && size < Real(1e16));
    char digits[64];
    const auto form = plain ? std::chars_format::fixed : std::chars_format::scientific;
    return {digits, std::to_chars(digits, digits + sizeof digits, value, form).ptr};
}

}  // namespace

const char *WordFor(ColumnType type) {
    static constexpr const char *kWords[] = {"text", "memo", "integer",   "number", "yes/no",
                                             "date", "time", "date+time", "bytes"};
    return kWords[static_cast<int>(type)];
}

std::string NumberText(double value) {
    return ShortestText(value);
}

std::string NumberText(float value) {
    return ShortestText(value);
}

}  // namespace ktl::host
