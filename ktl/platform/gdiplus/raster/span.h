#pragma once

#include <cstddef>
#include <vector>

#include "ktl/platform/gdiplus/raster/coverage_mask.h"
#include "ktl/platform/gdiplus/raster/edge_walk.h"
#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/raster/span_paint.h"

namespace ktl::raster {

/// Pixels x0..x1-1 of row y.
struct Span {
    int y;
    int x0;
    int x1;
};

/// Takes the spans that a line is made of; they may overlap.
class SpanSink {
  public:
    /// The spans, moved by (dx, dy), lie in the clip.
    virtual void Put(const Span *spans, std::size_t count, int dx, int dy) = 0;

  protected:
    ~SpanSink() = default;
};

/// Stores one value; right for opaque pens alone.
class StoreSink final : public SpanSink {
  public:
    explicit StoreSink(const SpanPaint &paint) : m_view(paint.View()), m_value(paint.Value()) {}
    void Put(const Span *spans, std::size_t count, int dx, int dy) override;

  private:
    PixelView m_view;
    std::uint32_t m_value;
};

/// Marks the spans in a mask.
class MaskSink final : public SpanSink {
  public:
    explicit MaskSink(CoverageMask &mask) : m_mask(mask) {}
    void Put(const Span *spans, std::size_t count, int dx, int dy) override;

  private:
    CoverageMask &m_mask;
};

/// Turns convex outlines into spans by the fill rule. The memory is kept.
class ConvexFill {
  public:
    /// The spans of one outline within the box, top down; they replace the former ones.
    const std::vector<Span> &Spans(const FixedPoint *points, std::size_t count, const Box &box);

  private:
    std::vector<Span> m_spans;
};

}  // namespace ktl::raster
