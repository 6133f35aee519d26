#include "ktl/platform/gdiplus/graphics_path.h"

#include <algorithm>
#include <utility>

#include "ktl/platform/gdiplus/path_data.h"
#include "ktl/platform/gdiplus/point_buffer.h"
#include "ktl/platform/gdiplus/startup.h"

using ktl::raster::AsPointD;
using ktl::raster::AsPointsD;
using ktl::raster::PathGeometry;
using ktl::raster::PointD;

namespace Gdiplus {

namespace {

bool IsFillMode(FillMode mode) {
    return mode == FillModeAlternate || mode == FillModeWinding;
}

template <class P>
bool AddCurves(PathGeometry &geometry, const P *points, INT count) {
    if (points == nullptr || !ktl::raster::IsBezierCount(count)) return false;
    for (INT i = 0; i + 3 < count; i += 3) {
        geometry.AddCurve(
            {AsPointD(points[i]), AsPointD(points[i + 1]), AsPointD(points[i + 2]), AsPointD(points[i + 3])});
    }
    return true;
}

}  // namespace

GraphicsPath::GraphicsPath(FillMode fillMode) : m_data(std::make_unique<Data>()) {
    m_data->fillMode = fillMode;
    if (!ktl::raster::DrawingStarted()) {
        m_data->usable = false;
        m_data->lastStatus = GdiplusNotInitialized;
    } else if (!IsFillMode(fillMode)) {
        m_data->usable = false;
        m_data->lastStatus = InvalidParameter;
    }
}

GraphicsPath::GraphicsPath(const GraphicsPath &other) : m_data(std::make_unique<Data>(*other.m_data)) {}

GraphicsPath::~GraphicsPath() = default;

GraphicsPath *GraphicsPath::Clone() const {
    return new GraphicsPath(*this);
}

Status GraphicsPath::SetStatus(Status status) const {
    if (status != Ok) m_data->lastStatus = status;
    return status;
}

Status GraphicsPath::GetLastStatus() const {
    return std::exchange(m_data->lastStatus, Ok);
}

bool GraphicsPath::IsUsable() const {
    return m_data->usable;
}

Status GraphicsPath::Reset() {
    m_data->geometry.Clear();
    m_data->fillMode = FillModeAlternate;
    return Ok;
}

FillMode GraphicsPath::GetFillMode() const {
    return m_data->fillMode;
}

Status GraphicsPath::SetFillMode(FillMode fillMode) {
    if (!IsFillMode(fillMode)) return SetStatus(InvalidParameter);
    m_data->fillMode = fillMode;
    return Ok;
}

INT GraphicsPath::GetPointCount() const {
    return static_cast<INT>(m_data->geometry.PointCount());
}

Status GraphicsPath::GetBounds(RectF *bounds) const {
    if (bounds == nullptr) return SetStatus(InvalidParameter);
    *bounds = RectF();
    const std::size_t count = m_data->geometry.PointCount();
    if (count == 0) return Ok;
    PointD low = m_data->geometry.PointAt(0);
    PointD high = low;
    for (std::size_t i = 1; i < count; ++i) {
        const PointD p = m_data->geometry.PointAt(i);
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    *bounds = RectF(static_cast<REAL>(low.x), static_cast<REAL>(low.y), static_cast<REAL>(high.x - low.x),
                    static_cast<REAL>(high.y - low.y));
    return Ok;
}

Status GraphicsPath::StartFigure() {
    m_data->geometry.StartFigure();
    return Ok;
}

Status GraphicsPath::CloseFigure() {
    m_data->geometry.CloseFigure();
    return Ok;
}

Status GraphicsPath::AddLine(INT x1, INT y1, INT x2, INT y2) {
    const Point points[2] = {Point(x1, y1), Point(x2, y2)};
    return AddLines(points, 2);
}

Status GraphicsPath::AddLine(REAL x1, REAL y1, REAL x2, REAL y2) {
    const PointF points[2] = {PointF(x1, y1), PointF(x2, y2)};
    return AddLines(points, 2);
}

Status GraphicsPath::AddLines(const Point *points, INT count) {
    if (points == nullptr || count < 1) return SetStatus(InvalidParameter);
    m_data->geometry.AddLines(points, static_cast<std::size_t>(count));
    return Ok;
}

Status GraphicsPath::AddLines(const PointF *points, INT count) {
    if (points == nullptr || count < 1) return SetStatus(InvalidParameter);
    m_data->geometry.AddLines(AsPointsD(points, count).data(), static_cast<std::size_t>(count));
    return Ok;
}

Status GraphicsPath::AddBezier(REAL x1, REAL y1, REAL x2, REAL y2, REAL x3, REAL y3, REAL x4, REAL y4) {
    const PointF points[4] = {PointF(x1, y1), PointF(x2, y2), PointF(x3, y3), PointF(x4, y4)};
    return AddBeziers(points, 4);
}

Status GraphicsPath::AddBeziers(const Point *points, INT count) {
    return SetStatus(AddCurves(m_data->geometry, points, count) ? Ok : InvalidParameter);
}

Status GraphicsPath::AddBeziers(const PointF *points, INT count) {
    return SetStatus(AddCurves(m_data->geometry, points, count) ? Ok : InvalidParameter);
}

Status GraphicsPath::AddArc(REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle) {
    if (!(width > 0) || !(height > 0)) return SetStatus(InvalidParameter);
    m_data->geometry.AddArc(ktl::raster::ArcCurves(x, y, width, height, startAngle, sweepAngle));
    return Ok;
}

Status GraphicsPath::AddPolygon(const Point *points, INT count) {
    if (points == nullptr || count < 3) return SetStatus(InvalidParameter);
    m_data->geometry.AddPolygon(points, static_cast<std::size_t>(count));
    return Ok;
}

Status GraphicsPath::AddPolygon(const PointF *points, INT count) {
    if (points == nullptr || count < 3) return SetStatus(InvalidParameter);
    m_data->geometry.AddPolygon(AsPointsD(points, count).data(), static_cast<std::size_t>(count));
    return Ok;
}

Status GraphicsPath::AddRectangle(const Rect &rect) {
    const RectF real(static_cast<REAL>(rect.X), static_cast<REAL>(rect.Y), static_cast<REAL>(rect.Width),
                     static_cast<REAL>(rect.Height));
    return AddRectangle(real);
}

// A rectangle without area adds nothing.
Status GraphicsPath::AddRectangle(const RectF &rect) {
    if (rect.IsEmptyArea()) return Ok;
    const double right = static_cast<double>(rect.X) + rect.Width;
    const double bottom = static_cast<double>(rect.Y) + rect.Height;
    const PointD corners[4] = {{rect.X, rect.Y}, {right, rect.Y}, {right, bottom}, {rect.X, bottom}};
    m_data->geometry.AddPolygon(corners, 4);
    return Ok;
}

Status GraphicsPath::AddEllipse(INT x, INT y, INT width, INT height) {
    m_data->geometry.AddEllipse(x, y, width, height);
    return Ok;
}

Status GraphicsPath::AddEllipse(REAL x, REAL y, REAL width, REAL height) {
    m_data->geometry.AddEllipse(x, y, width, height);
    return Ok;
}

Status GraphicsPath::AddPie(REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle) {
    if (!(width > 0) || !(height > 0)) return SetStatus(InvalidParameter);
    m_data->geometry.AddPie(x, y, width, height, startAngle, sweepAngle);
    return Ok;
}

}  // namespace Gdiplus
