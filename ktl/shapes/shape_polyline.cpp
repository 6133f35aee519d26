#include "ktl/shapes/shape_polyline.h"

#include <ogr_geometry.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "ktl/core/utility.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/general_rows.h"
#include "ktl/shapes/label_measure.h"
#include "ktl/shapes/screen_path.h"
#include "ktl/shapes/tracker.h"
#include "ktl/shapes/vertex_list.h"
#include "ktl/webmap/distance.h"

namespace {

constexpr ktl::GeneralRow kRows[] = {{"PointCount", DATA_INT, true}};
constexpr int kFirstSide = 2;
constexpr int kCasingPass = 1;
constexpr int kCorePass = 0;
constexpr int kFirstCasedStyle = 2;
constexpr int kLastCasedStyle = 4;
/// The first version whose streams hold the closed mark.
constexpr int kFirstVersionWithClosed = 203;
/// A snapped line has at least so many vertices.
constexpr int kMinSnapVertices = 3;
/// Pixels between the characters of a label at most, and the step they are taken back by.
constexpr int kMaxTextSpace = 80;
constexpr int kTextSpaceStep = 2;

bool HasCasing(CLegend *legend) {
    const auto *line = dynamic_cast<const CLegend_Polyline *>(legend);
    return line && line->GetLineStyle() >= kFirstCasedStyle && line->GetLineStyle() <= kLastCasedStyle;
}

/// The line in pixels without those on the last kept one: on its very pixel, or, when only columns count, anywhere in
/// its column. The first two always stay.
std::vector<CPoint> KeptPixels(const CArray<POINTD, POINTD> &vertices, const ktl::PixelMap &map, bool onlyColumns) {
    std::vector<CPoint> kept;
    kept.reserve(static_cast<std::size_t>(vertices.GetSize()));
    for (const POINTD &vertex : vertices) {
        const CPoint pixel = map.At(vertex.x, vertex.y);
        const bool isSame = kept.size() >= 2 && pixel.x == kept.back().x && (onlyColumns || pixel.y == kept.back().y);
        if (!isSame) kept.push_back(pixel);
    }
    return kept;
}

int LengthOf(const std::vector<CPoint> &pixels) {
    int length = 0;
    for (std::size_t i = 1; i < pixels.size(); ++i) {
        length = ktl::AddClamped(length, KtlGetP2PLength(pixels[i - 1], pixels[i]));
    }
    return length;
}

/// The first `wanted` pixels at every `space` along the line from `margin` on, or fewer.
std::vector<CPoint> MarkStations(const CShape_Polyline &line, const CArray<CPoint, CPoint> &pixels, int margin,
                                 int space, std::size_t wanted) {
    std::vector<CPoint> stations;
    int walked = 0;
    int next = margin;
    for (int i = 0; i + 1 < pixels.GetSize() && stations.size() < wanted; ++i) {
        const CPoint from = pixels[i];
        const CPoint to = pixels[i + 1];
        if (from == to) continue;
        const int segment = KtlGetP2PLength(from, to);
        if (ktl::AddClamped(walked, segment) < next) {
            walked += segment;
            continue;
        }
        CPoint station = line.GetPointOnLineFromBegin(next - walked, from, to);
        stations.push_back(station);
        walked = next;
        next = ktl::AddClamped(next, space);
        while (KtlGetP2PLength(station, to) > space && stations.size() < wanted) {
            station = line.GetPointOnLineFromBegin(space, station, to);
            stations.push_back(station);
            walked = ktl::AddClamped(walked, space);
            next = ktl::AddClamped(next, space);
        }
        walked = ktl::AddClamped(walked, KtlGetP2PLength(station, to));
    }
    return stations;
}

}  // namespace

CShape_Polyline::CShape_Polyline() {
    ShapeType = SHAPE_POLYLINE;
}

