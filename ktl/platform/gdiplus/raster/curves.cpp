#include "ktl/platform/gdiplus/raster/curves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ktl::raster {

namespace {

constexpr double kTolerance = 0.4;
constexpr int kMaxSegments = 4096;
// Control points of a quarter of an ellipse, as a share of the radius.
constexpr double kQuarter = 0.5522847498;

double Bend(PointD a, PointD b, PointD c) {
    return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
}

int SegmentsOf(const Cubic &c) {
    const double bend = std::max(Bend(c.p0, c.p1, c.p2), Bend(c.p1, c.p2, c.p3));
    int n = 1;
    while (n < kMaxSegments && 6.0 * bend / (8.0 * n * n) > kTolerance) n *= 2;
    return n;
}

PointD Rounded(PointD p) {
    const FixedPoint fixed = ToFixed(p);
    return {static_cast<double>(fixed.x) / kSubpixels, static_cast<double>(fixed.y) / kSubpixels};
}

struct Ellipse {
    PointD centre;
    double rx;
    double ry;

    PointD At(double cosine, double sine) const { return {centre.x + rx * cosine, centre.y + ry * sine}; }
};

Ellipse InBox(double x, double y, double width, double height) {
    return {{x + width / 2, y + height / 2}, width / 2, height / 2};
}

/// The ellipse's parameter at the point that the ray of this direction meets, on the same turn as the direction.
double ParameterOf(const Ellipse &e, double degrees) {
    const double turns = std::floor((degrees + 180.0) / 360.0);
    const double angle = (degrees - turns * 360.0) * std::numbers::pi / 180.0;
    return std::atan2(e.rx * std::sin(angle), e.ry * std::cos(angle)) + turns * 2 * std::numbers::pi;
}

Cubic CurveBetween(const Ellipse &e, double from, double to) {
    const double reach = 4.0 / 3.0 * std::tan((to - from) / 4);
    const double c0 = std::cos(from);
    const double s0 = std::sin(from);
    const double c1 = std::cos(to);
    const double s1 = std::sin(to);
    return {e.At(c0, s0), e.At(c0 - reach * s0, s0 + reach * c0), e.At(c1 + reach * s1, s1 - reach * c1), e.At(c1, s1)};
}

}  // namespace

void Flatten(const Cubic &curve, std::vector<PointD> &points) {
    const int segments = SegmentsOf(curve);
    for (int i = 1; i < segments; ++i) {
        const double t = static_cast<double>(i) / segments;
        const double s = 1 - t;
        points.push_back(Rounded(curve.p0 * (s * s * s) + curve.p1 * (3 * s * s * t) + curve.p2 * (3 * s * t * t) +
                                 curve.p3 * (t * t * t)));
    }
    points.push_back(Rounded(curve.p3));
}

Arc EllipseCurves(double x, double y, double width, double height) {
    const Ellipse e = InBox(x, y, width, height);
    constexpr double kDirections[5][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}, {1, 0}};
    Arc arc;
    arc.count = 4;
    for (int i = 0; i < 4; ++i) {
        const double *a = kDirections[i];
        const double *b = kDirections[i + 1];
        arc.curves[i] = {e.At(a[0], a[1]), e.At(a[0] + kQuarter * b[0], a[1] + kQuarter * b[1]),
                         e.At(b[0] + kQuarter * a[0], b[1] + kQuarter * a[1]), e.At(b[0], b[1])};
    }
    return arc;
}

Arc ArcCurves(double x, double y, double width, double height, double startAngle, double sweepAngle) {
    const Ellipse e = InBox(x, y, width, height);
    const double sweep = std::clamp(sweepAngle, -360.0, 360.0);
    const double from = ParameterOf(e, startAngle);
    const bool fullTurn = std::abs(sweep) == 360.0;
    const double total =
        fullTurn ? std::copysign(2 * std::numbers::pi, sweep) : ParameterOf(e, startAngle + sweep) - from;
    Arc arc;
    arc.count = std::clamp(static_cast<int>(std::ceil(std::abs(total) / (std::numbers::pi / 2) - 1e-9)), 1, 4);
    for (int i = 0; i < arc.count; ++i) {
        arc.curves[i] = CurveBetween(e, from + total * i / arc.count, from + total * (i + 1) / arc.count);
    }
    return arc;
}

}  // namespace ktl::raster
