// Outlines and areas.

#include <array>
#include <type_traits>
#include <vector>

#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/path_data.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/gdiplus/point_buffer.h"
#include "ktl/platform/gdiplus/raster/crisp.h"
#include "ktl/platform/gdiplus/raster/smooth.h"

using ktl::raster::AsPointD;
using ktl::raster::AsPointsD;
using ktl::raster::PathGeometry;
using ktl::raster::PointD;

namespace Gdiplus {

namespace {

bool IsUsable(const Brush *brush) {
    return brush != nullptr && brush->IsUsable();
}
bool IsUsable(const Pen *pen) {
    return pen != nullptr && pen->IsUsable();
}
bool IsUsable(const GraphicsPath *path) {
    return path != nullptr && path->IsUsable();
}

void Fill(Graphics::State &state, const Brush &brush, const PathGeometry &geometry, FillMode mode) {
    if (state.IsCrisp()) {
        ktl::raster::FillCrisp(state, brush, geometry, mode);
    } else {
        ktl::raster::FillSmooth(state, brush, geometry, mode);
    }
}

void Stroke(Graphics::State &state, const Pen &pen, const PathGeometry &geometry) {
    if (state.IsCrisp()) {
        ktl::raster::StrokeCrisp(state, pen, geometry);
    } else {
        ktl::raster::StrokeSmooth(state, pen, geometry);
    }
}

/// The geometry of one call, in memory that is kept.
PathGeometry &Emptied(Graphics::State &state) {
    state.scratch.geometry.Clear();
    return state.scratch.geometry;
}

struct Corners {
    std::array<PointD, 4> points;

