#pragma once

#include <cstddef>
#include <vector>

#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/types.h"

/// \file
/// Private to the drawing layer: points of the interface as points of the scan converter.

namespace ktl::raster {

inline PointD AsPointD(const Gdiplus::Point &p) {
    return {static_cast<double>(p.X), static_cast<double>(p.Y)};
}
inline PointD AsPointD(const Gdiplus::PointF &p) {
    return {p.X, p.Y};
}

template <class P>
std::vector<PointD> AsPointsD(const P *points, int count) {
    std::vector<PointD> result(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = AsPointD(points[i]);
    return result;
}

/// True for the counts that a chain of Béziers can have.
constexpr bool IsBezierCount(int count) {
    return count >= 4 && count % 3 == 1;
}

}  // namespace ktl::raster
