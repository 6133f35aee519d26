#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <tuple>

#include "ktl/webmap/arc.h"
#include "ktl/webmap/distance.h"
#include "ktl/webmap/dms.h"
#include "ktl/webmap/level.h"

TEST(Level, IsTheFirstWithATileNoWiderThanTheSize) {
    struct Case {
        double size;
        short minLevel, maxLevel, level;
        double snapped;
    };
    const double smallest = std::ldexp(1.0, -21);
    const double none = std::numeric_limits<double>::quiet_NaN();
    const Case cases[] = {{1.0, 1, 22, 1, 1.0},       {0.3, 1, 22, 3, 0.25},      {0.25, 1, 22, 3, 0.25},
                          {0.3, 5, 22, 5, 0.0625},    {0.3, 1, 2, 2, 0.5},        {0.3, 9, 4, 4, 0.125},
                          {0.3, 1, 0, 1, 1.0},        {-1.0, 3, 22, 3, 0.25},     {smallest / 3, 1, 22, 22, smallest},
                          {0.0, 1, 22, 22, smallest}, {none, 1, 22, 22, smallest}};
    for (const Case &c : cases) {
        double size = c.size;
        EXPECT_EQ(KtlGetLevel(size, c.minLevel, c.maxLevel), c.level) << c.size;
        EXPECT_TRUE(size == c.snapped) << c.size << " " << size;
    }
    double whole = 1e-9;
    EXPECT_EQ(KtlGetLevel(whole), 22);
    const double degrees[][3] = {{360, 1, 360}, {100, 3, 90}, {1e-9, 22, std::ldexp(360.0, -21)}};
    for (const auto &c : degrees) {
        double size = c[0];
        EXPECT_TRUE(KtlGetLevelWGS(size) == c[1] && size == c[2]) << c[0] << " " << size;
    }
}

TEST(BaseLevel, IsTheFirstThatTheExtentPassesByHalfATile) {
    const double tiny = std::ldexp(1.0, -23);
    // The comparison is strict; too small everywhere gives 1; isLB of 2 is neither 0 nor 1; on a degree map the width
    // is x2 - y1: 20.5 passes 11.25, and 180.5 passes all; or the height does.
    const std::tuple<double, double, double, double, int, int, int> cases[] = {
        {-.5, -.5, .5, .5, 0, 1, 1},
        {0, 0, .5, .1, 0, 1, 2},
        {0, 0, .1, .26, 0, 1, 2},
        {0, 0, tiny, tiny, 0, 1, 1},
        {0, 0, 3 * tiny, 0, 0, 1, 22},
        {-90, 0, 0, 1, 1, 1, 3},
        {-90, 0, 0, 1, 2, 1, 1},
        {0, 0, 90, 45, 2, 101, 3},
        {0, 0, .25, .001, 0, 101, 3},
        {100, 80, 100.5, 80.5, 1, 101, 5},
        {100, -80, 100.5, -79.5, 1, 101, 1},
        {0, 0, 80, 100, 1, 101, 1},
    };
    for (const auto &[x1, y1, x2, y2, isLB, map, level] : cases) {
        EXPECT_EQ(GetBaseLevel(x1, y1, x2, y2, isLB, ENUM_MAP_TYPE(map)), level) << x1 << " " << x2 << " " << isLB;
    }
}

TEST(Distance, PlaneInPixelsIsCutAndWraps) {
    // 65536 squared is 0 in 32 bits; 46341 squared is negative.
    for (const auto &[x, y, length] : {std::tuple{3, -4, 5}, {1, 1, 1}, {65536, 3, 3}, {46341, 0, 0}}) {
        EXPECT_EQ(KtlGetP2PLength(CPoint(0, 0), CPoint(x, y)), length) << x;
    }
    EXPECT_EQ(KtlGetP2PLength(CPoint(INT_MIN, 0), CPoint(INT_MAX, 0)), 1);
    EXPECT_EQ(KtlGetP2PLength(1.5, 2.0, 4.5, 6.0), 5.0);
}

