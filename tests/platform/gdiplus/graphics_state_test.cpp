#include <gtest/gtest.h>

#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

const Color kWhite(255, 255, 255);
const Color kRed(255, 0, 0);

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
