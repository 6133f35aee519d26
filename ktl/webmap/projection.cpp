#include "ktl/webmap/projection.h"

namespace {

double MetresX(double l) {
    return ktl::EARTH_RADIUS * l * ktl::PI_SINGLE / 180.0;
}

double MetresY(double b) {
    const auto u = static_cast<float>(b * ktl::PI_SINGLE / 180.0 * 0.5 + ktl::QUARTER_PI_SINGLE);
    const auto tangent = static_cast<float>(std::tan(static_cast<double>(u)));
    return std::log(static_cast<double>(tangent)) * ktl::EARTH_RADIUS;
}

void WriteMetres(double l, double b, double &px, double &py) {
    px = MetresX(l);
    py = MetresY(b);
}

}  // namespace

void KtlGetProjectXY(double &a, double &b, double &px, double &py, int isLB) {
    if (isLB == 0) {
        WriteMetres(KtlGetL(a), KtlGetB(b), px, py);
    } else {
        WriteMetres(a, b, px, py);
    }
}

double KtlGetProjectX(double &a, int isLB) {
    if (isLB == 0) a = KtlGetL(a);
    return MetresX(a);
}

double KtlGetProjectY(double &b, int isLB) {
    if (isLB == 0) b = KtlGetB(b);
    return MetresY(b);
}
