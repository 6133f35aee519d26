#pragma once

#include <cmath>

/// \file
/// Between degrees, the normalised square and Web Mercator metres. The square runs from -0.5 to 0.5 both ways, y
/// upward, centred on longitude and latitude 0. In the names X and Y mean the square, L and B longitude and latitude in
/// degrees. Nothing is clamped; at the poles the result is what the arithmetic gives.

namespace ktl {

// Not the exact values, and not interchangeable: stored coordinates were made with these.
constexpr double PI = 3.14159265358979;
constexpr double INV_TWO_PI = 0.1591549430918955;
constexpr double RAD_PER_DEGREE = 0.017453292519943278;
/// Pi and pi/4 as single-precision numbers.
constexpr double PI_SINGLE = 3.1415927410125732;
constexpr double QUARTER_PI_SINGLE = 0.7853981852531433;
/// Metres.
constexpr double EARTH_RADIUS = 6378137.0;

}  // namespace ktl

// These are inline, since a loop over places would otherwise spend a tenth of its time on the calls. No product in them
// meets a sum, so that a program's own flags cannot fuse the two and change the last bit; keep it so.

/// Degrees to the square.
inline double KtlGetX(const double &l) {
    return l / 360.0;
}
inline double KtlGetY(const double &b) {
    const double sine = std::sin(b * ktl::PI / 180.0);
    return std::log((1 + sine) / (1 - sine)) * 0.5 * ktl::INV_TWO_PI;
}
/// The outputs may be the inputs' variables.
inline void KtlGetXY(const double &l, const double &b, double &x, double &y) {
    const double latitude = b;
    x = KtlGetX(l);
    y = KtlGetY(latitude);
}

/// The square to degrees. Not the exact inverse: the constants differ in their last digits.
inline double KtlGetL(const double &x) {
    return x * 360.0;
}
inline double KtlGetB(const double &y) {
    double t = y / ktl::INV_TWO_PI;
    t = t / 0.5;
    const double e = std::exp(t);
    return std::asin((e - 1) / (1 + e)) / ktl::RAD_PER_DEGREE;
}
/// The outputs may be the inputs' variables.
inline void KtlGetLB(const double &x, const double &y, double &l, double &b) {
    const double normalisedY = y;
    l = KtlGetL(x);
    b = KtlGetB(normalisedY);
}

namespace ktl {

/// The same number, out of the compiler's sight: what was computed is rounded here, whatever a program's own flags
/// would fuse, widen or leave unrounded.
template <class Real>
inline Real Rounded(Real value) {
#if defined(__x86_64__)
    asm("" : "+x"(value));
#elif defined(__aarch64__)
    asm("" : "+w"(value));
#else
    volatile Real kept = value;
    value = kept;
#endif
    return value;
}

inline double MetresX(double l) {
    return EARTH_RADIUS * l * PI_SINGLE / 180.0;
}
inline double MetresY(double b) {
    const float u = Rounded(static_cast<float>(Rounded(b * PI_SINGLE / 180.0 * 0.5) + QUARTER_PI_SINGLE));
    const float tangent = Rounded(static_cast<float>(std::tan(static_cast<double>(u))));
    return std::log(static_cast<double>(tangent)) * EARTH_RADIUS;
}

}  // namespace ktl

/// Metres, from the square when `isLB` is 0 and from degrees otherwise; y has the precision of single floats. The
/// inputs are not changed.
inline void KtlGetProjectXY(double &a, double &b, double &px, double &py, int isLB) {
    const double l = isLB == 0 ? KtlGetL(a) : a;
    const double latitude = isLB == 0 ? KtlGetB(b) : b;
    px = ktl::MetresX(l);
    py = ktl::MetresY(latitude);
}
/// As above for one axis; but when `isLB` is 0 the input becomes the degrees, so a second call on it differs.
inline double KtlGetProjectX(double &a, int isLB) {
    if (isLB == 0) a = KtlGetL(a);
    return ktl::MetresX(a);
}
inline double KtlGetProjectY(double &b, int isLB) {
    if (isLB == 0) b = KtlGetB(b);
    return ktl::MetresY(b);
}
