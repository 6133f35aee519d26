#include "ktl/overlays/shape_operate.h"

#include "ktl/core/transform.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/numeric.h"

namespace {

constexpr Gdiplus::REAL kPenWidth = 2.0F;

}  // namespace

CShape_Operate::CShape_Operate(ENUM_SHAPE_TYPE kind) {
    ShapeType = kind;
}

void CShape_Operate::SetPoint(const POINTD &point) {
    Point = point;
    Extent.SetExtent(point.x, point.y, point.x, point.y);
}

void CShape_Operate::Draw(Gdiplus::Graphics *graphics, CLegend *, const double &ratio, const CExtent &extent,
                          const int &offsetX, const int &offsetY, int) {
    if (!Shown || !graphics) return;
    Gdiplus::Color color;
    color.SetFromCOLORREF(Color);
    const Gdiplus::Pen pen(color, kPenWidth);
    DrawMark(*graphics, pen, ktl::AddClamped(World2ClientX(extent, ratio, Point.x), offsetX),
             ktl::AddClamped(World2ClientY(extent, ratio, Point.y), offsetY));
}

void CShape_Operate::Offset(double dx, double dy) {
    SetPoint(POINTD(Point.x + dx, Point.y + dy));
}

void CShape_Operate::DrawMark(Gdiplus::Graphics &, const Gdiplus::Pen &, int, int) {}
