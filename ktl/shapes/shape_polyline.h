#pragma once

#include "ktl/platform/geometry.h"
#include "ktl/shapes/shape_object.h"

/// A line feature. The closed mark makes a ring of it without filling it.
///
/// A bad index throws `CInvalidArgException`.
class KTL_API CShape_Polyline : public CShape_Object {
  public:
    CShape_Polyline();

    using CShape_Object::Draw;
    using CShape_Object::Serialize;

    int Intersect(CExtent &range, CLegend *legend) override;
    void CalcExtent() override;
    CFields *GetGeneralFields() override;
    CRecord *GetGeneralValue() override;
    void DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent, const int &offsetX,
                     const int &offsetY) override;
    /// A line style of 2, 3 or 4 draws a casing first. Both passes get `commit`, so that such a line moves twice. This
    /// is meant.
    void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
              const int &offsetX, const int &offsetY, int commit) override;
    /// Vertices nearer than 2 pixels to the last kept one are left out, from the third on; so may be the last one.
    void DrawEx(int pass, Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                const int &offsetX, const int &offsetY, int commit) override;
    int Contain(CExtent &range, CLegend *legend) override;
    /// 0 for a line of fewer than three vertices.
    int GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) override;
    int GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) override;
    CShape *Clone() override;
    void Offset(double dx, double dy) override;
    int IsPolyline() override;
    OGRGeometry *GetOGRShape() override;
    /// One record a character, strung along the line. The offsets have no effect.
    void GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend *legend,
                      CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                      const double &ratio, const CExtent &extent, const int &offsetX, const int &offsetY,
                      int flag) override;
    void Copy(CShape *source) override;
    /// The closed mark stands in streams from version 203 on.
    void Serialize(CArchive &archive, int version) override;

    /// Appends; the first vertex sets the extent, later ones grow it.
    void AddPoint(const POINTD &point);
    /// Replaces. Index 0 collapses the extent to the point, any other only grows it; see `CalcExtent`.
    void SetPointAt(int index, POINTD point);
    /// Replaces the last vertex of a line being drawn; the extent only grows.
    void SetLastPoint(POINTD point);
    /// The extent stays as it is.
    void RemoveAt(int index);
    void RemoveLastPoint();
    /// Grows with points at the origin, or cuts; the extent stays as it is.
    void SetPointCount(int count);
    int GetPointCount() const { return PointArray.GetSize(); }
    POINTD &GetPointAt(int index) { return PointArray.GetAt(index); }
    POINTD GetFirstPoint() const { return PointArray.GetAt(0); }
    POINTD GetLastPoint() const { return PointArray.GetAt(PointArray.GetUpperBound()); }
    /// The vertex before the last.
    POINTD GetLastSecPoint() const { return PointArray.GetAt(PointArray.GetUpperBound() - 1); }
    CArray<POINTD, POINTD> &GetPointArray() { return PointArray; }
    /// Replaces the vertices by those of `points` and takes the extent anew.
    void CopyPointArray(const CArray<POINTD, POINTD> &points);

    bool IsClosed() const { return Closed; }
    void SetClosed(bool closed) { Closed = closed; }

    /// Length on the screen in whole pixels. Without an array every vertex in the pixel column of the last kept one is
    /// left out; with one only those on its very pixel, and `points` receives the kept pixels.
    int GetLength(const double &ratio, const CExtent &extent) const;
    int GetLength(const double &ratio, const CExtent &extent, CArray<CPoint, CPoint> &points) const;

    /// Pixels between the characters of a label: 80, or less by steps of 2 until `count` characters and a free slot fit
    /// into `length`; -1 when none does. `size` has no effect.
    int GetTextSpace(int length, int count, int size) const;
    /// The pixel at `distance` along the segment.
    CPoint GetPointOnLineFromBegin(int distance, CPoint from, CPoint to) const;

  protected:
    bool Closed = false;
    CArray<POINTD, POINTD> PointArray;
};
