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

}  // namespace
