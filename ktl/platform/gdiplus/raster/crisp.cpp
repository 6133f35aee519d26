#include "ktl/platform/gdiplus/raster/crisp.h"

#include <algorithm>
#include <cmath>

#include "ktl/platform/gdiplus/raster/dash.h"
#include "ktl/platform/gdiplus/raster/line_step.h"
#include "ktl/platform/gdiplus/raster/scan_fill.h"
#include "ktl/platform/gdiplus/raster/span_paint.h"

namespace ktl::raster {

namespace {

/// Pens thinner than this draw lines of one pixel.
constexpr double kWide = 1.5;

SpanPaint PaintOf(const State &state, const Gdiplus::Brush &brush) {
    return {state.view, state.compositing, brush, state.originX, state.originY};
}

SpanPaint PaintOf(const State &state, const Gdiplus::Pen &pen) {
    if (pen.PatternBrush() != nullptr) return PaintOf(state, *pen.PatternBrush());
    return {state.view, state.compositing, pen.ColorValue()};
}

template <class Feed>
void FillRings(State &state, const SpanPaint &paint, Gdiplus::FillMode mode, Feed &&feed) {
    if (paint.IsInvisible()) return;
    if (paint.StoresOneValue()) {
        const PixelView view = paint.View();
        const std::uint32_t value = paint.Value();
        FillArea(state.scratch.fill, state.clip, mode, feed,
                 [&](int y, int x0, int x1) { FillRun(view.Row(y) + x0, static_cast<std::size_t>(x1 - x0), value); });
    } else {
        FillArea(state.scratch.fill, state.clip, mode, feed, [&](int y, int x0, int x1) { paint.Paint(y, x0, x1); });
    }
}

void AddChains(ScanFill &fill, const Chains &chains, std::vector<FixedPoint> &fixed) {
    for (const PathGeometry::Figure &figure : chains.figures) {
        fixed.clear();
        for (std::size_t i = figure.first; i < figure.first + figure.count; ++i) {
            fixed.push_back(ToFixed(chains.points[i]));
        }
        fill.AddRing(fixed.data(), fixed.size());
    }
}

StrokeStyle StyleOf(const Gdiplus::Pen &pen, double width) {
    return {width, pen.GetMiterLimit(), pen.GetLineJoin(), pen.GetStartCap(), pen.GetEndCap()};
}

/// How a pen's lines are drawn, and where: the same for each figure of a call.
struct Stroke {
    Scratch &scratch;
    Box clip;
    StrokeStyle style;
    Gdiplus::LineCap dashCap;
    bool isWide;
    DashPattern dashes;

