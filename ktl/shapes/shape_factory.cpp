#include "ktl/shapes/shape_factory.h"

#include "ktl/shapes/shape_null.h"
#include "ktl/shapes/shape_point.h"
#include "ktl/shapes/shape_polygon.h"
#include "ktl/shapes/shape_polyline.h"

namespace ktl {

namespace {

template <class Shape>
std::unique_ptr<CShape_Object> Make(int /*polygonFlag*/) {
    return std::make_unique<Shape>();
}

constexpr ShapeFacts kShapeFacts[] = {
    {SHAPE_NULL, false, Make<CShape_NULL>},
    {SHAPE_POINT, false, Make<CShape_Point>},
    {SHAPE_POLYLINE, false, Make<CShape_Polyline>},
    {SHAPE_POLYGON, false, Make<CShape_Polygon>},
    {SHAPE_RECT, true, nullptr},
    {SHAPE_FAN, true, nullptr},
    {SHAPE_CIRCLE, true, nullptr},
    {SHAPE_ELLIPSE, true, nullptr},
    {SHAPE_TEXT, false, nullptr},
    {SHAPE_PARTS_POINT, false, nullptr},
    {SHAPE_PARTS_POLYLINE, false, nullptr},
    {SHAPE_PARTS_POLYGON, false, nullptr},
};

}  // namespace

const ShapeFacts *FindShapeFacts(int kind) {
    for (const ShapeFacts &facts : kShapeFacts) {
        if (facts.type == kind) return &facts;
    }
    return nullptr;
}

bool StoresPolygonFlag(int kind) {
    const ShapeFacts *facts = FindShapeFacts(kind);
    return facts && facts->storesPolygonFlag;
}

std::unique_ptr<CShape_Object> MakeShape(int kind, int polygonFlag) {
    const ShapeFacts *facts = FindShapeFacts(kind);
    return facts && facts->make ? facts->make(polygonFlag) : std::make_unique<CShape_NULL>();
}

}  // namespace ktl
