#include "ktl/platform/gdiplus/raster/dash.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ktl::raster {

namespace {

/// Pixels; what is shorter could not be seen, and would take for ever.
constexpr double kShortestEntry = 1.0 / 64;

}  // namespace

DashPattern::DashPattern(const std::vector<double> &lengths, double offset) {
    const std::size_t entries = lengths.size() % 2 == 0 ? lengths.size() : lengths.size() * 2;
    double total = 0;
    for (std::size_t i = 0; i < entries; ++i) {
        m_bounds.push_back(total += std::max(lengths[i % lengths.size()], kShortestEntry));
    }
    m_offset = Reduced(offset);
}

DashPattern::Place DashPattern::At(double distance) const {
    const double cycle = std::floor((distance + m_offset) / Period());
    const double phase = distance + m_offset - cycle * Period();
    const auto bound = std::upper_bound(m_bounds.begin(), m_bounds.end(), phase);
    if (bound == m_bounds.end()) return {cycle + 1, 0};
    return {cycle, static_cast<std::size_t>(bound - m_bounds.begin())};
}

DashPattern::Place DashPattern::After(Place place) const {
    if (place.entry + 1 == m_bounds.size()) return {place.cycle + 1, 0};
    return {place.cycle, place.entry + 1};
}

std::vector<double> DashPattern::Lengths() const {
    std::vector<double> lengths;
    double before = 0;
    for (const double bound : m_bounds) lengths.push_back(bound - std::exchange(before, bound));
    return lengths;
}

SegmentPart PartNearBox(PointD a, PointD b, const Box &box, double reach) {
    SegmentPart part{0, 1};
    const auto cut = [&part](double from, double to, double low, double high) {
        const double d = to - from;
        if (d == 0) {
            if (from < low || from > high) part.to = -1;
            return;
        }
        const double t0 = (low - from) / d;
        const double t1 = (high - from) / d;
        part.from = std::max(part.from, std::min(t0, t1));
        part.to = std::min(part.to, std::max(t0, t1));
    };
    cut(a.x, b.x, box.left - reach, box.right + reach);
    cut(a.y, b.y, box.top - reach, box.bottom + reach);
    return part;
}

}  // namespace ktl::raster
