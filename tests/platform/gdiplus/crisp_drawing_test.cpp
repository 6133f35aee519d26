#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tests/platform/gdiplus/canvas.h"
#include "tests/support/sha256.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

const Color kWhite(255, 255, 255);
const Color kRed(255, 0, 0);

std::string HashOf(Canvas &canvas) {
    const std::vector<ARGB> pixels = canvas.Pixels();
    std::vector<std::uint8_t> bytes(pixels.size() * 4);
    std::memcpy(bytes.data(), pixels.data(), bytes.size());
    return ktl::test::Sha256(bytes);
}

TEST(Sha256, KnownMessages) {
    const auto hash = [](const std::string &text) {
        return ktl::test::Sha256({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
    };
    EXPECT_EQ(hash(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hash("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hash(std::string(64, 'a')), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
}

TEST(CrispLines, ChainMatchesThePinnedPicture) {
    Canvas c;
    const Pen pen(kWhite);
    const Point points[] = {{1, 1}, {1, 10}, {20, 5}, {25, 30}};
    EXPECT_EQ(c.graphics.DrawLines(&pen, points, 4), Ok);
    EXPECT_EQ(c.Count(), 54);
    EXPECT_EQ(HashOf(c), "6f7924aedab5f35a76a1c19f90b160146e122c9ed31acfac9762267a23945e78");
}

TEST(CrispLines, BezierMatchesThePinnedPicture) {
    Canvas c;
    const Pen pen(kWhite);
    EXPECT_EQ(c.graphics.DrawBezier(&pen, 10, 10, 20, 1, 35, 5, 50, 10), Ok);
    EXPECT_EQ(c.Count(), 41);
    EXPECT_EQ(HashOf(c), "0e9736258b2e3c21ae8ceb800ba1cd05d234cee57035c657ba16f2a3fd870fb5");
}

TEST(CrispLines, BeziersMatchThePinnedPicture) {
    Canvas c;
    const Pen pen(kRed);
    const Point points[] = {{10, 10}, {20, 1}, {35, 5}, {50, 10}, {60, 15}, {65, 25}, {50, 30}};
    EXPECT_EQ(c.graphics.DrawBeziers(&pen, points, 7), Ok);
    EXPECT_EQ(c.Count(), 66);
    EXPECT_EQ(HashOf(c), "dcdbff367f0d84a374350a1e78ca7625db28ed6a323db8d4bf19a00f12b335a6");
}

TEST(CrispLines, OnePixelForEachStepAndHalvesTowardsPlus) {
    struct Case {
        Point a, b;
        int count;
        Point middle;
    };
    // The middle of each line lies half way between two pixels of the shorter axis.
    const Case cases[] = {
        {{10, 10}, {12, 11}, 3, {11, 11}}, {{12, 11}, {10, 10}, 3, {11, 11}},  {{10, 11}, {12, 10}, 3, {11, 11}},
        {{12, 10}, {10, 11}, 3, {11, 11}}, {{10, 10}, {11, 12}, 3, {11, 11}},  {{11, 10}, {10, 12}, 3, {11, 11}},
        {{10, 12}, {11, 10}, 3, {11, 11}}, {{11, 12}, {10, 10}, 3, {11, 11}},  {{10, 10}, {30, 10}, 21, {20, 10}},
        {{10, 10}, {10, 10}, 1, {10, 10}}, {{30, 40}, {10, 20}, 21, {20, 30}},
    };
    for (const Case &test : cases) {
        Canvas c;
        const Pen pen(kWhite);
        EXPECT_EQ(c.graphics.DrawLine(&pen, test.a, test.b), Ok);
        EXPECT_EQ(c.Count(), test.count) << test.a.X << "," << test.a.Y;
        EXPECT_NE(c.At(test.middle.X, test.middle.Y), 0U) << test.a.X << "," << test.a.Y;
        EXPECT_NE(c.At(test.a.X, test.a.Y), 0U);
        EXPECT_NE(c.At(test.b.X, test.b.Y), 0U);
    }
}

TEST(CrispLines, WideLineIsTheRectangleAroundIt) {
    Canvas c(120, 120);
    const Pen pen(kWhite, 10);
    c.graphics.DrawLine(&pen, 10, 100, 100, 50);
    EXPECT_EQ(c.Count(), 1030);
}

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

TEST(CrispDashes, RunsOfACustomPattern) {
    Canvas c(520, 60);
    Pen pen(kWhite, 5);
    const REAL pattern[] = {5, 2, 15, 4};
    EXPECT_EQ(pen.SetDashPattern(pattern, 4), Ok);
    c.graphics.DrawLine(&pen, 20, 30, 420, 30);
    std::vector<int> runs;
    const std::string row = c.Row(30, 0, 519);
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i] == '#' && (i == 0 || row[i - 1] != '#')) runs.push_back(0);
        if (row[i] == '#') ++runs.back();
    }
    EXPECT_EQ(runs, (std::vector<int>{25, 75, 25, 75, 25, 75, 10}));
    EXPECT_EQ(c.Row(30, 18, 22), "..###");
}

TEST(CrispDashes, StylesAtOnePixel) {
    struct Case {
        DashStyle style;
        REAL offset;
        std::string row;
    };
    const Case cases[] = {{DashStyleDash, 0, "###.###.###."},
                          {DashStyleDot, 0, "#.#.#.#.#.#."},
                          {DashStyleDashDot, 0, "###.#.###.#."},
                          {DashStyleDashDotDot, 0, "###.#.#.###."},
                          {DashStyleDash, 1, "##.###.###.#"},
                          {DashStyleSolid, 0, "############"},
                          {static_cast<DashStyle>(6), 0, "############"}};
    for (const Case &test : cases) {
        Canvas c;
        Pen pen(kWhite);
        EXPECT_EQ(pen.SetDashStyle(test.style), Ok);
        pen.SetDashOffset(test.offset);
        c.graphics.DrawLine(&pen, 10, 20, 90, 20);
        EXPECT_EQ(c.Row(20, 10, 21), test.row);
    }
}

TEST(CrispDashes, ThePhaseRunsOnRoundCornersAndRestartsInTheNextFigure) {
    Canvas c;
    Pen pen(kWhite);
    const REAL pattern[] = {6, 6};
    pen.SetDashPattern(pattern, 2);
    GraphicsPath path;
    const Point bent[3] = {{10, 10}, {13, 10}, {13, 30}};
    path.AddLines(bent, 3);
    path.StartFigure();
    path.AddLine(40, 10, 60, 10);
    c.graphics.DrawPath(&pen, &path);
    EXPECT_EQ(c.Row(10, 10, 14), "####.");
    EXPECT_NE(c.At(13, 12), 0U);
    EXPECT_EQ(c.At(13, 13), 0U);
    EXPECT_EQ(c.Row(10, 38, 52), "..######......#");
}

/// Coordinates beyond any pixel and offsets of many patterns end, and the phase in sight is right.
TEST(CrispDashes, FarStartsAndLargeOffsetsEnd) {
    constexpr REAL kHuge = 1e30F;
    constexpr REAL kInfinite = std::numeric_limits<REAL>::infinity();
    for (const SmoothingMode mode : {SmoothingModeNone, SmoothingModeAntiAlias}) {
        for (const REAL width : {1.0F, 4.0F}) {
            Canvas c;
            c.graphics.SetSmoothingMode(mode);
            Pen pen(kRed, width);
            pen.SetDashStyle(DashStyleDash);
            const PointF far[] = {{-kHuge, 5}, {kHuge, 5}, {kInfinite, -kInfinite}, {3, -kHuge}};
            EXPECT_EQ(c.graphics.DrawPolygon(&pen, far, 4), Ok);
            pen.SetDashOffset(kHuge);
            EXPECT_EQ(c.graphics.DrawLine(&pen, 0, 50, 99, 50), Ok);
        }
    }
    Canvas c;
    Pen pen(kRed, 4);
    pen.SetDashStyle(DashStyleDash);
    pen.SetDashOffset(4000001);
    c.graphics.DrawLine(&pen, 0, 50, 99, 50);
    EXPECT_EQ(c.Row(50, 0, 19), "########....########");
}

TEST(CrispDashes, RefusedPatterns) {
    Canvas c;
    Pen pen(kWhite);
    const REAL bad[] = {1, 0};
    const REAL good[] = {2, 2};
    EXPECT_EQ(pen.SetDashPattern(bad, 2), InvalidParameter);
    EXPECT_EQ(pen.SetDashPattern(good, 0), InvalidParameter);
    EXPECT_EQ(pen.GetDashStyle(), DashStyleSolid);
    EXPECT_EQ(pen.SetDashPattern(good, 2), Ok);
    EXPECT_EQ(pen.GetDashStyle(), DashStyleCustom);
    EXPECT_EQ(pen.SetDashStyle(DashStyleCustom), Ok);
    EXPECT_EQ(pen.GetDashPatternCount(), 2);
    EXPECT_EQ(pen.SetDashStyle(static_cast<DashStyle>(-1)), Ok);
    EXPECT_EQ(pen.GetDashStyle(), DashStyleCustom);
    EXPECT_EQ(pen.SetDashStyle(DashStyleDot), Ok);
    EXPECT_EQ(pen.SetDashStyle(DashStyleCustom), Ok);
    EXPECT_EQ(pen.GetDashPatternCount(), 0);
}

TEST(CrispPens, WidthsUnderTransforms) {
    struct Case {
        REAL width;
        REAL scale;
        int rows;
    };
    const Case cases[] = {{0, 1, 1}, {0.1F, 1, 1}, {0, 5, 1}, {2, 3, 6}, {1, 4, 4}, {3, 1, 3}};
    for (const Case &test : cases) {
        Canvas c;
        const Pen pen(kWhite, test.width);
        c.graphics.ScaleTransform(test.scale, test.scale);
        c.graphics.DrawLine(&pen, 2.0F, 5.0F, 10.0F, 5.0F);
        int rows = 0;
        for (int y = 0; y < 100; ++y) rows += c.At(static_cast<int>(4 * test.scale), y) != 0 ? 1 : 0;
        EXPECT_EQ(rows, test.rows) << test.width << " at " << test.scale;
    }
}

TEST(CrispPens, JoinsAndCaps) {
    struct Case {
        LineJoin join;
        REAL limit;
        bool cornerIsDrawn;
    };
    const Case joins[] = {{LineJoinMiter, 10, true},
                          {LineJoinMiter, 1, false},
                          {LineJoinBevel, 10, false},
                          {LineJoinRound, 10, false},
                          {LineJoinMiterClipped, 10, true}};
    for (const Case &test : joins) {
        Canvas c;
        Pen pen(kWhite, 11);
        pen.SetLineJoin(test.join);
        pen.SetMiterLimit(test.limit);
        const Point corner[3] = {{20, 60}, {60, 60}, {60, 20}};
        c.graphics.DrawLines(&pen, corner, 3);
        EXPECT_EQ(c.At(65, 65) != 0, test.cornerIsDrawn) << test.join << " " << test.limit;
        EXPECT_NE(c.At(60, 64), 0U);
    }
    const struct {
        LineCap cap;
        std::string row;
        std::string edge;
    } caps[] = {{LineCapFlat, ".........######", ".........######"},
                {LineCapSquare, "...############", "...############"},
                {LineCapRound, "...############", ".....##########"},
                {LineCapTriangle, "...############", ".......########"}};
    for (const auto &test : caps) {
        Canvas c;
        Pen pen(kWhite, 12);
        pen.SetStartCap(test.cap);
        c.graphics.DrawLine(&pen, 20, 50, 60, 50);
        EXPECT_EQ(c.Row(50, 11, 25), test.row) << test.cap;
        EXPECT_EQ(c.Row(46, 11, 25), test.edge) << test.cap;
    }
}

TEST(CrispPens, AFigureThatIsOnePointLeavesADot) {
    const Point same[3] = {{20, 20}, {20, 20}, {20, 20}};
    const struct {
        LineJoin join;
        LineCap cap;
        bool closed;
        std::string bounds;
    } cases[] = {{LineJoinMiter, LineCapFlat, true, "18,18 5x5"},
                 {LineJoinRound, LineCapFlat, true, "18,18 5x5"},
                 {LineJoinMiter, LineCapFlat, false, ""},
                 {LineJoinMiter, LineCapRound, false, "18,18 5x5"},
                 {LineJoinMiter, LineCapSquare, false, "18,18 5x5"}};
    for (const auto &test : cases) {
        Canvas c;
        Pen pen(kWhite, 5);
        pen.SetLineJoin(test.join);
        pen.SetLineCap(test.cap, test.cap, DashCapFlat);
        test.closed ? c.graphics.DrawPolygon(&pen, same, 3) : c.graphics.DrawLines(&pen, same, 3);
        EXPECT_EQ(c.Bounds(), test.bounds) << test.join << " " << test.cap;
    }
}

TEST(CrispPens, ABrushPaintsTheLine) {
    Canvas c;
    const HatchBrush brush(HatchStyleVertical, kWhite, kRed);
    const Pen pen(&brush, 4);
    c.graphics.DrawLine(&pen, 8, 50, 40, 50);
    EXPECT_EQ(c.At(16, 50), kWhite.GetValue());
    EXPECT_EQ(c.At(17, 50), kRed.GetValue());
    Color color;
    EXPECT_EQ(pen.GetColor(&color), InvalidParameter);
    EXPECT_EQ(Pen(static_cast<const Brush *>(nullptr)).GetLastStatus(), InvalidParameter);
}

TEST(CrispState, ModesReadBackAsWhatTheyStandFor) {
    Canvas c;
    Graphics &g = c.graphics;
    EXPECT_EQ(g.GetSmoothingMode(), SmoothingModeNone);
    EXPECT_EQ(g.GetInterpolationMode(), InterpolationModeBilinear);
    EXPECT_EQ(g.GetPixelOffsetMode(), PixelOffsetModeDefault);
    EXPECT_EQ(g.GetTextContrast(), 4U);
    const struct {
        int set;
        Status status;
        int get;
    } smoothing[] = {{2, Ok, 4},
                     {0, Ok, 3},
                     {4, Ok, 4},
                     {1, Ok, 3},
                     {5, Ok, 5},
                     {6, InvalidParameter, 5},
                     {-1, InvalidParameter, 5}},
      interpolation[] = {
          {0, Ok, 3}, {1, Ok, 3}, {2, Ok, 7}, {5, Ok, 5}, {8, InvalidParameter, 5}, {-1, InvalidParameter, 5}};
    for (const auto &test : smoothing) {
        EXPECT_EQ(g.SetSmoothingMode(static_cast<SmoothingMode>(test.set)), test.status) << test.set;
        EXPECT_EQ(g.GetSmoothingMode(), test.get) << test.set;
    }
    for (const auto &test : interpolation) {
        EXPECT_EQ(g.SetInterpolationMode(static_cast<InterpolationMode>(test.set)), test.status) << test.set;
        EXPECT_EQ(g.GetInterpolationMode(), test.get) << test.set;
    }
}

TEST(CrispState, NothingCanBeMadeBeforeTheStart) {
    ASSERT_FALSE(ktl::raster::DrawingStarted());
    EXPECT_EQ(Pen(kWhite).GetLastStatus(), GdiplusNotInitialized);
    EXPECT_EQ(SolidBrush(kWhite).GetLastStatus(), GdiplusNotInitialized);
    EXPECT_EQ(HatchBrush(HatchStyleCross, kWhite).GetLastStatus(), GdiplusNotInitialized);
    EXPECT_EQ(GraphicsPath().GetLastStatus(), GdiplusNotInitialized);
    EXPECT_EQ(Graphics(nullptr).GetLastStatus(), GdiplusNotInitialized);
    const Pen unusable(kWhite);
    Canvas c;
    EXPECT_EQ(c.graphics.DrawLine(&unusable, 0, 0, 5, 5), InvalidParameter);
    EXPECT_EQ(Graphics(nullptr).GetLastStatus(), InvalidParameter);
}

TEST(CrispState, FormatsThatCannotBeDrawnOn) {
    const ktl::test::DrawingStart started;
    const struct {
        PixelFormat format;
        Status status;
    } cases[] = {{PixelFormat8bppIndexed, OutOfMemory},
                 {PixelFormat1bppIndexed, OutOfMemory},
                 {PixelFormat16bppGrayScale, OutOfMemory},
                 {PixelFormat16bppARGB1555, OutOfMemory},
                 {PixelFormat24bppRGB, Ok},
                 {PixelFormat32bppPARGB, Ok}};
    for (const auto &test : cases) {
        Bitmap bitmap(4, 4, test.format);
        ASSERT_EQ(bitmap.GetLastStatus(), Ok) << std::hex << test.format;
        Graphics graphics(&bitmap);
        EXPECT_EQ(graphics.GetLastStatus(), test.status) << std::hex << test.format;
        EXPECT_EQ(graphics.Clear(kRed), test.status == Ok ? Ok : InvalidParameter);
    }
}

TEST(CrispState, PixelsOutliveTheBitmap) {
    const ktl::test::DrawingStart started;
    auto bitmap = std::make_unique<Bitmap>(50, 50);
    Graphics graphics(bitmap.get());
    bitmap.reset();
    const SolidBrush brush(kWhite);
    EXPECT_EQ(graphics.FillRectangle(&brush, 0, 0, 50, 50), Ok);
}

TEST(CrispState, HalfOffsetKeepsWholeFills) {
    Canvas none, half;
    const SolidBrush brush(kWhite);
    const Pen pen(kWhite);
    half.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    for (Canvas *c : {&none, &half}) {
        c->graphics.FillRectangle(&brush, 10, 10, 20, 20);
        c->graphics.DrawLine(&pen, 50, 50, 70, 50);
    }
    EXPECT_EQ(none.Pixels(), half.Pixels());
    // A line 3 wide at y = 80 covers 78.5..81.5; pixel 78 has its centre at 78, or at 78.5.
    const Pen wide(kWhite, 3);
    none.graphics.DrawLine(&wide, 10, 80, 40, 80);
    half.graphics.DrawLine(&wide, 10, 80, 40, 80);
    EXPECT_EQ(none.Row(78, 10, 12) + none.Row(81, 10, 12), "...###");
    EXPECT_EQ(half.Row(78, 10, 12) + half.Row(81, 10, 12), "###...");
}

}  // namespace
