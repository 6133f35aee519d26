#pragma once

#include "ktl/controls/xstring.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/label_info.h"
#include "ktl/shapes/pixel_map.h"

class CLegend_Text;

namespace ktl {

/// Measures label texts in the size of a text legend.
class LabelMeasure {
  public:
    /// Borrows both; a null legend leaves the text's own size.
    LabelMeasure(CLegend_Text *legend, Gdiplus::Graphics *graphics);

    /// The box of the text as it is measured at (0, 0).
    Gdiplus::RectF BoxOf(const CString &text);

  private:
    Gdiplus::Graphics *m_graphics;
    CXString m_text;
};

/// A record whose box has its middle on the anchor; only the size of `box` counts.
STRUCT_LABEL_INFO CenteredLabel(int shapeID, const CPoint &anchor, Gdiplus::RectF box, const CString &text);

}  // namespace ktl