// Expected numbers as in the projection's tests.
TEST(Distance, OnTheSphereFollowsTheFormulaWithTheSine) {
    const double cases[][5] = {
        {0, 0, 180, 0, 10734034.445259364},  // half the globe would be 20037508
        {-73.98565, 40.74844, -0.127, 51.507, 5237545.3011999363},
        {116.391, 39.907, 116.391, 39.907, 0},
        // Each of these comes out otherwise when one rounding to single precision is left out, or both ways are mixed.
        {120.142, 21.921, 122.747, 37.733, 1766400.5241967177},
        {121.565, 46.364, 121.424, 47.633, 141663.55414284108},
        {109.659, 30.013, 125.006, 33.153, 1488395.8872758211},
        {100.602, 38.474, 118.965, 21.802, 2519401.0174778095},
    };
    for (const auto &c : cases) EXPECT_DOUBLE_EQ(KtlGetDistance(c[0], c[1], c[2], c[3]), c[4]);
}

TEST(Arc, ArrayHasOneElementMoreThanTheArcWithoutItsCentre) {
    CArray<POINTD, POINTD> points;
    points.SetSize(500);
    points[91] = POINTD(9, 9);
    GetArcPointArray(POINTD(10, 20), 2.0, 0, 90, points, 0);
    ASSERT_EQ(points.GetSize(), 92);
    EXPECT_TRUE(CPointD(12, 20) == points[0] && CPointD(0, 0) == points[91]);
    EXPECT_NEAR(points[30].y, 21.0, 1e-12);
    EXPECT_NEAR(points[90].y, 22.0, 1e-12);
    GetArcPointArray(POINTD(10, 20), 2.0, 0, 90, points, 1);
    ASSERT_EQ(points.GetSize(), 92);
    EXPECT_TRUE(CPointD(10, 20) == points[0] && CPointD(12, 20) == points[1]);
    EXPECT_NEAR(points[91].y, 22.0, 1e-12);
    // A backward arc holds nothing.
    for (const int end : {9, 8, 0, INT_MIN}) {
        GetArcPointArray(POINTD(1, 2), 1.0, 10, end, points, 1);
        EXPECT_EQ(points.GetSize(), end == 9 ? 1 : 0) << end;
    }
}

TEST(Arc, ExtentStartsAnewAtAngleZeroOnly) {
    struct Case {
        int start, end, withCentre;
        double left, bottom, right, top;
    };
    // The second keeps what was held, the third loses what was before 0, the last has no point at all.
    const Case cases[] = {{0, 90, 0, 0, 0, 1, 1},    {1, 180, 0, -1, 0, 50, 60}, {-90, 90, 0, 0, 0, 1, 1},
                          {-90, 90, 1, 0, -1, 1, 1}, {90, 180, 1, -1, 0, 0, 1},  {180, 90, 1, 0, 0, 0, 0}};
    for (const Case &c : cases) {
        EXTENT extent(40, 50, 50, 60);
        GetArcExtent(POINTD(0, 0), 1.0, c.start, c.end, extent, c.withCentre);
        SCOPED_TRACE(c.start);
        EXPECT_NEAR(extent.left, c.left, 1e-12);
        EXPECT_NEAR(extent.bottom, c.bottom, 0.02);
        EXPECT_NEAR(extent.right, c.right, 1e-12);
        EXPECT_NEAR(extent.top, c.top, 1e-12);
    }
}

TEST(Dms, SplitsAndJoins) {
    int d = 7;
    int m = 7;
    double s = 7;
    KtlDegreeToDMS(0.0, d, m, s);
    EXPECT_TRUE(d == 0 && m == 0 && s == 0.0);
    KtlDegreeToDMS(-116.5125, d, m, s);
    EXPECT_TRUE(d == -116 && m == -30) << d << " " << m;
    EXPECT_NEAR(s, -45.0, 1e-9);
    const std::tuple<int, int, double, const char *, double> cases[] = {
        {116, 30, 0, "E", 116.5},          {116, 30, 0, "W", -116.5}, {-116, 30, 0, "E", 116.5},
        {30, 15, 36, "S", -30.26},         {30, 15, 36, "s", 30.26},  {30, -15, 0, "N", 29.75},
        {INT_MIN, 0, 0, "", 2147483648.0},
    };
    for (const auto &[degrees, minutes, seconds, hemisphere, expected] : cases) {
        double degree = 0;
        KtlDMSToDegree(degrees, minutes, seconds, hemisphere, degree);
        EXPECT_DOUBLE_EQ(degree, expected) << degrees << hemisphere;
    }
}
