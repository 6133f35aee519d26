#include "ktl/platform/gdiplus/graphics.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/raster/crisp.h"
#include "ktl/platform/gdiplus/raster/smooth.h"
#include "ktl/platform/gdiplus/startup.h"

using ktl::raster::Affine;
using ktl::raster::Box;

namespace Gdiplus {

namespace {

bool CanDrawOn(PixelFormat format) {
    return !IsIndexedPixelFormat(format) && format != PixelFormat16bppGrayScale && format != PixelFormat16bppARGB1555;
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
    const Box box = state->PixelsOf(x, y, std::max(width, 0.0), std::max(height, 0.0));
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

}  // namespace Gdiplus
