#include "ktl/platform/gdiplus/graphics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numbers>
#include <utility>

#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/image_attributes.h"
#include "ktl/platform/gdiplus/path_data.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/gdiplus/point_buffer.h"
#include "ktl/platform/gdiplus/raster/crisp.h"
#include "ktl/platform/gdiplus/raster/image_draw.h"
#include "ktl/platform/gdiplus/raster/smooth.h"
#include "ktl/platform/gdiplus/startup.h"

using ktl::raster::Affine;
using ktl::raster::AsPointD;
using ktl::raster::AsPointsD;
using ktl::raster::Box;
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

bool CanDrawOn(PixelFormat format) {
    return !IsIndexedPixelFormat(format) && format != PixelFormat16bppGrayScale && format != PixelFormat16bppARGB1555;
}

/// Runs one drawing call; lack of memory becomes a status, and what it left half-done is dropped.
template <class Call>
Status Guarded(Graphics::State &state, Call &&call) {
    try {
        call();
        return Ok;
    } catch (const std::bad_alloc &) {
        state.scratch = ktl::raster::Scratch();
        return OutOfMemory;
    }
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

/// The pixels of a rectangle whose sides are level on the target.
Box PixelsOf(const Graphics::State &state, double x, double y, double width, double height) {
    const Affine map = state.CrispMap();
    const PointD a = map.Apply({x, y});
    const PointD b = map.Apply({x + width, y + height});
    const auto edge = [](double v) {
        constexpr std::int64_t kLimit = 1 << 30;
        const std::int64_t pixel = (ktl::raster::ToFixed(v) + ktl::raster::kSubpixels - 1) >> 4;
        return static_cast<int>(std::clamp(pixel, -kLimit, kLimit));
    };
    return {edge(std::min(a.x, b.x)), edge(std::min(a.y, b.y)), edge(std::max(a.x, b.x)), edge(std::max(a.y, b.y))};
}

template <class Number>
void FillOneRectangle(Graphics::State &state, const Brush &brush, Number x, Number y, Number width, Number height) {
    if (!(width > 0) || !(height > 0)) return;
    if (state.IsCrisp() && state.transform.IsLevel()) {
        ktl::raster::FillBoxCrisp(state, brush, PixelsOf(state, x, y, width, height));
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

Graphics::Graphics(Image *image) {
    if (!ktl::raster::DrawingStarted()) {
        SetStatus(GdiplusNotInitialized);
        return;
    }
    cairo_surface_t *const surface = image != nullptr ? ktl::raster::SurfaceOf(*image) : nullptr;
    if (surface == nullptr) {
        SetStatus(InvalidParameter);
        return;
    }
    if (!CanDrawOn(image->GetPixelFormat())) {
        SetStatus(OutOfMemory);
        return;
    }
    const Box bounds{0, 0, static_cast<int>(image->GetWidth()), static_cast<int>(image->GetHeight())};
    m_state =
        std::make_unique<State>(surface, bounds, image->GetHorizontalResolution(), image->GetVerticalResolution());
}

Graphics::Graphics(std::unique_ptr<State> state) : m_state(std::move(state)) {}

Graphics::~Graphics() {
    Flush();
}

Graphics *Graphics::FromImage(Image *image) {
    return new Graphics(image);
}

Status Graphics::SetStatus(Status status) const {
    if (status != Ok) m_lastStatus = status;
    return status;
}

Status Graphics::GetLastStatus() const {
    return std::exchange(m_lastStatus, Ok);
}

void Graphics::Flush(FlushIntention) {
    if (m_state && m_state->view.pixels != nullptr) cairo_surface_mark_dirty(m_state->surface.get());
}

REAL Graphics::GetDpiX() const {
    return m_state ? m_state->dpiX : 0;
}
REAL Graphics::GetDpiY() const {
    return m_state ? m_state->dpiY : 0;
}

// State.

Status Graphics::SetSmoothingMode(SmoothingMode mode) {
    if (!m_state || mode < SmoothingModeDefault || mode > SmoothingModeAntiAlias8x8) return SetStatus(InvalidParameter);
    m_state->smoothing = mode == SmoothingModeHighQuality ? SmoothingModeAntiAlias
                         : mode <= SmoothingModeHighSpeed ? SmoothingModeNone
                                                          : mode;
    return Ok;
}

SmoothingMode Graphics::GetSmoothingMode() const {
    return m_state ? m_state->smoothing : SmoothingModeInvalid;
}

Status Graphics::SetPixelOffsetMode(PixelOffsetMode mode) {
    if (!m_state || mode < PixelOffsetModeDefault || mode > PixelOffsetModeHalf) return SetStatus(InvalidParameter);
    m_state->pixelOffset = mode;
    return Ok;
}

PixelOffsetMode Graphics::GetPixelOffsetMode() const {
    return m_state ? m_state->pixelOffset : PixelOffsetModeInvalid;
}

Status Graphics::SetInterpolationMode(InterpolationMode mode) {
    if (!m_state || mode < InterpolationModeDefault || mode > InterpolationModeHighQualityBicubic) {
        return SetStatus(InvalidParameter);
    }
    m_state->interpolation = mode == InterpolationModeHighQuality  ? InterpolationModeHighQualityBicubic
                             : mode <= InterpolationModeLowQuality ? InterpolationModeBilinear
                                                                   : mode;
    return Ok;
}

InterpolationMode Graphics::GetInterpolationMode() const {
    return m_state ? m_state->interpolation : InterpolationModeInvalid;
}

Status Graphics::SetCompositingMode(CompositingMode mode) {
    if (!m_state || mode < CompositingModeSourceOver || mode > CompositingModeSourceCopy) {
        return SetStatus(InvalidParameter);
    }
    m_state->compositing = mode;
    return Ok;
}

CompositingMode Graphics::GetCompositingMode() const {
    return m_state ? m_state->compositing : CompositingModeSourceOver;
}

Status Graphics::SetCompositingQuality(CompositingQuality quality) {
    if (!m_state || quality < CompositingQualityDefault || quality > CompositingQualityAssumeLinear) {
        return SetStatus(InvalidParameter);
    }
    m_state->quality = quality;
    return Ok;
}

CompositingQuality Graphics::GetCompositingQuality() const {
    return m_state ? m_state->quality : CompositingQualityInvalid;
}

Status Graphics::SetTextRenderingHint(TextRenderingHint hint) {
    if (!m_state || hint < TextRenderingHintSystemDefault || hint > TextRenderingHintClearTypeGridFit) {
        return SetStatus(InvalidParameter);
    }
    m_state->textHint = hint;
    return Ok;
}

TextRenderingHint Graphics::GetTextRenderingHint() const {
    return m_state ? m_state->textHint : TextRenderingHintSystemDefault;
}

Status Graphics::SetTextContrast(UINT contrast) {
    constexpr UINT kMost = 12;
    if (!m_state || contrast > kMost) return SetStatus(InvalidParameter);
    m_state->textContrast = contrast;
    return Ok;
}

UINT Graphics::GetTextContrast() const {
    return m_state ? m_state->textContrast : 0;
}

Status Graphics::SetRenderingOrigin(INT x, INT y) {
    if (!m_state) return SetStatus(InvalidParameter);
    m_state->originX = x;
    m_state->originY = y;
    return Ok;
}

Status Graphics::GetRenderingOrigin(INT *x, INT *y) const {
    if (!m_state || x == nullptr || y == nullptr) return SetStatus(InvalidParameter);
    *x = m_state->originX;
    *y = m_state->originY;
    return Ok;
}

// Transform and clip.

namespace {

Status Combine(Graphics::State *state, const Affine &step, MatrixOrder order) {
    if (state == nullptr || (order != MatrixOrderPrepend && order != MatrixOrderAppend)) return InvalidParameter;
    const Affine next = order == MatrixOrderPrepend ? step.Then(state->transform) : state->transform.Then(step);
    const double determinant = next.xx * next.yy - next.xy * next.yx;
    if (determinant == 0 || !std::isfinite(determinant) || !std::isfinite(next.x0) || !std::isfinite(next.y0)) {
        return InvalidParameter;
    }
    state->transform = next;
    return Ok;
}

Status Clip(Graphics::State *state, double x, double y, double width, double height, CombineMode mode) {
    if (state == nullptr || mode < CombineModeReplace || mode > CombineModeComplement) return InvalidParameter;
    if (mode > CombineModeIntersect || !state->transform.IsLevel()) return NotImplemented;
    const Box box = PixelsOf(*state, x, y, std::max(width, 0.0), std::max(height, 0.0));
    Box clip = ktl::raster::Intersection(box, mode == CombineModeReplace ? state->bounds : state->clip);
    if (clip.IsEmpty()) clip = Box{state->bounds.left, state->bounds.top, state->bounds.left, state->bounds.top};
    state->clip = clip;
    return Ok;
}

}  // namespace

Status Graphics::ResetTransform() {
    if (!m_state) return SetStatus(InvalidParameter);
    m_state->transform = Affine();
    return Ok;
}

Status Graphics::TranslateTransform(REAL dx, REAL dy, MatrixOrder order) {
    return SetStatus(Combine(m_state.get(), {1, 0, 0, 1, dx, dy}, order));
}

Status Graphics::ScaleTransform(REAL sx, REAL sy, MatrixOrder order) {
    return SetStatus(Combine(m_state.get(), {sx, 0, 0, sy, 0, 0}, order));
}

Status Graphics::RotateTransform(REAL angle, MatrixOrder order) {
    const double radians = static_cast<double>(angle) * std::numbers::pi / 180.0;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    return SetStatus(Combine(m_state.get(), {c, s, -s, c, 0, 0}, order));
}

Status Graphics::SetClip(const Rect &rect, CombineMode mode) {
    return SetStatus(Clip(m_state.get(), rect.X, rect.Y, rect.Width, rect.Height, mode));
}
Status Graphics::SetClip(const RectF &rect, CombineMode mode) {
    return SetStatus(Clip(m_state.get(), rect.X, rect.Y, rect.Width, rect.Height, mode));
}
Status Graphics::IntersectClip(const Rect &rect) {
    return SetClip(rect, CombineModeIntersect);
}
Status Graphics::IntersectClip(const RectF &rect) {
    return SetClip(rect, CombineModeIntersect);
}

Status Graphics::ResetClip() {
    if (!m_state) return SetStatus(InvalidParameter);
    m_state->clip = m_state->bounds;
    return Ok;
}

Status Graphics::GetVisibleClipBounds(Rect *rect) const {
    if (!m_state || rect == nullptr) return SetStatus(InvalidParameter);
    const Box &clip = m_state->clip;
    *rect = Rect(clip.left, clip.top, clip.Width(), clip.Height());
    return Ok;
}

bool Graphics::DrawsWholePixels() const {
    return m_state && m_state->IsCrisp() && m_state->IsWhole();
}

Status Graphics::Clear(const Color &color) {
    if (!m_state) return SetStatus(InvalidParameter);
    if (m_state->view.pixels != nullptr) {
        ktl::raster::ClearCrisp(*m_state, color);
    } else {
        ktl::raster::ClearSmooth(*m_state, color);
    }
    return Ok;
}

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

// Images.

namespace {

using ktl::raster::BoxD;

/// Pixels of an image per unit of a source box; 0 for a unit that a source box can't have.
double PixelsPerUnit(Unit unit, double dpi) {
    switch (unit) {
        case UnitPixel:
            return 1;
        case UnitPoint:
            return dpi / 72;
        case UnitInch:
            return dpi;
        case UnitDocument:
            return dpi / 300;
        case UnitMillimeter:
            return dpi / 25.4;
        default:
            return 0;
    }
}

bool ClampsEdge(const ImageAttributes *attributes) {
    if (attributes == nullptr) return false;
    const WrapMode wrap = attributes->GetWrapMode();
    return wrap == WrapModeTileFlipX || wrap == WrapModeTileFlipY || wrap == WrapModeTileFlipXY;
}

Status DrawPart(Graphics::State *state, Image *image, const BoxD &dest, BoxD source, Unit unit,
                const ImageAttributes *attributes) {
    cairo_surface_t *const surface = image != nullptr ? ktl::raster::SurfaceOf(*image) : nullptr;
    if (state == nullptr || surface == nullptr) return InvalidParameter;
    const double perUnitX = PixelsPerUnit(unit, image->GetHorizontalResolution());
    const double perUnitY = PixelsPerUnit(unit, image->GetVerticalResolution());
    if (perUnitX == 0 || perUnitY == 0) return InvalidParameter;
    source = {source.x * perUnitX, source.y * perUnitY, source.width * perUnitX, source.height * perUnitY};
    return Guarded(*state, [&] { ktl::raster::DrawImagePart(*state, surface, source, dest, ClampsEdge(attributes)); });
}

BoxD WholeOf(Image *image) {
    if (image == nullptr) return {};
    return {0, 0, static_cast<double>(image->GetWidth()), static_cast<double>(image->GetHeight())};
}

/// Draws a part at its physical size.
Status DrawAtOwnSize(Graphics::State *state, Image *image, double x, double y, const BoxD &source, Unit unit) {
    if (state == nullptr || image == nullptr) return InvalidParameter;
    const double dpiX = image->GetHorizontalResolution();
    const double dpiY = image->GetVerticalResolution();
    const double width = dpiX > 0 ? source.width * PixelsPerUnit(unit, dpiX) * state->dpiX / dpiX : 0;
    const double height = dpiY > 0 ? source.height * PixelsPerUnit(unit, dpiY) * state->dpiY / dpiY : 0;
    return DrawPart(state, image, {x, y, width, height}, source, unit, nullptr);
}

}  // namespace

Status Graphics::DrawImage(Image *image, INT x, INT y) {
    return SetStatus(DrawAtOwnSize(m_state.get(), image, x, y, WholeOf(image), UnitPixel));
}
Status Graphics::DrawImage(Image *image, REAL x, REAL y) {
    return SetStatus(DrawAtOwnSize(m_state.get(), image, x, y, WholeOf(image), UnitPixel));
}
Status Graphics::DrawImage(Image *image, const Point &point) {
    return DrawImage(image, point.X, point.Y);
}
Status Graphics::DrawImage(Image *image, const PointF &point) {
    return DrawImage(image, point.X, point.Y);
}

Status Graphics::DrawImage(Image *image, INT x, INT y, INT width, INT height) {
    const BoxD dest{static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
                    static_cast<double>(height)};
    return SetStatus(DrawPart(m_state.get(), image, dest, WholeOf(image), UnitPixel, nullptr));
}
Status Graphics::DrawImage(Image *image, REAL x, REAL y, REAL width, REAL height) {
    return SetStatus(DrawPart(m_state.get(), image, {x, y, width, height}, WholeOf(image), UnitPixel, nullptr));
}
Status Graphics::DrawImage(Image *image, const Rect &rect) {
    return DrawImage(image, rect.X, rect.Y, rect.Width, rect.Height);
}
Status Graphics::DrawImage(Image *image, const RectF &rect) {
    return DrawImage(image, rect.X, rect.Y, rect.Width, rect.Height);
}

Status Graphics::DrawImage(Image *image, const Rect &dest, INT srcX, INT srcY, INT srcWidth, INT srcHeight,
                           Unit srcUnit, const ImageAttributes *attributes) {
    const BoxD target{static_cast<double>(dest.X), static_cast<double>(dest.Y), static_cast<double>(dest.Width),
                      static_cast<double>(dest.Height)};
    const BoxD source{static_cast<double>(srcX), static_cast<double>(srcY), static_cast<double>(srcWidth),
                      static_cast<double>(srcHeight)};
    return SetStatus(DrawPart(m_state.get(), image, target, source, srcUnit, attributes));
}
Status Graphics::DrawImage(Image *image, const RectF &dest, REAL srcX, REAL srcY, REAL srcWidth, REAL srcHeight,
                           Unit srcUnit, const ImageAttributes *attributes) {
    return SetStatus(DrawPart(m_state.get(), image, {dest.X, dest.Y, dest.Width, dest.Height},
                              {srcX, srcY, srcWidth, srcHeight}, srcUnit, attributes));
}
Status Graphics::DrawImage(Image *image, INT x, INT y, INT srcX, INT srcY, INT srcWidth, INT srcHeight, Unit srcUnit) {
    const BoxD source{static_cast<double>(srcX), static_cast<double>(srcY), static_cast<double>(srcWidth),
                      static_cast<double>(srcHeight)};
    return SetStatus(DrawAtOwnSize(m_state.get(), image, x, y, source, srcUnit));
}
Status Graphics::DrawImage(Image *image, REAL x, REAL y, REAL srcX, REAL srcY, REAL srcWidth, REAL srcHeight,
                           Unit srcUnit) {
    return SetStatus(DrawAtOwnSize(m_state.get(), image, x, y, {srcX, srcY, srcWidth, srcHeight}, srcUnit));
}

}  // namespace Gdiplus
