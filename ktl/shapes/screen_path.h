#pragma once

#include <vector>

#include "ktl/core/point.h"
#include "ktl/platform/array.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/pixel_map.h"

namespace ktl {

/// The pixels beyond which nothing that is drawn shows: the surface's visible part, widened by the reach of a pen. It
/// has no bounds where drawing is smooth or transformed: there the pixels inside depend a little on what lies outside.
struct ViewBox {
    int left;
    int top;
    int right;
    int bottom;
    /// All bits, or none when every vertex must be handed over: a dashed pen counts its way outside the view too.
    unsigned droppedSides;

    /// For an outline by `pen`, which may be null, and the fill under it.
    static ViewBox For(const Gdiplus::Graphics &graphics, const Gdiplus::Pen *pen);

    /// One bit for each side that the pixel lies beyond.
    unsigned SidesOf(const Gdiplus::Point &p) const {
        return static_cast<unsigned>(p.X < left) | static_cast<unsigned>(p.X > right) << 1 |
               static_cast<unsigned>(p.Y < top) << 2 | static_cast<unsigned>(p.Y > bottom) << 3;
    }
};

/// The pixels of a line or ring as they are handed to the surface. What changes no pixel is left out: of a run of
/// vertices beyond one side of the view only the ends stay. The run and the straight way between its ends lie beyond
/// that side alike, and what they cross of a visible row's ray differs by an even number.
///
/// The memory is the thread's and is used again: one path at a time.
class ScreenPath {
  public:
    explicit ScreenPath(const ViewBox &view);

    /// All vertices of a ring; one on the pixel of the last is left out. Two pixels stay of a ring on one pixel.
    void AddRing(const CArray<POINTD, POINTD> &vertices, const PixelMap &map);
    /// The vertices of a line. From the third on, one nearer than 2 pixels on both axes to the last kept one is left
    /// out, the last vertex too.
    void AddLine(const CArray<POINTD, POINTD> &vertices, const PixelMap &map);

    /// False when all of it lies beyond one side of the view.
    bool IsVisible() const { return m_commonSides == 0; }
    const Gdiplus::Point *Data() const { return m_pixels.data(); }
    int Count() const { return static_cast<int>(m_pixels.size()); }

  private:
    void Add(const Gdiplus::Point &pixel);

    ViewBox m_view;
    std::vector<Gdiplus::Point> &m_pixels;
    /// Sides that all pixels so far lie beyond.
    unsigned m_commonSides = ~0U;
    /// The same of the pixels from the last but one on, those left out included; and of the last one alone.
    unsigned m_runSides = 0;
    unsigned m_lastSides = 0;
};

}  // namespace ktl
