#include "ktl/webmap/level.h"

#include "ktl/webmap/projection.h"

namespace {

/// The level whose tile, `scale` wide at level 1, is no wider than `size`; `size` becomes its width.
short SnapToLevel(double &size, double scale, short minLevel, short maxLevel) {
    short level = 1;
    for (int i = 1; i <= maxLevel; ++i) {
        level = static_cast<short>(i);
        if (scale / size <= 1.0 && level >= minLevel) break;
        if (level == maxLevel) break;
        scale = scale / 2.0;
    }
    size = scale;
    return level;
}

/// The first level at which the size passes half a tile, tiles being scaleX by scaleY at level 1; 1 when there is none.
short FirstLevelPassed(double width, double height, double scaleX, double scaleY) {
    for (short level = 1; level <= ktl::MAX_LEVEL; ++level) {
        scaleX = scaleX / 2.0;
        scaleY = scaleY / 2.0;
        if (width > scaleX || height > scaleY) return level;
    }
    return 1;
}

}  // namespace

short KtlGetLevel(double &size, short minLevel, short maxLevel) {
    return SnapToLevel(size, 1.0, minLevel, maxLevel);
}

short KtlGetLevel(double &size) {
    return KtlGetLevel(size, 1, ktl::MAX_LEVEL);
}

short KtlGetLevelWGS(double &size) {
    return SnapToLevel(size, 360.0, 1, ktl::MAX_LEVEL);
}

short GetBaseLevel(double x1, double y1, double x2, double y2, int isLB, ENUM_MAP_TYPE type) {
    if (IsWGS(type)) {
        if (isLB == 0) {
            KtlGetLB(x1, y1, x1, y1);
            KtlGetLB(x2, y2, x2, y2);
        }
        return GetBaseLevelWGS(x1, y1, x2, y2);
    }
    if (isLB == 1) {
        KtlGetXY(x1, y1, x1, y1);
        KtlGetXY(x2, y2, x2, y2);
    }
    return FirstLevelPassed(x2 - x1, y2 - y1, 1.0, 1.0);
}

short GetBaseLevelWGS(double /*x1*/, double y1, double x2, double y2) {
    return FirstLevelPassed(x2 - y1, y2 - y1, 360.0, 180.0);
}
