#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "ktl/platform/gdiplus/raster/blend.h"
#include "ktl/platform/gdiplus/raster/coverage_mask.h"
#include "ktl/platform/gdiplus/raster/dash.h"
#include "ktl/platform/gdiplus/raster/edge_walk.h"
#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/surface.h"

/// \file
/// One-pixel lines by steps. A segment has one pixel for each whole step of its longer axis (x when both are equal),
/// from its start, which counts, to its end, which does not; the other coordinate is that of the exact line, rounded to
/// the nearest pixel, halves towards +. So a chain of segments has each corner once, and its last point is put on its
/// own. What lies outside of the clip is skipped by arithmetic, and the pixels inside stay exactly the same.

namespace ktl::raster {

/// Puts pixels of one value.
class PixelPut {
  public:
    PixelPut(const PixelView &view, std::uint32_t value)
        : m_pixels(view.pixels), m_stride(view.strideInPixels), m_value(value) {}
    std::ptrdiff_t Stride() const { return m_stride; }
    std::ptrdiff_t IndexOf(int x, int y) const { return y * m_stride + x; }
    void At(std::ptrdiff_t index) const { m_pixels[index] = m_value; }
    void Run(std::ptrdiff_t index, int count) const {
        FillRun(m_pixels + index, static_cast<std::size_t>(count), m_value);
    }

  private:
    std::uint32_t *m_pixels;
    std::ptrdiff_t m_stride;
    std::uint32_t m_value;
};

/// Marks pixels in a mask.
class MaskPut {
  public:
    explicit MaskPut(CoverageMask &mask) : m_mask(mask) {}
    std::ptrdiff_t Stride() const { return m_mask.Stride(); }
    std::ptrdiff_t IndexOf(int x, int y) const { return m_mask.IndexOf(x, y); }
    void At(std::ptrdiff_t index) const { m_mask.SetAt(index); }
    void Run(std::ptrdiff_t index, int count) const {
        for (int i = 0; i < count; ++i) m_mask.SetAt(index + i);
    }

  private:
    CoverageMask &m_mask;
};

/// A segment seen along its longer axis: coordinates a along it and b across, in units of 1/kUnit pixel. `Wide` is the
/// integer that products are taken in: 64 bits do for coordinates below `kNearUnits`, else 128.
template <int kUnit, class Wide>
struct MajorLine {
    std::int64_t a0, b0, a1, b1;
    bool alongX;

    MajorLine(FixedPoint from, FixedPoint to) {
        const std::int64_t dx = to.x > from.x ? to.x - from.x : from.x - to.x;
        const std::int64_t dy = to.y > from.y ? to.y - from.y : from.y - to.y;
        alongX = dx >= dy;
        a0 = alongX ? from.x : from.y;
        b0 = alongX ? from.y : from.x;
        a1 = alongX ? to.x : to.y;
        b1 = alongX ? to.y : to.x;
    }

    /// The steps are the whole values first, first + direction ... of a; `count` of them.
    struct Steps {
        std::int64_t first;
        std::int64_t count;
        int direction;
    };
    Steps WholeSteps() const {
        if (a1 >= a0) {
            const std::int64_t first = CeilUnit<kUnit>(a0);
            return {first, CeilUnit<kUnit>(a1) - first, 1};
        }
        const std::int64_t first = -CeilUnit<kUnit>(-a0);
        return {first, first + CeilUnit<kUnit>(-a1), -1};
    }

    /// Twice the exact b at the whole step a plus half a pixel, times `Scale()`: its floor over 2 kUnit Scale is the
    /// pixel.
    Wide Numerator(std::int64_t a) const {
        const Wide scale = Scale();
        const Wide slope = a1 >= a0 ? b1 - b0 : b0 - b1;
        return 2 * (b0 * scale + (Wide{a} * kUnit - a0) * slope) + kUnit * scale;
    }
    std::int64_t Scale() const { return a1 >= a0 ? a1 - a0 : a0 - a1; }

