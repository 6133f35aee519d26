#pragma once

#include "ktl/core/point.h"
#include "ktl/platform/export.h"
#include "ktl/platform/geometry.h"

#ifdef __clang__
// Containers of these records would make clang warn of a virtual operation without a virtual destructor. None is
// deleted through its base, and a destructor that is called for every vertex would cost.
#pragma clang system_header
#endif

/// A rectangle with upright sides. Nothing keeps left below right or bottom below top.
class KTL_API EXTENT {
  public:
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;

    EXTENT() = default;
    EXTENT(double l, double b, double r, double t) : left(l), bottom(b), right(r), top(t) {}
    EXTENT(const EXTENT &) = default;
    EXTENT &operator=(const EXTENT &) = default;

    /// Four raw doubles: left, bottom, right, top. The document version has no effect.
    virtual void Serialize(CArchive &archive, int version);
};

/// An extent with operators and queries. Edges belong to an extent; answers are 1 or 0.
class KTL_API CExtent : public EXTENT {
  public:
    CExtent() = default;
    CExtent(const EXTENT &other) : EXTENT(other) {}
    CExtent(const CExtent &) = default;
    CExtent(double l, double b, double r, double t) : EXTENT(l, b, r, t) {}
    CExtent &operator=(const CExtent &) = default;

    void SetExtent(double l, double b, double r, double t) {
        left = l;
        bottom = b;
        right = r;
        top = t;
    }
    void Copy(const EXTENT &other) { SetExtent(other.left, other.bottom, other.right, other.top); }
    void Offset(double dx, double dy) { SetExtent(left + dx, bottom + dy, right + dx, top + dy); }

    /// Exact comparisons.
    int operator==(const EXTENT &other) const {
        return left == other.left && bottom == other.bottom && right == other.right && top == other.top;
    }
    int operator!=(const EXTENT &other) const { return !(*this == other); }
    // Without this pair the comparison of two CExtent could be read from either side.
    int operator==(const CExtent &other) const { return *this == static_cast<const EXTENT &>(other); }
    int operator!=(const CExtent &other) const { return !(*this == other); }

    /// Grows to the union, or gives the union.
    CExtent &operator+=(const EXTENT &other) {
        if (other.left < left) left = other.left;
        if (other.bottom < bottom) bottom = other.bottom;
        if (other.right > right) right = other.right;
        if (other.top > top) top = other.top;
        return *this;
    }
    CExtent operator+(const EXTENT &other) const { return CExtent(*this) += other; }

    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    CPointD TopLeft() const { return CPointD(left, top); }
    CPointD TopRight() const { return CPointD(right, top); }
    CPointD BottomLeft() const { return CPointD(left, bottom); }
    CPointD BottomRight() const { return CPointD(right, bottom); }
    CPointD CenterPoint() const { return CPointD((left + right) * 0.5, (bottom + top) * 0.5); }

    int PtInExtent(const POINTD &point) const { return PtInExtent(point.x, point.y); }
    int PtInExtent(const double &x, const double &y) const {
        return left <= x && x <= right && bottom <= y && y <= top;
    }
    int Contain(const EXTENT &other) const {
        return other.left >= left && other.bottom >= bottom && other.right <= right && other.top <= top;
    }
    /// For an extent in client pixels, where the smaller y is in `bottom`: so the rectangle's top pairs with it.
    int Contain(const CRect &rect) const {
        return rect.left >= left && rect.top >= bottom && rect.right <= right && rect.bottom <= top;
    }
    int Intersect(const EXTENT &other) const {
        return !(other.left > right || other.right < left || other.bottom > top || other.top < bottom);
    }
    /// For an extent in client pixels. The rectangle's bottom is compared with `bottom` and its top with `top`.
    int Intersect(const CRect &rect) const {
        return !(rect.right < left || rect.bottom < bottom || rect.left > right || rect.top > top);
    }
    /// 1 when the segment between the points meets the extent.
    int Intersect(POINTD from, POINTD to) const { return Intersect(from.x, from.y, to.x, to.y); }
    int Intersect(double x1, double y1, double x2, double y2) const;

    void Serialize(CArchive &archive, int version) override;
};

inline EXTENT UnionExtent(EXTENT a, EXTENT b) {
    return CExtent(a) + b;
}

/// 1 when the extents meet; a common edge or corner is enough.
inline int Intersect(EXTENT a, EXTENT b) {
    return !(a.left > b.right || a.right < b.left || a.bottom > b.top || a.top < b.bottom);
}

/// 1 when `object` lies inside `container`.
inline int CheckObjectContained(EXTENT object, EXTENT container) {
    return CExtent(container).Contain(object);
}

/// Like "`a` contains `b`", but a.right is compared with b.top, and b.right with nothing. Meant so: the callers'
/// redraw decisions rest on it. `CExtent::Contain` is the regular test.
inline int Containt(EXTENT a, EXTENT b) {
    return a.left <= b.left && a.bottom <= b.bottom && a.right >= b.top && a.top >= b.top;
}

/// Cuts at 55 percent of width and height, from left and bottom: `first` is the upper left part, the others follow
/// clockwise. The parts share their cut lines.
KTL_API void SplitExtent(CExtent source, CExtent &first, CExtent &second, CExtent &third, CExtent &fourth);
