#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/point.h"
#include "ktl/platform/array.h"
#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"
#include "ktl/shapes/forward.h"
#include "ktl/shapes/shape_type.h"

class CArchive;
class CFields;
class CLegend;
class CLegend_Text;
class CRecord;
class CWnd;
class CXGoogleMapOffset;
class OGRGeometry;

/// Anything that can stand on the map: the stored features and the transient overlays of the map window. A shape keeps
/// world coordinates, and takes its appearance from a legend when it is drawn. What a class does not implement answers
/// 0 or null here.
class KTL_API CShape : public CObject {
  public:
    CShape() = default;
    ~CShape() override;

    static const CRuntimeClass *GetThisClass();
    const CRuntimeClass *GetRuntimeClass() const override;
    using CObject::Serialize;

    /// 1 when the shape touches `range`. The legend serves shapes whose size on the screen depends on it.
    virtual int Intersect(CExtent &range, CLegend *legend);
    /// Position in the layer's store; -1 for a shape that has none.
    virtual int GetIndex();
    /// Marks as selected for any argument but 0.
    virtual void Select(int selected);
    /// Takes the extent anew from the geometry; needed after vertices were edited in place.
    virtual void CalcExtent();
    virtual void SetShapeID(int id);

    /// The rows of the property grid and their values in the same order. The caller owns the result; null for a kind
    /// that has none. Coordinates are shown as degrees.
    virtual CFields *GetGeneralFields();
    virtual CRecord *GetGeneralValue();
    /// Sets an editable row from its text. A value out of range is dropped in silence.
    virtual void UpdateGeneralValue(CString field, CString value);

    /// Draws the squares that mark a selected shape.
    virtual void DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent,
                             const int &offsetX, const int &offsetY);
    /// Draws on a surface whose origin is the view's top left corner. `ratio` is pixels a world unit, `extent` the
    /// visible world rectangle. The offsets are pixels added to every point: a drag under way. With `commit` other than
    /// 0 the drag is made permanent afterwards. The shape borrows all it is given.
    virtual void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                      const int &offsetX, const int &offsetY, int commit);
    virtual void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                      CXGoogleMapOffset *offset);
    /// One pass of `Draw`: 1 is the casing, anything else the shape itself.
    virtual void DrawEx(int pass, Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio,
                        const CExtent &extent, const int &offsetX, const int &offsetY, int commit);
    virtual void Flash(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
                       CWnd *window, const int &offsetX, const int &offsetY, int commit);

    /// 1 when `range` holds the whole extent.
    virtual int Contain(CExtent &range, CLegend *legend);
    /// The first vertex nearer than `tolerance` world units on both axes goes to `snapped` and the result is 1. Without
    /// one the result is 0 and `snapped` stays.
    virtual int GetSnapPoint(POINTD point, POINTD &snapped, double tolerance);
    /// Finds the vertex that stands on `point`: `index` becomes its number, `points` receives it and its neighbours,
    /// and the result is 1. Without one the result is 0 and the outputs stay.
    virtual int GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points);
    /// A copy that the caller owns; null for a kind that cannot be copied.
    virtual CShape *Clone();
    /// Moves geometry and extent, in world units.
    virtual void Offset(double dx, double dy);
    virtual int IsPolygon();
    virtual int IsPolyline();
    /// The geometry in degrees. The caller owns it; null for a kind that has none.
    virtual OGRGeometry *GetOGRShape();
    /// Appends the placed labels of `text` to `labels`. By default there is one, centred on the extent's middle.
    /// `legend` and `flag` are only passed on to parts.
    virtual void GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend *legend,
                              CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                              const double &ratio, const CExtent &extent, const int &offsetX, const int &offsetY,
                              int flag);
    /// Takes over the values of `source`; a class adds its own fields when the source has them.
    virtual void Copy(CShape *source);
    /// Writes or reads the shape's own fields. Its kind stands before them and is its owner's business. A read past the
    /// end throws `CArchiveException`.
    virtual void Serialize(CArchive &archive, int version);

    /// The key into the layer's attribute table; -1 while there is none.
    int GetShapeID() const { return ShapeID; }
    ENUM_SHAPE_TYPE GetShapeType() const { return static_cast<ENUM_SHAPE_TYPE>(ShapeType); }

    /// The bounding rectangle in world units, its four sides and its middle.
    const CExtent &GetExtent() const { return Extent; }
    const double &GetMinX() const { return Extent.left; }
    const double &GetMinY() const { return Extent.bottom; }
    const double &GetMaxX() const { return Extent.right; }
    const double &GetMaxY() const { return Extent.top; }
    POINTD GetCenterPoint() const;

    /// 1 when two rectangles meet, edges included.
    static int Intersect(const CExtent &a, const CExtent &b);
    /// 1 when the segments 1-2 and 3-4 meet, ends and overlaps on one line included.
    static int Intersect(const POINTD &p1, const POINTD &p2, const POINTD &p3, const POINTD &p4);
    static int Intersect(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4);
    /// The distance of two points, to single precision. This loss of digits is meant.
    static double GetDisOfP2P(const double &x1, const double &y1, const double &x2, const double &y2);
    static double GetDisOfP2P(const POINTD &p1, const POINTD &p2);
    /// The direction from point 1 to point 2 in degrees from 0 to 360, counter-clockwise from +x. Not-a-number for two
    /// equal points.
    static double GetAngle(const double &x1, const double &y1, const double &x2, const double &y2);
    static double GetAngle(const POINTD &p1, const POINTD &p2);

  protected:
    /// The drag of `Draw` made permanent: for a `commit` other than 0, moves by the offsets in world units.
    void CommitOffset(const double &ratio, int offsetX, int offsetY, int commit);

    int ShapeID = -1;
    CExtent Extent;
    int ShapeType = SHAPE_NULL;
};
