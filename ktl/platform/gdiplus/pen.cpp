#include "ktl/platform/gdiplus/pen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "ktl/platform/gdiplus/startup.h"

namespace Gdiplus {

namespace {

struct BuiltInPattern {
    INT count;
    std::array<REAL, 6> lengths;
};

// By dash style: solid, dash, dot, dash dot, dash dot dot.
constexpr BuiltInPattern kPatterns[] = {
    {0, {}}, {2, {3, 1}}, {2, {1, 1}}, {4, {3, 1, 1, 1}}, {6, {3, 1, 1, 1, 1, 1}},
};

std::unique_ptr<Brush> Copied(const Brush *brush) {
    return std::unique_ptr<Brush>(brush->Clone());
}

}  // namespace

Pen::Pen(const Color &color, REAL width) : m_color(color), m_width(width) {
    if (!ktl::raster::DrawingStarted()) {
        m_usable = false;
        m_lastStatus = GdiplusNotInitialized;
    }
}

Pen::Pen(const Brush *brush, REAL width) : Pen(Color(), width) {
    if (m_usable && SetBrush(brush) != Ok) m_usable = false;
}

Pen::~Pen() = default;

Pen::Pen(const Pen &other)
    : m_color(other.m_color),
      m_brush(other.m_brush ? Copied(other.m_brush.get()) : nullptr),
      m_width(other.m_width),
      m_miterLimit(other.m_miterLimit),
      m_dashOffset(other.m_dashOffset),
      m_join(other.m_join),
      m_startCap(other.m_startCap),
      m_endCap(other.m_endCap),
      m_dashCap(other.m_dashCap),
      m_dashStyle(other.m_dashStyle),
      m_alignment(other.m_alignment),
      m_dashPattern(other.m_dashPattern),
      m_usable(other.m_usable),
      m_lastStatus(other.m_lastStatus) {}

Pen *Pen::Clone() const {
    return new Pen(*this);
}

Status Pen::SetStatus(Status status) const {
    if (status != Ok) m_lastStatus = status;
    return status;
}

Status Pen::GetLastStatus() const {
    return std::exchange(m_lastStatus, Ok);
}

Status Pen::SetWidth(REAL width) {
    m_width = width;
    return Ok;
}

Status Pen::SetColor(const Color &color) {
    m_color = color;
    m_brush.reset();
    return Ok;
}

Status Pen::GetColor(Color *color) const {
    if (color == nullptr || m_brush) return SetStatus(InvalidParameter);
    *color = m_color;
    return Ok;
}

Status Pen::SetBrush(const Brush *brush) {
    if (brush == nullptr || !brush->IsUsable()) return SetStatus(InvalidParameter);
    if (brush->GetType() == BrushTypeSolidColor) return SetColor(static_cast<const SolidBrush *>(brush)->ColorValue());
    m_brush = Copied(brush);
    return Ok;
}

Brush *Pen::GetBrush() const {
    if (m_brush) return m_brush->Clone();
    return new SolidBrush(m_color);
}

PenType Pen::GetPenType() const {
    return m_brush ? static_cast<PenType>(m_brush->GetType()) : PenTypeSolidColor;
}

Status Pen::SetAlignment(PenAlignment alignment) {
    if (alignment != PenAlignmentCenter && alignment != PenAlignmentInset) return SetStatus(InvalidParameter);
    m_alignment = alignment;
    return Ok;
}

Status Pen::SetLineJoin(LineJoin join) {
    if (join < LineJoinMiter || join > LineJoinMiterClipped) return SetStatus(InvalidParameter);
    m_join = join;
    return Ok;
}

Status Pen::SetMiterLimit(REAL limit) {
    m_miterLimit = limit >= 1 ? limit : 1;
    return Ok;
}

Status Pen::SetStartCap(LineCap cap) {
    m_startCap = cap;
    return Ok;
}

Status Pen::SetEndCap(LineCap cap) {
    m_endCap = cap;
    return Ok;
}

Status Pen::SetLineCap(LineCap start, LineCap end, DashCap dash) {
    m_startCap = start;
    m_endCap = end;
    return SetDashCap(dash);
}

// A value that is no dash cap stands for the flat one.
Status Pen::SetDashCap(DashCap cap) {
    m_dashCap = cap == DashCapRound || cap == DashCapTriangle ? cap : DashCapFlat;
    return Ok;
}

Status Pen::SetDashStyle(DashStyle style) {
    if (style < DashStyleSolid || style > DashStyleCustom) return Ok;
    if (style != DashStyleCustom) m_dashPattern.clear();
    m_dashStyle = style;
    return Ok;
}

Status Pen::SetDashPattern(const REAL *pattern, INT count) {
    if (pattern == nullptr || count <= 0) return SetStatus(InvalidParameter);
    if (!std::all_of(pattern, pattern + count, [](REAL length) { return length > 0 && std::isfinite(length); })) {
        return SetStatus(InvalidParameter);
    }
    m_dashPattern.assign(pattern, pattern + count);
    m_dashStyle = DashStyleCustom;
    return Ok;
}

INT Pen::GetDashPatternCount() const {
    return m_dashStyle == DashStyleCustom ? static_cast<INT>(m_dashPattern.size()) : kPatterns[m_dashStyle].count;
}

Status Pen::GetDashPattern(REAL *pattern, INT count) const {
    if (pattern == nullptr || count < 1 || count > GetDashPatternCount()) return SetStatus(InvalidParameter);
    const REAL *const lengths =
        m_dashStyle == DashStyleCustom ? m_dashPattern.data() : kPatterns[m_dashStyle].lengths.data();
    std::copy(lengths, lengths + count, pattern);
    return Ok;
}

Status Pen::SetDashOffset(REAL offset) {
    m_dashOffset = offset;
    return Ok;
}

}  // namespace Gdiplus
