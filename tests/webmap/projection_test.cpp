#include "ktl/webmap/projection.h"

#include <gtest/gtest.h>

#include <cmath>

// The expected numbers were worked out outside of this library, with functions of 60 digits rounded after every step.
// EXPECT_DOUBLE_EQ leaves room for the last bits of the C library's functions; a step of single precision more or less
// changes the eighth digit.

TEST(Projection, DegreesToTheSquareAndToMetres) {
    struct Case {
        double l, b, x, y, px, py;
    };
    const Case cases[] = {
        {116.391, 39.907, 0.32330833333333336, 0.12108384133842313, 12956587.213469781, 4852437.4278569417},
        {-180.0, -85.05112877980659, -0.5, -0.49999999999999656, -20037508.900383711, -20037508.262888938},
        {179.999999, 85.0, 0.49999999722222221, 0.49836208521394426, 20037508.789064221, 19971876.618270949},
        {-0.127, 51.507, -0.00035277777777777776, 0.16747269222686642, -14137.575724159618, 6711470.5526050432},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.l);
        double x = c.l;
        double y = c.b;
        KtlGetXY(x, y, x, y);  // the outputs may be the inputs
        EXPECT_EQ(x, c.x);
        EXPECT_NEAR(y, c.y, 2e-15);
        double l = c.l;
        double b = c.b;
        double px = 0;
        double py = 0;
        KtlGetProjectXY(l, b, px, py, 1);
        EXPECT_EQ(px, c.px);
        EXPECT_DOUBLE_EQ(py, c.py);
        EXPECT_TRUE(KtlGetProjectX(l, 7) == px && KtlGetProjectY(b, 7) == py && l == c.l && b == c.b);
    }
}

TEST(Projection, TheSquareToDegreesAndToMetres) {
    struct Case {
        double x, y, l, b, px, py;
    };
    const Case cases[] = {
        {0.3234007700683583, 0.12090790942452377, 116.424277224609, 39.858398958447999, 12960291.617271353,
         4845386.4980502045},
        {-0.5, -0.5, -180.0, -85.051128779806632, -20037508.900383711, -20037508.262888938},
        // Not the mirror of the line above: single precision is unsymmetrical about pi/4.
        {0.5, 0.5, 180.0, 85.051128779806632, 20037508.900383711, 20037518.615682937},
        {0.125, -0.25, 45.0, -66.513260443111903, 5009377.2250959277, -10018753.813730849},
        {-0.31, 0.499, -111.59999999999999, 85.019975350735265, -12423255.5182379, 19997436.286859196},
        {1e-9, 1e-9, 3.6000000000000005e-07, 3.5999999763482863e-07, 0.040075017800767429, 0.0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.x);
        double l = c.x;
        double b = c.y;
        KtlGetLB(l, b, l, b);
        EXPECT_EQ(l, c.l);
        // Near 0 the subtraction from 1 leaves few digits.
        EXPECT_NEAR(b, c.b, 2e-14 + std::abs(c.b) * 1e-15);
        double x = c.x;
        double y = c.y;
        double px = 0;
        double py = 0;
        KtlGetProjectXY(x, y, px, py, 0);
        EXPECT_EQ(px, c.px);
        EXPECT_DOUBLE_EQ(py, c.py);
        EXPECT_TRUE(x == c.x && y == c.y);
    }
}

TEST(Projection, SingleAxisFormsLeaveTheDegreesInTheirArgument) {
    double x = 0.125;
    EXPECT_EQ(KtlGetProjectX(x, 0), 5009377.2250959277);
    EXPECT_EQ(x, 45.0);
    double y = -0.25;
    EXPECT_DOUBLE_EQ(KtlGetProjectY(y, 0), -10018753.813730849);
    EXPECT_DOUBLE_EQ(y, -66.513260443111903);
}

// Where the last bits of the C library don't matter, the metres are exact: a neighbouring float of the tangent is half
// a metre away.
TEST(Projection, MetresStepByTheTangentsFloats) {
    double b = 39.907;
    const double py = KtlGetProjectY(b, 1);
    const double tangent = std::exp(py / 6378137.0);
    EXPECT_NEAR(tangent, static_cast<double>(static_cast<float>(tangent)), 1e-14);
}
