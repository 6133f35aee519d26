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

/// The one door into an image for those who draw on it or from it. `Gdiplus::Image` names it a friend.
struct ImageAccess {
    /// Borrowed; null for an image that could not be made. Every pixel format is offered as ARGB32 or RGB24.
    static cairo_surface_t *Surface(const Gdiplus::Image &image);
    /// Called by whoever has written pixels, before the image reads them in a form of its own.
    static void MarkWritten(const Gdiplus::Image &image);
};

}  // namespace ktl::raster