int CShape_Polyline::Intersect(CExtent &range, CLegend * /*legend*/) {
    if (!range.Intersect(Extent)) return 0;
    if (range.Contain(Extent) == 1) return 1;
    for (int i = 0; i + 1 < PointArray.GetSize(); ++i) {
        const POINTD &a = PointArray[i];
        const POINTD &b = PointArray[i + 1];
        if (range.Intersect(a.x, a.y, b.x, b.y) == 1) return 1;
    }
    return 0;
}

int CShape_Polyline::Contain(CExtent &range, CLegend * /*legend*/) {
    return range.Contain(Extent);
}
void CShape_Polyline::CalcExtent() {
    ktl::CalcExtentOf(PointArray, Extent);
}
CFields *CShape_Polyline::GetGeneralFields() {
    return ktl::MakeGeneralFields(kRows, kFirstSide).release();
}

CRecord *CShape_Polyline::GetGeneralValue() {
    ktl::GeneralValues values(ShapeID);
    values.AddInteger(GetPointCount());
    values.AddSides(Extent);
    return values.Release();
}

void CShape_Polyline::DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent,
                                  const int &offsetX, const int &offsetY) {
    const ktl::Tracker tracker(graphics, ktl::PixelMap(ratio, extent, offsetX, offsetY));
    for (const POINTD &vertex : PointArray) tracker.Mark(vertex);
}

void CShape_Polyline::Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                           const int &offsetX, const int &offsetY, int commit) {
    if (HasCasing(legend)) DrawEx(kCasingPass, graphics, legend, ratio, extent, offsetX, offsetY, commit);
    DrawEx(kCorePass, graphics, legend, ratio, extent, offsetX, offsetY, commit);
}

void CShape_Polyline::DrawEx(int pass, Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio,
                             const CExtent &extent, const int &offsetX, const int &offsetY, int commit) {
    if (graphics && legend) {
        const std::unique_ptr<Gdiplus::Pen> pen(pass == kCasingPass ? legend->GetBackPen(State)
                                                                    : legend->GetForePen(State));
        ktl::ScreenPath path(ktl::ViewBox::For(*graphics, pen.get()));
        path.AddLine(PointArray, ktl::PixelMap(ratio, extent, offsetX, offsetY));
        if (path.IsVisible() && Closed) {
            graphics->DrawPolygon(pen.get(), path.Data(), path.Count());
        } else if (path.IsVisible()) {
            graphics->DrawLines(pen.get(), path.Data(), path.Count());
        }
    }
    CommitOffset(ratio, offsetX, offsetY, commit);
}

int CShape_Polyline::GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) {
    if (PointArray.GetSize() < kMinSnapVertices) return 0;
    return ktl::SnapToVertex(PointArray, point, snapped, tolerance);
}

int CShape_Polyline::GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) {
    return ktl::MoveVertex(PointArray, point, index, points);
}

CShape *CShape_Polyline::Clone() {
    auto copy = std::make_unique<CShape_Polyline>();
    copy->Copy(this);
    return copy.release();
}

void CShape_Polyline::Offset(double dx, double dy) {
    ktl::OffsetVertices(PointArray, Extent, dx, dy);
}
int CShape_Polyline::IsPolyline() {
    return 1;
}

OGRGeometry *CShape_Polyline::GetOGRShape() {
    auto line = std::make_unique<OGRLineString>();
    ktl::CopyToCurve(PointArray, *line);
    return line.release();
}

