#pragma once

#include <memory>

#include "ktl/core/point.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/pixel_map.h"

namespace ktl {

/// Paints the squares that mark the vertices of a selected shape.
class Tracker {
  public:
    /// Borrows the surface; a null one is left alone.
    explicit Tracker(Gdiplus::Graphics *graphics, const PixelMap &map) : m_graphics(graphics), m_map(map) {}

    void Mark(const POINTD &vertex) const;

  private:
    Gdiplus::Graphics *m_graphics;
    PixelMap m_map;
    Gdiplus::Pen m_pen{Gdiplus::Color(91, 91, 91), 1.0F};
    Gdiplus::SolidBrush m_brush{Gdiplus::Color(Gdiplus::ARGB{0xFFFFFF00})};
};

}  // namespace ktl
