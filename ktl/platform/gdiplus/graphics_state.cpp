#include "ktl/platform/gdiplus/graphics_state.h"

#include <algorithm>

#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/raster/hatch.h"

namespace Gdiplus {

Graphics::State::State(cairo_surface_t *target, const ktl::raster::Box &targetBounds, REAL xdpi, REAL ydpi)
    : surface(cairo_surface_reference(target)),
      view(ktl::raster::ViewOf(target)),
      bounds(targetBounds),
      clip(targetBounds),
      dpiX(xdpi),
      dpiY(ydpi) {}

ktl::raster::Affine Graphics::State::CrispMap() const {
    ktl::raster::Affine map = transform;
    if (HasHalfOffset()) {
        map.x0 -= 0.5;
        map.y0 -= 0.5;
    }
    return map;
}

ktl::raster::Affine Graphics::State::CairoMap() const {
    ktl::raster::Affine map = transform;
    if (!HasHalfOffset()) {
        map.x0 += 0.5;
        map.y0 += 0.5;
    }
    return map;
}

ktl::raster::Box Graphics::State::PixelsOf(double x, double y, double width, double height) const {
    const ktl::raster::Affine map = CrispMap();
    const ktl::raster::PointD a = map.Apply({x, y});
    const ktl::raster::PointD b = map.Apply({x + width, y + height});
    const auto edge = [](double v) {
        constexpr std::int64_t kLimit = 1 << 30;
        const std::int64_t pixel = (ktl::raster::ToFixed(v) + ktl::raster::kSubpixels - 1) >> 4;
        return static_cast<int>(std::clamp(pixel, -kLimit, kLimit));
    };
    return {edge(std::min(a.x, b.x)), edge(std::min(a.y, b.y)), edge(std::max(a.x, b.x)), edge(std::max(a.y, b.y))};
}

}  // namespace Gdiplus

namespace ktl::raster {

namespace {

void SetColorSource(cairo_t *cairo, std::uint32_t argb) {
    const auto part = [argb](int shift) { return static_cast<double>((argb >> shift) & 0xFFU) / 255.0; };
    cairo_set_source_rgba(cairo, part(16), part(8), part(0), part(24));
}

PatternPtr HatchPattern(const Gdiplus::HatchBrush &brush, int originX, int originY) {
    const HatchTile tile =
        MakeHatchTile(brush.GetHatchStyle(), brush.ForegroundValue().GetValue(), brush.BackgroundValue().GetValue());
    const SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 8, 8));
    const PixelView view = ViewOf(surface.get());
    for (int i = 0; i < 64; ++i) view.Row(i / 8)[i % 8] = Premultiply(tile[static_cast<std::size_t>(i)]);
    cairo_surface_mark_dirty(surface.get());
    PatternPtr pattern(cairo_pattern_create_for_surface(surface.get()));
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_REPEAT);
    cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_NEAREST);
    cairo_matrix_t matrix;
    cairo_matrix_init_translate(&matrix, -originX, -originY);
    cairo_pattern_set_matrix(pattern.get(), &matrix);
    return pattern;
}

}  // namespace

cairo_matrix_t MatrixOf(const Affine &map) {
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, map.xx, map.yx, map.xy, map.yy, map.x0, map.y0);
    return matrix;
}

CairoScope::CairoScope(Gdiplus::Graphics::State &state) : m_state(state) {
    if (!state.cairo) state.cairo.reset(cairo_create(state.surface.get()));
    m_cairo = state.cairo.get();
    if (state.view.pixels != nullptr) cairo_surface_mark_dirty(state.surface.get());
    cairo_save(m_cairo);
    cairo_identity_matrix(m_cairo);
    cairo_new_path(m_cairo);
    if (state.clip != state.bounds || state.view.pixels == nullptr) {
        cairo_rectangle(m_cairo, state.clip.left, state.clip.top, state.clip.Width(), state.clip.Height());
        cairo_clip(m_cairo);
    }
    cairo_set_operator(
        m_cairo, state.compositing == Gdiplus::CompositingModeSourceCopy ? CAIRO_OPERATOR_SOURCE : CAIRO_OPERATOR_OVER);
}

CairoScope::~CairoScope() {
    cairo_restore(m_cairo);
    cairo_surface_flush(m_state.surface.get());
}

void CairoScope::UseWorldUnits() {
    const cairo_matrix_t matrix = MatrixOf(m_state.CairoMap());
    cairo_set_matrix(m_cairo, &matrix);
}

void CairoScope::SetSource(Gdiplus::Color color) {
    SetColorSource(m_cairo, color.GetValue());
}

void CairoScope::SetSource(const Gdiplus::Brush &brush) {
    if (brush.GetType() != Gdiplus::BrushTypeHatchFill) {
        SetSource(static_cast<const Gdiplus::SolidBrush &>(brush).ColorValue());
        return;
    }
    // A pattern keeps the matrix of the time when it is set.
    cairo_matrix_t matrix;
    cairo_get_matrix(m_cairo, &matrix);
    cairo_identity_matrix(m_cairo);
    const PatternPtr pattern =
        HatchPattern(static_cast<const Gdiplus::HatchBrush &>(brush), m_state.originX, m_state.originY);
    cairo_set_source(m_cairo, pattern.get());
    cairo_set_matrix(m_cairo, &matrix);
}

}  // namespace ktl::raster
