#include "ktl/platform/gdiplus/brush.h"

#include <utility>

#include "ktl/platform/gdiplus/startup.h"

namespace Gdiplus {

Brush::Brush(BrushType type) : m_type(type) {
    if (!ktl::raster::DrawingStarted()) Refuse(GdiplusNotInitialized);
}

Status Brush::GetLastStatus() const {
    return std::exchange(m_lastStatus, Ok);
}

Status Brush::SetStatus(Status status) const {
    if (status != Ok) m_lastStatus = status;
    return status;
}

void Brush::Refuse(Status status) {
    m_usable = false;
    m_lastStatus = status;
}

SolidBrush::SolidBrush(const Color &color) : Brush(BrushTypeSolidColor), m_color(color) {}

SolidBrush *SolidBrush::Clone() const {
    return new SolidBrush(*this);
}

Status SolidBrush::GetColor(Color *color) const {
    if (color == nullptr || !IsUsable()) return SetStatus(InvalidParameter);
    *color = m_color;
    return Ok;
}

Status SolidBrush::SetColor(const Color &color) {
    if (!IsUsable()) return SetStatus(InvalidParameter);
    m_color = color;
    return Ok;
}

HatchBrush::HatchBrush(HatchStyle style, const Color &foreColor, const Color &backColor)
    : Brush(BrushTypeHatchFill), m_style(style), m_fore(foreColor), m_back(backColor) {
    if (IsUsable() && (style < HatchStyleMin || style > HatchStyleMax)) Refuse(InvalidParameter);
}

HatchBrush *HatchBrush::Clone() const {
    return new HatchBrush(*this);
}

Status HatchBrush::GetForegroundColor(Color *color) const {
    if (color == nullptr || !IsUsable()) return SetStatus(InvalidParameter);
    *color = m_fore;
    return Ok;
}

Status HatchBrush::GetBackgroundColor(Color *color) const {
    if (color == nullptr || !IsUsable()) return SetStatus(InvalidParameter);
    *color = m_back;
    return Ok;
}

}  // namespace Gdiplus
