#include "ktl/platform/gdiplus/image_attributes.h"

#include "ktl/platform/gdiplus/startup.h"

namespace Gdiplus {

namespace {

bool IsCategory(ColorAdjustType type) {
    return type >= ColorAdjustTypeDefault && type < ColorAdjustTypeCount;
}

}  // namespace

ImageAttributes::ImageAttributes() {
    m_usable = ktl::raster::DrawingStarted();
}

ImageAttributes *ImageAttributes::Clone() const {
    return ktl::raster::DrawingStarted() ? new ImageAttributes(*this) : nullptr;
}

Status ImageAttributes::SetNoOp(ColorAdjustType type) {
    if (!m_usable || !IsCategory(type)) return SetResult(InvalidParameter);
    m_noOp |= 1U << type;
    return Ok;
}

Status ImageAttributes::ClearNoOp(ColorAdjustType type) {
    if (!m_usable || !IsCategory(type)) return SetResult(InvalidParameter);
    m_noOp &= ~(1U << type);
    return Ok;
}

Status ImageAttributes::SetWrapMode(WrapMode wrap, const Color &, BOOL) {
    if (!m_usable || wrap < WrapModeTile || wrap > WrapModeClamp) return SetResult(InvalidParameter);
    m_wrapMode = wrap;
    return Ok;
}

Status ImageAttributes::GetLastStatus() const {
    if (!m_usable) return GdiplusNotInitialized;
    const Status status = m_lastStatus;
    m_lastStatus = Ok;
    return status;
}

Status ImageAttributes::SetResult(Status status) const {
    return m_lastStatus = status;
}

}  // namespace Gdiplus