void CShape_Polyline::GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend * /*legend*/,
                                   CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                                   const double &ratio, const CExtent &extent, const int & /*offsetX*/,
                                   const int & /*offsetY*/, int /*flag*/) {
    CArray<CPoint, CPoint> pixels;
    const int length = GetLength(ratio, extent, pixels);
    CArray<CString, CString> letters;
    KtlSpliteStringToSingle(text, letters);
    const int space = GetTextSpace(length, letters.GetSize(), textLegend ? textLegend->GetSize() : 0);
    if (space < 0 || letters.IsEmpty()) return;
    const int group = (letters.GetSize() + 1) * space;
    const int repeats = length / group;
    // The first station and one between two copies stay free.
    const auto wanted = static_cast<std::size_t>(repeats) * (static_cast<std::size_t>(letters.GetSize()) + 1);
    const std::vector<CPoint> stations = MarkStations(*this, pixels, (length % group) / 2, space, wanted);
    ktl::LabelMeasure measure(textLegend, graphics);
    std::vector<Gdiplus::RectF> boxes;
    for (const CString &letter : letters) boxes.push_back(measure.BoxOf(letter));
    for (std::size_t k = 0; k < stations.size(); ++k) {
        const std::size_t slot = k % (boxes.size() + 1);
        if (slot == 0) continue;
        const CString &letter = letters[static_cast<int>(slot) - 1];
        labels.Add(ktl::CenteredLabel(ShapeID, stations[k], boxes[slot - 1], letter));
    }
}

void CShape_Polyline::Copy(CShape *source) {
    CShape_Object::Copy(source);
    const auto *line = dynamic_cast<const CShape_Polyline *>(source);
    if (!line || line == this) return;
    PointArray.Copy(line->PointArray);
    Closed = line->Closed;
}

void CShape_Polyline::Serialize(CArchive &archive, int version) {
    CShape::Serialize(archive, version);
    if (version >= kFirstVersionWithClosed) {
        if (archive.IsStoring()) {
            archive << Closed;
        } else {
            archive >> Closed;
        }
    }
    ktl::SerializeVertices(archive, PointArray);
}

void CShape_Polyline::AddPoint(const POINTD &point) {
    ktl::AddVertex(PointArray, Extent, point);
}
void CShape_Polyline::SetPointAt(int index, POINTD point) {
    ktl::SetVertexAt(PointArray, Extent, index, point);
}
void CShape_Polyline::SetLastPoint(POINTD point) {
    ktl::SetLastVertex(PointArray, Extent, point);
}
void CShape_Polyline::RemoveAt(int index) {
    PointArray.RemoveAt(index);
}
void CShape_Polyline::RemoveLastPoint() {
    PointArray.RemoveAt(PointArray.GetUpperBound());
}
void CShape_Polyline::SetPointCount(int count) {
    PointArray.SetSize(count);
}

void CShape_Polyline::CopyPointArray(const CArray<POINTD, POINTD> &points) {
    if (&points != &PointArray) PointArray.Copy(points);
    CalcExtent();
}

int CShape_Polyline::GetLength(const double &ratio, const CExtent &extent) const {
    return LengthOf(KeptPixels(PointArray, ktl::PixelMap(ratio, extent), true));
}

int CShape_Polyline::GetLength(const double &ratio, const CExtent &extent, CArray<CPoint, CPoint> &points) const {
    const std::vector<CPoint> kept = KeptPixels(PointArray, ktl::PixelMap(ratio, extent), false);
    points.SetSize(static_cast<int>(kept.size()));
    std::copy(kept.begin(), kept.end(), points.begin());
    return LengthOf(kept);
}

int CShape_Polyline::GetTextSpace(int length, int count, int /*size*/) const {
    int space = kMaxTextSpace;
    while (static_cast<long long>(count + 1) * space > length && space > 0) space -= kTextSpaceStep;
    return space >= 1 ? space : -1;
}

CPoint CShape_Polyline::GetPointOnLineFromBegin(int distance, CPoint from, CPoint to) const {
    const double share = static_cast<double>(distance) / KtlGetP2PLength(from, to);
    const double dx = static_cast<double>(to.x) - from.x;
    const double dy = static_cast<double>(to.y) - from.y;
    return CPoint(ktl::AddClamped(from.x, ktl::TruncateToInt(share * dx)),
                  ktl::AddClamped(from.y, ktl::TruncateToInt(share * dy)));
}
