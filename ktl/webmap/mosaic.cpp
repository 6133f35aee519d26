#include "ktl/webmap/mosaic.h"

#include <cmath>

#include "ktl/platform/exception.h"
#include "ktl/platform/numeric.h"

namespace {

void RequireTiles(int cols, int rows) {
    if (cols < 1 || rows < 1) throw CInvalidArgException();
}

int Count(int whole, int part) {
    return ktl::TruncateToInt(std::ceil(static_cast<double>(whole) / static_cast<double>(part)));
}

}  // namespace

namespace ktl {

MosaicCut CutMosaic(int cols, int rows, const std::function<bool(int cols, int rows)> &fits) {
    RequireTiles(cols, rows);
    MosaicCut cut{cols, rows, 1, 1};
    if (fits(cols, rows)) return cut;

    // The first size is known not to fit, so the coarse search begins with the halving.
    int lastCols = 0;
    int lastRows = 0;
    do {
        lastCols = cut.partCols;
        lastRows = cut.partRows;
        (cut.partCols > cut.partRows ? cut.partCols : cut.partRows) /= 2;
        RequireTiles(cut.partCols, cut.partRows);
    } while (!fits(cut.partCols, cut.partRows));

    cut.partCols = lastCols;
    cut.partRows = lastRows;
    do {
        const int ahead = cut.partCols - cut.partRows;
        if (ahead >= 0) --cut.partCols;
        if (ahead <= 0) --cut.partRows;
        RequireTiles(cut.partCols, cut.partRows);
    } while (!fits(cut.partCols, cut.partRows));

    cut.countX = Count(cols, cut.partCols);
    cut.countY = Count(rows, cut.partRows);
    return cut;
}

}  // namespace ktl
