#include "ktl/platform/gdiplus/raster/path_geometry.h"

namespace ktl::raster {

namespace {

PointD AsPointD(Gdiplus::Point p) {
    return {static_cast<double>(p.X), static_cast<double>(p.Y)};
}

}  // namespace

void PathGeometry::Clear() {
    m_isWhole = true;
    m_isOpen = false;
    m_figures.clear();
    m_whole.clear();
    m_points.clear();
    m_kinds.clear();
}

PointD PathGeometry::PointAt(std::size_t i) const {
    return m_isWhole ? AsPointD(m_whole[i]) : m_points[i];
}

void PathGeometry::MakeReal() {
    if (!m_isWhole) return;
    m_isWhole = false;
    m_points.reserve(m_whole.size());
    for (const Gdiplus::Point &point : m_whole) m_points.push_back(AsPointD(point));
    m_kinds.assign(m_points.size(), Kind::Line);
    for (const Figure &figure : m_figures) m_kinds[figure.first] = Kind::Start;
    m_whole.clear();
}

void PathGeometry::CloseFigure() {
    if (m_isOpen) m_figures.back().closed = true;
    m_isOpen = false;
}

void PathGeometry::Continue(PointD point, Kind kind) {
    if (!m_isOpen) {
        m_figures.push_back({m_points.size(), 0, false});
        m_isOpen = true;
        kind = Kind::Start;
    }
    m_points.push_back(point);
    m_kinds.push_back(kind);
    ++m_figures.back().count;
}

void PathGeometry::AddLines(const Gdiplus::Point *points, std::size_t count) {
    if (!m_isWhole) {
        for (std::size_t i = 0; i < count; ++i) Continue(AsPointD(points[i]), Kind::Line);
        return;
    }
    if (!m_isOpen) m_figures.push_back({m_whole.size(), 0, false});
    m_isOpen = true;
    m_whole.insert(m_whole.end(), points, points + count);
    m_figures.back().count += count;
}

void PathGeometry::AddLines(const PointD *points, std::size_t count) {
    MakeReal();
    for (std::size_t i = 0; i < count; ++i) Continue(points[i], Kind::Line);
}

void PathGeometry::AddCurve(const Cubic &curve) {
    MakeReal();
    if (!m_isOpen || m_points.back() != curve.p0) Continue(curve.p0, Kind::Line);
    Continue(curve.p1, Kind::Curve);
    Continue(curve.p2, Kind::Curve);
    Continue(curve.p3, Kind::Curve);
}

void PathGeometry::AddArc(const Arc &arc) {
    for (int i = 0; i < arc.count; ++i) AddCurve(arc.curves[i]);
}

void PathGeometry::AddPolygon(const Gdiplus::Point *points, std::size_t count) {
    StartFigure();
    AddLines(points, count);
    CloseFigure();
}

void PathGeometry::AddPolygon(const PointD *points, std::size_t count) {
    StartFigure();
    AddLines(points, count);
    CloseFigure();
}

void PathGeometry::AddEllipse(double x, double y, double width, double height) {
    StartFigure();
    AddArc(EllipseCurves(x, y, width, height));
    CloseFigure();
}

void PathGeometry::AddPie(double x, double y, double width, double height, double startAngle, double sweepAngle) {
    const PointD centre = {x + width / 2, y + height / 2};
    StartFigure();
    AddLines(&centre, 1);
    AddArc(ArcCurves(x, y, width, height, startAngle, sweepAngle));
    CloseFigure();
}

void Chains::Flatten(const PathGeometry &geometry, const Affine &map) {
    Clear();
    for (const PathGeometry::Figure &figure : geometry.Figures()) {
        const std::size_t first = points.size();
        PointD last;
        for (std::size_t i = figure.first; i < figure.first + figure.count; ++i) {
            if (geometry.IsWhole() || geometry.Kinds()[i] != PathGeometry::Kind::Curve) {
                last = map.Apply(geometry.PointAt(i));
                points.push_back(last);
                continue;
            }
            const PointD end = map.Apply(geometry.PointAt(i + 2));
            ktl::raster::Flatten({last, map.Apply(geometry.PointAt(i)), map.Apply(geometry.PointAt(i + 1)), end},
                                 points);
            last = end;
            i += 2;
        }
        figures.push_back({first, points.size() - first, figure.closed});
    }
}

}  // namespace ktl::raster
