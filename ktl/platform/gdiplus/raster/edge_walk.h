#pragma once

#include <algorithm>
#include <cstdint>

#include "ktl/platform/gdiplus/raster/geometry.h"

/// \file
/// The fill rule's arithmetic. An edge from (x0, y0) to (x1, y1), y0 < y1, meets the centre of row r when
/// y0 <= r < y1, and its crossing is the column ceil(x0 + (r - y0) (x1 - x0) / (y1 - y0)): the first pixel whose centre
/// does not lie left of the edge. All of it is exact, in integers, at any coordinate.

namespace ktl::raster {

__extension__ using Wide = __int128;

template <class Integer>
constexpr Integer FloorDiv(Integer a, Integer b) {
    const Integer q = a / b;
    return q * b > a ? q - 1 : q;
}
template <class Integer>
constexpr Integer CeilDiv(Integer a, Integer b) {
    const Integer q = a / b;
    return q * b < a ? q + 1 : q;
}

/// The first row, or column, at or after a coordinate in units of 1/kUnit pixel; kUnit is 1 or 16.
template <int kUnit>
constexpr std::int64_t CeilUnit(std::int64_t v) {
    static_assert(kUnit == 1 || kUnit == kSubpixels);
    return kUnit == 1 ? v : (v + (kSubpixels - 1)) >> 4;
}

/// Calls `crossing(row, column)` for rows first..last-1, which the edge must cover, with columns held to
/// left..right. Used for far coordinates.
template <int kUnit, class Crossing>
[[gnu::noinline]] void WalkFarEdge(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1, int first,
                                   int last, int left, int right, Crossing &crossing) {
    const Wide dy = y1 - y0;
    const Wide dx = x1 - x0;
    const Wide denominator = dy * kUnit;
    const Wide numerator = x0 * dy + (Wide{first} * kUnit - y0) * dx;
    Wide column = CeilDiv(numerator, denominator);
    Wide rest = numerator - column * denominator;
    const Wide step = FloorDiv(dx, dy);
    const Wide stepRest = (dx - step * dy) * kUnit;
    for (int row = first; row < last; ++row) {
        crossing(row, static_cast<int>(std::clamp<Wide>(column, left, right)));
        column += step;
        rest += stepRest;
        if (rest > 0) {
            ++column;
            rest -= denominator;
        }
    }
}

/// The same for an edge whose columns need no holding and whose height is below 2^26 units and x below 2^24.
template <int kUnit, class Crossing>
inline void WalkNearEdge(int x0, int y0, int x1, int y1, int first, int last, Crossing &crossing) {
    const int dy = y1 - y0;
    const int dx = x1 - x0;
    const int denominator = dy * kUnit;
    int column;
    int rest;
    if (first * kUnit == y0) {
        column = static_cast<int>(CeilUnit<kUnit>(x0));
        rest = (x0 - column * kUnit) * dy;
    } else {
        const std::int64_t numerator =
            static_cast<std::int64_t>(x0) * dy + (static_cast<std::int64_t>(first) * kUnit - y0) * dx;
        const auto quotient = CeilDiv<std::int64_t>(numerator, denominator);
        column = static_cast<int>(quotient);
        rest = static_cast<int>(numerator - quotient * denominator);
    }
    crossing(first, column);
    if (first + 1 == last) return;
    int step = dx < 0 ? -1 : 0;
    if (dx >= dy || dx < -dy) step = FloorDiv(dx, dy);
    const int stepRest = (dx - step * dy) * kUnit;
    for (int row = first + 1; row < last; ++row) {
        column += step;
        rest += stepRest;
        if (rest > 0) {
            ++column;
            rest -= denominator;
        }
        crossing(row, column);
    }
}

/// Walks the part of an edge, y0 < y1, in rows first..last-1 (not empty, and covered by the edge).
template <int kUnit, class Crossing>
inline void WalkEdge(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1, int first, int last, int left,
                     int right, Crossing &crossing) {
    const std::int64_t low = static_cast<std::int64_t>(left) * kUnit;
    const std::int64_t high = static_cast<std::int64_t>(right) * kUnit;
    constexpr std::int64_t kNear = std::int64_t{1} << 25;
    if (std::min(x0, x1) >= low && std::max(x0, x1) <= high && y0 > -kNear && y1 < kNear) [[likely]] {
        WalkNearEdge<kUnit>(static_cast<int>(x0), static_cast<int>(y0), static_cast<int>(x1), static_cast<int>(y1),
                            first, last, crossing);
    } else {
        WalkFarEdge<kUnit>(x0, y0, x1, y1, first, last, left, right, crossing);
    }
}

}  // namespace ktl::raster
