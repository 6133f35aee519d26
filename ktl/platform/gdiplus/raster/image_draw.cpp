#include "ktl/platform/gdiplus/raster/image_draw.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "ktl/platform/gdiplus/raster/blend.h"

namespace ktl::raster {

namespace {

using State = Gdiplus::Graphics::State;

/// Sums of two roundings stay on the side of the whole number that they stand for.
constexpr double kSlack = 1e-9;

/// What one column, or row, of the target takes from the source: pixels `low` and `low + 1`, the second by
/// `share`/256. Either may lie outside.
struct Sample {
    int low;
    int share;
};

/// The target's pixels first..first+samples.size()-1 along one axis.
struct Axis {
    int first = 0;
    std::vector<Sample> samples;
};

/// Along one axis: the part begins at `from` in the source and is `length` long; it goes to `to` in the target at scale
/// `scale`, which may be negative.
struct AxisPlan {
    double from;
    double length;
    double to;
    double scale;
    int clipLow;
    int clipHigh;
    bool half;
    bool clampsEdge;
    int sourceSize;

    /// Where pixel X samples the part: 0 is the centre of its first pixel, or its left side under the half offset.
    double At(int pixel) const {
        const double centre = pixel + (half ? 0.5 : 0.0);
        const double u = (centre - to) / scale;
        // Mirrored, the pixel at the part's side is the one before it.
        return scale < 0 && !half ? u + 1 / scale : u;
    }
    /// True when each pixel of the target takes exactly one of the source.
    bool IsPlainCopy() const { return scale == 1 && from == std::floor(from) && to == std::floor(to); }
    int FirstPixel() const { return Bound(std::min(to, to + scale * length)); }
    int LastPixel() const { return Bound(std::max(to, to + scale * length)); }
    int Bound(double edge) const {
        const double pixel = std::ceil(edge - (half ? 0.5 : 0.0) - kSlack);
        return static_cast<int>(std::clamp(pixel, static_cast<double>(clipLow), static_cast<double>(clipHigh)));
    }

    Axis Nearest() const {
        Axis axis;
        axis.first = FirstPixel();
        for (int pixel = axis.first; pixel < LastPixel(); ++pixel) {
            const double index = std::floor(At(pixel) + from + (half ? 0.0 : 0.5) + kSlack);
            axis.samples.push_back({Held(static_cast<int>(index)), 0});
        }
        return axis;
    }

    Axis Bilinear() const {
        Axis axis;
        axis.first = FirstPixel();
        for (int pixel = axis.first; pixel < LastPixel(); ++pixel) {
            const double u = At(pixel) - (half ? 0.5 : 0.0) + from;
            const double low = std::floor(u + kSlack);
            const int share = static_cast<int>((u - low) * 256 + 0.5);
            axis.samples.push_back({static_cast<int>(low), std::clamp(share, 0, 256)});
        }
        return axis;
    }

    /// The pixel to read for an index, or kOutside.
    int Held(int index) const {
        const int low = std::max(0, static_cast<int>(std::floor(from + kSlack)));
        const int high = std::min(sourceSize, static_cast<int>(std::ceil(from + length - kSlack))) - 1;
        if (clampsEdge) return high < low ? kOutside : std::clamp(index, low, high);
        return index < low || index > high ? kOutside : index;
    }

    static constexpr int kOutside = -1;
};

std::uint32_t PixelAt(const PixelView &image, int x, int y) {
    if (x < 0 || y < 0) return 0;
    const std::uint32_t pixel = image.Row(y)[x];
    return image.hasAlpha ? pixel : pixel | 0xFF000000U;
}

/// a (256 - share) / 256 + b share / 256, rounded, channel by channel.
std::uint32_t Mixed(std::uint32_t a, std::uint32_t b, int share) {
    if (share == 0 || a == b) return a;
    const auto s = static_cast<std::uint32_t>(share);
    const std::uint32_t rest = 256 - s;
    const std::uint32_t redBlue = ((a & 0x00FF00FFU) * rest + (b & 0x00FF00FFU) * s + 0x00800080U) >> 8;
    const std::uint32_t alphaGreen = ((a >> 8) & 0x00FF00FFU) * rest + ((b >> 8) & 0x00FF00FFU) * s + 0x00800080U;
    return (redBlue & 0x00FF00FFU) | (alphaGreen & 0xFF00FF00U);
}

class Blender {
  public:
    explicit Blender(const State &state)
        : m_copies(state.compositing == Gdiplus::CompositingModeSourceCopy), m_hasAlpha(state.view.hasAlpha) {}

