#pragma once

#include <memory>

#include "ktl/platform/export.h"
#include "ktl/shapes/shape_object.h"

namespace ktl {

/// What a reader and a writer of shapes must know of a kind.
struct ShapeFacts {
    ENUM_SHAPE_TYPE type;
    /// The outline-or-area flag stands in the stream between the kind and the shape, and goes to the maker.
    bool storesPolygonFlag;
    /// Null for a kind that no class stands for.
    std::unique_ptr<CShape_Object> (*make)(int polygonFlag);
};

/// The row of a kind that a document may hold; null for any other number.
KTL_API const ShapeFacts *FindShapeFacts(int kind);
/// True for the kinds whose outline-or-area flag stands in the stream.
KTL_API bool StoresPolygonFlag(int kind);
/// A new shape of the kind; a `CShape_NULL` for a number that no class stands for.
KTL_API std::unique_ptr<CShape_Object> MakeShape(int kind, int polygonFlag = 0);

}  // namespace ktl
