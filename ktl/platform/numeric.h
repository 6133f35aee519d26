#pragma once

#include <limits>

namespace ktl {

/// A double cut toward zero. Outside the range of `int` the result is the nearest limit; not-a-number gives 0.
constexpr int TruncateToInt(double value) {
    constexpr double kMax = 2147483647.0;
    constexpr double kMin = -2147483648.0;
    if (!(value > kMin)) return value <= kMin ? std::numeric_limits<int>::min() : 0;
    return value < kMax ? static_cast<int>(value) : std::numeric_limits<int>::max();
}

/// The sum, held at the limits of `int` instead of overflowing.
constexpr int AddClamped(int a, int b) {
    int sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) return sum;
    return b > 0 ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
}

}  // namespace ktl
