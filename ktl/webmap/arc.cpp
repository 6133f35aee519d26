#include "ktl/webmap/arc.h"

#include <algorithm>
#include <cmath>

#include "ktl/webmap/projection.h"

namespace {

POINTD ArcPoint(const POINTD &centre, double radius, int degree) {
    return POINTD(centre.x + std::cos(degree * ktl::PI / 180.0) * radius,
                  centre.y + std::sin(degree * ktl::PI / 180.0) * radius);
}

}  // namespace

void GetArcPointArray(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                      CArray<POINTD, POINTD> &points, int withCentre) {
    points.SetSize(std::max(endDegree - startDegree + 2, 0));
    if (points.IsEmpty()) return;
    int next = 0;
    if (withCentre) points[next++] = centre;
    for (int degree = startDegree; degree <= endDegree; ++degree) points[next++] = ArcPoint(centre, radius, degree);
}

void GetArcExtent(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                  EXTENT &extent, int withCentre) {
    if (withCentre) extent = EXTENT(centre.x, centre.y, centre.x, centre.y);
    for (int degree = startDegree; degree <= endDegree; ++degree) {
        const POINTD point = ArcPoint(centre, radius, degree);
        const EXTENT here(point.x, point.y, point.x, point.y);
        // The test is on the angle, not on the first turn of the loop.
        extent = degree == 0 && !withCentre ? here : UnionExtent(extent, here);
    }
}
