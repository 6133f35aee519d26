#include "ktl/shapes/shape_symbol.h"

#include <algorithm>
#include <memory>

#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/symbol_hooks.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/shape_factory.h"

namespace {

constexpr int kDrawingSide = 14;
constexpr int kFrame = 1;
constexpr int kPictureSide = kDrawingSide + 2 * kFrame;
/// The drawing's own extent over the square it is fitted into: leaves about a pixel around it for its outlines.
constexpr double kMargin = 1.3;
constexpr COLORREF kInk = RGB(0, 0, 0);

/// A square around all shapes, with room for outlines.
CExtent SquareAround(const CArray<CShape *, CShape *> &shapes) {
    CExtent bounds = shapes[0]->GetExtent();
    for (CShape *shape : shapes) bounds += shape->GetExtent();
    const double side = std::max(bounds.Width(), bounds.Height()) * kMargin;
    const double half = side > 0.0 ? side / 2.0 : 0.5;
    const CPointD center = bounds.CenterPoint();
    return CExtent(center.x - half, center.y - half, center.x + half, center.y + half);
}

void DrawShapes(Gdiplus::Graphics &graphics, const CArray<CShape *, CShape *> &shapes) {
    if (shapes.IsEmpty()) return;
    const CExtent extent = SquareAround(shapes);
    const double ratio = std::min(kDrawingSide / extent.Width(), kDrawingSide / extent.Height());
    CLegend_Polyline legend;
    legend.SetBackColor(kInk);
    legend.SetForeColor(kInk);
    for (CShape *shape : shapes) shape->Draw(&graphics, &legend, ratio, extent, 0, 0, 0);
}

}  // namespace

CShape_Symbol::~CShape_Symbol() {
    RemoveShapes();
}

CShape *CShape_Symbol::Clone() {
    auto copy = std::make_unique<CShape_Symbol>();
    copy->Copy(this);
    return copy.release();
}

void CShape_Symbol::Copy(CShape *source) {
    CShape_Object::Copy(source);
    const auto *symbol = dynamic_cast<const CShape_Symbol *>(source);
    if (!symbol || symbol == this) return;
    Point = symbol->Point;
    RemoveShapes();
    for (CShape *shape : symbol->ShapeArray) {
        std::unique_ptr<CShape> copy(shape->Clone());
        if (!copy) continue;
        ShapeArray.Add(copy.get());
        copy.release();
    }
}

void CShape_Symbol::Serialize(CArchive &archive, int /*version*/) {
    if (archive.IsStoring()) return;
    int nestedVersion = 0;
    int count = 0;
    archive >> nestedVersion >> count;
    RemoveShapes();
    for (int i = 0; i < count; ++i) {
        int kind = 0;
        archive >> kind;
        const ktl::ShapeFacts *facts = ktl::FindShapeFacts(kind);
        if (!facts || !facts->make || kind == SHAPE_NULL) return;
        int polygonFlag = 0;
        if (facts->storesPolygonFlag) archive >> polygonFlag;
        std::unique_ptr<CShape_Object> shape = facts->make(polygonFlag);
        shape->Serialize(archive, nestedVersion);
        ShapeArray.Add(shape.get());
        shape.release();
    }
}

HBITMAP__ *CShape_Symbol::GetHBitmap(int /*width*/, int /*height*/) {
    constexpr Gdiplus::ARGB kWhite = 0xFFFFFFFF;
    Gdiplus::Bitmap drawing(kDrawingSide, kDrawingSide, Gdiplus::PixelFormat24bppRGB);
    Gdiplus::Bitmap picture(kPictureSide, kPictureSide, Gdiplus::PixelFormat24bppRGB);
    {
        Gdiplus::Graphics graphics(&drawing);
        graphics.SetSmoothingMode(Gdiplus::SmoothingModeHighQuality);
        graphics.Clear(Gdiplus::Color(kWhite));
        DrawShapes(graphics, ShapeArray);
    }
    {
        Gdiplus::Graphics graphics(&picture);
        graphics.Clear(Gdiplus::Color(kWhite));
        graphics.DrawImage(&drawing, kFrame, kFrame);
    }
    HBITMAP handle = nullptr;
    return picture.GetHBITMAP(Gdiplus::Color(kWhite), &handle) == Gdiplus::Ok ? handle : nullptr;
}

void CShape_Symbol::RemoveShapes() {
    for (CShape *shape : ShapeArray) delete shape;
    ShapeArray.RemoveAll();
}

namespace ktl {

CShape_Symbol *CloneSymbol(CShape_Symbol &symbol) {
    return static_cast<CShape_Symbol *>(symbol.Clone());
}
void DeleteSymbol(CShape_Symbol *symbol) {
    delete symbol;
}
void SerializeSymbol(CShape_Symbol &symbol, CArchive &archive, int version) {
    symbol.Serialize(archive, version);
}

}  // namespace ktl
