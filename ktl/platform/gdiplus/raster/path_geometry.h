#pragma once

#include <cstdint>
#include <vector>

#include "ktl/platform/gdiplus/raster/curves.h"
#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/types.h"

namespace ktl::raster {

/// The figures of a path, or of one call, in world units. As long as all of them are chains of whole points, they are
/// kept as such, since whole points are drawn faster.
class PathGeometry {
  public:
    /// A chain of points. `first` counts in `Whole()` or in `Points()`.
    struct Figure {
        std::size_t first;
        std::size_t count;
        bool closed;
    };
    /// How a point is reached from the one before. A curve takes three points.
    enum class Kind : std::uint8_t { Start, Line, Curve };

    void Clear();
    bool IsWhole() const { return m_isWhole; }
    bool IsEmpty() const { return m_figures.empty(); }
    const std::vector<Figure> &Figures() const { return m_figures; }
    const std::vector<Gdiplus::Point> &Whole() const { return m_whole; }
    /// Points and kinds of a geometry that is not whole.
    const std::vector<PointD> &Points() const { return m_points; }
    const std::vector<Kind> &Kinds() const { return m_kinds; }
    std::size_t PointCount() const { return m_isWhole ? m_whole.size() : m_points.size(); }
    PointD PointAt(std::size_t i) const;

    /// Ends the open figure.
    void StartFigure() { m_isOpen = false; }
    void CloseFigure();
    /// Continue the open figure, or begin one.
    void AddLines(const Gdiplus::Point *points, std::size_t count);
    void AddLines(const PointD *points, std::size_t count);
    void AddCurve(const Cubic &curve);
    void AddArc(const Arc &arc);
    /// Figures of their own.
    void AddPolygon(const Gdiplus::Point *points, std::size_t count);
    void AddPolygon(const PointD *points, std::size_t count);
    void AddEllipse(double x, double y, double width, double height);
    void AddPie(double x, double y, double width, double height, double startAngle, double sweepAngle);

  private:
    void MakeReal();
    void Continue(PointD point, Kind kind);

    bool m_isWhole = true;
    bool m_isOpen = false;
    std::vector<Figure> m_figures;
    std::vector<Gdiplus::Point> m_whole;
    std::vector<PointD> m_points;
    std::vector<Kind> m_kinds;
};

/// Figures as chains of points in device pixels, curves flattened.
struct Chains {
    std::vector<PointD> points;
    std::vector<PathGeometry::Figure> figures;

    void Clear() {
        points.clear();
        figures.clear();
    }
    /// Replaces the chains by those of a geometry.
    void Flatten(const PathGeometry &geometry, const Affine &map);
};

}  // namespace ktl::raster
