#pragma once

#include <algorithm>

namespace ktl {

/// 1 when the segments 1-2 and 3-4 meet. An end point on the other segment counts, and so does an overlap of two
/// segments on one line.
inline int SegmentsIntersect(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    if (std::min(x1, x2) > std::max(x3, x4) || std::max(x1, x2) < std::min(x3, x4) ||
        std::min(y1, y2) > std::max(y3, y4) || std::max(y1, y2) < std::min(y3, y4)) {
        return 0;
    }
    const double d1 = (x1 - x3) * (y4 - y3) - (x4 - x3) * (y1 - y3);
    const double d2 = (x4 - x3) * (y2 - y3) - (x2 - x3) * (y4 - y3);
    const double d3 = (x3 - x1) * (y2 - y1) - (x2 - x1) * (y3 - y1);
    const double d4 = (x2 - x1) * (y4 - y1) - (x4 - x1) * (y2 - y1);
    return d1 * d2 < 0 || d3 * d4 < 0 ? 0 : 1;
}

}  // namespace ktl
