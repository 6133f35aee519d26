#include "ktl/webmap/distance.h"

#include <cmath>
#include <cstdint>

#include "ktl/platform/numeric.h"
#include "ktl/webmap/projection.h"

namespace {

/// The square of a difference in 32 signed bits, which wraps.
double WrappedSquare(LONG from, LONG to) {
    const std::uint32_t difference = static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from);
    return static_cast<std::int32_t>(difference * difference);
}

/// The sine of half an angle rounded to single precision, then squared in double.
double HalfSineSquared(double angle) {
    const auto sine = static_cast<float>(std::sin(angle / 2.0));
    return static_cast<double>(sine) * static_cast<double>(sine);
}

}  // namespace

double KtlGetP2PLength(double x1, double y1, double x2, double y2) {
    return std::sqrt((y2 - y1) * (y2 - y1) + (x2 - x1) * (x2 - x1));
}

int KtlGetP2PLength(CPoint a, CPoint b) {
    return ktl::TruncateToInt(std::sqrt(WrappedSquare(a.y, b.y) + WrappedSquare(a.x, b.x)));
}

double KtlGetDistance(double l1, double b1, double l2, double b2) {
    const double rb1 = b1 * ktl::PI / 180.0;
    const double rb2 = b2 * ktl::PI / 180.0;
    const double a = rb1 - rb2;
    const double d = (l1 * ktl::PI / 180.0) - (l2 * ktl::PI / 180.0);
    const double s1 = HalfSineSquared(a);
    const auto c1 = static_cast<float>(std::cos(rb1));
    const double c2 = std::cos(rb2);
    const double s2 = HalfSineSquared(d);
    const auto t = static_cast<float>(s2 * (static_cast<double>(c1) * c2) + s1);
    const auto v = static_cast<float>(std::sqrt(static_cast<double>(t)));
    const double w = std::sin(static_cast<double>(v));
    return (w + w) * ktl::EARTH_RADIUS;
}
