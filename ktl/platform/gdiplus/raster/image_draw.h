#pragma once

#include "ktl/platform/gdiplus/graphics_state.h"

namespace ktl::raster {

/// A box of four numbers; sizes may be negative.
struct BoxD {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

/// Draws the part `source` (in pixels of the image) of an image into `dest` (in world units). What lies outside of the
/// part, or of the image, is transparent; with `clampsEdge` it has the colour of the nearest pixel.
///
/// Nearest neighbour and bilinear drawing on pixels follow one rule: at scale s, pixel X of the target samples the part
/// at u = (X - d) / s, where d is the place of the part's left side; moved by half a pixel of the target under the half
/// pixel offset. Nearest neighbour takes index floor(u + 0.5), under the half offset floor(u): what falls outside
/// leaves the target alone. Bilinear mixes the pixels at floor(u) and floor(u) + 1. Other modes and turned images go to
/// Cairo, which extends the part's edges.
void DrawImagePart(Gdiplus::Graphics::State &state, cairo_surface_t *image, const BoxD &source, const BoxD &dest,
                   bool clampsEdge);

}  // namespace ktl::raster
