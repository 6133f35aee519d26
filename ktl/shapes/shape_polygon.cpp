#include "ktl/shapes/shape_polygon.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <ogr_geometry.h>

#include <algorithm>
#include <memory>

#include "ktl/legends/legend.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/general_rows.h"
#include "ktl/shapes/screen_path.h"
#include "ktl/shapes/tracker.h"
#include "ktl/shapes/vertex_list.h"

namespace {

constexpr ktl::GeneralRow kRows[] = {{"PointCount", DATA_INT, true}};
constexpr int kFirstSide = 2;

bool CrossesSide(const POINTD &a, const POINTD &b, const CExtent &range) {
    const auto crosses = [&](double x1, double y1, double x2, double y2) {
        return CShape::Intersect(a.x, a.y, b.x, b.y, x1, y1, x2, y2) != 0;
    };
    return crosses(range.left, range.bottom, range.left, range.top) ||
           crosses(range.left, range.top, range.right, range.top) ||
           crosses(range.right, range.top, range.right, range.bottom) ||
           crosses(range.right, range.bottom, range.left, range.bottom);
}

/// True when the segment lies beyond one side of the box around all four corners of the range, so that it crosses none
/// of its sides.
bool LiesBeyond(const POINTD &a, const POINTD &b, const CExtent &range) {
    return std::max(a.x, b.x) < std::min(range.left, range.right) ||
           std::min(a.x, b.x) > std::max(range.left, range.right) ||
           std::max(a.y, b.y) < std::min(range.bottom, range.top) ||
           std::min(a.y, b.y) > std::max(range.bottom, range.top);
}

void DrawRing(const CArray<POINTD, POINTD> &vertices, Gdiplus::Graphics &graphics, CLegend &legend, bool state,
              const ktl::PixelMap &map) {
    const std::unique_ptr<Gdiplus::Brush> brush(legend.GetForeBrush(state));
    const std::unique_ptr<Gdiplus::Pen> pen(legend.GetBackPen(state));
    ktl::ScreenPath path(ktl::ViewBox::For(graphics, pen.get()));
    path.AddRing(vertices, map);
    if (!path.IsVisible()) return;
    graphics.FillPolygon(brush.get(), path.Data(), path.Count());
    graphics.DrawPolygon(pen.get(), path.Data(), path.Count());
}

}  // namespace

CShape_Polygon::CShape_Polygon() {
    ShapeType = SHAPE_POLYGON;
}

int CShape_Polygon::Intersect(CExtent &range, CLegend * /*legend*/) {
    if (!range.Intersect(Extent)) return 0;
    if (range.Contain(Extent) == 1) return 1;
    if (PointInPolygon(range.left, range.bottom) || PointInPolygon(range.left, range.top) ||
        PointInPolygon(range.right, range.top) || PointInPolygon(range.right, range.bottom)) {
        return 1;
    }
    for (int i = 0; i + 1 < PointArray.GetSize(); ++i) {
        const POINTD &a = PointArray[i];
        const POINTD &b = PointArray[i + 1];
        if (!LiesBeyond(a, b, range) && CrossesSide(a, b, range)) return 1;
    }
    return 0;
}

int CShape_Polygon::Contain(CExtent &range, CLegend * /*legend*/) {
    return range.Contain(Extent);
}
void CShape_Polygon::CalcExtent() {
    ktl::CalcExtentOf(PointArray, Extent);
}
CFields *CShape_Polygon::GetGeneralFields() {
    return ktl::MakeGeneralFields(kRows, kFirstSide).release();
}

CRecord *CShape_Polygon::GetGeneralValue() {
    ktl::GeneralValues values(ShapeID);
    values.AddInteger(GetPointCount());
    values.AddSides(Extent);
    return values.Release();
}

