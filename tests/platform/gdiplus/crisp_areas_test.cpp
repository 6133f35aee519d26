#include <gtest/gtest.h>

#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

const Color kWhite(255, 255, 255);

TEST(CrispRectangles, FillAndOutlineCoverThePlatformsPixels) {
    struct Case {
        REAL width;
        PenAlignment alignment;
        Rect rect;
        std::string bounds;
        int count;
    };
    const Case cases[] = {
        {1, PenAlignmentCenter, {5, 5, 10, 10}, "5,5 11x11", 40},
        {2, PenAlignmentCenter, {5, 5, 10, 10}, "4,4 12x12", 12 * 12 - 8 * 8},
        {3, PenAlignmentCenter, {5, 5, 10, 10}, "4,4 13x13", 13 * 13 - 7 * 7},
        {1, PenAlignmentCenter, {10, 5, 80, 40}, "10,5 81x41", 240},
        {10, PenAlignmentCenter, {20, 20, 50, 50}, "15,15 60x60", 60 * 60 - 40 * 40},
        {10, PenAlignmentInset, {20, 20, 50, 50}, "20,20 50x50", 50 * 50 - 30 * 30},
        {1, PenAlignmentCenter, {5, 5, 0, 0}, "5,5 1x1", 1},
        {1, PenAlignmentCenter, {5, 5, 4, 0}, "5,5 5x1", 5},
        {1, PenAlignmentCenter, {5, 5, -4, 3}, "", 0},
    };
    for (const Case &test : cases) {
        Canvas c;
        Pen pen(kWhite, test.width);
        pen.SetAlignment(test.alignment);
        EXPECT_EQ(c.graphics.DrawRectangle(&pen, test.rect), Ok);
        EXPECT_EQ(c.Bounds(), test.bounds) << test.width;
        EXPECT_EQ(c.Count(), test.count) << test.width;
        // The same rectangle in single precision.
        Canvas f;
        const Rect &r = test.rect;
        f.graphics.DrawRectangle(&pen, static_cast<REAL>(r.X), static_cast<REAL>(r.Y), static_cast<REAL>(r.Width),
                                 static_cast<REAL>(r.Height));
        EXPECT_EQ(f.Pixels(), c.Pixels()) << test.width;
    }
}

TEST(CrispRectangles, FillTakesLeftAndTopEdges) {
    Canvas c;
    const SolidBrush brush(kWhite);
    EXPECT_EQ(c.graphics.FillRectangle(&brush, 7, 9, 20, 10), Ok);
    EXPECT_EQ(c.Bounds(), "7,9 20x10");
    EXPECT_EQ(c.Count(), 200);
    Canvas f;
    EXPECT_EQ(f.graphics.FillRectangle(&brush, 7.5F, 9.0F, 2.0F, 2.5F), Ok);
    EXPECT_EQ(f.Bounds(), "8,9 2x3");
    Canvas none;
    EXPECT_EQ(none.graphics.FillRectangle(&brush, 7, 9, -20, 10), Ok);
    EXPECT_EQ(none.graphics.FillRectangle(&brush, 7, 9, 0, 10), Ok);
    EXPECT_EQ(none.Count(), 0);
}

TEST(CrispEllipses, FilledPixelCountsAndTheEmptyTopRow) {
    struct Case {
        Rect box;
        int count;
    };
    const Case cases[] = {
        {{10, 10, 80, 50}, 3112}, {{10, 10, 100, 50}, 3900}, {{10, 10, 100, 60}, 4670}, {{10, 10, 140, 70}, 7640}};
    for (const Case &test : cases) {
        Canvas c(200, 120);
        const SolidBrush brush(kWhite);
        EXPECT_EQ(c.graphics.FillEllipse(&brush, test.box), Ok);
        EXPECT_EQ(c.Count(), test.count) << test.box.Width << "x" << test.box.Height;
        EXPECT_EQ(c.Bounds(), "10,11 " + std::to_string(test.box.Width) + "x" + std::to_string(test.box.Height - 1));
    }
}

TEST(CrispEllipses, OutlineHasOnePixelForEachStep) {
    Canvas c(200, 120);
    const Pen pen(kWhite);
    EXPECT_EQ(c.graphics.DrawEllipse(&pen, 10, 10, 160, 80), Ok);
    EXPECT_EQ(c.Bounds(), "10,10 161x81");
    // Where it is flatter than 45 degrees it has two pixels a column, 143 columns, elsewhere two a row, 36 rows.
    EXPECT_NEAR(c.Count(), 2 * 143 + 2 * 36, 4);
    for (int x = 10; x <= 170; ++x) {
        int pixels = 0;
        for (int y = 0; y < 120; ++y) pixels += c.At(x, y) != 0 ? 1 : 0;
        EXPECT_GE(pixels, x == 10 || x == 170 ? 1 : 2) << x;
    }
    Canvas none;
    EXPECT_EQ(none.graphics.DrawEllipse(&pen, 10, 10, -5, 5), Ok);
    EXPECT_EQ(none.graphics.DrawEllipse(&pen, 0, 0, 0, 0), Ok);
    EXPECT_LE(none.Count(), 1);
}

