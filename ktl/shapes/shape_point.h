#pragma once

#include "ktl/shapes/shape_object.h"

/// A point feature. Its extent is the rectangle without area on the point.
class KTL_API CShape_Point : public CShape_Object {
  public:
    CShape_Point();

    static const CRuntimeClass *GetThisClass();
    const CRuntimeClass *GetRuntimeClass() const override;
    using CShape_Object::Draw;
    using CShape_Object::Serialize;

    int Intersect(CExtent &range, CLegend *legend) override;
    CFields *GetGeneralFields() override;
    CRecord *GetGeneralValue() override;
    /// "X" takes a longitude within 180 degrees, "Y" a latitude within 85.
    void UpdateGeneralValue(CString field, CString value) override;
    void DrawTracker(Gdiplus::Graphics *graphics, const double &ratio, const CExtent &extent, const int &offsetX,
                     const int &offsetY) override;
    void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
              const int &offsetX, const int &offsetY, int commit) override;
    int Contain(CExtent &range, CLegend *legend) override;
    int GetSnapPoint(POINTD point, POINTD &snapped, double tolerance) override;
    int GetMovePoint(POINTD point, int &index, CArray<POINTD, POINTD> &points) override;
    CShape *Clone() override;
    void Offset(double dx, double dy) override;
    OGRGeometry *GetOGRShape() override;
    void GetLabelInfo(CString text, CLegend_Text *textLegend, CLegend *legend,
                      CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO> &labels, Gdiplus::Graphics *graphics,
                      const double &ratio, const CExtent &extent, const int &offsetX, const int &offsetY,
                      int flag) override;
    void Copy(CShape *source) override;
    void Serialize(CArchive &archive, int version) override;

    /// Each setter keeps the extent on the point.
    void SetPoint(const POINTD &point);
    void SetPoint(double x, double y);
    void SetPointX(double x);
    void SetPointY(double y);
    const POINTD &GetPoint() const { return Point; }

  protected:
    POINTD Point;
};
