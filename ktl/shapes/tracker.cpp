#include "ktl/shapes/tracker.h"

namespace ktl {

void Tracker::Mark(const POINTD &vertex) const {
    constexpr int kHalf = 4;
    constexpr int kSide = 8;
    if (!m_graphics) return;
    const int left = AddClamped(m_map.X(vertex.x), -kHalf);
    const int top = AddClamped(m_map.Y(vertex.y), -kHalf);
    m_graphics->FillRectangle(&m_brush, left, top, kSide, kSide);
    m_graphics->DrawRectangle(&m_pen, left, top, kSide, kSide);
}

}  // namespace ktl
