#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/point.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/numeric.h"

/// \file
/// Between world and client space. `ext` is the extent that the window shows, `ratio` the client pixels a world unit;
/// a ratio of 0 is not guarded against. Client y grows downward from the window's top. An integer result is cut toward
/// zero, so half a pixel left of the window is still column 0. The order of the operations is part of the contract:
/// other programs' pictures are compared with ours pixel by pixel.

namespace ktl {

inline double ClientX(const EXTENT &ext, double ratio, double x) {
    return (x - ext.left) * ratio;
}
/// The height is taken first: not the same, in the last bit, as (top - y) * ratio.
inline double ClientY(const EXTENT &ext, double ratio, double y) {
    return ((ext.top - ext.bottom) - (y - ext.bottom)) * ratio;
}

}  // namespace ktl

inline int World2ClientX(const CExtent &ext, const double &ratio, const double &x) {
    return ktl::TruncateToInt(ktl::ClientX(ext, ratio, x));
}
inline int World2ClientY(const CExtent &ext, const double &ratio, const double &y) {
    return ktl::TruncateToInt(ktl::ClientY(ext, ratio, y));
}
inline void World2Client(const CExtent &ext, const double &ratio, const double &x, const double &y, int &cx, int &cy) {
    const int clientX = World2ClientX(ext, ratio, x);
    cy = World2ClientY(ext, ratio, y);
    cx = clientX;
}
inline Gdiplus::Point World2Client(const CExtent &ext, const double &ratio, const double &x, const double &y) {
    return Gdiplus::Point(World2ClientX(ext, ratio, x), World2ClientY(ext, ratio, y));
}
inline Gdiplus::Point World2Client(const CExtent &ext, const double &ratio, const POINTD &p) {
    return World2Client(ext, ratio, p.x, p.y);
}
/// A length in pixels.
inline int World2Client(const double &length, const double &ratio) {
    return ktl::TruncateToInt(length * ratio);
}
/// Converts `e` in place without truncation. Its smaller y stays in `bottom`, though the axis has turned over.
inline void World2Client(const CExtent &ext, const double &ratio, CExtent &e) {
    e.SetExtent(ktl::ClientX(ext, ratio, e.left), ktl::ClientY(ext, ratio, e.top), ktl::ClientX(ext, ratio, e.right),
                ktl::ClientY(ext, ratio, e.bottom));
}

inline double Client2WorldX(const CExtent &ext, const double &ratio, const int &cx) {
    return cx / ratio + ext.left;
}
inline double Client2WorldY(const CExtent &ext, const double &ratio, const int &cy) {
    return (ext.top - ext.bottom) - cy / ratio + ext.bottom;
}
inline POINTD Client2World(const CExtent &ext, const double &ratio, const CPoint &p) {
    return POINTD(Client2WorldX(ext, ratio, p.x), Client2WorldY(ext, ratio, p.y));
}
/// A length in world units.
inline double Client2World(const int &length, const double &ratio) {
    return length / ratio;
}
