#include "ktl/core/transform.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

TEST(Transform, CutsTowardZero) {
    const CExtent view(0, 0, 100, 50);
    // Ratio 1: the client y is 50 - y.
    const std::tuple<double, double, int, int> cases[] = {
        {0, 50, 0, 0},     {100, 0, 100, 50},     {-0.9, 50.9, 0, 0}, {-1.9, 51.9, -1, -1},
        {0.9, 49.1, 0, 0}, {99.99, 0.01, 99, 49}, {1.9, 48.1, 1, 1},
    };
    for (const auto &[x, y, column, row] : cases) {
        EXPECT_EQ(World2Client(view, 1.0, POINTD(x, y)), Gdiplus::Point(column, row)) << x << " " << y;
        int cx = 77;
        int cy = 77;
        World2Client(view, 1.0, x, y, cx, cy);
        EXPECT_TRUE(cx == column && cy == row) << x << " " << y;
    }
    EXPECT_EQ(World2Client(-2.99, 10.0), -29);
}

// (top - y) * ratio would give row 3, and top - cy / ratio 0.39999999999999997.
TEST(Transform, TakesTheHeightBeforeTheDifference) {
    const CExtent view(0.1, 0.1, 0.7, 0.7);
    EXPECT_EQ(World2ClientY(view, 10.0, 0.3), 4);
    EXPECT_EQ(Client2WorldY(view, 10.0, 3), 0.4);
}

TEST(Transform, InPlaceFormKeepsTheSmallerYInBottom) {
    const CExtent view(-10, -10, 10, 10);
    CExtent e(-5, -5, 7.25, 10);
    World2Client(view, 2.0, e);
    EXPECT_TRUE(e == CExtent(10, 0, 34.5, 30));
}

TEST(Transform, ClientToWorldTurnsTheAxis) {
    EXPECT_TRUE(CPointD(-0.25, -0.25) == Client2World(CExtent(-0.5, -0.5, 0.5, 0.5), 256.0, CPoint(64, 192)));
    EXPECT_EQ(Client2World(64, 256.0), 0.25);
}

TEST(Transform, FarPlacesHoldAtTheLimits) {
    EXPECT_EQ(World2Client(CExtent(0, 0, 1, 1), 1e300, 1e300, 1e300), Gdiplus::Point(INT_MAX, INT_MIN));
}
