#include "ktl/platform/gdiplus/raster/span_paint.h"

#include <algorithm>

#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/picture.h"
#include "ktl/platform/gdiplus/raster/hatch.h"

namespace ktl::raster {

SpanPaint::SpanPaint(const PixelView &view, Gdiplus::CompositingMode mode, Gdiplus::Color color) : m_view(view) {
    SetColor(mode, color.GetValue());
}

SpanPaint::SpanPaint(const PixelView &view, Gdiplus::CompositingMode mode, const Gdiplus::Brush &brush, int originX,
                     int originY)
    : m_view(view), m_originX(originX), m_originY(originY) {
    if (brush.GetType() == Gdiplus::BrushTypeHatchFill) {
        SetTile(mode, static_cast<const Gdiplus::HatchBrush &>(brush));
    } else {
        SetColor(mode, static_cast<const Gdiplus::SolidBrush &>(brush).ColorValue().GetValue());
    }
}

std::uint32_t SpanPaint::StoredValue(std::uint32_t argb) const {
    return PixelOf(argb, m_view.hasAlpha);
}

void SpanPaint::SetColor(Gdiplus::CompositingMode mode, std::uint32_t argb) {
    const std::uint32_t alpha = argb >> 24;
    if (mode == Gdiplus::CompositingModeSourceCopy || alpha == 255) {
        m_kind = Kind::Store;
        m_value = StoredValue(argb);
    } else if (alpha > 0) {
        m_kind = Kind::Blend;
        m_source = BlendSource(argb);
    }
}

void SpanPaint::SetTile(Gdiplus::CompositingMode mode, const Gdiplus::HatchBrush &brush) {
    m_tile =
        MakeHatchTile(brush.GetHatchStyle(), brush.ForegroundValue().GetValue(), brush.BackgroundValue().GetValue());
    const bool opaque = std::all_of(m_tile.begin(), m_tile.end(), [](std::uint32_t c) { return c >> 24 == 255; });
    m_kind = opaque || mode == Gdiplus::CompositingModeSourceCopy ? Kind::StoreTile : Kind::BlendTile;
    if (m_kind == Kind::StoreTile) {
        for (std::uint32_t &value : m_tile) value = StoredValue(value);
    }
}

void SpanPaint::PaintTile(int y, int x0, int x1) const {
    if (m_kind == Kind::Nothing) return;
    const std::uint32_t *const row = &m_tile[(static_cast<unsigned>(y) - static_cast<unsigned>(m_originY)) % 8 * 8];
    std::uint32_t *const pixels = m_view.Row(y);
    unsigned phase = static_cast<unsigned>(x0) - static_cast<unsigned>(m_originX);
    for (int x = x0; x < x1; ++x, ++phase) {
        const std::uint32_t value = row[phase % 8];
        pixels[x] = m_kind == Kind::StoreTile ? value : Over(BlendSource(value), pixels[x]);
    }
}

}  // namespace ktl::raster
