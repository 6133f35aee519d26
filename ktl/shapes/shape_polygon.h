#pragma once

#include "ktl/shapes/shape_object.h"

/// An area feature of one ring. A closing vertex is neither added nor required.
///
/// A bad index throws `CInvalidArgException`.
class KTL_API CShape_Polygon : public CShape_Object {
  public:
    CShape_Polygon();

    using CShape_Object::Draw;
    using CShape_Object::Serialize;

    /// The edge from the last vertex to the first is tested only where the first is stored again at the end.
    int Intersect(CExtent &range, CLegend *legend) override;
    void CalcExtent() override;
    CFields *GetGeneralFields() override;
    CRecord *GetGeneralValue() override;
    void DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent, const int &offsetX,
                     const int &offsetY) override;
    void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
              const int &offsetX, const int &offsetY, int commit) override;
    int Contain(CExtent &range, CLegend *legend) override;
    int GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) override;
    int GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) override;
    CShape *Clone() override;
    void Offset(double dx, double dy) override;
    int IsPolygon() override;
    /// The ring goes out as it is stored, closed or not.
    OGRGeometry *GetOGRShape() override;
    void Copy(CShape *source) override;
    void Serialize(CArchive &archive, int version) override;

    /// Appends; the first vertex sets the extent, later ones grow it.
    void AddPoint(const POINTD &point);
    /// Replaces. Index 0 collapses the extent to the point, any other only grows it; see `CalcExtent`.
    void SetPointAt(int index, POINTD point);
    /// Replaces the last vertex of a ring being drawn; the extent only grows.
    void SetLastPoint(POINTD point);
    /// The extent stays as it is.
    void RemoveAt(int index);
    void RemoveLastPoint();
    /// Grows with points at the origin, or cuts; the extent stays as it is.
    void SetPointCount(int count);
    int GetPointCount() const { return PointArray.GetSize(); }
    POINTD GetPointAt(int index) const { return PointArray.GetAt(index); }
    POINTD GetFirstPoint() const { return PointArray.GetAt(0); }
    POINTD GetLastPoint() const { return PointArray.GetAt(PointArray.GetUpperBound()); }
    CArray<POINTD, POINTD> &GetPointArray() { return PointArray; }

    /// 1 when the first and the last vertex are equal to the last bit; 0 for an empty ring.
    int IsClosed() const;
    /// 1 inside the ring. A point on a left or bottom edge is inside, on a right or top edge outside.
    int PointInPolygon(POINTD point) const;
    int PointInPolygon(double x, double y) const;

  protected:
    CArray<POINTD, POINTD> PointArray;
};
