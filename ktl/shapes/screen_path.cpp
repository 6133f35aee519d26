#include "ktl/shapes/screen_path.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace ktl {

namespace {

/// Pixels that a vertex must lie apart from the last one kept of a line.
constexpr long long kLineTolerance = 2;
constexpr int kRoundingReach = 2;

std::vector<Gdiplus::Point> &ThreadPixels() {
    thread_local std::vector<Gdiplus::Point> pixels;
    pixels.clear();
    return pixels;
}

/// How far a pen paints beside its line, with the longest spike of a corner and some room for rounding.
int ReachOf(const Gdiplus::Pen &pen) {
    constexpr float kLongest = 1e6F;
    const float reach = std::fabs(pen.GetWidth()) * std::max(1.0F, pen.GetMiterLimit());
    return static_cast<int>(std::ceil(std::min(reach, kLongest))) + kRoundingReach;
}

}  // namespace

ViewBox ViewBox::For(const Gdiplus::Graphics &graphics, const Gdiplus::Pen *pen) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    Gdiplus::Rect rect;
    if (!graphics.DrawsWholePixels() || graphics.GetVisibleClipBounds(&rect) != Gdiplus::Ok) {
        return {kLowest, kLowest, kHighest, kHighest, 0};
    }
    const int reach = pen ? ReachOf(*pen) : kRoundingReach;
    const bool isSolid = !pen || pen->GetDashStyle() == Gdiplus::DashStyleSolid;
    return {AddClamped(rect.X, -reach), AddClamped(rect.Y, -reach), AddClamped(rect.GetRight(), reach),
            AddClamped(rect.GetBottom(), reach), isSolid ? ~0U : 0U};
}

ScreenPath::ScreenPath(const ViewBox &view) : m_view(view), m_pixels(ThreadPixels()) {}

inline void ScreenPath::Add(const Gdiplus::Point &pixel) {
    const unsigned sides = m_view.SidesOf(pixel);
    m_commonSides &= sides;
    const unsigned runSides = m_runSides & sides;
    if (runSides != 0) {
        m_pixels.back() = pixel;
        m_runSides = runSides;
    } else {
        m_pixels.push_back(pixel);
        m_runSides = m_lastSides & sides & m_view.droppedSides;
    }
    m_lastSides = sides;
}

void ScreenPath::AddRing(const CArray<POINTD, POINTD> &vertices, const PixelMap &map) {
    m_pixels.reserve(static_cast<std::size_t>(vertices.GetSize()));
    for (const POINTD &vertex : vertices) {
        const Gdiplus::Point pixel(map.X(vertex.x), map.Y(vertex.y));
        if (m_pixels.empty() || !(pixel == m_pixels.back())) Add(pixel);
    }
    if (m_pixels.size() == 1 && vertices.GetSize() > 1) m_pixels.push_back(m_pixels.front());
}

void ScreenPath::AddLine(const CArray<POINTD, POINTD> &vertices, const PixelMap &map) {
    m_pixels.reserve(static_cast<std::size_t>(vertices.GetSize()));
    Gdiplus::Point lastKept;
    int seen = 0;
    for (const POINTD &vertex : vertices) {
        const Gdiplus::Point pixel(map.X(vertex.x), map.Y(vertex.y));
        const bool isNear = std::llabs(static_cast<long long>(pixel.X) - lastKept.X) < kLineTolerance &&
                            std::llabs(static_cast<long long>(pixel.Y) - lastKept.Y) < kLineTolerance;
        if (++seen > 2 && isNear) continue;
        lastKept = pixel;
        Add(pixel);
    }
}

}  // namespace ktl
