#pragma once

#include "ktl/overlays/shape_operate.h"

/// The square that shows which vertex the pointer has caught.
class KTL_API CShape_Operate_Snap : public CShape_Operate {
  public:
    /// Hidden and red.
    CShape_Operate_Snap();

    /// 0 clears the square, anything else shows it.
    void SetSnap(int snap) { Show(snap); }
    /// Looks for a vertex of `shape` nearer to `point` than `tolerance` world units. 1: the square stands on it. 0: the
    /// square is cleared. The shape is borrowed; null has no vertex.
    int SnapTo(CShape *shape, const POINTD &point, double tolerance);

  protected:
    void DrawMark(Gdiplus::Graphics &graphics, const Gdiplus::Pen &pen, int x, int y) override;
};
