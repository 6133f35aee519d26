#pragma once

#include <cairo.h>

#include <cstdint>

#include "ktl/platform/gdiplus/forward.h"

/// \file
/// Private to the drawing layer: the way from an image to its pixels.

namespace ktl::raster {

/// The pixels of a Cairo image surface: premultiplied 0xAARRGGBB with alpha, or 0x??RRGGBB without. Empty (`pixels`
/// null) for a surface of another kind.
struct PixelView {
    std::uint32_t *pixels = nullptr;
    int width = 0;
    int height = 0;
    int strideInPixels = 0;
    bool hasAlpha = false;

    std::uint32_t *Row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * strideInPixels; }
};

/// The view of an ARGB32 or RGB24 image surface; empty for null and for any other surface.
PixelView ViewOf(cairo_surface_t *surface);

/// The Cairo surface of an image, borrowed; null for an image that can't be used. Whatever its reported pixel format,
/// an image is kept as ARGB32 or RGB24.
cairo_surface_t *SurfaceOf(const Gdiplus::Image &image);

}  // namespace ktl::raster
