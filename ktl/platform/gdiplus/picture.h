#pragma once

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "ktl/platform/gdiplus/types.h"

/// \file
/// Private to the drawing layer: what an image is made of, and the arithmetic of its pixels.

namespace ktl::raster {

struct SurfaceDeleter {
    void operator()(cairo_surface_t *surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

/// The pixels of an image and what is told of them.
struct Picture {
    /// An image surface: ARGB32 for formats with alpha and indexed ones, RGB24 for the others.
    SurfacePtr surface;
    Gdiplus::PixelFormat format = Gdiplus::PixelFormatUndefined;
    GUID rawFormat;
    /// The colours of an indexed format.
    std::vector<Gdiplus::ARGB> palette;
    float dpiX = 96.0F;
    float dpiY = 96.0F;

    int Width() const { return cairo_image_surface_get_width(surface.get()); }
    int Height() const { return cairo_image_surface_get_height(surface.get()); }
    bool HasAlpha() const { return cairo_image_surface_get_format(surface.get()) == CAIRO_FORMAT_ARGB32; }
    std::uint32_t *Row(int y) const;
};

/// Zeroed pixels, in the surface that `format` takes. InvalidParameter for a side below 1 or an unknown format,
/// OutOfMemory beyond the limits of a bitmap.
Gdiplus::Status MakePicture(std::int64_t width, std::int64_t height, Gdiplus::PixelFormat format,
                            std::unique_ptr<Picture> &picture);

/// The colours that a new bitmap of an indexed format has; for 8 bits the halftone palette.
std::vector<Gdiplus::ARGB> DefaultPalette(Gdiplus::PixelFormat format);

/// value * factor / 255, rounded to nearest; both are 0 to 255.
constexpr std::uint32_t MultiplyByte(std::uint32_t value, std::uint32_t factor) {
    const std::uint32_t product = value * factor + 128;
    return (product + (product >> 8)) >> 8;
}

/// From a straight colour to a premultiplied pixel, and back. Where alpha is 0 nothing is left of the colour.
constexpr std::uint32_t Premultiply(Gdiplus::ARGB color) {
    const std::uint32_t alpha = color >> 24;
    if (alpha == 255) return color;
    return alpha << 24 | MultiplyByte(color >> 16 & 0xFF, alpha) << 16 | MultiplyByte(color >> 8 & 0xFF, alpha) << 8 |
           MultiplyByte(color & 0xFF, alpha);
}
constexpr Gdiplus::ARGB Unpremultiply(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 255 || alpha == 0) return alpha == 0 ? 0 : pixel;
    const auto channel = [alpha](std::uint32_t value) {
        const std::uint32_t straight = (value * 255 + alpha / 2) / alpha;
        return straight < 255 ? straight : 255U;
    };
    return alpha << 24 | channel(pixel >> 16 & 0xFF) << 16 | channel(pixel >> 8 & 0xFF) << 8 | channel(pixel & 0xFF);
}

/// Samples R, G, B, A in place to premultiplied pixels, as `Premultiply` makes them.
void PremultiplySamples(std::uint32_t *row, int count);
/// The same for samples that are multiplied already.
void ReorderSamples(std::uint32_t *row, int count);

/// The straight colour of a stored pixel: one without alpha is opaque.
constexpr Gdiplus::ARGB ColorOf(std::uint32_t pixel, bool hasAlpha) {
    return hasAlpha ? Unpremultiply(pixel) : pixel | 0xFF000000U;
}
/// The stored pixel of a straight colour; without alpha the colour bytes are taken as they are.
constexpr std::uint32_t PixelOf(Gdiplus::ARGB color, bool hasAlpha) {
    return hasAlpha ? Premultiply(color) : color | 0xFF000000U;
}

}  // namespace ktl::raster
