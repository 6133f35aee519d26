#pragma once

#include <array>
#include <cstdint>

#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/gdiplus/raster/blend.h"
#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/surface.h"

namespace ktl::raster {

/// A brush or the colour of a pen, made ready to paint runs of pixels of one target.
class SpanPaint {
  public:
    SpanPaint(const PixelView &view, Gdiplus::CompositingMode mode, Gdiplus::Color color);
    /// The origin is where hatch patterns begin.
    SpanPaint(const PixelView &view, Gdiplus::CompositingMode mode, const Gdiplus::Brush &brush, int originX,
              int originY);

    /// True when each pixel simply takes one value, so that painting it twice changes nothing.
    bool StoresOneValue() const { return m_kind == Kind::Store; }
    /// True when painting a pixel twice is the same as once.
    bool MayRepeat() const { return m_kind != Kind::Blend && m_kind != Kind::BlendTile; }
    /// True when no pixel changes.
    bool IsInvisible() const { return m_kind == Kind::Nothing; }
    std::uint32_t Value() const { return m_value; }
    const PixelView &View() const { return m_view; }

    /// Paints pixels x0..x1-1 of row y, which must lie on the target.
    void Paint(int y, int x0, int x1) const {
        std::uint32_t *const at = m_view.Row(y) + x0;
        const auto count = static_cast<std::size_t>(x1 - x0);
        if (m_kind == Kind::Store) {
            FillRun(at, count, m_value);
        } else if (m_kind == Kind::Blend) {
            BlendRun(at, count, m_source);
        } else {
            PaintTile(y, x0, x1);
        }
    }

  private:
    enum class Kind { Nothing, Store, Blend, StoreTile, BlendTile };

    void SetColor(Gdiplus::CompositingMode mode, std::uint32_t argb);
    void SetTile(Gdiplus::CompositingMode mode, const Gdiplus::HatchBrush &brush);
    std::uint32_t StoredValue(std::uint32_t argb) const;
    void PaintTile(int y, int x0, int x1) const;

    PixelView m_view;
    Kind m_kind = Kind::Nothing;
    std::uint32_t m_value = 0;
    BlendSource m_source;
    int m_originX = 0;
    int m_originY = 0;
    /// Stored values, or straight colours to be blended.
    std::array<std::uint32_t, 64> m_tile;
};

}  // namespace ktl::raster
