#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/string.h"

/// One label, or one character of a line's label, in client pixels.
struct KTL_API STRUCT_LABEL_INFO {
    /// The shape that the label belongs to.
    int ShapeID = 0;
    /// The anchor.
    CPoint Point;
    /// The box that the text occupies.
    Gdiplus::RectF Rect;
    CString Text;
};
