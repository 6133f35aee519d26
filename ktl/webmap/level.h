#pragma once

#include "ktl/platform/export.h"
#include "ktl/webmap/map_type.h"

/// \file
/// The tile pyramid. Level 1 is one tile for the whole map; each further level halves the tile's side, which is 1 (or
/// 360 degrees on a degree map) at level 1.

namespace ktl {

constexpr short MAX_LEVEL = 22;
/// The side of a tile in pixels.
constexpr int kTilePixels = 256;

}  // namespace ktl

/// The first level, not below `minLevel`, whose tile is no wider than `size`, or `maxLevel` if none is. `size` becomes
/// that level's tile width. A `maxLevel` below 1 gives level 1 and size 1.
KTL_API short KtlGetLevel(double &size, short minLevel, short maxLevel);
/// The same for levels 1 to 22.
KTL_API short KtlGetLevel(double &size);
/// The same in degrees.
KTL_API short KtlGetLevelWGS(double &size);

/// The first level at which the extent is wider or higher than half a tile; 1 also for one too small at every level.
/// The corners are normalised (`isLB` 0) or degrees (1). Any other value leaves them as they stand on every map.
KTL_API short GetBaseLevel(double x1, double y1, double x2, double y2, int isLB, ENUM_MAP_TYPE type);
/// The same for degrees, tiles being 360 by 180 at the start. The width tested is x2 - y1: meant so.
KTL_API short GetBaseLevelWGS(double x1, double y1, double x2, double y2);
