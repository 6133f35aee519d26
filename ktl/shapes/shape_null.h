#pragma once

#include "ktl/shapes/shape_object.h"

/// Stands in a document for a shape of an unknown kind, so that positions and identifiers survive.
class KTL_API CShape_NULL : public CShape_Object {
  public:
    CShape_NULL();
};
