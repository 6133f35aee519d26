#include <gtest/gtest.h>

#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

const Color kBlack(0, 0, 0);

int AlphaAt(const Canvas &c, int x, int y) {
    return static_cast<int>(c.At(x, y) >> 24);
}

TEST(SmoothDrawing, PixelCentresFollowTheOffset) {
    struct Case {
        PixelOffsetMode offset;
        int first, inside, last, after;
    };
    // A box from 10 to 20 covers half of the pixels 10 and 20 when their centres lie there.
    const Case cases[] = {{PixelOffsetModeNone, 128, 255, 255, 128}, {PixelOffsetModeHalf, 255, 255, 255, 0}};
    for (const Case &test : cases) {
        Canvas c;
        c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
        c.graphics.SetPixelOffsetMode(test.offset);
        const SolidBrush brush(kBlack);
        c.graphics.FillRectangle(&brush, 10, 5, 10, 20);
        EXPECT_NEAR(AlphaAt(c, 10, 15), test.first, 2);
        EXPECT_EQ(AlphaAt(c, 11, 15), test.inside);
        EXPECT_EQ(AlphaAt(c, 19, 15), test.last);
        EXPECT_NEAR(AlphaAt(c, 20, 15), test.after, 2);
        EXPECT_EQ(AlphaAt(c, 9, 15), 0);
    }
}

TEST(SmoothDrawing, ALevelLineIsCrispAndASlantedOneIsNot) {
    Canvas c;
    c.graphics.SetSmoothingMode(SmoothingModeHighQuality);
    const Pen pen(kBlack);
    c.graphics.DrawLine(&pen, 10, 20, 30, 20);
    EXPECT_EQ(AlphaAt(c, 20, 20), 255);
    EXPECT_EQ(AlphaAt(c, 20, 19) + AlphaAt(c, 20, 21), 0);
    c.graphics.DrawLine(&pen, 10, 40, 50, 53);
    int partial = 0;
    for (int x = 10; x < 50; ++x) {
        for (int y = 38; y < 56; ++y) partial += AlphaAt(c, x, y) > 0 && AlphaAt(c, x, y) < 255 ? 1 : 0;
    }
    EXPECT_GT(partial, 40);
}

TEST(SmoothDrawing, FiguresHaveTheirArea) {
    // The sum of coverage is the area: of an ellipse, a quarter pie, a polygon with a hole, a wide line.
    const SolidBrush *brush = nullptr;
    const auto area = [&](auto &&draw) {
        Canvas c;
        const SolidBrush black(kBlack);
        brush = &black;
        c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
        draw(c.graphics);
        double sum = 0;
        for (const ARGB pixel : c.Pixels()) sum += (pixel >> 24) / 255.0;
        return sum;
    };
    EXPECT_NEAR(area([&](Graphics &g) { g.FillEllipse(brush, 10, 10, 80, 40); }), 3.14159 * 40 * 20, 15);
    EXPECT_NEAR(area([&](Graphics &g) { g.FillPie(brush, 10, 10, 80, 80, 30, 90); }), 3.14159 * 40 * 40 / 4, 12);
    EXPECT_NEAR(area([&](Graphics &g) {
                    GraphicsPath path;
                    const Point outer[] = {{10, 10}, {60, 10}, {60, 60}, {10, 60}};
                    const Point inner[] = {{20, 20}, {40, 20}, {40, 40}, {20, 40}};
                    path.AddPolygon(outer, 4);
                    path.AddPolygon(inner, 4);
                    g.FillPath(brush, &path);
                }),
                2500 - 400, 2);
    EXPECT_NEAR(area([&](Graphics &g) {
                    const Pen pen(kBlack, 6);
                    g.DrawLine(&pen, 10, 10, 70, 55);
                }),
                75 * 6, 3);
    EXPECT_NEAR(area([&](Graphics &g) {
                    Pen pen(kBlack, 10);
                    pen.SetAlignment(PenAlignmentInset);
                    g.DrawRectangle(&pen, 20, 20, 50, 50);
                }),
                2500 - 900, 4);
}

TEST(SmoothDrawing, DashesAreInPenWidths) {
    Canvas c;
    c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    Pen pen(kBlack, 4);
    pen.SetDashStyle(DashStyleDash);
    c.graphics.DrawLine(&pen, 8, 20, 80, 20);
    EXPECT_EQ(c.Row(20, 8, 27), "############....####");
}

