#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/image_attributes.h"
#include "ktl/platform/gdiplus/raster/image_draw.h"

namespace Gdiplus {

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
