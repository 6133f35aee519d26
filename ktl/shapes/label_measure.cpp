#include "ktl/shapes/label_measure.h"

#include "ktl/legends/legend_text.h"

namespace ktl {

LabelMeasure::LabelMeasure(CLegend_Text *legend, Gdiplus::Graphics *graphics) : m_graphics(graphics) {
    if (legend) m_text.SetFontSize(legend->GetSize());
}

Gdiplus::RectF LabelMeasure::BoxOf(const CString &text) {
    Gdiplus::RectF box;
    m_text.SetText(text);
    m_text.GetRectF(m_graphics, box);
    return box;
}

STRUCT_LABEL_INFO CenteredLabel(int shapeID, const CPoint &anchor, Gdiplus::RectF box, const CString &text) {
    box.X = static_cast<float>(anchor.x);
    box.Y = static_cast<float>(anchor.y);
    box.Offset(-box.Width / 2.0F, -box.Height / 2.0F);
    return {shapeID, anchor, box, text};
}

}  // namespace ktl
