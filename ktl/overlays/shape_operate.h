#pragma once

#include "ktl/platform/types.h"
#include "ktl/shapes/shape_object.h"

/// Root of the tool overlays: what a tool draws over the map while it is at work. An overlay lives in the map window
/// and never comes into a document; it is hidden until it is shown. It has a place in world units and a colour; a
/// derived class says how the mark there looks, or overrides `Draw` whole.
class KTL_API CShape_Operate : public CShape_Object {
  public:
    /// `kind` tells the window which tool is at work; overlays that are no tool have `SHAPE_NULL`.
    explicit CShape_Operate(ENUM_SHAPE_TYPE kind = SHAPE_NULL);

    using CShape_Object::Draw;

    /// The place, which is the whole extent too.
    void SetPoint(const POINTD &point);
    const POINTD &GetPoint() const { return Point; }
    void SetColor(COLORREF color) { Color = color; }
    COLORREF GetColor() const { return Color; }
    /// 0 hides, anything else shows.
    void Show(int shown) { Shown = shown != 0; }
    int IsShown() const { return Shown; }

    /// Draws the mark where the overlay is shown; the legend is not looked at. An overlay has no drag to make
    /// permanent: `commit` does nothing.
    void Draw(Gdiplus::Graphics *graphics, CLegend *legend, const double &ratio, const CExtent &extent,
              const int &offsetX, const int &offsetY, int commit) override;
    void Offset(double dx, double dy) override;

  protected:
    /// Draws around pixel (x, y), which may lie far outside. The base has no mark.
    virtual void DrawMark(Gdiplus::Graphics &graphics, const Gdiplus::Pen &pen, int x, int y);

    POINTD Point;
    COLORREF Color = 0;
    bool Shown = false;
};