    void Put(std::uint32_t &target, std::uint32_t source) const {
        const std::uint32_t alpha = source >> 24;
        if (m_copies) {
            target = m_hasAlpha ? source : Unpremultiply(source) | 0xFF000000U;
        } else if (alpha == 255) {
            target = source;
        } else if (source != 0) {
            target = OverPremultiplied(source, target);
        }
    }
    /// True when the image's pixels are what the target takes.
    bool CopiesRows(const PixelView &image) const { return image.hasAlpha ? m_copies && m_hasAlpha : !m_hasAlpha; }

  private:
    bool m_copies;
    bool m_hasAlpha;
};

bool IsRun(const Axis &axis) {
    for (std::size_t i = 0; i < axis.samples.size(); ++i) {
        if (axis.samples[i].low < 0 || axis.samples[i].low != axis.samples[0].low + static_cast<int>(i)) return false;
    }
    return true;
}

void PutNearest(const State &state, const PixelView &image, const Axis &columns, const Axis &rows) {
    const Blender blender(state);
    const bool copies = blender.CopiesRows(image) && IsRun(columns);
    for (std::size_t j = 0; j < rows.samples.size(); ++j) {
        const int sourceRow = rows.samples[j].low;
        if (sourceRow < 0) continue;
        const std::uint32_t *const from = image.Row(sourceRow);
        std::uint32_t *const to = state.view.Row(rows.first + static_cast<int>(j)) + columns.first;
        if (copies && !columns.samples.empty()) {
            std::memcpy(to, from + columns.samples[0].low, columns.samples.size() * sizeof *to);
            continue;
        }
        for (std::size_t i = 0; i < columns.samples.size(); ++i) {
            const int x = columns.samples[i].low;
            if (x >= 0) blender.Put(to[i], image.hasAlpha ? from[x] : from[x] | 0xFF000000U);
        }
    }
}

void PutBilinear(const State &state, const PixelView &image, const AxisPlan &planX, const AxisPlan &planY,
                 const Axis &columns, const Axis &rows) {
    const Blender blender(state);
    for (std::size_t j = 0; j < rows.samples.size(); ++j) {
        const Sample row = rows.samples[j];
        const int y0 = planY.Held(row.low);
        const int y1 = row.share == 0 ? y0 : planY.Held(row.low + 1);
        std::uint32_t *const to = state.view.Row(rows.first + static_cast<int>(j)) + columns.first;
        for (std::size_t i = 0; i < columns.samples.size(); ++i) {
            const Sample column = columns.samples[i];
            const int x0 = planX.Held(column.low);
            const int x1 = column.share == 0 ? x0 : planX.Held(column.low + 1);
            const std::uint32_t upper = Mixed(PixelAt(image, x0, y0), PixelAt(image, x1, y0), column.share);
            const std::uint32_t lower =
                row.share == 0 ? upper : Mixed(PixelAt(image, x0, y1), PixelAt(image, x1, y1), column.share);
            blender.Put(to[i], Mixed(upper, lower, row.share));
        }
    }
}

bool IsBilinear(const State &state) {
    return state.interpolation == Gdiplus::InterpolationModeBilinear;
}
bool IsNearest(const State &state) {
    return state.interpolation == Gdiplus::InterpolationModeNearestNeighbor;
}

/// A copy of the image when it is the target itself.
SurfacePtr CopyOf(cairo_surface_t *image) {
    SurfacePtr copy(cairo_image_surface_create(cairo_image_surface_get_format(image),
                                               cairo_image_surface_get_width(image),
                                               cairo_image_surface_get_height(image)));
    const PixelView from = ViewOf(image);
    const PixelView to = ViewOf(copy.get());
    if (to.pixels == nullptr) return copy;
    for (int y = 0; y < from.height; ++y) {
        std::memcpy(to.Row(y), from.Row(y), static_cast<std::size_t>(from.width) * sizeof(std::uint32_t));
    }
    cairo_surface_mark_dirty(copy.get());
    return copy;
}

void DrawOnPixels(State &state, const PixelView &image, const BoxD &source, const BoxD &dest, bool clampsEdge) {
    const Affine &t = state.transform;
    const Box &clip = state.clip;
    const bool half = state.HasHalfOffset();
    const AxisPlan planX{
        source.x, source.width, t.xx * dest.x + t.x0, t.xx * dest.width / source.width, clip.left, clip.right,
        half,     clampsEdge,   image.width};
    const AxisPlan planY{
        source.y, source.height, t.yy * dest.y + t.y0, t.yy * dest.height / source.height, clip.top, clip.bottom,
        half,     clampsEdge,    image.height};
    if (IsNearest(state) || (planX.IsPlainCopy() && planY.IsPlainCopy())) {
        PutNearest(state, image, planX.Nearest(), planY.Nearest());
    } else {
        PutBilinear(state, image, planX, planY, planX.Bilinear(), planY.Bilinear());
    }
}

void DrawByCairo(State &state, cairo_surface_t *image, const BoxD &source, const BoxD &dest) {
    CairoScope scope(state);
    cairo_t *const cairo = scope.Get();
    // The target's box is made of whole pixels under either offset.
    const cairo_matrix_t matrix = MatrixOf(state.transform);
    cairo_set_matrix(cairo, &matrix);
    const SurfacePtr part(
        cairo_surface_create_for_rectangle(image, source.x, source.y, std::abs(source.width), std::abs(source.height)));
    cairo_translate(cairo, dest.x, dest.y);
    cairo_rectangle(cairo, 0, 0, dest.width, dest.height);
    const double scaleX = dest.width / source.width;
    const double scaleY = dest.height / source.height;
    cairo_scale(cairo, scaleX, scaleY);
    const bool half = state.HasHalfOffset();
    cairo_set_source_surface(cairo, part.get(), half ? 0 : 0.5 / std::abs(scaleX) - 0.5,
                             half ? 0 : 0.5 / std::abs(scaleY) - 0.5);
    cairo_pattern_t *const pattern = cairo_get_source(cairo);
    cairo_pattern_set_extend(pattern, IsNearest(state) ? CAIRO_EXTEND_NONE : CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(pattern, IsNearest(state)    ? CAIRO_FILTER_NEAREST
                                      : IsBilinear(state) ? CAIRO_FILTER_BILINEAR
                                                          : CAIRO_FILTER_GOOD);
    cairo_set_antialias(cairo,
                        state.smoothing == Gdiplus::SmoothingModeNone ? CAIRO_ANTIALIAS_NONE : CAIRO_ANTIALIAS_GRAY);
    cairo_fill(cairo);
}

}  // namespace

void DrawImagePart(State &state, cairo_surface_t *image, const BoxD &source, const BoxD &dest, bool clampsEdge) {
    const auto isUsable = [](double v) { return std::isfinite(v) && std::abs(v) < 1 << 29; };
    for (const double v : {source.x, source.y, source.width, source.height, dest.x, dest.y, dest.width, dest.height}) {
        if (!isUsable(v)) return;
    }
    if (source.width <= 0 || source.height <= 0 || dest.width == 0 || dest.height == 0 || state.clip.IsEmpty()) return;
    SurfacePtr copy;
    if (image == state.surface.get()) {
        copy = CopyOf(image);
        image = copy.get();
    }
    const PixelView view = ViewOf(image);
    const bool onPixels = state.view.pixels != nullptr && view.pixels != nullptr && state.transform.IsLevel();
    if (onPixels && (IsNearest(state) || IsBilinear(state))) {
        DrawOnPixels(state, view, source, dest, clampsEdge);
    } else {
        DrawByCairo(state, image, source, dest);
    }
}

}  // namespace ktl::raster
