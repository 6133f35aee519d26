#include "ktl/mapview/view_math.h"

namespace ktl {

double FittingRatio(ViewSize size, const CExtent &extent) {
    const double horizontal = size.width / extent.Width();
    const double vertical = size.height / extent.Height();
    return horizontal < vertical ? horizontal : vertical;
}

double FittingTileSize(ViewSize size, const CExtent &extent, int tilePixels) {
    return size.height / extent.Height() < size.width / extent.Width() ? extent.Height() / (size.height / tilePixels)
                                                                       : extent.Width() / (size.width / tilePixels);
}

CExtent ExtentOfTiles(ViewSize size, const CExtent &extent, int tilePixels, double tileSize) {
    const CPointD center = extent.CenterPoint();
    CExtent result;
    result.left = center.x - size.width / tilePixels * tileSize * 0.5;
    result.right = center.x + size.width / tilePixels * tileSize * 0.5;
    result.bottom = center.y - size.height / tilePixels * tileSize * 0.5;
    result.top = center.y + size.height / tilePixels * tileSize * 0.5;
    return result;
}

CExtent ExtentAtRatio(ViewSize size, const CExtent &extent, double ratio) {
    const double mx = (size.width / ratio - extent.Width()) / 2;
    const double my = (size.height / ratio - extent.Height()) / 2;
    return {extent.left - mx, extent.bottom - my, extent.right + mx, extent.top + my};
}

short LevelOfRatio(double ratio) {
    const double limit = 200.0 / ratio;
    short level = 1;
    for (double size = 0.5; size > limit && size > 0; size = size / 2.0) ++level;
    return level;
}

CExtent NineWindows(const CExtent &extent) {
    const double width = extent.Width();
    const double height = extent.Height();
    CExtent result;
    result.left = extent.left - width;
    result.right = result.left + 3 * width;
    result.bottom = extent.bottom - height;
    result.top = result.bottom + 3 * height;
    return result;
}

}  // namespace ktl
