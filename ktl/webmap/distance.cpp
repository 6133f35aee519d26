#include "ktl/webmap/distance.h"

#include <cmath>
#include <cstdint>

#include "ktl/platform/numeric.h"
#include "ktl/webmap/projection.h"

namespace {

/// The square in 32-bit signed arithmetic that wraps.
std::int32_t WrappingSquare(std::int32_t from, std::int32_t to) {
    const std::uint32_t difference = static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from);
    return static_cast<std::int32_t>(difference * difference);
}

double SquareOfSingleSine(double angle) {
    return std::pow(static_cast<double>(static_cast<float>(std::sin(angle / 2.0))), 2.0);
}

}  // namespace

double KtlGetP2PLength(double x1, double y1, double x2, double y2) {
    return std::sqrt((y2 - y1) * (y2 - y1) + (x2 - x1) * (x2 - x1));
}

int KtlGetP2PLength(CPoint a, CPoint b) {
    return ktl::TruncateToInt(
        std::sqrt(static_cast<double>(WrappingSquare(a.y, b.y)) + static_cast<double>(WrappingSquare(a.x, b.x))));
}

double KtlGetDistance(double l1, double b1, double l2, double b2) {
    const double rb1 = b1 * ktl::PI / 180.0;
    const double rb2 = b2 * ktl::PI / 180.0;
    const double a = rb1 - rb2;
    const double d = (l1 * ktl::PI / 180.0) - (l2 * ktl::PI / 180.0);
    const double s1 = SquareOfSingleSine(a);
    const auto c1 = static_cast<float>(std::cos(rb1));
    const double c2 = std::cos(rb2);
    const double s2 = SquareOfSingleSine(d);
    const auto t = static_cast<float>(s2 * (static_cast<double>(c1) * c2) + s1);
    const auto v = static_cast<float>(std::sqrt(static_cast<double>(t)));
    const double w = std::sin(static_cast<double>(v));
    return (w + w) * ktl::EARTH_RADIUS;
}