    Corners(double x, double y, double width, double height)
        : points{PointD{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}} {}
};

template <class Number>
void FillOneRectangle(Graphics::State &state, const Brush &brush, Number x, Number y, Number width, Number height) {
    if (!(width > 0) || !(height > 0)) return;
    if (state.IsCrisp() && state.transform.IsLevel()) {
        ktl::raster::FillBoxCrisp(state, brush, state.PixelsOf(x, y, width, height));
        return;
    }
    PathGeometry &geometry = Emptied(state);
    geometry.AddPolygon(Corners(x, y, width, height).points.data(), 4);
    Fill(state, brush, geometry, FillModeAlternate);
}

bool AreWholeCorners(INT x, INT y, INT width, INT height) {
    INT sum = 0;
    return !__builtin_add_overflow(x, width, &sum) && !__builtin_add_overflow(y, height, &sum);
}
bool AreWholeCorners(REAL, REAL, REAL, REAL) {
    return false;
}

template <class Number>
void DrawOneRectangle(Graphics::State &state, const Pen &pen, Number x, Number y, Number width, Number height) {
    if (!(width >= 0) || !(height >= 0)) return;
    PathGeometry &geometry = Emptied(state);
    if (AreWholeCorners(x, y, width, height)) {
        const INT left = static_cast<INT>(x), top = static_cast<INT>(y);
        const INT right = static_cast<INT>(x + width), bottom = static_cast<INT>(y + height);
        const Point corners[4] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
        geometry.AddPolygon(corners, 4);
    } else {
        geometry.AddPolygon(Corners(x, y, width, height).points.data(), 4);
    }
    Stroke(state, pen, geometry);
}

}  // namespace

// Lines.

namespace {

template <class P>
Status DrawChain(Graphics::State *state, const Pen *pen, const P *points, INT count, bool closed) {
    if (state == nullptr || !IsUsable(pen) || points == nullptr || count < 2) return InvalidParameter;
    const auto size = static_cast<std::size_t>(count);
    return Guarded(*state, [&] {
        if constexpr (std::is_same_v<P, Point>) {
            if (state->IsCrisp() && state->IsWhole()) {
                ktl::raster::StrokeCrisp(*state, *pen, points, size, closed);
                return;
            }
        }
        PathGeometry &geometry = Emptied(*state);
        const std::vector<PointD> real = AsPointsD(points, count);
        geometry.AddLines(real.data(), size);
        if (closed) geometry.CloseFigure();
        Stroke(*state, *pen, geometry);
    });
}

template <class P>
Status DrawCurves(Graphics::State *state, const Pen *pen, const P *points, INT count) {
    if (state == nullptr || !IsUsable(pen) || points == nullptr || !ktl::raster::IsBezierCount(count)) {
        return InvalidParameter;
    }
    return Guarded(*state, [&] {
        PathGeometry &geometry = Emptied(*state);
        for (INT i = 0; i + 3 < count; i += 3) {
            geometry.AddCurve(
                {AsPointD(points[i]), AsPointD(points[i + 1]), AsPointD(points[i + 2]), AsPointD(points[i + 3])});
        }
        Stroke(*state, *pen, geometry);
    });
}

}  // namespace

Status Graphics::DrawLine(const Pen *pen, INT x1, INT y1, INT x2, INT y2) {
    return DrawLine(pen, Point(x1, y1), Point(x2, y2));
}
Status Graphics::DrawLine(const Pen *pen, REAL x1, REAL y1, REAL x2, REAL y2) {
    return DrawLine(pen, PointF(x1, y1), PointF(x2, y2));
}
Status Graphics::DrawLine(const Pen *pen, const Point &a, const Point &b) {
    const Point points[2] = {a, b};
    return DrawLines(pen, points, 2);
}
Status Graphics::DrawLine(const Pen *pen, const PointF &a, const PointF &b) {
    const PointF points[2] = {a, b};
    return DrawLines(pen, points, 2);
}
Status Graphics::DrawLines(const Pen *pen, const Point *points, INT count) {
    return SetStatus(DrawChain(m_state.get(), pen, points, count, false));
}
Status Graphics::DrawLines(const Pen *pen, const PointF *points, INT count) {
    return SetStatus(DrawChain(m_state.get(), pen, points, count, false));
}
Status Graphics::DrawPolygon(const Pen *pen, const Point *points, INT count) {
    return SetStatus(DrawChain(m_state.get(), pen, points, count, true));
}
Status Graphics::DrawPolygon(const Pen *pen, const PointF *points, INT count) {
    return SetStatus(DrawChain(m_state.get(), pen, points, count, true));
}

Status Graphics::DrawBezier(const Pen *pen, INT x1, INT y1, INT x2, INT y2, INT x3, INT y3, INT x4, INT y4) {
    return DrawBezier(pen, Point(x1, y1), Point(x2, y2), Point(x3, y3), Point(x4, y4));
}
Status Graphics::DrawBezier(const Pen *pen, REAL x1, REAL y1, REAL x2, REAL y2, REAL x3, REAL y3, REAL x4, REAL y4) {
    return DrawBezier(pen, PointF(x1, y1), PointF(x2, y2), PointF(x3, y3), PointF(x4, y4));
}
Status Graphics::DrawBezier(const Pen *pen, const Point &a, const Point &b, const Point &c, const Point &d) {
    const Point points[4] = {a, b, c, d};
    return DrawBeziers(pen, points, 4);
}
Status Graphics::DrawBezier(const Pen *pen, const PointF &a, const PointF &b, const PointF &c, const PointF &d) {
    const PointF points[4] = {a, b, c, d};
    return DrawBeziers(pen, points, 4);
}
Status Graphics::DrawBeziers(const Pen *pen, const Point *points, INT count) {
    return SetStatus(DrawCurves(m_state.get(), pen, points, count));
}
Status Graphics::DrawBeziers(const Pen *pen, const PointF *points, INT count) {
    return SetStatus(DrawCurves(m_state.get(), pen, points, count));
}

namespace {

Status DrawOneArc(Graphics::State *state, const Pen *pen, double x, double y, double width, double height,
                  double startAngle, double sweepAngle) {
    if (state == nullptr || !IsUsable(pen) || !(width > 0) || !(height > 0)) return InvalidParameter;
    return Guarded(*state, [&] {
        PathGeometry &geometry = Emptied(*state);
        geometry.AddArc(ktl::raster::ArcCurves(x, y, width, height, startAngle, sweepAngle));
        Stroke(*state, *pen, geometry);
    });
}

Status DrawOneEllipse(Graphics::State *state, const Pen *pen, double x, double y, double width, double height) {
    if (state == nullptr || !IsUsable(pen)) return InvalidParameter;
    if (!(width >= 0) || !(height >= 0)) return Ok;
    return Guarded(*state, [&] {
        if (state->IsCrisp() && ktl::raster::StrokeSmallEllipse(*state, *pen, x, y, width, height)) return;
        PathGeometry &geometry = Emptied(*state);
        geometry.AddEllipse(x, y, width, height);
        Stroke(*state, *pen, geometry);
    });
}

Status FillOneEllipse(Graphics::State *state, const Brush *brush, double x, double y, double width, double height) {
    if (state == nullptr || !IsUsable(brush)) return InvalidParameter;
    if (!(width > 0) || !(height > 0)) return Ok;
    return Guarded(*state, [&] {
        if (state->IsCrisp() && ktl::raster::FillSmallEllipse(*state, *brush, x, y, width, height)) return;
        PathGeometry &geometry = Emptied(*state);
        geometry.AddEllipse(x, y, width, height);
        Fill(*state, *brush, geometry, FillModeAlternate);
    });
}

Status DrawOnePie(Graphics::State *state, const Pen *pen, double x, double y, double width, double height,
                  double startAngle, double sweepAngle) {
    if (state == nullptr || !IsUsable(pen) || !(width > 0) || !(height > 0)) return InvalidParameter;
    return Guarded(*state, [&] {
        PathGeometry &geometry = Emptied(*state);
        geometry.AddPie(x, y, width, height, startAngle, sweepAngle);
        Stroke(*state, *pen, geometry);
    });
}

Status FillOnePie(Graphics::State *state, const Brush *brush, double x, double y, double width, double height,
                  double startAngle, double sweepAngle) {
    if (state == nullptr || !IsUsable(brush) || !(width > 0) || !(height > 0)) return InvalidParameter;
    return Guarded(*state, [&] {
        PathGeometry &geometry = Emptied(*state);
        geometry.AddPie(x, y, width, height, startAngle, sweepAngle);
        Fill(*state, *brush, geometry, FillModeAlternate);
    });
}

template <class R>
Status DrawAllRectangles(Graphics::State *state, const Pen *pen, const R *rects, INT count) {
    if (state == nullptr || !IsUsable(pen) || rects == nullptr || count < 1) return InvalidParameter;
    return Guarded(*state, [&] {
        for (INT i = 0; i < count; ++i) {
            DrawOneRectangle(*state, *pen, rects[i].X, rects[i].Y, rects[i].Width, rects[i].Height);
        }
    });
}

template <class R>
Status FillAllRectangles(Graphics::State *state, const Brush *brush, const R *rects, INT count) {
    if (state == nullptr || !IsUsable(brush) || rects == nullptr || count < 1) return InvalidParameter;
    return Guarded(*state, [&] {
        for (INT i = 0; i < count; ++i) {
            FillOneRectangle(*state, *brush, rects[i].X, rects[i].Y, rects[i].Width, rects[i].Height);
        }
    });
}

template <class P>
Status FillOnePolygon(Graphics::State *state, const Brush *brush, const P *points, INT count, FillMode mode) {
    const bool isMode = mode == FillModeAlternate || mode == FillModeWinding;
    if (state == nullptr || !IsUsable(brush) || points == nullptr || count < 1 || !isMode) return InvalidParameter;
    if (count < 3) return Ok;
    const auto size = static_cast<std::size_t>(count);
    return Guarded(*state, [&] {
        if constexpr (std::is_same_v<P, Point>) {
            if (state->IsCrisp() && state->IsWhole()) {
                ktl::raster::FillCrisp(*state, *brush, points, size, mode);
                return;
            }
        }
        PathGeometry &geometry = Emptied(*state);
        geometry.AddPolygon(AsPointsD(points, count).data(), size);
        Fill(*state, *brush, geometry, mode);
    });
}

}  // namespace

Status Graphics::DrawArc(const Pen *pen, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle) {
    return SetStatus(DrawOneArc(m_state.get(), pen, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::DrawArc(const Pen *pen, REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle) {
    return SetStatus(DrawOneArc(m_state.get(), pen, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::DrawArc(const Pen *pen, const Rect &rect, REAL startAngle, REAL sweepAngle) {
    return DrawArc(pen, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}
Status Graphics::DrawArc(const Pen *pen, const RectF &rect, REAL startAngle, REAL sweepAngle) {
    return DrawArc(pen, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}

// Outlines.

Status Graphics::DrawRectangle(const Pen *pen, INT x, INT y, INT width, INT height) {
    return DrawRectangle(pen, Rect(x, y, width, height));
}
Status Graphics::DrawRectangle(const Pen *pen, REAL x, REAL y, REAL width, REAL height) {
    return DrawRectangle(pen, RectF(x, y, width, height));
}
Status Graphics::DrawRectangle(const Pen *pen, const Rect &rect) {
    return DrawRectangles(pen, &rect, 1);
}
Status Graphics::DrawRectangle(const Pen *pen, const RectF &rect) {
    return DrawRectangles(pen, &rect, 1);
}
Status Graphics::DrawRectangles(const Pen *pen, const Rect *rects, INT count) {
    return SetStatus(DrawAllRectangles(m_state.get(), pen, rects, count));
}
Status Graphics::DrawRectangles(const Pen *pen, const RectF *rects, INT count) {
    return SetStatus(DrawAllRectangles(m_state.get(), pen, rects, count));
}

Status Graphics::DrawEllipse(const Pen *pen, INT x, INT y, INT width, INT height) {
    return SetStatus(DrawOneEllipse(m_state.get(), pen, x, y, width, height));
}
Status Graphics::DrawEllipse(const Pen *pen, REAL x, REAL y, REAL width, REAL height) {
    return SetStatus(DrawOneEllipse(m_state.get(), pen, x, y, width, height));
}
Status Graphics::DrawEllipse(const Pen *pen, const Rect &rect) {
    return DrawEllipse(pen, rect.X, rect.Y, rect.Width, rect.Height);
}
Status Graphics::DrawEllipse(const Pen *pen, const RectF &rect) {
    return DrawEllipse(pen, rect.X, rect.Y, rect.Width, rect.Height);
}

Status Graphics::DrawPie(const Pen *pen, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle) {
    return SetStatus(DrawOnePie(m_state.get(), pen, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::DrawPie(const Pen *pen, REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle) {
    return SetStatus(DrawOnePie(m_state.get(), pen, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::DrawPie(const Pen *pen, const Rect &rect, REAL startAngle, REAL sweepAngle) {
    return DrawPie(pen, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}
Status Graphics::DrawPie(const Pen *pen, const RectF &rect, REAL startAngle, REAL sweepAngle) {
    return DrawPie(pen, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}

Status Graphics::DrawPath(const Pen *pen, const GraphicsPath *path) {
    if (!m_state || !IsUsable(pen) || !IsUsable(path)) return SetStatus(InvalidParameter);
    return SetStatus(Guarded(*m_state, [&] { Stroke(*m_state, *pen, path->GetData().geometry); }));
}

// Areas.

Status Graphics::FillRectangle(const Brush *brush, INT x, INT y, INT width, INT height) {
    return FillRectangle(brush, Rect(x, y, width, height));
}
Status Graphics::FillRectangle(const Brush *brush, REAL x, REAL y, REAL width, REAL height) {
    return FillRectangle(brush, RectF(x, y, width, height));
}
Status Graphics::FillRectangle(const Brush *brush, const Rect &rect) {
    return FillRectangles(brush, &rect, 1);
}
Status Graphics::FillRectangle(const Brush *brush, const RectF &rect) {
    return FillRectangles(brush, &rect, 1);
}
Status Graphics::FillRectangles(const Brush *brush, const Rect *rects, INT count) {
    return SetStatus(FillAllRectangles(m_state.get(), brush, rects, count));
}
Status Graphics::FillRectangles(const Brush *brush, const RectF *rects, INT count) {
    return SetStatus(FillAllRectangles(m_state.get(), brush, rects, count));
}

Status Graphics::FillEllipse(const Brush *brush, INT x, INT y, INT width, INT height) {
    return SetStatus(FillOneEllipse(m_state.get(), brush, x, y, width, height));
}
Status Graphics::FillEllipse(const Brush *brush, REAL x, REAL y, REAL width, REAL height) {
    return SetStatus(FillOneEllipse(m_state.get(), brush, x, y, width, height));
}
Status Graphics::FillEllipse(const Brush *brush, const Rect &rect) {
    return FillEllipse(brush, rect.X, rect.Y, rect.Width, rect.Height);
}
Status Graphics::FillEllipse(const Brush *brush, const RectF &rect) {
    return FillEllipse(brush, rect.X, rect.Y, rect.Width, rect.Height);
}

Status Graphics::FillPie(const Brush *brush, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle) {
    return SetStatus(FillOnePie(m_state.get(), brush, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::FillPie(const Brush *brush, REAL x, REAL y, REAL width, REAL height, REAL startAngle,
                         REAL sweepAngle) {
    return SetStatus(FillOnePie(m_state.get(), brush, x, y, width, height, startAngle, sweepAngle));
}
Status Graphics::FillPie(const Brush *brush, const Rect &rect, REAL startAngle, REAL sweepAngle) {
    return FillPie(brush, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}
Status Graphics::FillPie(const Brush *brush, const RectF &rect, REAL startAngle, REAL sweepAngle) {
    return FillPie(brush, rect.X, rect.Y, rect.Width, rect.Height, startAngle, sweepAngle);
}

Status Graphics::FillPolygon(const Brush *brush, const Point *points, INT count, FillMode fillMode) {
    return SetStatus(FillOnePolygon(m_state.get(), brush, points, count, fillMode));
}
Status Graphics::FillPolygon(const Brush *brush, const PointF *points, INT count, FillMode fillMode) {
    return SetStatus(FillOnePolygon(m_state.get(), brush, points, count, fillMode));
}

Status Graphics::FillPath(const Brush *brush, const GraphicsPath *path) {
    if (!m_state || !IsUsable(brush) || !IsUsable(path)) return SetStatus(InvalidParameter);
    const GraphicsPath::Data &data = path->GetData();
    return SetStatus(Guarded(*m_state, [&] { Fill(*m_state, *brush, data.geometry, data.fillMode); }));
}

}  // namespace Gdiplus
