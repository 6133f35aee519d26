#include "ktl/legends/legend_image.h"

#include "ktl/platform/archive.h"

CLegend_Image::CLegend_Image() {
    Type = LEGEND_IMAGE;
}

CLegend *CLegend_Image::Clone() {
    return nullptr;
}

void CLegend_Image::Copy(CLegend *other) {
    CLegend::Copy(other);
    const auto *image = dynamic_cast<const CLegend_Image *>(other);
    if (!image) return;
    m_flags[0] = image->m_flags[0];
    m_flags[1] = image->m_flags[1];
    OffsetX = image->OffsetX;
    OffsetY = image->OffsetY;
}

int CLegend_Image::Compare(CLegend *other) {
    return CLegend::Compare(other);
}
int CLegend_Image::UnionLegendValue(CLegend *other) {
    return CLegend::UnionLegendValue(other);
}

int CLegend_Image::Serialize(CArchive &archive, int /*version*/) {
    if (archive.IsStoring()) {
        archive << m_flags[0] << m_flags[1] << OffsetX << OffsetY;
    } else {
        archive >> m_flags[0] >> m_flags[1] >> OffsetX >> OffsetY;
    }
    return 1;
}

void CLegend_Image::SetOffset(double x, double y) {
    OffsetX = x;
    OffsetY = y;
}
