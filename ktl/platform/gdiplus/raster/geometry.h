#pragma once

#include <cmath>
#include <cstdint>

#include "ktl/platform/gdiplus/types.h"

/// \file
/// Numbers of the scan converter. Vertices are rounded to 1/16 pixel; whole pixels need no rounding and have a faster
/// way of their own.

namespace ktl::raster {

/// Steps a pixel is divided into.
constexpr int kSubpixels = 16;

/// A point in pixels.
struct PointD {
    double x = 0;
    double y = 0;

    friend constexpr bool operator==(const PointD &, const PointD &) = default;
    friend constexpr PointD operator+(PointD a, PointD b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr PointD operator-(PointD a, PointD b) { return {a.x - b.x, a.y - b.y}; }
    friend constexpr PointD operator*(PointD a, double f) { return {a.x * f, a.y * f}; }
};

/// A point in 1/16 pixels.
struct FixedPoint {
    std::int64_t x = 0;
    std::int64_t y = 0;

    friend constexpr bool operator==(const FixedPoint &, const FixedPoint &) = default;
};

/// Pixels left..right-1 by top..bottom-1.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    constexpr int Width() const { return right - left; }
    constexpr int Height() const { return bottom - top; }
    constexpr bool IsEmpty() const { return left >= right || top >= bottom; }
    constexpr bool Holds(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    friend constexpr bool operator==(const Box &, const Box &) = default;
};

constexpr Box Intersection(const Box &a, const Box &b) {
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top, a.right < b.right ? a.right : b.right,
            a.bottom < b.bottom ? a.bottom : b.bottom};
}

/// Larger coordinates are held at this limit, so that differences and their sums stay far from the limits of 64 bits.
constexpr double kMaxPixel = 4294967296.0;

/// To the nearest 1/16, halves up; not-a-number is 0.
inline std::int64_t ToFixed(double pixels) {
    if (!(pixels < kMaxPixel)) return pixels >= kMaxPixel ? static_cast<std::int64_t>(kMaxPixel) * kSubpixels : 0;
    if (pixels < -kMaxPixel) return -static_cast<std::int64_t>(kMaxPixel) * kSubpixels;
    return static_cast<std::int64_t>(std::floor(pixels * kSubpixels + 0.5));
}
inline FixedPoint ToFixed(PointD point) {
    return {ToFixed(point.x), ToFixed(point.y)};
}

/// To the nearest whole pixel, halves up, held within the range of `int`; not-a-number is 0.
inline int ToPixel(double pixels) {
    if (!(pixels < 2147483647.0)) return pixels >= 2147483647.0 ? 2147483647 : 0;
    if (pixels < -2147483648.0) return -2147483647 - 1;
    return static_cast<int>(std::floor(pixels + 0.5));
}

/// x' = xx x + xy y + x0, y' = yx x + yy y + y0.
struct Affine {
    double xx = 1;
    double yx = 0;
    double xy = 0;
    double yy = 1;
    double x0 = 0;
    double y0 = 0;

    constexpr PointD Apply(PointD p) const { return {xx * p.x + xy * p.y + x0, yx * p.x + yy * p.y + y0}; }
    constexpr bool IsIdentity() const { return *this == Affine{}; }
    /// True when rectangles stay rectangles with level sides.
    constexpr bool IsLevel() const { return xy == 0 && yx == 0; }
    friend constexpr bool operator==(const Affine &, const Affine &) = default;
    /// First this, then `next`.
    constexpr Affine Then(const Affine &next) const {
        const PointD origin = next.Apply({x0, y0});
        return {next.xx * xx + next.xy * yx,
                next.yx * xx + next.yy * yx,
                next.xx * xy + next.xy * yy,
                next.yx * xy + next.yy * yy,
                origin.x,
                origin.y};
    }
};

}  // namespace ktl::raster
