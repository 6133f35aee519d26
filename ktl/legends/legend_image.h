#pragma once

#include "ktl/legends/legend.h"

/// Symbology of an image layer: the shift of the whole image against the map, in world units. It has no samples, and
/// its stream holds its own fields only.
class KTL_API CLegend_Image : public CLegend {
  public:
    CLegend_Image();

    /// Null.
    CLegend *Clone() override;
    void Copy(CLegend *other) override;
    int Compare(CLegend *other) override;
    int UnionLegendValue(CLegend *other) override;
    int Serialize(CArchive &archive, int version) override;

    double GetOffsetX() const { return OffsetX; }
    double GetOffsetY() const { return OffsetY; }
    void SetOffset(double x, double y);

  protected:
    /// Two flags of the document that nothing in the library reads.
    bool m_flags[2] = {false, false};
    double OffsetX = 0.0;
    double OffsetY = 0.0;
};
