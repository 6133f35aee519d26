#pragma once

#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/gdiplus/raster/path_geometry.h"

/// \file
/// Drawing by Cairo: antialiased, and on pages that have no pixels. Geometries are in world units.

namespace ktl::raster {

void FillSmooth(Gdiplus::Graphics::State &state, const Gdiplus::Brush &brush, const PathGeometry &geometry,
                Gdiplus::FillMode mode);
/// Triangle caps and anchors are drawn round.
void StrokeSmooth(Gdiplus::Graphics::State &state, const Gdiplus::Pen &pen, const PathGeometry &geometry);
void ClearSmooth(Gdiplus::Graphics::State &state, Gdiplus::Color color);

}  // namespace ktl::raster
