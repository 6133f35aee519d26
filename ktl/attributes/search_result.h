#pragma once

#include "ktl/platform/string.h"

/// One hit of a keyword search.
struct STRUCT_SEARCH_RESULT {
    /// The layer's index and name, as the caller gave them.
    int nLayerIndex = -1;
    /// The row's shape.
    int nShapeID = -1;
    CString strLayerName;
    /// The text of the cell that matched.
    CString strValue;
};