    double Reach() const { return isWide ? style.Reach() : 2; }
};

FixedPoint AsUnits(Gdiplus::Point p) {
    return {p.X, p.Y};
}
FixedPoint AsUnits(PointD p) {
    return ToFixed(p);
}
PointD AsReal(Gdiplus::Point p) {
    return {static_cast<double>(p.X), static_cast<double>(p.Y)};
}
PointD AsReal(PointD p) {
    return p;
}

template <class P>
constexpr int kUnitOf = std::is_same_v<P, Gdiplus::Point> ? 1 : kSubpixels;

template <class P>
const FixedPoint *Converted(Scratch &scratch, const P *points, std::size_t count) {
    scratch.fixed.clear();
    for (std::size_t i = 0; i < count; ++i) scratch.fixed.push_back(AsUnits(points[i]));
    return scratch.fixed.data();
}

template <class Put>
void StepSolid(const Stroke &stroke, const Put &put, const Gdiplus::Point *points, std::size_t count, bool closed) {
    StepLines(put, stroke.clip, points, count, closed);
}
template <class Put>
void StepSolid(const Stroke &stroke, const Put &put, const PointD *points, std::size_t count, bool closed) {
    StepLines(put, stroke.clip, Converted(stroke.scratch, points, count), count, closed);
}

template <class P>
void DrawWideDashes(const Stroke &stroke, SpanSink &sink, const P *points, std::size_t count, bool closed) {
    std::vector<PointD> real(count);
    for (std::size_t i = 0; i < count; ++i) real[i] = AsReal(points[i]);
    CutIntoDashes(stroke.dashes, real.data(), count, closed, stroke.clip, stroke.Reach(), stroke.scratch.dash,
                  [&](const PointD *dash, std::size_t dashCount, bool atStart, bool atEnd) {
                      StrokeStyle style = stroke.style;
                      if (closed || !atStart) style.startCap = stroke.dashCap;
                      if (closed || !atEnd) style.endCap = stroke.dashCap;
                      stroke.scratch.stroker.Draw(style, dash, dashCount, false, stroke.clip, sink);
                  });
}

/// Draws one figure into pixels or a mask, which `put` and `sink` both reach.
template <class Put, class P>
void DrawFigure(const Stroke &stroke, const Put &put, SpanSink &sink, const P *points, std::size_t count, bool closed) {
    if (count == 0) return;
    if (!stroke.isWide && stroke.dashes.IsSolid()) {
        StepSolid(stroke, put, points, count, closed);
    } else if (!stroke.isWide) {
        StepDashedLines<kUnitOf<P>>(put, stroke.clip, Converted(stroke.scratch, points, count), count, closed,
                                    stroke.dashes);
    } else if (stroke.dashes.IsSolid()) {
        stroke.scratch.stroker.Draw(stroke.style, points, count, closed, stroke.clip, sink);
    } else {
        DrawWideDashes(stroke, sink, points, count, closed);
    }
}

/// The pixels that chains of points can touch with a pen of this reach.
struct Extent {
    double left = kMaxPixel;
    double top = kMaxPixel;
    double right = -kMaxPixel;
    double bottom = -kMaxPixel;

    template <class P>
    void Add(const P *points, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const PointD p = AsReal(points[i]);
            left = std::min(left, p.x);
            top = std::min(top, p.y);
            right = std::max(right, p.x);
            bottom = std::max(bottom, p.y);
        }
    }
    Box Within(const Box &clip, double reach) const {
        const auto held = [](double v, int low, int high) {
            return static_cast<int>(std::clamp(v, static_cast<double>(low), static_cast<double>(high)));
        };
        return {held(std::floor(left - reach), clip.left, clip.right),
                held(std::floor(top - reach), clip.top, clip.bottom),
                held(std::ceil(right + reach) + 1, clip.left, clip.right),
                held(std::ceil(bottom + reach) + 1, clip.top, clip.bottom)};
    }
};

/// One chain of points.
template <class P>
struct OneFigure {
    const P *points;
    std::size_t count;
    bool closed;

    template <class Each>
    void ForEach(Each &&each) const {
        each(points, count, closed);
    }
};

template <class P>
OneFigure(const P *, std::size_t, bool) -> OneFigure<P>;

/// The figures of a geometry of whole points.
struct WholeFigures {
    const PathGeometry &geometry;

    template <class Each>
    void ForEach(Each &&each) const {
        for (const PathGeometry::Figure &f : geometry.Figures()) {
            each(geometry.Whole().data() + f.first, f.count, f.closed);
        }
    }
};

/// Chains in pixels.
struct ChainFigures {
    const Chains &chains;

