#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ktl/platform/gdiplus/raster/edge_walk.h"
#include "ktl/platform/gdiplus/raster/geometry.h"

namespace ktl::raster {

/// Turns rings into spans of pixels by the one fill rule, exactly, at any coordinate.
///
/// For each row the crossings of the rings' edges are gathered and sorted; the spans lie between them. What cannot
/// change a pixel of the box is left out first: edges above, below and to the right of it; edges to its left only
/// change the winding number that the rows begin with. Memory is kept from call to call, and bounded: when an area has
/// too many crossings, it is done in bands of rows.
///
///     FillArea(scan, box, Gdiplus::FillModeAlternate,
///              [&](ScanFill &s) { s.AddRing(points, count); },
///              [&](int y, int x0, int x1) { ... pixels x0..x1-1 of row y, x0 < x1 ... });
class ScanFill {
  public:
    /// Starts an area within `box`, which must not be empty.
    void Begin(const Box &box);
    /// True when the crossings did not fit; the area must then be done again in lower boxes.
    bool Overflowed() const { return m_overflowed; }

    /// Add a ring; its last point is joined to its first. Horizontal edges and repeated points have no effect.
    void AddRing(const Gdiplus::Point *points, std::size_t count);
    void AddRing(const FixedPoint *points, std::size_t count);

    /// Hands out the spans, top down and from left to right, disjoint, and empties the area.
    template <class Sink>
    void Emit(Gdiplus::FillMode mode, Sink &sink);
    /// Empties the area.
    void Discard();

  private:
    /// One crossing: column * 2, plus 1 for an edge that runs upward; and the next of the same row.
    struct Node {
        int key;
        int next;
    };
    static constexpr int kMaxNodes = 1 << 21;

    template <int kUnit>
    void AddEdge(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1, int upward);
    /// Makes room for `rows` more crossings; false when there are too many.
    bool Reserve(int rows);
    void Touch(int first, int last);
    /// The sorted crossings of a row, which is empty afterwards.
    std::size_t Gather(int head);
    template <class Sink>
    void EmitAlternate(int row, std::size_t count, int winding, Sink &sink);
    template <class Sink>
    void EmitWinding(int row, std::size_t count, int winding, Sink &sink);

    Box m_box;
    /// Rows touched, relative to the box.
    int m_first = 0;
    int m_last = 0;
    int m_used = 0;
    bool m_overflowed = false;
    std::vector<Node> m_nodes;
    std::vector<int> m_heads;
    /// How the winding number at the left side changes from each row to the next.
    std::vector<int> m_leftWinding;
    std::vector<int> m_keys;
};

template <class Sink>
void ScanFill::EmitAlternate(int row, std::size_t count, int winding, Sink &sink) {
    const int *keys = m_keys.data();
    int start = m_box.left;
    bool inside = (winding & 1) != 0;
    for (std::size_t i = 0; i < count; ++i) {
        const int column = keys[i] >> 1;
        if (inside && column > start) sink(row, start, column);
        inside = !inside;
        start = column;
    }
    if (inside && start < m_box.right) sink(row, start, m_box.right);
}

template <class Sink>
void ScanFill::EmitWinding(int row, std::size_t count, int winding, Sink &sink) {
    const int *keys = m_keys.data();
    int start = m_box.left;
    for (std::size_t i = 0; i < count; ++i) {
        const int column = keys[i] >> 1;
        const int next = winding + ((keys[i] & 1) != 0 ? -1 : 1);
        if (winding == 0) {
            start = column;
        } else if (next == 0 && column > start) {
            sink(row, start, column);
        }
        winding = next;
    }
    if (winding != 0 && start < m_box.right) sink(row, start, m_box.right);
}

template <class Sink>
void ScanFill::Emit(Gdiplus::FillMode mode, Sink &sink) {
    int winding = 0;
    for (int i = m_first; i < m_last; ++i) {
        const auto at = static_cast<std::size_t>(i);
        winding += m_leftWinding[at];
        m_leftWinding[at] = 0;
        const std::size_t count = Gather(m_heads[at]);
        m_heads[at] = -1;
        const int row = m_box.top + i;
        if (mode == Gdiplus::FillModeAlternate) {
            EmitAlternate(row, count, winding, sink);
        } else {
            EmitWinding(row, count, winding, sink);
        }
    }
    if (m_last > m_first) m_leftWinding[static_cast<std::size_t>(m_last)] = 0;
    m_first = m_last = 0;
    m_used = 0;
}

/// Fills one area: `feed(scan)` adds its rings, more than once when it is done in bands, and `sink(y, x0, x1)` takes
/// the spans.
template <class Feed, class Sink>
void FillArea(ScanFill &scan, const Box &box, Gdiplus::FillMode mode, Feed &&feed, Sink &&sink) {
    int top = box.top;
    int height = box.Height();
    while (!box.IsEmpty() && top < box.bottom) {
        const int bottom = std::min(box.bottom, top + height);
        scan.Begin({box.left, top, box.right, bottom});
        feed(scan);
        if (scan.Overflowed() && bottom - top > 1) {
            scan.Discard();
            height = (bottom - top) / 2;
            continue;
        }
        scan.Emit(mode, sink);
        top = bottom;
    }
}

}  // namespace ktl::raster
