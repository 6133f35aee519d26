#include "ktl/core/extent.h"

#include "ktl/core/segment.h"
#include "ktl/platform/archive.h"

void EXTENT::Serialize(CArchive &archive, int /*version*/) {
    if (archive.IsStoring()) {
        archive << left << bottom << right << top;
    } else {
        archive >> left >> bottom >> right >> top;
    }
}

void CExtent::Serialize(CArchive &archive, int version) {
    EXTENT::Serialize(archive, version);
}

int CExtent::Intersect(double x1, double y1, double x2, double y2) const {
    if (PtInExtent(x1, y1) || PtInExtent(x2, y2)) return 1;
    const auto meetsSide = [&](double fromX, double fromY, double toX, double toY) {
        return ktl::SegmentsIntersect(x1, y1, x2, y2, fromX, fromY, toX, toY) != 0;
    };
    return meetsSide(left, bottom, left, top) || meetsSide(left, top, right, top) ||
           meetsSide(right, top, right, bottom) || meetsSide(right, bottom, left, bottom);
}

void SplitExtent(CExtent source, CExtent &first, CExtent &second, CExtent &third, CExtent &fourth) {
    const double cutX = (source.right - source.left) * 0.55 + source.left;
    const double cutY = (source.top - source.bottom) * 0.55 + source.bottom;
    first = CExtent(source.left, cutY, cutX, source.top);
    second = CExtent(cutX, cutY, source.right, source.top);
    third = CExtent(cutX, source.bottom, source.right, cutY);
    fourth = CExtent(source.left, source.bottom, cutX, cutY);
}
