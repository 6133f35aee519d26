#pragma once

#include "ktl/legends/legend.h"
#include "ktl/platform/array.h"

/// Symbology of lines. The line style tells how a line is built up: 1 plain, 2 with a casing, 3 a white dashed core in
/// a casing, 4 a core with the legend's own dashes in a casing.
class KTL_API CLegend_Polyline : public CLegend {
  public:
    CLegend_Polyline();

    HBITMAP__ *GetIcon() override;
    CLegend *Clone() override;
    HBITMAP__ *GetOverView() override;
    Gdiplus::Pen *GetForePen(int state) override;
    Gdiplus::Pen *GetBackPen(int state) override;
    int Compare(CLegend *other) override;
    void Copy(CLegend *other) override;
    int UnionLegendValue(CLegend *other) override;
    int Serialize(CArchive &archive, int version) override;
    int Serialize200(CArchive &archive, int version) override;
    int Serialize201(CArchive &archive, int version) override;

    /// The line style, 1 to 4; after `UnionLegendValue` 0 when the legends differ.
    int GetLineStyle() const { return LineStyle; }
    void SetLineStyle(int style) { LineStyle = style; }
    /// The pen's dash style of line style 4, 5 being the pattern below; -1 when the legends differ.
    int GetDashStyle() const { return DashStyle; }
    void SetDashStyle(int style) { DashStyle = style; }
    /// Lengths of dashes and gaps in pen widths.
    const CArray<float, float> &GetDashPattern() const { return DashPattern; }
    void SetDashPattern(const CArray<float, float> &pattern);

  protected:
    int LineStyle = 1;
    int DashStyle = 0;
    CArray<float, float> DashPattern;

  private:
    HBITMAP__ *DrawSample(int width, int height, int y);
    void SerializeDashes(CArchive &archive);
};
