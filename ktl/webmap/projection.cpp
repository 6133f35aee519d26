#include "ktl/webmap/projection.h"

#include <cmath>

namespace {

double Longitude(double x) {
    return x * 360.0;
}

double Latitude(double y) {
    double t = y / ktl::INV_TWO_PI;
    t = t / 0.5;
    const double e = std::exp(t);
    return std::asin((e - 1) / (1 + e)) / ktl::RAD_PER_DEGREE;
}

double NormalisedX(double l) {
    return l / 360.0;
}

double NormalisedY(double b) {
    const double sine = std::sin(b * ktl::PI / 180.0);
    return std::log((1 + sine) / (1 - sine)) * 0.5 * ktl::INV_TWO_PI;
}

double MetresX(double l) {
    return ktl::EARTH_RADIUS * l * ktl::PI_SINGLE / 180.0;
}

double MetresY(double b) {
    const auto u = static_cast<float>(b * ktl::PI_SINGLE / 180.0 * 0.5 + ktl::QUARTER_PI_SINGLE);
    const auto tangent = static_cast<float>(std::tan(static_cast<double>(u)));
    return std::log(static_cast<double>(tangent)) * ktl::EARTH_RADIUS;
}

}  // namespace

void KtlGetXY(const double &l, const double &b, double &x, double &y) {
    const double normalisedY = NormalisedY(b);
    x = NormalisedX(l);
    y = normalisedY;
}

double KtlGetX(const double &l) {
    return NormalisedX(l);
}

double KtlGetY(const double &b) {
    return NormalisedY(b);
}

void KtlGetLB(const double &x, const double &y, double &l, double &b) {
    const double latitude = Latitude(y);
    l = Longitude(x);
    b = latitude;
}

double KtlGetL(const double &x) {
    return Longitude(x);
}

double KtlGetB(const double &y) {
    return Latitude(y);
}

void KtlGetProjectXY(double &a, double &b, double &px, double &py, int isLB) {
    const double l = isLB == 0 ? Longitude(a) : a;
    const double latitude = isLB == 0 ? Latitude(b) : b;
    px = MetresX(l);
    py = MetresY(latitude);
}

double KtlGetProjectX(double &a, int isLB) {
    if (isLB == 0) a = Longitude(a);
    return MetresX(a);
}

double KtlGetProjectY(double &b, int isLB) {
    if (isLB == 0) b = Latitude(b);
    return MetresY(b);
}
