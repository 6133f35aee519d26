#include "ktl/overlays/shape_operate_snap.h"

#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/numeric.h"

namespace {

/// Larger than the 8-pixel squares that mark a selected shape's vertices, so that it shows around one.
constexpr int kHalfSide = 6;

}  // namespace

CShape_Operate_Snap::CShape_Operate_Snap() {
    SetColor(RGB(255, 0, 0));
}

int CShape_Operate_Snap::SnapTo(CShape *shape, const POINTD &point, double tolerance) {
    POINTD snapped;
    const int caught = shape && shape->GetSnapPoint(point, snapped, tolerance);
    if (caught) SetPoint(snapped);
    SetSnap(caught);
    return caught;
}

void CShape_Operate_Snap::DrawMark(Gdiplus::Graphics &graphics, const Gdiplus::Pen &pen, int x, int y) {
    graphics.DrawRectangle(&pen, ktl::AddClamped(x, -kHalfSide), ktl::AddClamped(y, -kHalfSide), 2 * kHalfSide,
                           2 * kHalfSide);
}
