#pragma once

#include <functional>

#include "ktl/platform/export.h"

namespace ktl {

/// How `GetUnionMapInfo` cuts a mosaic, in tiles.
struct MosaicCut {
    int partCols;
    int partRows;
    int countX;
    int countY;
};

/// Finds the largest part for which `fits` holds: the longer side is halved until a part fits, then the last size that
/// did not is made smaller tile by tile, toward a square, until it does. Throws CInvalidArgException when nothing is
/// left to try.
KTL_API MosaicCut CutMosaic(int cols, int rows, const std::function<bool(int cols, int rows)> &fits);

}  // namespace ktl
