#include <cwchar>

#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/font.h"
#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/string_format.h"
#include "ktl/platform/gdiplus/text_layout.h"

namespace Gdiplus {

using ktl::raster::CairoScope;
using ktl::raster::TextBlock;
using ktl::raster::TextRequest;

namespace {

bool IsAntialiased(TextRenderingHint hint) {
    return hint != TextRenderingHintSingleBitPerPixel && hint != TextRenderingHintSingleBitPerPixelGridFit;
}

/// What the arguments of a text call ask for; InvalidParameter when they can't be used. A null format is the default.
Status MakeRequest(const Graphics::State *state, const WCHAR *text, INT length, const Font *font, const RectF &area,
                   const StringFormat *format, TextRequest &request) {
    if (!state || !text || length < -1 || !font || !font->Face()) return InvalidParameter;
    request.text = {text, length == -1 ? std::wcslen(text) : static_cast<std::size_t>(length)};
    request.face = font->Face().get();
    request.em = font->SizeInPixels(state->dpiY);
    request.style = font->GetStyle();
    request.isAntialiased = IsAntialiased(state->textHint);
    request.area = area;
    request.format = format ? format : StringFormat::GenericDefault();
    return Ok;
}

RectF AtPoint(const PointF &origin) {
    return {origin.X, origin.Y, 0, 0};
}

}  // namespace

Status Graphics::DrawString(const WCHAR *text, INT length, const Font *font, const RectF &layout,
                            const StringFormat *format, const Brush *brush) {
    TextRequest request;
    const Status status = MakeRequest(m_state.get(), text, length, font, layout, format, request);
    if (status != Ok) return SetStatus(status);
    if (!brush || !brush->IsUsable() || m_state->compositing == CompositingModeSourceCopy) {
        return SetStatus(InvalidParameter);
    }
    const TextBlock block = ktl::raster::PlaceText(request);
    if (block.lines.empty()) return Ok;
    // Text is placed by its baseline, to which the offset of pixel centres does not apply.
    CairoScope scope(*m_state);
    scope.SetSource(*brush);
    const cairo_matrix_t matrix = ktl::raster::MatrixOf(m_state->transform);
    cairo_transform(scope.Get(), &matrix);
    if (block.needsClip) {
        const bool hasWidth = layout.Width > 0;
        const bool hasHeight = layout.Height > 0;
        constexpr double kFar = 1.0e6;
        cairo_rectangle(scope.Get(), hasWidth ? layout.X : -kFar, hasHeight ? layout.Y : -kFar,
                        hasWidth ? layout.Width : 2 * kFar, hasHeight ? layout.Height : 2 * kFar);
        cairo_clip(scope.Get());
    }
    ktl::raster::DrawTextBlock(scope.Get(), block);
    return Ok;
}

Status Graphics::DrawString(const WCHAR *text, INT length, const Font *font, const PointF &origin, const Brush *brush) {
    return DrawString(text, length, font, AtPoint(origin), nullptr, brush);
}

Status Graphics::DrawString(const WCHAR *text, INT length, const Font *font, const PointF &origin,
                            const StringFormat *format, const Brush *brush) {
    return DrawString(text, length, font, AtPoint(origin), format, brush);
}

Status Graphics::MeasureString(const WCHAR *text, INT length, const Font *font, const RectF &layout,
                               const StringFormat *format, RectF *box, INT *codepointsFitted, INT *linesFilled) const {
    TextRequest request;
    const Status status = MakeRequest(m_state.get(), text, length, font, layout, format, request);
    if (status != Ok || !box) return SetStatus(InvalidParameter);
    const TextBlock block = ktl::raster::PlaceText(request);
    *box = block.box;
    if (codepointsFitted) *codepointsFitted = block.codepoints;
    if (linesFilled) *linesFilled = static_cast<INT>(block.lines.size());
    return Ok;
}

Status Graphics::MeasureString(const WCHAR *text, INT length, const Font *font, const SizeF &layout,
                               const StringFormat *format, SizeF *size, INT *codepointsFitted, INT *linesFilled) const {
    RectF box;
    if (!size) return SetStatus(InvalidParameter);
    const RectF area(0, 0, layout.Width, layout.Height);
    const Status status = MeasureString(text, length, font, area, format, &box, codepointsFitted, linesFilled);
    if (status == Ok) *size = SizeF(box.Width, box.Height);
    return status;
}

Status Graphics::MeasureString(const WCHAR *text, INT length, const Font *font, const PointF &origin,
                               const StringFormat *format, RectF *box) const {
    return MeasureString(text, length, font, AtPoint(origin), format, box);
}

Status Graphics::MeasureString(const WCHAR *text, INT length, const Font *font, const RectF &layout, RectF *box) const {
    return MeasureString(text, length, font, layout, nullptr, box);
}

Status Graphics::MeasureString(const WCHAR *text, INT length, const Font *font, const PointF &origin,
                               RectF *box) const {
    return MeasureString(text, length, font, AtPoint(origin), nullptr, box);
}

}  // namespace Gdiplus