TEST(SmoothDrawing, FarCoordinatesAreCutNotWrapped) {
    constexpr INT kFar = 1 << 30;
    Canvas c;
    c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    const Pen pen(kBlack, 3);
    c.graphics.DrawLine(&pen, -kFar, 50, kFar, 50);
    EXPECT_EQ(c.Bounds(), "0,49 100x3");
    Canvas filled;
    filled.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    const SolidBrush brush(kBlack);
    const Point around[] = {{-kFar, -kFar}, {kFar, -kFar}, {kFar, 60}, {-kFar, 60}};
    filled.graphics.FillPolygon(&brush, around, 4);
    EXPECT_EQ(filled.Bounds(), "0,0 100x61");
    const Point triangle[] = {{50, 50}, {kFar, kFar}, {kFar, -kFar}};
    Canvas cut;
    cut.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    cut.graphics.FillPolygon(&brush, triangle, 3);
    EXPECT_EQ(AlphaAt(cut, 90, 50), 255);
    EXPECT_EQ(AlphaAt(cut, 70, 20), 0);
    EXPECT_EQ(AlphaAt(cut, 40, 50), 0);
}

/// A ring that is cut far away is joined at each corner in sight, also at the one that it begins with.
TEST(SmoothDrawing, AFarRingHasACornerWhereItBegins) {
    const Point ring[] = {{30, 30}, {20000, 30}, {30, 20000}};
    for (std::size_t first = 0; first < 3; ++first) {
        const Point turned[] = {ring[first], ring[(first + 1) % 3], ring[(first + 2) % 3]};
        Canvas c;
        c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
        const Pen pen(kBlack, 12);
        c.graphics.DrawPolygon(&pen, turned, 3);
        EXPECT_EQ(AlphaAt(c, 26, 26), 255) << first;
        EXPECT_EQ(AlphaAt(c, 22, 26), 0) << first;
    }
}

TEST(SmoothDrawing, DashesOfAFarLineCountFromItsStart) {
    struct Case {
        int start;
        const char *row;
    };
    // On for 12 pixels, off for 4.
    for (const Case &test : {Case{-10000, "############....####"}, Case{-10004, "########....########"},
                             Case{-1000010, "##....############.."}}) {
        Canvas c;
        c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
        c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
        Pen pen(kBlack, 4);
        pen.SetDashStyle(DashStyleDash);
        c.graphics.DrawLine(&pen, test.start, 20, 10000, 20);
        EXPECT_EQ(c.Row(20, 0, 19), test.row) << test.start;
    }
}

TEST(SmoothDrawing, DashesOfAnInsetLineAreInPenWidthsToo) {
    Canvas c;
    c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    Pen pen(kBlack, 4);
    pen.SetDashStyle(DashStyleDash);
    pen.SetAlignment(PenAlignmentInset);
    c.graphics.DrawRectangle(&pen, 8, 20, 64, 64);
    EXPECT_EQ(c.Row(22, 8, 27), "############....####");
}

TEST(SmoothDrawing, CompositingAndClipAreKept) {
    Canvas c;
    c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    c.graphics.Clear(Color(255, 255, 255));
    c.graphics.SetClip(Rect(10, 10, 20, 20));
    const SolidBrush brush(Color(128, 0, 0, 0));
    c.graphics.FillEllipse(&brush, -50, -50, 200, 200);
    EXPECT_EQ(c.At(9, 20), 0xFFFFFFFFU);
    EXPECT_EQ(c.At(10, 20), 0xFF7F7F7FU);
    c.graphics.SetCompositingMode(CompositingModeSourceCopy);
    c.graphics.FillRectangle(&brush, 0, 0, 100, 100);
    EXPECT_EQ(c.At(20, 20), 0x80000000U);
    EXPECT_EQ(c.At(30, 20), 0xFFFFFFFFU);
}

TEST(SmoothDrawing, CrispDrawingAfterSmoothDrawingIsSeenByBoth) {
    Canvas c;
    const SolidBrush black(kBlack), half(Color(128, 255, 255, 255));
    c.graphics.FillRectangle(&black, 0, 0, 50, 50);
    c.graphics.SetSmoothingMode(SmoothingModeAntiAlias);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    c.graphics.FillRectangle(&half, 0, 0, 50, 50);
    EXPECT_EQ(c.At(25, 25), 0xFF808080U);
    c.graphics.SetSmoothingMode(SmoothingModeNone);
    c.graphics.FillRectangle(&black, 0, 0, 10, 10);
    EXPECT_EQ(c.At(5, 5), 0xFF000000U);
}

TEST(SmoothDrawing, TransformsTurnFigures) {
    for (const SmoothingMode mode : {SmoothingModeNone, SmoothingModeAntiAlias}) {
        Canvas c;
        c.graphics.SetSmoothingMode(mode);
        c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
        c.graphics.TranslateTransform(50, 50);
        c.graphics.RotateTransform(90);
        const SolidBrush brush(kBlack);
        c.graphics.FillRectangle(&brush, 0, 0, 30, 10);
        EXPECT_EQ(c.Bounds(), "40,50 10x30") << mode;
        EXPECT_EQ(c.graphics.ScaleTransform(0, 1), InvalidParameter);
        EXPECT_EQ(c.graphics.SetClip(Rect(0, 0, 5, 5)), NotImplemented);
        c.graphics.ResetTransform();
        EXPECT_EQ(c.graphics.SetClip(Rect(0, 0, 5, 5), CombineModeUnion), NotImplemented);
    }
}

}  // namespace