    template <class Each>
    void ForEach(Each &&each) const {
        for (const PathGeometry::Figure &f : chains.figures) each(chains.points.data() + f.first, f.count, f.closed);
    }
};

void PaintMask(const CoverageMask &mask, const SpanPaint &paint) {
    mask.ForEachRun([&paint](int y, int x0, int x1) { paint.Paint(y, x0, x1); });
}

template <class Figures>
void StrokeThroughMask(Stroke stroke, const SpanPaint &paint, const Figures &figures) {
    Extent extent;
    figures.ForEach([&](const auto *points, std::size_t count, bool) { extent.Add(points, count); });
    stroke.clip = extent.Within(stroke.clip, stroke.Reach());
    if (stroke.clip.IsEmpty()) return;
    CoverageMask &mask = stroke.scratch.mask;
    mask.Begin(stroke.clip);
    const MaskPut put(mask);
    MaskSink sink(mask);
    figures.ForEach([&](const auto *points, std::size_t count, bool closed) {
        DrawFigure(stroke, put, sink, points, count, closed);
    });
    PaintMask(mask, paint);
}

void AddRing(ScanFill &fill, const Gdiplus::Point *points, std::size_t count, std::vector<FixedPoint> &) {
    fill.AddRing(points, count);
}
void AddRing(ScanFill &fill, const PointD *points, std::size_t count, std::vector<FixedPoint> &fixed) {
    fixed.clear();
    for (std::size_t i = 0; i < count; ++i) fixed.push_back(ToFixed(points[i]));
    fill.AddRing(fixed.data(), count);
}

/// A closed figure inset: what a line of twice the width and the figure itself have in common.
template <class P>
void StrokeInset(Stroke stroke, const SpanPaint &paint, const P *points, std::size_t count) {
    stroke.style.width *= 2;
    Extent extent;
    extent.Add(points, count);
    stroke.clip = extent.Within(stroke.clip, 1);
    if (stroke.clip.IsEmpty()) return;
    Scratch &scratch = stroke.scratch;
    scratch.mask.Begin(stroke.clip);
    MaskSink sink(scratch.mask);
    DrawFigure(stroke, MaskPut(scratch.mask), sink, points, count, true);
    scratch.inside.Begin(stroke.clip);
    FillArea(
        scratch.fill, stroke.clip, Gdiplus::FillModeAlternate,
        [&](ScanFill &fill) { AddRing(fill, points, count, scratch.fixed); },
        [&](int y, int x0, int x1) { scratch.inside.SetRun(y, x0, x1); });
    scratch.mask.IntersectWith(scratch.inside);
    PaintMask(scratch.mask, paint);
}

bool IsSmallEllipse(const State &state, double x, double y, double width, double height) {
    const auto isWhole = [](double v) { return v == std::floor(v) && std::abs(v) < 1 << 24; };
    return state.IsWhole() && isWhole(x) && isWhole(y) && isWhole(width) && isWhole(height) && width >= 1 &&
           height >= 1 && width <= EllipseStamps::kLargest && height <= EllipseStamps::kLargest;
}

void PaintSpans(const State &state, const SpanPaint &paint, const std::vector<Span> &spans, int x, int y) {
    if (paint.IsInvisible()) return;
    const Box &clip = state.clip;
    for (const Span &span : spans) {
        const int row = span.y + y;
        const int x0 = std::max(span.x0 + x, clip.left);
        const int x1 = std::min(span.x1 + x, clip.right);
        if (row >= clip.top && row < clip.bottom && x0 < x1) paint.Paint(row, x0, x1);
    }
}

template <class Figures>
void StrokeFigures(State &state, const Gdiplus::Pen &pen, const Figures &figures) {
    const SpanPaint paint = PaintOf(state, pen);
    if (paint.IsInvisible() || state.clip.IsEmpty()) return;
    const double width = DeviceWidth(state, pen);
    const Stroke stroke{state.scratch,       state.clip,
                        StyleOf(pen, width), static_cast<Gdiplus::LineCap>(pen.GetDashCap()),
                        width >= kWide,      DashesOf(pen, width)};
    const bool inset = stroke.isWide && pen.GetAlignment() == Gdiplus::PenAlignmentInset;
    if (inset) {
        figures.ForEach([&](const auto *points, std::size_t count, bool closed) {
            if (count == 0) return;
            if (closed) {
                StrokeInset(stroke, paint, points, count);
            } else {
                StrokeThroughMask(stroke, paint, OneFigure{points, count, false});
            }
        });
    } else if (paint.StoresOneValue()) {
        const PixelPut put(state.view, paint.Value());
        StoreSink sink(paint);
        figures.ForEach([&](const auto *points, std::size_t count, bool closed) {
            DrawFigure(stroke, put, sink, points, count, closed);
        });
    } else {
        StrokeThroughMask(stroke, paint, figures);
    }
}

}  // namespace

double DeviceWidth(const State &state, const Gdiplus::Pen &pen) {
    const Affine &t = state.transform;
    const double scale = std::sqrt(std::abs(t.xx * t.yy - t.xy * t.yx));
    const double width = std::abs(static_cast<double>(pen.GetWidth())) * scale;
    return width >= 1 ? std::min(width, 65536.0) : 1;
}

