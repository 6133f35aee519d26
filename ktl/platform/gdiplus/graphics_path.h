#pragma once

#include <memory>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"

namespace Gdiplus {

/// A set of figures that are filled together or outlined one by one. Under `FillModeAlternate`, the default, a figure
/// inside another is a hole whatever its direction. Coordinates are kept without loss.
///
///     GraphicsPath path;
///     path.AddPolygon(outer, 4);
///     path.AddPolygon(inner, 4);
///     graphics.FillPath(&brush, &path);
class KTL_API GraphicsPath {
  public:
    /// A mode other than the two gives the status `InvalidParameter`.
    explicit GraphicsPath(FillMode fillMode = FillModeAlternate);
    ~GraphicsPath();
    GraphicsPath &operator=(const GraphicsPath &) = delete;

    /// A copy that the caller owns.
    GraphicsPath *Clone() const;
    /// Empties the path and makes it alternate again.
    Status Reset();
    FillMode GetFillMode() const;
    Status SetFillMode(FillMode fillMode);
    /// The number of stored points, those of curves included.
    INT GetPointCount() const;
    /// The box of the stored points; control points count.
    Status GetBounds(RectF *bounds) const;

    /// The next line or curve begins a figure of its own.
    Status StartFigure();
    /// Joins the last point of the open figure to its first.
    Status CloseFigure();

    /// Lines and curves continue the open figure, joined to it by a straight line. 0 or fewer points give
    /// `InvalidParameter`; Béziers take 4 points and 3 more for each further curve.
    Status AddLine(INT x1, INT y1, INT x2, INT y2);
    Status AddLine(REAL x1, REAL y1, REAL x2, REAL y2);
    Status AddLines(const Point *points, INT count);
    Status AddLines(const PointF *points, INT count);
    Status AddBezier(REAL x1, REAL y1, REAL x2, REAL y2, REAL x3, REAL y3, REAL x4, REAL y4);
    Status AddBeziers(const Point *points, INT count);
    Status AddBeziers(const PointF *points, INT count);
    /// Angles in degrees from +x, clockwise.
    Status AddArc(REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle);

    /// These add one closed figure each. A polygon needs at least 3 points: fewer give `InvalidParameter`.
    Status AddPolygon(const Point *points, INT count);
    Status AddPolygon(const PointF *points, INT count);
    Status AddRectangle(const Rect &rect);
    Status AddRectangle(const RectF &rect);
    Status AddEllipse(INT x, INT y, INT width, INT height);
    Status AddEllipse(REAL x, REAL y, REAL width, REAL height);
    Status AddPie(REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle);

    /// The status of the last call that failed; asking resets it to `Ok`.
    Status GetLastStatus() const;
    /// False when the path could not be made.
    bool IsUsable() const;

    /// The figures, for the inside of the drawing layer.
    struct Data;
    const Data &GetData() const { return *m_data; }

  private:
    GraphicsPath(const GraphicsPath &other);
    Status SetStatus(Status status) const;

    std::unique_ptr<Data> m_data;
};

}  // namespace Gdiplus
