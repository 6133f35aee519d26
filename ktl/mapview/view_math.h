#pragma once

#include "ktl/core/extent.h"

/// \file
/// Private to the map window: the arithmetic of zooming. Every operation keeps its order: results are pinned to the
/// last bit.

namespace ktl {

/// A window's client area in pixels.
struct ViewSize {
    double width;
    double height;
};

/// Pixels a world unit at which all of `extent` fits: the smaller of the two quotients, the height's on a tie. A side
/// of zero width gives an infinite quotient.
double FittingRatio(ViewSize size, const CExtent &extent);

/// The world size of one tile of `tilePixels` at that scale.
double FittingTileSize(ViewSize size, const CExtent &extent, int tilePixels);

/// The extent around the centre of `extent` that fills the window when a tile of `tilePixels` is `tileSize` wide.
CExtent ExtentOfTiles(ViewSize size, const CExtent &extent, int tilePixels, double tileSize);

/// `extent` grown evenly on opposite sides to the window's shape at `ratio`.
CExtent ExtentAtRatio(ViewSize size, const CExtent &extent, double ratio);

/// The level of a view that is not tied to the pyramid: how often 0.5 is halved until it is no more than 200 pixels'
/// width in the world, counted from 1. It may pass the pyramid's last level; a ratio that is not above 0 or is infinite
/// gives the level at which halving arrives at 0, and not-a-number gives 1.
short LevelOfRatio(double ratio);

/// `extent` grown by its own width and height on each side.
CExtent NineWindows(const CExtent &extent);

}  // namespace ktl