DashPattern DashesOf(const Gdiplus::Pen &pen, double deviceWidth) {
    const Gdiplus::INT count = pen.GetDashPatternCount();
    if (count == 0) return {};
    std::vector<Gdiplus::REAL> widths(static_cast<std::size_t>(count));
    pen.GetDashPattern(widths.data(), count);
    std::vector<double> lengths(widths.begin(), widths.end());
    for (double &length : lengths) length *= deviceWidth;
    return {lengths, std::isfinite(pen.GetDashOffset()) ? pen.GetDashOffset() * deviceWidth : 0};
}

void FillCrisp(State &state, const Gdiplus::Brush &brush, const Gdiplus::Point *points, std::size_t count,
               Gdiplus::FillMode mode) {
    FillRings(state, PaintOf(state, brush), mode, [&](ScanFill &fill) { fill.AddRing(points, count); });
}

void FillCrisp(State &state, const Gdiplus::Brush &brush, const PathGeometry &geometry, Gdiplus::FillMode mode) {
    const SpanPaint paint = PaintOf(state, brush);
    if (geometry.IsWhole() && state.IsWhole()) {
        FillRings(state, paint, mode, [&](ScanFill &fill) {
            for (const PathGeometry::Figure &f : geometry.Figures()) {
                fill.AddRing(geometry.Whole().data() + f.first, f.count);
            }
        });
        return;
    }
    state.scratch.chains.Flatten(geometry, state.CrispMap());
    FillRings(state, paint, mode, [&](ScanFill &fill) { AddChains(fill, state.scratch.chains, state.scratch.fixed); });
}

void FillBoxCrisp(State &state, const Gdiplus::Brush &brush, const Box &box) {
    const Box part = Intersection(box, state.clip);
    const SpanPaint paint = PaintOf(state, brush);
    if (part.IsEmpty() || paint.IsInvisible()) return;
    for (int y = part.top; y < part.bottom; ++y) paint.Paint(y, part.left, part.right);
}

void ClearCrisp(State &state, Gdiplus::Color color) {
    if (state.clip.IsEmpty()) return;
    const SpanPaint paint(state.view, Gdiplus::CompositingModeSourceCopy, color);
    for (int y = state.clip.top; y < state.clip.bottom; ++y) paint.Paint(y, state.clip.left, state.clip.right);
}

bool FillSmallEllipse(State &state, const Gdiplus::Brush &brush, double x, double y, double width, double height) {
    if (!IsSmallEllipse(state, x, y, width, height)) return false;
    const auto &stamp = state.scratch.ellipses.For(static_cast<int>(width), static_cast<int>(height));
    PaintSpans(state, PaintOf(state, brush), stamp.filled, static_cast<int>(x), static_cast<int>(y));
    return true;
}

bool StrokeSmallEllipse(State &state, const Gdiplus::Pen &pen, double x, double y, double width, double height) {
    if (!IsSmallEllipse(state, x, y, width, height)) return false;
    if (DeviceWidth(state, pen) >= kWide || pen.GetDashPatternCount() != 0) return false;
    const auto &stamp = state.scratch.ellipses.For(static_cast<int>(width), static_cast<int>(height));
    PaintSpans(state, PaintOf(state, pen), stamp.outline, static_cast<int>(x), static_cast<int>(y));
    return true;
}

void StrokeCrisp(State &state, const Gdiplus::Pen &pen, const Gdiplus::Point *points, std::size_t count, bool closed) {
    StrokeFigures(state, pen, OneFigure{points, count, closed});
}

void StrokeCrisp(State &state, const Gdiplus::Pen &pen, const PathGeometry &geometry) {
    if (geometry.IsWhole() && state.IsWhole()) {
        StrokeFigures(state, pen, WholeFigures{geometry});
        return;
    }
    state.scratch.chains.Flatten(geometry, state.CrispMap());
    StrokeFigures(state, pen, ChainFigures{state.scratch.chains});
}

}  // namespace ktl::raster
