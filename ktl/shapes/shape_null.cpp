#include "ktl/shapes/shape_null.h"

CShape_NULL::CShape_NULL() {
    ShapeType = SHAPE_NULL;
}
