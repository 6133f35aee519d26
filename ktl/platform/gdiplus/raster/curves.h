#pragma once

#include <vector>

#include "ktl/platform/gdiplus/raster/geometry.h"

/// \file
/// Curves as chains of points. A cubic Bézier is cut into N segments of equal parameter, N the smallest power of two
/// with 6 m / (8 N^2) <= 0.4 pixels, m being the larger of |P0 - 2 P1 + P2| and |P1 - 2 P2 + P3|. The points are
/// rounded to 1/16 pixel.

namespace ktl::raster {

/// A cubic Bézier.
struct Cubic {
    PointD p0, p1, p2, p3;

    Cubic Mapped(const Affine &map) const { return {map.Apply(p0), map.Apply(p1), map.Apply(p2), map.Apply(p3)}; }
};

/// Appends the points after the first.
void Flatten(const Cubic &curve, std::vector<PointD> &points);

/// An arc of an ellipse in at most four Béziers of at most 90 degrees each.
struct Arc {
    Cubic curves[4];
    int count = 0;
};

/// The whole ellipse in the box, starting at its right side and running clockwise (y down).
Arc EllipseCurves(double x, double y, double width, double height);

/// Angles in degrees from +x, clockwise, as directions of rays from the centre also when the box is no square. A sweep
/// beyond a full turn is a full turn; a sweep of 0 gives one curve that is a point.
Arc ArcCurves(double x, double y, double width, double height, double startAngle, double sweepAngle);

}  // namespace ktl::raster
