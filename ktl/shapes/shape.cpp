#include "ktl/shapes/shape.h"

#include <cmath>

#include "ktl/core/segment.h"
#include "ktl/core/transform.h"
#include "ktl/platform/archive.h"
#include "ktl/shapes/label_measure.h"

const CRuntimeClass *CShape::GetThisClass() {
    static const CRuntimeClass record{"CShape", sizeof(CShape), 0xFFFF, nullptr, CObject::GetThisClass()};
    return &record;
}

const CRuntimeClass *CShape::GetRuntimeClass() const {
    return CShape::GetThisClass();
}

CShape::~CShape() = default;

int CShape::Intersect(CExtent & /*range*/, CLegend * /*legend*/) {
    return 0;
}
int CShape::GetIndex() {
    return -1;
}
void CShape::Select(int /*selected*/) {}
void CShape::CalcExtent() {}
void CShape::SetShapeID(int id) {
    ShapeID = id;
}
CFields *CShape::GetGeneralFields() {
    return nullptr;
}
CRecord *CShape::GetGeneralValue() {
    return nullptr;
}
void CShape::UpdateGeneralValue(CString /*field*/, CString /*value*/) {}
void CShape::DrawTracker(Gdiplus::Graphics *, const double &, const CExtent &, const int &, const int &) {}
void CShape::Draw(Gdiplus::Graphics *, CLegend *, const double &, const CExtent &, const int &, const int &, int) {}
void CShape::Draw(Gdiplus::Graphics *, CLegend *, const double &, const CExtent &, CXGoogleMapOffset *) {}
void CShape::DrawEx(int, Gdiplus::Graphics *, CLegend *, const double &, const CExtent &, const int &, const int &,
                    int) {}
void CShape::Flash(Gdiplus::Graphics *, CLegend *, const double &, const CExtent &, CWnd *, const int &, const int &,
                   int) {}
int CShape::Contain(CExtent & /*range*/, CLegend * /*legend*/) {
    return 0;
}
int CShape::GetSnapPoint(POINTD, POINTD &, double) {
    return 0;
}
int CShape::GetMovePoint(POINTD, int &, CArray<POINTD, POINTD> &) {
    return 0;
}
CShape *CShape::Clone() {
    return nullptr;
}
void CShape::Offset(double /*dx*/, double /*dy*/) {}
int CShape::IsPolygon() {
    return 0;
}
int CShape::IsPolyline() {
    return 0;
}
OGRGeometry *CShape::GetOGRShape() {
    return nullptr;
}

void CShape::GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend * /*legend*/,
                          CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                          const double &ratio, const CExtent &extent, const int &offsetX, const int &offsetY,
                          int /*flag*/) {
    const CPointD center = Extent.CenterPoint();
    const CPoint anchor = ktl::PixelMap(ratio, extent, offsetX, offsetY).At(center.x, center.y);
    labels.Add(ktl::CenteredLabel(ShapeID, anchor, ktl::LabelMeasure(textLegend, graphics).BoxOf(text), text));
}

void CShape::Copy(CShape *source) {
    ShapeID = source->ShapeID;
    ShapeType = source->ShapeType;
    Extent = source->Extent;
}

void CShape::Serialize(CArchive &archive, int version) {
    if (archive.IsStoring()) {
        archive << ShapeID;
    } else {
        archive >> ShapeID;
    }
    Extent.Serialize(archive, version);
}

POINTD CShape::GetCenterPoint() const {
    return CPointD((Extent.left + Extent.right) * 0.5, (Extent.bottom + Extent.top) * 0.5);
}

int CShape::Intersect(const CExtent &a, const CExtent &b) {
    return !(a.left > b.right || a.right < b.left || a.bottom > b.top || a.top < b.bottom);
}

int CShape::Intersect(const POINTD &p1, const POINTD &p2, const POINTD &p3, const POINTD &p4) {
    return Intersect(p1.x, p1.y, p2.x, p2.y, p3.x, p3.y, p4.x, p4.y);
}

int CShape::Intersect(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    return ktl::SegmentsIntersect(x1, y1, x2, y2, x3, y3, x4, y4);
}

double CShape::GetDisOfP2P(const double &x1, const double &y1, const double &x2, const double &y2) {
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    return std::sqrt(static_cast<float>(dx * dx + dy * dy));
}

double CShape::GetDisOfP2P(const POINTD &p1, const POINTD &p2) {
    return GetDisOfP2P(p1.x, p1.y, p2.x, p2.y);
}

double CShape::GetAngle(const double &x1, const double &y1, const double &x2, const double &y2) {
    constexpr double kPi = 3.14159265358979;
    // The sine is rounded to single precision, as the distance is.
    const auto sine = static_cast<float>((y2 - y1) / GetDisOfP2P(x1, y1, x2, y2));
    const double angle = std::fabs(std::asin(static_cast<double>(sine)) * 180.0 / kPi);
    if (x2 >= x1 && y2 >= y1) return angle;
    if (x2 <= x1 && y2 >= y1) return 180.0 - angle;
    if (x2 <= x1 && y2 <= y1) return 180.0 + angle;
    return 360.0 - angle;
}

double CShape::GetAngle(const POINTD &p1, const POINTD &p2) {
    return GetAngle(p1.x, p1.y, p2.x, p2.y);
}

void CShape::CommitOffset(const double &ratio, int offsetX, int offsetY, int commit) {
    if (commit == 0) return;
    Offset(Client2World(offsetX, ratio), -Client2World(offsetY, ratio));
}