TEST(CrispEllipses, SmallOnesAreThoseOfAPathWhereverTheyStand) {
    for (int size = 1; size <= 20; ++size) {
        Canvas direct(64, 64), byPath(64, 64);
        const SolidBrush brush(Color(90, 255, 0, 0));
        const Pen pen(Color(120, 0, 0, 255));
        for (const Point at : {Point(3, 4), Point(30, 31), Point(-5, 50), Point(58, -6)}) {
            direct.graphics.FillEllipse(&brush, at.X, at.Y, size, size + 2);
            direct.graphics.DrawEllipse(&pen, at.X, at.Y, size, size + 2);
            GraphicsPath path;
            path.AddEllipse(at.X, at.Y, size, size + 2);
            byPath.graphics.FillPath(&brush, &path);
            byPath.graphics.DrawPath(&pen, &path);
        }
        EXPECT_EQ(direct.Pixels(), byPath.Pixels()) << size;
    }
}

TEST(CrispPies, AnglesRunClockwiseAndFollowTheTrueDirection) {
    Canvas c;
    const SolidBrush brush(kWhite);
    // From 0 to 90 degrees lies the lower right quarter.
    EXPECT_EQ(c.graphics.FillPie(&brush, 20, 20, 60, 60, 0, 90), Ok);
    EXPECT_EQ(c.Row(60, 48, 53), "..####");
    EXPECT_EQ(c.At(40, 60), 0U);
    EXPECT_EQ(c.At(60, 40), 0U);
    Canvas flat;
    // In a box of 80 by 20 the ray of 45 degrees leaves the centre (50, 50) by equal steps.
    const Pen pen(kWhite);
    EXPECT_EQ(flat.graphics.DrawPie(&pen, 10, 40, 80, 20, 45, 90), Ok);
    EXPECT_NE(flat.At(55, 55), 0U);
    EXPECT_NE(flat.At(45, 55), 0U);
    EXPECT_EQ(flat.At(50, 55), 0U);
    EXPECT_NE(flat.At(50, 60), 0U);
}

TEST(CrispPies, SweepIsHeldToAFullTurnAndSizesAreChecked) {
    const SolidBrush brush(kWhite);
    Canvas full, more, ellipse;
    const SolidBrush made(kWhite);
    full.graphics.FillPie(&made, 20, 20, 60, 60, 0, 360);
    more.graphics.FillPie(&made, 20, 20, 60, 60, 0, 1000);
    ellipse.graphics.FillEllipse(&made, 20, 20, 60, 60);
    EXPECT_EQ(full.Pixels(), more.Pixels());
    EXPECT_NEAR(full.Count(), ellipse.Count(), 4);
    const Pen pen(kWhite);
    EXPECT_EQ(full.graphics.FillPie(&made, 20, 20, 0, 60, 0, 90), InvalidParameter);
    EXPECT_EQ(full.graphics.DrawPie(&pen, 20, 20, 60, -1, 0, 90), InvalidParameter);
    EXPECT_EQ(full.graphics.FillPie(&made, 20, 20, 60, 60, 0, -20000), Ok);
}

TEST(CrispPolygons, CountsDecideTheStatus) {
    Canvas c;
    const Pen pen(kWhite);
    const SolidBrush brush(kWhite);
    const Point same[3] = {{5, 5}, {5, 5}, {5, 5}};
    for (const INT count : {-1, 0, 1}) {
        EXPECT_EQ(c.graphics.DrawLines(&pen, same, count), InvalidParameter) << count;
        EXPECT_EQ(c.graphics.DrawPolygon(&pen, same, count), InvalidParameter) << count;
    }
    EXPECT_EQ(c.graphics.FillPolygon(&brush, same, 0), InvalidParameter);
    EXPECT_EQ(c.graphics.FillPolygon(&brush, same, 1), Ok);
    EXPECT_EQ(c.graphics.FillPolygon(&brush, same, 2), Ok);
    EXPECT_EQ(c.graphics.FillPolygon(&brush, same, 3), Ok);
    EXPECT_EQ(c.Count(), 0);
    EXPECT_EQ(c.graphics.DrawLines(&pen, same, 3), Ok);
    EXPECT_EQ(c.graphics.DrawPolygon(&pen, same, 3), Ok);
    EXPECT_EQ(c.Count(), 1);
    EXPECT_EQ(c.graphics.FillPolygon(nullptr, same, 3), InvalidParameter);
    EXPECT_EQ(c.graphics.DrawLines(nullptr, same, 3), InvalidParameter);
    EXPECT_EQ(c.graphics.GetLastStatus(), InvalidParameter);
    EXPECT_EQ(c.graphics.GetLastStatus(), Ok);
}

