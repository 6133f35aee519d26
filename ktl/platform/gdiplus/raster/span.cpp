#include "ktl/platform/gdiplus/raster/span.h"

#include <algorithm>

namespace ktl::raster {

void StoreSink::Put(const Span *spans, std::size_t count, int dx, int dy) {
    for (const Span *s = spans; s != spans + count; ++s) {
        FillRun(m_view.Row(s->y + dy) + s->x0 + dx, static_cast<std::size_t>(s->x1 - s->x0), m_value);
    }
}

void MaskSink::Put(const Span *spans, std::size_t count, int dx, int dy) {
    for (const Span *s = spans; s != spans + count; ++s) m_mask.SetRun(s->y + dy, s->x0 + dx, s->x1 + dx);
}

const std::vector<Span> &ConvexFill::Spans(const FixedPoint *points, std::size_t count, const Box &box) {
    m_spans.clear();
    std::int64_t low = points[0].y;
    std::int64_t high = low;
    for (std::size_t i = 1; i < count; ++i) {
        low = std::min(low, points[i].y);
        high = std::max(high, points[i].y);
    }
    const std::int64_t top = std::max<std::int64_t>(box.top, CeilUnit<kSubpixels>(low));
    const std::int64_t bottom = std::min<std::int64_t>(box.bottom, CeilUnit<kSubpixels>(high));
    if (top >= bottom) return m_spans;
    for (std::int64_t y = top; y < bottom; ++y) m_spans.push_back({static_cast<int>(y), box.right, box.left});
    auto widen = [&](int row, int column) {
        Span &span = m_spans[static_cast<std::size_t>(row - top)];
        span.x0 = std::min(span.x0, column);
        span.x1 = std::max(span.x1, column);
    };
    for (std::size_t i = 0; i < count; ++i) {
        FixedPoint a = points[i];
        FixedPoint b = points[i + 1 == count ? 0 : i + 1];
        if (a.y > b.y) std::swap(a, b);
        const std::int64_t first = std::max(top, CeilUnit<kSubpixels>(a.y));
        const std::int64_t last = std::min(bottom, CeilUnit<kSubpixels>(b.y));
        if (first >= last) continue;
        WalkEdge<kSubpixels>(a.x, a.y, b.x, b.y, static_cast<int>(first), static_cast<int>(last), box.left, box.right,
                             widen);
    }
    std::erase_if(m_spans, [](const Span &s) { return s.x0 >= s.x1; });
    return m_spans;
}

}  // namespace ktl::raster
