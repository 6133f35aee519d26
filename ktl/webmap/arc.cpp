#include "ktl/webmap/arc.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "ktl/webmap/projection.h"

namespace {

POINTD ArcPoint(const POINTD &centre, double radius, long long degree) {
    const double angle = static_cast<double>(degree) * ktl::PI / 180.0;
    return POINTD(centre.x + std::cos(angle) * radius, centre.y + std::sin(angle) * radius);
}

EXTENT At(const POINTD &point) {
    return EXTENT(point.x, point.y, point.x, point.y);
}

}  // namespace

void GetArcPointArray(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                      CArray<POINTD, POINTD> &points, int withCentre) {
    constexpr long long kMost = std::numeric_limits<int>::max();
    const long long size = static_cast<long long>(endDegree) - startDegree + 2;
    const POINTD middle = centre;
    points.RemoveAll();
    points.SetSize(static_cast<int>(std::clamp(size, 0LL, kMost)));
    int next = 0;
    if (withCentre && !points.IsEmpty()) points[next++] = middle;
    for (long long degree = startDegree; degree <= endDegree; ++degree) {
        points[next++] = ArcPoint(middle, radius, degree);
    }
}

void GetArcExtent(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                  EXTENT &extent, int withCentre) {
    if (withCentre) extent = At(centre);
    for (long long degree = startDegree; degree <= endDegree; ++degree) {
        const EXTENT point = At(ArcPoint(centre, radius, degree));
        // The reset looks at the angle, not at the place in the loop.
        extent = degree == 0 && !withCentre ? point : UnionExtent(extent, point);
    }
}