TEST(CrispPolygons, HolesFollowTheFillMode) {
    const Point outer[4] = {{10, 10}, {50, 10}, {50, 50}, {10, 50}};
    const Point sameWay[4] = {{20, 20}, {40, 20}, {40, 40}, {20, 40}};
    const Point otherWay[4] = {{20, 20}, {20, 40}, {40, 40}, {40, 20}};
    struct Case {
        FillMode mode;
        const Point *inner;
        bool isHole;
    };
    const Case cases[] = {{FillModeAlternate, sameWay, true},
                          {FillModeAlternate, otherWay, true},
                          {FillModeWinding, sameWay, false},
                          {FillModeWinding, otherWay, true}};
    for (const Case &test : cases) {
        Canvas c;
        const SolidBrush brush(kWhite);
        GraphicsPath path(test.mode);
        path.AddPolygon(outer, 4);
        path.AddPolygon(test.inner, 4);
        EXPECT_EQ(c.graphics.FillPath(&brush, &path), Ok);
        EXPECT_EQ(c.Count(), test.isHole ? 1600 - 400 : 1600);
    }
}

TEST(CrispPaths, FillClosesOpenFiguresAndDrawDoesNot) {
    Canvas filled, drawn;
    const SolidBrush brush(kWhite);
    const Pen pen(kWhite);
    const Point corner[3] = {{10, 10}, {30, 10}, {30, 30}};
    GraphicsPath path;
    path.AddLines(corner, 3);
    filled.graphics.FillPath(&brush, &path);
    drawn.graphics.DrawPath(&pen, &path);
    EXPECT_EQ(filled.Count(), 20 * 21 / 2);
    EXPECT_EQ(drawn.Count(), 41);
    path.CloseFigure();
    Canvas closed;
    closed.graphics.DrawPath(&pen, &path);
    EXPECT_EQ(closed.Count(), 60);
    EXPECT_EQ(GraphicsPath(static_cast<FillMode>(2)).GetLastStatus(), InvalidParameter);
}

TEST(CrispBlending, StraightColoursAreMixed) {
    struct Case {
        CompositingMode mode;
        ARGB expected;
    };
    const Case cases[] = {{CompositingModeSourceOver, 0xDCB9B9B9}, {CompositingModeSourceCopy, 0xA0FFFFFF}};
    for (const Case &test : cases) {
        Canvas c;
        const SolidBrush black(Color(160, 0, 0, 0)), white(Color(160, 255, 255, 255));
        c.graphics.FillRectangle(&black, 0, 0, 10, 10);
        c.graphics.SetCompositingMode(test.mode);
        c.graphics.FillRectangle(&white, 0, 0, 10, 10);
        EXPECT_EQ(c.At(5, 5), test.expected) << std::hex << c.At(5, 5);
    }
}

TEST(CrispBlending, OverOpaquePixelsEachChannelIsRoundedOnce) {
    Canvas c(256, 1, PixelFormat24bppRGB);
    for (int alpha = 0; alpha < 256; alpha += 5) {
        for (int under = 0; under < 256; under += 51) {
            c.graphics.Clear(Color(static_cast<BYTE>(under), 7, 200));
            const SolidBrush brush(Color(static_cast<BYTE>(alpha), 255, 100, 3));
            c.graphics.FillRectangle(&brush, 0, 0, 1, 1);
            const auto mixed = [&](int s, int d) { return (alpha * s + (255 - alpha) * d + 127) / 255; };
            EXPECT_EQ(c.At(0, 0), Color(static_cast<BYTE>(mixed(255, under)), static_cast<BYTE>(mixed(100, 7)),
                                        static_cast<BYTE>(mixed(3, 200)))
                                      .GetValue())
                << alpha << " over " << under;
        }
    }
}

TEST(CrispBlending, ALineBlendsEachPixelOnce) {
    // Corners, a crossing, a repeated segment, and each kind of pen.
    const Point points[] = {{10, 10}, {40, 10}, {40, 40}, {20, 5}, {20, 5}, {60, 30}, {20, 5}};
    for (const REAL width : {1.0F, 3.0F, 7.0F}) {
        for (const LineJoin join : {LineJoinMiter, LineJoinBevel, LineJoinRound}) {
            for (const bool closed : {false, true}) {
                Canvas c;
                Pen pen(Color(100, 255, 0, 0), width);
                pen.SetLineJoin(join);
                pen.SetLineCap(LineCapRound, LineCapSquare, DashCapFlat);
                closed ? c.graphics.DrawPolygon(&pen, points, 7) : c.graphics.DrawLines(&pen, points, 7);
                std::set<ARGB> colours;
                for (const ARGB pixel : c.Pixels()) colours.insert(pixel);
                EXPECT_EQ(colours, (std::set<ARGB>{0, 0x64FF0000})) << width << " " << join << " " << closed;
            }
        }
    }
}

TEST(CrispBlending, ClearWritesWithoutBlendingAndKeepsToTheClip) {
    Canvas c;
    c.graphics.Clear(Color(204, 50, 100, 200));
    c.graphics.SetClip(Rect(10, 10, 20, 20));
    c.graphics.Clear(Color(0, 0, 0, 0));
    EXPECT_EQ(c.At(9, 10), 0xCC3264C8U);
    EXPECT_EQ(c.At(10, 10), 0U);
    EXPECT_EQ(c.At(29, 29), 0U);
    EXPECT_EQ(c.At(30, 29), 0xCC3264C8U);
}

}  // namespace