    /// Cuts the steps to those whose a lies in aLow..aHigh-1 and b in bLow..bHigh-1.
    void Clip(Steps &steps, int aLow, int aHigh, int bLow, int bHigh) const {
        // As an interval [low, high) of a.
        std::int64_t low = steps.direction > 0 ? steps.first : steps.first - steps.count + 1;
        std::int64_t high = low + steps.count;
        low = std::max<std::int64_t>(low, aLow);
        high = std::min<std::int64_t>(high, aHigh);
        if (low < high) ClipAcross(low, high, bLow, bHigh);
        steps.count = std::max<std::int64_t>(0, high - low);
        steps.first = steps.direction > 0 ? low : high - 1;
    }

  private:
    /// b rises or falls with a: each bound is found by one division.
    void ClipAcross(std::int64_t &low, std::int64_t &high, int bLow, int bHigh) const {
        const Wide unit = Wide{2} * kUnit * Scale();
        const Wide slope = (a1 >= a0 ? b1 - b0 : b0 - b1) * Wide{2} * kUnit;
        const Wide atLow = Numerator(low);
        if (slope == 0) {
            if (atLow < bLow * unit || atLow >= bHigh * unit) high = low;
            return;
        }
        // The first k with atLow + k slope >= (or, falling, <) the bound.
        const auto firstReaching = [&](Wide bound) {
            return slope > 0 ? CeilDiv<Wide>(bound - atLow, slope) : FloorDiv<Wide>(atLow - bound, -slope) + 1;
        };
        const Wide enter = firstReaching(slope > 0 ? bLow * unit : bHigh * unit);
        const Wide leave = firstReaching(slope > 0 ? bHigh * unit : bLow * unit);
        const Wide length = high - low;
        const std::int64_t start = low;
        if (enter > 0) low = start + static_cast<std::int64_t>(std::min(enter, length));
        high = start + static_cast<std::int64_t>(std::clamp<Wide>(leave, 0, length));
    }
};

template <int kUnit, class Wide, class Put>
[[gnu::noinline]] void StepClippedSegment(const Put &put, const Box &clip, FixedPoint from, FixedPoint to) {
    const MajorLine<kUnit, Wide> line(from, to);
    auto steps = line.WholeSteps();
    if (steps.count <= 0) return;
    if (line.alongX) {
        line.Clip(steps, clip.left, clip.right, clip.top, clip.bottom);
    } else {
        line.Clip(steps, clip.top, clip.bottom, clip.left, clip.right);
    }
    if (steps.count <= 0) return;
    const Wide unit = Wide{2} * kUnit * line.Scale();
    Wide rest = line.Numerator(steps.first);
    const auto b = static_cast<std::int64_t>(FloorDiv<Wide>(rest, unit));
    rest -= b * unit;
    // The slope is at most 1, so that b moves by one pixel a step at most.
    const Wide slope = (line.b1 - line.b0) * Wide{2} * kUnit;
    const int along = static_cast<int>(steps.first);
    const int across = static_cast<int>(b);
    std::ptrdiff_t index = line.alongX ? put.IndexOf(along, across) : put.IndexOf(across, along);
    const std::ptrdiff_t acrossStride = line.alongX ? put.Stride() : 1;
    const std::ptrdiff_t alongStride = (line.alongX ? 1 : put.Stride()) * steps.direction;
    for (std::int64_t i = 0; i < steps.count; ++i) {
        put.At(index);
        index += alongStride;
        rest += slope;
        if (rest >= unit) {
            rest -= unit;
            index += acrossStride;
        } else if (rest < 0) {
            rest += unit;
            index -= acrossStride;
        }
    }
}

constexpr std::int64_t kNearUnits = std::int64_t{1} << 24;

/// Puts the pixels of one segment that lie in the clip.
template <int kUnit, class Put>
inline void StepSegment(const Put &put, const Box &clip, FixedPoint from, FixedPoint to) {
    const auto isNear = [](std::int64_t v) { return v > -kNearUnits && v < kNearUnits; };
    if (isNear(from.x) && isNear(from.y) && isNear(to.x) && isNear(to.y)) {
        StepClippedSegment<kUnit, std::int64_t>(put, clip, from, to);
    } else {
        StepClippedSegment<kUnit, Wide>(put, clip, from, to);
    }
}

/// A segment between two different whole pixels that both lie in the clip.
template <class Put>
inline void StepNearSegment(const Put &put, int x0, int y0, int x1, int y1) {
    std::ptrdiff_t index = put.IndexOf(x0, y0);
    const int dx = x1 - x0;
    const int dy = y1 - y0;
    const int adx = dx < 0 ? -dx : dx;
    const int ady = dy < 0 ? -dy : dy;
    const int along = std::max(adx, ady);
    put.At(index);
    if (along == 1) return;
    if (dy == 0) {
        put.Run(dx > 0 ? index : index - along + 1, along);
        return;
    }
    const bool alongX = adx >= ady;
    const std::ptrdiff_t strideX = dx < 0 ? -1 : 1;
    const std::ptrdiff_t strideY = dy < 0 ? -put.Stride() : put.Stride();
    const std::ptrdiff_t major = alongX ? strideX : strideY;
    const std::ptrdiff_t minor = alongX ? strideY : strideX;
    const int across = alongX ? ady : adx;
    // Halves go towards +: when b falls, a half is not yet a step.
    const bool falling = alongX ? dy < 0 : dx < 0;
    int rest = -along - (falling ? 1 : 0);
    for (int i = 1; i < along; ++i) {
        index += major;
        rest += 2 * across;
        if (rest >= 0) {
            rest -= 2 * along;
            index += minor;
        }
        put.At(index);
    }
}

/// The pixels of a chain of whole points, its last point too; closed, the last point is joined to the first. Needs at
/// least one point. Points that repeat the one before are passed over.
template <class Put>
void StepLines(const Put &put, const Box &clip, const Gdiplus::Point *points, std::size_t count, bool closed) {
    const auto insideClip = [&clip](int x, int y) {
        return static_cast<unsigned>(x) - static_cast<unsigned>(clip.left) < static_cast<unsigned>(clip.Width()) &&
               static_cast<unsigned>(y) - static_cast<unsigned>(clip.top) < static_cast<unsigned>(clip.Height());
    };
    const Gdiplus::Point *const end = points + count;
    int x0 = closed ? end[-1].X : points[0].X;
    int y0 = closed ? end[-1].Y : points[0].Y;
    bool inside0 = insideClip(x0, y0);
    for (const Gdiplus::Point *p = points; p != end; ++p) {
        const int x1 = p->X;
        const int y1 = p->Y;
        if (x1 == x0 && y1 == y0) continue;
        const bool inside1 = insideClip(x1, y1);
        if (inside0 && inside1) {
            StepNearSegment(put, x0, y0, x1, y1);
        } else if (!((x0 < clip.left && x1 < clip.left) || (x0 >= clip.right && x1 >= clip.right) ||
                     (y0 < clip.top && y1 < clip.top) || (y0 >= clip.bottom && y1 >= clip.bottom))) {
            StepSegment<1>(put, clip, {x0, y0}, {x1, y1});
        }
        x0 = x1;
        y0 = y1;
        inside0 = inside1;
    }
    if (inside0) put.At(put.IndexOf(x0, y0));
}

/// The same for points in 1/16 pixels; the first and the last point of an open chain are put at their nearest pixel.
template <class Put>
void StepLines(const Put &put, const Box &clip, const FixedPoint *points, std::size_t count, bool closed) {
    const auto putNearest = [&](FixedPoint p) {
        const std::int64_t x = (p.x + kSubpixels / 2) >> 4;
        const std::int64_t y = (p.y + kSubpixels / 2) >> 4;
        if (x >= clip.left && x < clip.right && y >= clip.top && y < clip.bottom) {
            put.At(put.IndexOf(static_cast<int>(x), static_cast<int>(y)));
        }
    };
    std::int64_t spread = 0;
    for (std::size_t i = 1; i < count; ++i) {
        StepSegment<kSubpixels>(put, clip, points[i - 1], points[i]);
        spread = std::max({spread, std::abs(points[i].x - points[0].x), std::abs(points[i].y - points[0].y)});
    }
    if (closed) StepSegment<kSubpixels>(put, clip, points[count - 1], points[0]);
    // A closed figure smaller than a pixel could lie between all steps.
    if (!closed || spread < kSubpixels) putNearest(points[0]);
    if (!closed) putNearest(points[count - 1]);
}

/// Puts the pixels of one segment at whose distance along the line the pattern is on; the segment begins at `distance`.
template <int kUnit, class Put>
void StepDashedSegment(const Put &put, const Box &clip, FixedPoint from, FixedPoint to, const DashPattern &pattern,
                       double distance, double length) {
    const MajorLine<kUnit, Wide> line(from, to);
    auto steps = line.WholeSteps();
    if (line.alongX) {
        line.Clip(steps, clip.left, clip.right, clip.top, clip.bottom);
    } else {
        line.Clip(steps, clip.top, clip.bottom, clip.left, clip.right);
    }
    if (steps.count <= 0) return;
    // Sums of lengths are a little short or long: a pixel on a boundary belongs to what follows.
    constexpr double kSlack = 1e-6;
    const double perUnit = length / static_cast<double>(line.Scale());
    const double first = std::abs(static_cast<double>(steps.first * kUnit - line.a0)) * perUnit;
    DashPattern::Place place = pattern.At(distance + first + kSlack);
    double change = pattern.End(place) - distance - first - kSlack;
    for (std::int64_t i = 0; i < steps.count; ++i) {
        while (static_cast<double>(i) * perUnit * kUnit >= change) {
            place = pattern.After(place);
            change = pattern.End(place) - distance - first - kSlack;
        }
        if (!place.isOn()) continue;
        const std::int64_t along = steps.first + i * steps.direction;
        const auto across = static_cast<int>(FloorDiv<Wide>(line.Numerator(along), Wide{2} * kUnit * line.Scale()));
        put.At(line.alongX ? put.IndexOf(static_cast<int>(along), across)
                           : put.IndexOf(across, static_cast<int>(along)));
    }
}

/// As `StepLines`, the pixels where the pattern is on; points in units of 1/kUnit pixel.
template <int kUnit, class Put>
void StepDashedLines(const Put &put, const Box &clip, const FixedPoint *points, std::size_t count, bool closed,
                     const DashPattern &pattern) {
    double distance = 0;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < count; ++i) {
        const FixedPoint a = points[i];
        const FixedPoint b = points[i + 1 == count ? 0 : i + 1];
        const double length = std::hypot(static_cast<double>(b.x - a.x), static_cast<double>(b.y - a.y)) / kUnit;
        if (length == 0) continue;
        StepDashedSegment<kUnit>(put, clip, a, b, pattern, distance, length);
        distance = pattern.Reduced(distance + length);
    }
    const FixedPoint end = points[count - 1];
    const std::int64_t x = FloorDiv<std::int64_t>(end.x + kUnit / 2, kUnit);
    const std::int64_t y = FloorDiv<std::int64_t>(end.y + kUnit / 2, kUnit);
    if (!closed && pattern.At(distance + 1e-6).isOn() && x >= clip.left && x < clip.right && y >= clip.top &&
        y < clip.bottom) {
        put.At(put.IndexOf(static_cast<int>(x), static_cast<int>(y)));
    }
}

}  // namespace ktl::raster