void CShape_Polygon::DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent,
                                 const int &offsetX, const int &offsetY) {
    const ktl::Tracker tracker(graphics, ktl::PixelMap(ratio, extent, offsetX, offsetY));
    for (const POINTD &vertex : PointArray) tracker.Mark(vertex);
}

void CShape_Polygon::Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                          const int &offsetX, const int &offsetY, int commit) {
    if (graphics && legend) {
        DrawRing(PointArray, *graphics, *legend, State, ktl::PixelMap(ratio, extent, offsetX, offsetY));
    }
    CommitOffset(ratio, offsetX, offsetY, commit);
}

int CShape_Polygon::GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) {
    return ktl::SnapToVertex(PointArray, point, snapped, tolerance);
}

int CShape_Polygon::GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) {
    return ktl::MoveVertex(PointArray, point, index, points);
}

CShape *CShape_Polygon::Clone() {
    auto copy = std::make_unique<CShape_Polygon>();
    copy->Copy(this);
    return copy.release();
}

void CShape_Polygon::Offset(double dx, double dy) {
    ktl::OffsetVertices(PointArray, Extent, dx, dy);
}
int CShape_Polygon::IsPolygon() {
    return 1;
}

OGRGeometry *CShape_Polygon::GetOGRShape() {
    auto ring = std::make_unique<OGRLinearRing>();
    ktl::CopyToCurve(PointArray, *ring);
    auto polygon = std::make_unique<OGRPolygon>();
    // An open ring is meant, so that there is nothing to refuse and nothing to warn of.
    const CPLConfigOptionSetter acceptAsStored("OGR_GEOMETRY_ACCEPT_UNCLOSED_RING", "YES", false);
    const CPLErrorHandlerPusher quiet(CPLQuietErrorHandler);
    if (polygon->addRingDirectly(ring.get()) == OGRERR_NONE) ring.release();
    return polygon.release();
}

void CShape_Polygon::Copy(CShape *source) {
    CShape_Object::Copy(source);
    const auto *polygon = dynamic_cast<const CShape_Polygon *>(source);
    if (polygon && polygon != this) PointArray.Copy(polygon->PointArray);
}

void CShape_Polygon::Serialize(CArchive &archive, int version) {
    CShape::Serialize(archive, version);
    ktl::SerializeVertices(archive, PointArray);
}

void CShape_Polygon::AddPoint(const POINTD &point) {
    ktl::AddVertex(PointArray, Extent, point);
}
void CShape_Polygon::SetPointAt(int index, POINTD point) {
    ktl::SetVertexAt(PointArray, Extent, index, point);
}
void CShape_Polygon::SetLastPoint(POINTD point) {
    ktl::SetLastVertex(PointArray, Extent, point);
}
void CShape_Polygon::RemoveAt(int index) {
    PointArray.RemoveAt(index);
}
void CShape_Polygon::RemoveLastPoint() {
    PointArray.RemoveAt(PointArray.GetUpperBound());
}
void CShape_Polygon::SetPointCount(int count) {
    PointArray.SetSize(count);
}

int CShape_Polygon::IsClosed() const {
    if (PointArray.IsEmpty()) return 0;
    const POINTD &first = PointArray[0];
    const POINTD &last = PointArray[PointArray.GetUpperBound()];
    return first.x == last.x && first.y == last.y;
}

int CShape_Polygon::PointInPolygon(POINTD point) const {
    return PointInPolygon(point.x, point.y);
}

int CShape_Polygon::PointInPolygon(double x, double y) const {
    const int count = PointArray.GetSize();
    const POINTD *vertices = PointArray.GetData();
    bool isInside = false;
    for (int i = 0; i < count; ++i) {
        const POINTD &a = vertices[i];
        const POINTD &b = vertices[i + 1 < count ? i + 1 : 0];
        if (a.y == b.y) continue;
        const bool spansRow = (y >= a.y && y < b.y) || (y >= b.y && y < a.y);
        if (spansRow && a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y) > x) isInside = !isInside;
    }
    return isInside;
}
