#include "ktl/platform/gdiplus/string_format.h"

#include "ktl/platform/gdiplus/startup.h"

namespace Gdiplus {

namespace {

bool IsAlignment(StringAlignment alignment) {
    return alignment >= StringAlignmentNear && alignment <= StringAlignmentFar;
}

constexpr INT kTypographicFlags = StringFormatFlagsLineLimit | StringFormatFlagsNoClip | StringFormatFlagsNoFitBlackBox;

}  // namespace

StringFormat::StringFormat(INT flags, WORD) : m_flags(flags) {
    if (!ktl::raster::DrawingStarted()) m_loadStatus = GdiplusNotInitialized;
}

StringFormat::StringFormat(const StringFormat *format) {
    if (format) *this = *format;
    if (!format) m_loadStatus = InvalidParameter;
    if (!ktl::raster::DrawingStarted()) m_loadStatus = GdiplusNotInitialized;
}

const StringFormat *StringFormat::GenericDefault() {
    static const StringFormat format = [] {
        StringFormat made;
        made.m_loadStatus = Ok;
        return made;
    }();
    return &format;
}

const StringFormat *StringFormat::GenericTypographic() {
    static const StringFormat format = [] {
        StringFormat made(kTypographicFlags);
        made.m_trimming = StringTrimmingNone;
        made.m_typographic = true;
        made.m_loadStatus = Ok;
        return made;
    }();
    return &format;
}

StringFormat *StringFormat::Clone() const {
    return ktl::raster::DrawingStarted() ? new StringFormat(*this) : nullptr;
}

Status StringFormat::SetFormatFlags(INT flags) {
    m_flags = flags;
    return Ok;
}

INT StringFormat::GetFormatFlags() const {
    return m_flags;
}

Status StringFormat::SetAlignment(StringAlignment alignment) {
    if (!IsAlignment(alignment)) return SetResult(InvalidParameter);
    m_alignment = alignment;
    return Ok;
}

StringAlignment StringFormat::GetAlignment() const {
    return m_alignment;
}

Status StringFormat::SetLineAlignment(StringAlignment alignment) {
    if (!IsAlignment(alignment)) return SetResult(InvalidParameter);
    m_lineAlignment = alignment;
    return Ok;
}

StringAlignment StringFormat::GetLineAlignment() const {
    return m_lineAlignment;
}

Status StringFormat::SetTrimming(StringTrimming trimming) {
    if (trimming < StringTrimmingNone || trimming > StringTrimmingEllipsisPath) return SetResult(InvalidParameter);
    m_trimming = trimming;
    return Ok;
}

StringTrimming StringFormat::GetTrimming() const {
    return m_trimming;
}

Status StringFormat::GetLastStatus() const {
    if (m_loadStatus != Ok) return m_loadStatus;
    const Status status = m_lastStatus;
    m_lastStatus = Ok;
    return status;
}

Status StringFormat::SetResult(Status status) const {
    return m_lastStatus = status;
}

}  // namespace Gdiplus
