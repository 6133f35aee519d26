#pragma once

#include "ktl/platform/gdiplus/graphics_path.h"
#include "ktl/platform/gdiplus/raster/path_geometry.h"

/// Private to the drawing layer: what a path holds.
struct Gdiplus::GraphicsPath::Data {
    FillMode fillMode = FillModeAlternate;
    ktl::raster::PathGeometry geometry;
    bool usable = true;
    mutable Status lastStatus = Ok;
};
