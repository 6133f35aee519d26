#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "ktl/platform/gdiplus/raster/geometry.h"

namespace ktl::raster {

/// A dash pattern in pixels: on, off, on ... from its beginning. An odd number of entries alternates: what was on is
/// off the next time round.
class DashPattern {
  public:
    DashPattern() = default;
    /// Lengths and the offset into the pattern are in pixels. Lengths are positive.
    DashPattern(const std::vector<double> &lengths, double offset);

    bool IsSolid() const { return m_bounds.empty(); }

    /// One entry of the pattern somewhere along the line.
    struct Place {
        /// How many times the pattern has run before; a whole number.
        double cycle;
        std::size_t entry;
        bool isOn() const { return entry % 2 == 0; }
    };
    /// The entry at a distance from the line's start.
    Place At(double distance) const;
    Place After(Place place) const;
    /// Where an entry begins and ends, as distances from the line's start: the same numbers from wherever it is
    /// reached.
    double Begin(Place place) const {
        return place.cycle * Period() + (place.entry == 0 ? 0.0 : m_bounds[place.entry - 1]) - m_offset;
    }
    double End(Place place) const { return place.cycle * Period() + m_bounds[place.entry] - m_offset; }
    double Period() const { return m_bounds.back(); }
    /// The entries, an even number, and the distance into them at which a line starts.
    std::vector<double> Lengths() const;
    double Offset() const { return m_offset; }
    /// The distance without whole runs of the pattern, so that sums of many lengths stay exact enough to step on.
    double Reduced(double distance) const { return std::fmod(distance, Period()); }

  private:
    /// Where the entries end, from the pattern's beginning; always an even number of entries.
    std::vector<double> m_bounds;
    double m_offset = 0;
};

/// Calls `dash(points, count, atStart, atEnd)` for each dash of a line that comes near the box, from and to distances
/// [start, end) along it; the flags tell whether the dash begins at the line's start and ends at its end. A closed line
/// runs back to its first point. The pattern runs on round the corners, which dashes keep.
template <class Dash>
void CutIntoDashes(const DashPattern &pattern, const PointD *points, std::size_t count, bool closed, const Box &box,
                   double reach, std::vector<PointD> &scratch, Dash &&dash);

/// The part [from, to] of 0..1 of a segment that can touch the box grown by `reach` on all sides; empty when to <=
/// from.
struct SegmentPart {
    double from;
    double to;
};
SegmentPart PartNearBox(PointD a, PointD b, const Box &box, double reach);

/// The point held within the limits of the scan converter; not-a-number is 0. Farther out the steps of a pattern would
/// be lost in rounding.
inline PointD Held(PointD p) {
    const auto held = [](double v) { return std::isnan(v) ? 0.0 : std::clamp(v, -kMaxPixel, kMaxPixel); };
    return {held(p.x), held(p.y)};
}

template <class Dash>
void CutIntoDashes(const DashPattern &pattern, const PointD *points, std::size_t count, bool closed, const Box &box,
                   double reach, std::vector<PointD> &scratch, Dash &&dash) {
    double distance = 0;
    bool isFirst = true;
    bool open = false;
    bool atStart = true;
    scratch.clear();
    const auto finish = [&](bool atEnd) {
        if (open && !scratch.empty()) dash(scratch.data(), scratch.size(), atStart, atEnd);
        scratch.clear();
        open = false;
        atStart = false;
    };
    const std::size_t segments = closed ? count : count - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const PointD a = Held(points[i]);
        const PointD b = Held(points[i + 1 == count ? 0 : i + 1]);
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        if (length == 0) continue;
        const bool isFromStart = std::exchange(isFirst, false);
        const SegmentPart part = PartNearBox(a, b, box, reach);
        if (part.to <= part.from) {
            finish(false);
            distance = pattern.Reduced(distance + length);
            continue;
        }
        // Dashes are whole ones also where the box cuts them: their corners are then the same from wherever one looks.
        const auto pointAt = [&](double at) { return at <= 0 ? a : at >= length ? b : a + (b - a) * (at / length); };
        DashPattern::Place place = pattern.At(distance + part.from * length);
        if (part.from > 0 || (open && !place.isOn())) finish(false);
        if (place.isOn() && !open) {
            open = true;
            atStart = isFromStart && pattern.Begin(place) <= 0;
            scratch.push_back(pointAt(pattern.Begin(place) - distance));
        }
        const double end = distance + part.to * length;
        while (pattern.End(place) < end) {
            const PointD change = pointAt(pattern.End(place) - distance);
            scratch.push_back(change);
            if (place.isOn()) {
                finish(false);
            } else {
                open = true;
                atStart = false;
            }
            place = pattern.After(place);
        }
        if (open) scratch.push_back(pointAt(pattern.End(place) - distance));
        if (part.to < 1) finish(false);
        distance = pattern.Reduced(distance + length);
    }
    finish(true);
}

}  // namespace ktl::raster
