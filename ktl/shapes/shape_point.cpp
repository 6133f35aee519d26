#include "ktl/shapes/shape_point.h"

#include <ogr_geometry.h>

#include <memory>

#include "ktl/core/utility.h"
#include "ktl/legends/legend_point.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/parse.h"
#include "ktl/shapes/general_rows.h"
#include "ktl/shapes/label_measure.h"
#include "ktl/shapes/pixel_map.h"
#include "ktl/shapes/tracker.h"
#include "ktl/shapes/vertex_list.h"
#include "ktl/webmap/projection.h"

namespace {

constexpr ktl::GeneralRow kRows[] = {{"X", DATA_NUMERIC, false}, {"Y", DATA_NUMERIC, false}};
constexpr int kFirstSide = 3;
constexpr double kMaxLongitude = 180.0;
constexpr double kMaxLatitude = 85.0;
/// Columns that a label is broken after.
constexpr int kLabelWidth = 16;

/// The picture that stands for the point; null when it is drawn as a disc.
Gdiplus::Bitmap *PictureOf(CLegend *legend) {
    const auto *point = dynamic_cast<const CLegend_Point *>(legend);
    return point && !point->IsShapeSymbol() ? point->GetBitmapSymbol() : nullptr;
}

void DrawPicture(Gdiplus::Graphics &graphics, Gdiplus::Bitmap &picture, const CPoint &at) {
    const auto width = static_cast<int>(picture.GetWidth());
    const auto height = static_cast<int>(picture.GetHeight());
    const Gdiplus::Rect box(ktl::AddClamped(at.x, -(width / 2)), ktl::AddClamped(at.y, -(height / 2)), width, height);
    graphics.DrawImage(&picture, box, 0, 0, width, height, Gdiplus::UnitPixel);
}

void DrawDisc(Gdiplus::Graphics &graphics, CLegend &legend, const CPoint &at) {
    const Gdiplus::SolidBrush brush(legend.GetForeColorA());
    const int size = legend.GetSize();
    if (size == 1) {
        graphics.FillRectangle(&brush, at.x, at.y, 1, 1);
        return;
    }
    const Gdiplus::Pen pen(legend.GetBackColorA(), 1.0F);
    const int left = ktl::AddClamped(at.x, -(size / 2));
    const int top = ktl::AddClamped(at.y, -(size / 2));
    graphics.FillEllipse(&brush, left, top, size, size);
    graphics.DrawEllipse(&pen, left, top, size, size);
}

}  // namespace

CShape_Point::CShape_Point() {
    ShapeType = SHAPE_POINT;
}

const CRuntimeClass *CShape_Point::GetThisClass() {
    static const CRuntimeClass record{"CShape_Point", sizeof(CShape_Point), 0xFFFF, nullptr, CShape::GetThisClass()};
    return &record;
}

const CRuntimeClass *CShape_Point::GetRuntimeClass() const {
    return CShape_Point::GetThisClass();
}

int CShape_Point::Intersect(CExtent &range, CLegend * /*legend*/) {
    return range.Intersect(Extent) != 0;
}
int CShape_Point::Contain(CExtent &range, CLegend * /*legend*/) {
    return range.Contain(Extent);
}

CFields *CShape_Point::GetGeneralFields() {
    return ktl::MakeGeneralFields(kRows, kFirstSide).release();
}

CRecord *CShape_Point::GetGeneralValue() {
    ktl::GeneralValues values(ShapeID);
    values.AddDegrees(Point.x, Point.y);
    values.AddSides(Extent);
    return values.Release();
}

void CShape_Point::UpdateGeneralValue(CString field, CString value) {
    const double degrees = ktl::ParseDouble(value.View());
    if (field == "X") {
        if (degrees < -kMaxLongitude || degrees > kMaxLongitude) return;
        Offset(KtlGetX(degrees) - Point.x, 0.0);
    } else if (field == "Y") {
        if (degrees < -kMaxLatitude || degrees > kMaxLatitude) return;
        Offset(0.0, KtlGetY(degrees) - Point.y);
    }
}

void CShape_Point::DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent,
                               const int &offsetX, const int &offsetY) {
    ktl::Tracker(graphics, ktl::PixelMap(ratio, extent, offsetX, offsetY)).Mark(Point);
}

void CShape_Point::Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                        const int &offsetX, const int &offsetY, int commit) {
    if (graphics && legend) {
        const CPoint at = ktl::PixelMap(ratio, extent, offsetX, offsetY).At(Point.x, Point.y);
        if (Gdiplus::Bitmap *picture = PictureOf(legend)) {
            DrawPicture(*graphics, *picture, at);
        } else {
            DrawDisc(*graphics, *legend, at);
        }
    }
    CommitOffset(ratio, offsetX, offsetY, commit);
}

int CShape_Point::GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) {
    if (!ktl::IsNear(point, Point, tolerance)) return 0;
    snapped = Point;
    return 1;
}

int CShape_Point::GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) {
    if (!ktl::IsNear(point, Point, ktl::kSamePoint)) return 0;
    index = 0;
    points.Add(Point);
    return 1;
}

CShape *CShape_Point::Clone() {
    auto copy = std::make_unique<CShape_Point>();
    copy->Copy(this);
    return copy.release();
}

void CShape_Point::Offset(double dx, double dy) {
    Point.x += dx;
    Point.y += dy;
    Extent.Offset(dx, dy);
}

OGRGeometry *CShape_Point::GetOGRShape() {
    auto point = std::make_unique<OGRPoint>();
    point->setX(KtlGetL(Point.x));
    point->setY(KtlGetB(Point.y));
    return point.release();
}

void CShape_Point::GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend * /*legend*/,
                                CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                                const double &ratio, const CExtent &extent, const int &offsetX, const int &offsetY,
                                int /*flag*/) {
    const CPoint anchor = ktl::PixelMap(ratio, extent, offsetX, offsetY).At(Point.x, Point.y);
    const CString lines = KtlBreakString(text, kLabelWidth);
    // The box stays where it was measured: whoever paints the label places it from the anchor.
    const Gdiplus::RectF box = ktl::LabelMeasure(textLegend, graphics).BoxOf(lines);
    labels.Add(STRUCT_LABEL_INFO{ShapeID, anchor, box, lines});
}

void CShape_Point::Copy(CShape *source) {
    CShape_Object::Copy(source);
    if (const auto *point = dynamic_cast<const CShape_Point *>(source)) Point = point->Point;
}

void CShape_Point::Serialize(CArchive &archive, int version) {
    CShape::Serialize(archive, version);
    Point.Serialize(archive, version);
}

void CShape_Point::SetPoint(const POINTD &point) {
    SetPoint(point.x, point.y);
}

void CShape_Point::SetPoint(double x, double y) {
    SetPointX(x);
    SetPointY(y);
}

void CShape_Point::SetPointX(double x) {
    Point.x = x;
    Extent.left = x;
    Extent.right = x;
}

void CShape_Point::SetPointY(double y) {
    Point.y = y;
    Extent.bottom = y;
    Extent.top = y;
}
