#pragma once

#include "ktl/legends/legend.h"

/// Symbology of areas: a solid or hatched fill and an outline.
class KTL_API CLegend_Polygon : public CLegend {
  public:
    CLegend_Polygon();

    HBITMAP__ *GetIcon() override;
    CLegend *Clone() override;
    HBITMAP__ *GetOverView() override;
    Gdiplus::Brush *GetForeBrush(int state) override;
    int Compare(CLegend *other) override;
    void Copy(CLegend *other) override;
    int UnionLegendValue(CLegend *other) override;
    int Serialize(CArchive &archive, int version) override;

    /// The drawing layer's hatch number, or -1 for a solid fill.
    short GetHatchStyle() const { return HatchStyle; }
    void SetHatchStyle(short style) { HatchStyle = style; }

  protected:
    short HatchStyle = -1;

  private:
    HBITMAP__ *DrawSample(int width, int height);
};
