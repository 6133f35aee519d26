#pragma once

#include <cstddef>

#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/gdiplus/raster/dash.h"
#include "ktl/platform/gdiplus/raster/path_geometry.h"

/// \file
/// Drawing without antialiasing, straight into the pixels of a `Graphics`. Whole points are pixels of the scan
/// converter; a geometry is in world units.

namespace ktl::raster {

using State = Gdiplus::Graphics::State;

void FillCrisp(State &state, const Gdiplus::Brush &brush, const Gdiplus::Point *points, std::size_t count,
               Gdiplus::FillMode mode);
void FillCrisp(State &state, const Gdiplus::Brush &brush, const PathGeometry &geometry, Gdiplus::FillMode mode);
/// The box may be empty and need not lie in the clip.
void FillBoxCrisp(State &state, const Gdiplus::Brush &brush, const Box &box);
void ClearCrisp(State &state, Gdiplus::Color color);

/// Small ellipses in boxes of whole pixels. False, with nothing drawn, for any other.
bool FillSmallEllipse(State &state, const Gdiplus::Brush &brush, double x, double y, double width, double height);
bool StrokeSmallEllipse(State &state, const Gdiplus::Pen &pen, double x, double y, double width, double height);

void StrokeCrisp(State &state, const Gdiplus::Pen &pen, const Gdiplus::Point *points, std::size_t count, bool closed);
void StrokeCrisp(State &state, const Gdiplus::Pen &pen, const PathGeometry &geometry);

/// The width of a pen in pixels: 1 for a pen of width 0.
double DeviceWidth(const State &state, const Gdiplus::Pen &pen);
/// The dash pattern in pixels; solid for a solid pen.
DashPattern DashesOf(const Gdiplus::Pen &pen, double deviceWidth);

}  // namespace ktl::raster
