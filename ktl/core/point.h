#pragma once

#include "ktl/platform/export.h"

class CArchive;

#ifdef __clang__
// Containers of these records would make clang warn of a virtual operation without a virtual destructor. None is
// deleted through its base, and a destructor that is called for every vertex would cost.
#pragma clang system_header
#endif

/// A place in world coordinates (or, where told, in degrees or client pixels); y grows upward in world space.
class KTL_API POINTD {
  public:
    double x = 0.0;
    double y = 0.0;

    POINTD() = default;
    POINTD(double initX, double initY) : x(initX), y(initY) {}
    POINTD(const POINTD &) = default;
    POINTD &operator=(const POINTD &) = default;

    /// Two raw doubles, x and y. The document version has no effect.
    virtual void Serialize(CArchive &archive, int version);
};

/// A point with operators. Comparisons are exact, to the last bit but the sign of zero.
class KTL_API CPointD : public POINTD {
  public:
    CPointD() = default;
    CPointD(POINTD point) : POINTD(point) {}
    CPointD(double initX, double initY) : POINTD(initX, initY) {}
    CPointD(const CPointD &) = default;
    CPointD &operator=(const CPointD &) = default;
    CPointD &operator=(const POINTD &other) {
        SetPoint(other.x, other.y);
        return *this;
    }

    int operator==(const POINTD &other) const { return x == other.x && y == other.y; }
    int operator!=(const POINTD &other) const { return !(*this == other); }
    // Without this pair the comparison of two CPointD could be read from either side.
    int operator==(const CPointD &other) const { return *this == static_cast<const POINTD &>(other); }
    int operator!=(const CPointD &other) const { return !(*this == other); }

    CPointD &operator+=(const POINTD &other) {
        Offset(other.x, other.y);
        return *this;
    }
    CPointD operator+(const POINTD &other) const { return CPointD(x + other.x, y + other.y); }

    void SetPoint(double newX, double newY) {
        x = newX;
        y = newY;
    }
    void Offset(double dx, double dy) {
        x += dx;
        y += dy;
    }
};
