#include "ktl/core/point.h"

#include "ktl/platform/archive.h"

void POINTD::Serialize(CArchive &archive, int /*version*/) {
    if (archive.IsStoring()) {
        archive << x << y;
    } else {
        archive >> x >> y;
    }
}
