#pragma once

#include "ktl/platform/types.h"

/// A point in client pixels; y grows downward.
class CPoint {
  public:
    LONG x = 0;
    LONG y = 0;

    constexpr CPoint() = default;
    constexpr CPoint(LONG initX, LONG initY) : x(initX), y(initY) {}

    constexpr void Offset(LONG dx, LONG dy) {
        x += dx;
        y += dy;
    }
    friend constexpr bool operator==(const CPoint &, const CPoint &) = default;
};

/// A width and a height in pixels.
class CSize {
  public:
    LONG cx = 0;
    LONG cy = 0;

    constexpr CSize() = default;
    constexpr CSize(LONG initCX, LONG initCY) : cx(initCX), cy(initCY) {}
    friend constexpr bool operator==(const CSize &, const CSize &) = default;
};

/// A rectangle in client pixels; right and bottom are the first column and row outside.
class CRect {
  public:
    LONG left = 0;
    LONG top = 0;
    LONG right = 0;
    LONG bottom = 0;

    constexpr CRect() = default;
    constexpr CRect(LONG l, LONG t, LONG r, LONG b) : left(l), top(t), right(r), bottom(b) {}

    constexpr LONG Width() const { return right - left; }
    constexpr LONG Height() const { return bottom - top; }
    constexpr void SetRect(LONG l, LONG t, LONG r, LONG b) { *this = CRect(l, t, r, b); }
    /// True when left <= x < right and top <= y < bottom.
    constexpr BOOL PtInRect(CPoint p) const { return p.x >= left && p.x < right && p.y >= top && p.y < bottom; }
    friend constexpr bool operator==(const CRect &, const CRect &) = default;
};
