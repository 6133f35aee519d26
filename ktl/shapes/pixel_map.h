#pragma once

#include "ktl/core/extent.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/numeric.h"

namespace ktl {

/// World to client for one drawing call: the steps of `World2ClientX` and `World2ClientY`, cut toward zero, then the
/// pixel offsets. Sums are held at the limits of `int`.
class PixelMap {
  public:
    PixelMap(double ratio, const CExtent &extent, int offsetX = 0, int offsetY = 0)
        : m_left(extent.left),
          m_bottom(extent.bottom),
          m_height(extent.top - extent.bottom),
          m_ratio(ratio),
          m_offsetX(offsetX),
          m_offsetY(offsetY) {}

    int X(double x) const { return AddClamped(TruncateToInt((x - m_left) * m_ratio), m_offsetX); }
    int Y(double y) const { return AddClamped(TruncateToInt((m_height - (y - m_bottom)) * m_ratio), m_offsetY); }
    CPoint At(double x, double y) const { return CPoint(X(x), Y(y)); }

  private:
    double m_left;
    double m_bottom;
    double m_height;
    double m_ratio;
    int m_offsetX;
    int m_offsetY;
};

}  // namespace ktl
