#include <gtest/gtest.h>

#include "ktl/platform/gdiplus/image_attributes.h"
#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

constexpr ARGB kA = 0xFF102030;
constexpr ARGB kB = 0xFFF0E0D0;

/// A row of opaque pixels.
void SetRow(Bitmap &bitmap, std::initializer_list<ARGB> row) {
    INT x = 0;
    for (const ARGB color : row) bitmap.SetPixel(x++, 0, Color(color));
}

std::string Letters(const Canvas &c, int y, int x0, int x1) {
    std::string text;
    for (int x = x0; x <= x1; ++x)
        text += c.At(x, y) == kA ? 'a' : c.At(x, y) == kB ? 'b' : c.At(x, y) == 0 ? '.' : '?';
    return text;
}

TEST(ImageDraw, NearestNeighbourUnderBothOffsets) {
    struct Case {
        PixelOffsetMode offset;
        int width;
        std::string row;
    };
    const Case cases[] = {{PixelOffsetModeNone, 4, "..abb..."}, {PixelOffsetModeHalf, 4, "..aabb.."},
                          {PixelOffsetModeNone, 2, "..ab...."}, {PixelOffsetModeHighQuality, 2, "..ab...."},
                          {PixelOffsetModeHalf, 5, "..aabbb."}, {PixelOffsetModeHighSpeed, 4, "..abb..."},
                          {PixelOffsetModeHalf, -4, "bbaa"},    {PixelOffsetModeHalf, 1, "..b....."}};
    for (const Case &test : cases) {
        Canvas c(8, 4);
        Bitmap image(2, 1);
        SetRow(image, {kA, kB});
        c.graphics.SetInterpolationMode(InterpolationModeNearestNeighbor);
        c.graphics.SetPixelOffsetMode(test.offset);
        const int x = test.width < 0 ? 4 : 2;
        EXPECT_EQ(c.graphics.DrawImage(&image, Rect(x, 0, test.width, 1), 0, 0, 2, 1, UnitPixel), Ok);
        EXPECT_EQ(Letters(c, 0, 0, static_cast<int>(test.row.size()) - 1), test.row) << test.width;
    }
}

TEST(ImageDraw, AQuarterIsDoubledInEvenBlocks) {
    Canvas c(256, 256);
    Bitmap image(256, 256);
    for (INT y = 0; y < 256; ++y) {
        for (INT x = 0; x < 256; ++x) image.SetPixel(x, y, Color(static_cast<BYTE>(x), static_cast<BYTE>(y), 7));
    }
    c.graphics.SetInterpolationMode(InterpolationModeNearestNeighbor);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHighQuality);
    ImageAttributes attributes;
    attributes.SetNoOp();
    c.graphics.DrawImage(&image, RectF(0, 0, 256, 256), 128, 128, 128, 128, UnitPixel, &attributes);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            const Color expected(static_cast<BYTE>(128 + x / 2), static_cast<BYTE>(128 + y / 2), 7);
            ASSERT_EQ(c.At(x, y), expected.GetValue()) << x << "," << y;
        }
    }
}

TEST(ImageDraw, BilinearMixesAndFadesPastTheLastCentre) {
    Canvas c(5, 1, PixelFormat24bppRGB);
    c.graphics.Clear(Color(0x40, 0x40, 0x40));
    Bitmap image(2, 1, PixelFormat24bppRGB);
    SetRow(image, {0xFF808080, 0xFFCCCCCC});
    c.graphics.DrawImage(&image, 1.2F, 0.0F, 2.4F, 1.0F);
    const int expected[] = {0x40, 0x40, 0xB2, 0x87, 0x40};
    for (int x = 0; x < 5; ++x) EXPECT_NEAR(static_cast<int>(c.At(x, 0) & 0xFF), expected[x], 1) << x;
}

TEST(ImageDraw, BilinearAtOwnSizeIsACopy) {
    for (const PixelOffsetMode offset : {PixelOffsetModeNone, PixelOffsetModeHalf}) {
        Canvas c(8, 1);
        Bitmap image(4, 1);
        SetRow(image, {kA, kB, 0x80FF0000, kA});
        c.graphics.SetPixelOffsetMode(offset);
        c.graphics.DrawImage(&image, 2, 0);
        EXPECT_EQ(Letters(c, 0, 0, 3), "..ab");
        EXPECT_EQ(c.At(4, 0), 0x80FF0000U);
        EXPECT_EQ(c.At(5, 0), kA);
        EXPECT_EQ(c.At(6, 0), 0U);
    }
}

TEST(ImageDraw, PhysicalSizeIsKept) {
    Canvas c(16, 16);
    Bitmap image(4, 4);
    image.SetResolution(48, 96);
    Graphics(&image).Clear(Color(kA));
    c.graphics.SetInterpolationMode(InterpolationModeNearestNeighbor);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    EXPECT_EQ(c.graphics.DrawImage(&image, 2, 3), Ok);
    EXPECT_EQ(c.Bounds(), "2,3 8x4");
    Canvas box(16, 16);
    box.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    box.graphics.SetInterpolationMode(InterpolationModeNearestNeighbor);
    box.graphics.DrawImage(&image, 2, 3, 4, 4);
    EXPECT_EQ(box.Bounds(), "2,3 4x4");
}

TEST(ImageDraw, SizesAndUnits) {
    Canvas c(8, 8);
    Bitmap image(2, 2);
    Graphics(&image).Clear(Color(kA));
    for (const INT width : {-3, 0, 4}) {
        for (const INT srcWidth : {-1, 0, 2}) {
            EXPECT_EQ(c.graphics.DrawImage(&image, Rect(0, 0, width, 4), 0, 0, srcWidth, 2, UnitPixel), Ok);
        }
    }
    const struct {
        int unit;
        Status status;
    } units[] = {{UnitPixel, Ok},
                 {UnitPoint, Ok},
                 {UnitInch, Ok},
                 {UnitDocument, Ok},
                 {UnitMillimeter, Ok},
                 {UnitWorld, InvalidParameter},
                 {UnitDisplay, InvalidParameter},
                 {7, InvalidParameter}};
    for (const auto &test : units) {
        EXPECT_EQ(c.graphics.DrawImage(&image, Rect(0, 0, 4, 4), 0, 0, 1, 1, static_cast<Unit>(test.unit)), test.status)
            << test.unit;
    }
    EXPECT_EQ(c.graphics.DrawImage(nullptr, 0, 0), InvalidParameter);
}

TEST(ImageDraw, TransparencyAndModes) {
    Canvas c(4, 1);
    Bitmap image(2, 1);
    SetRow(image, {0x80FFFFFF, 0x00000000});
    c.graphics.Clear(Color(255, 0, 0, 0));
    c.graphics.DrawImage(&image, 0, 0);
    EXPECT_EQ(c.At(0, 0), 0xFF808080U);
    EXPECT_EQ(c.At(1, 0), 0xFF000000U);
    c.graphics.SetCompositingMode(CompositingModeSourceCopy);
    c.graphics.DrawImage(&image, 0, 0);
    EXPECT_EQ(c.At(0, 0), 0x80FFFFFFU);
    EXPECT_EQ(c.At(1, 0), 0U);
    Bitmap opaque(2, 1, PixelFormat24bppRGB);
    SetRow(opaque, {kA, kB});
    c.graphics.DrawImage(&opaque, 0, 0);
    EXPECT_EQ(Letters(c, 0, 0, 1), "ab");
}

TEST(ImageDraw, StaysInTheClipAndOnTheBitmap) {
    for (const InterpolationMode mode :
         {InterpolationModeNearestNeighbor, InterpolationModeBilinear, InterpolationModeHighQualityBicubic}) {
        Canvas c(20, 20);
        Bitmap image(8, 8);
        Graphics(&image).Clear(Color(kA));
        c.graphics.SetInterpolationMode(mode);
        c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
        c.graphics.SetClip(Rect(5, 6, 7, 8));
        c.graphics.DrawImage(&image, -10, -10, 100, 100);
        EXPECT_EQ(c.Bounds(), "5,6 7x8") << mode;
        EXPECT_EQ(c.At(8, 8), kA) << mode;
        EXPECT_EQ(c.graphics.DrawImage(&image, 2000000000, 2000000000), Ok);
        EXPECT_EQ(c.graphics.DrawImage(&image, -1e30F, 0.0F, 1e35F, 1e35F), Ok);
    }
}

TEST(ImageDraw, OntoItselfReadsWhatWasThere) {
    Canvas c(4, 1);
    SetRow(c.bitmap, {kA, kB, 0, 0});
    c.graphics.DrawImage(&c.bitmap, 1, 0);
    EXPECT_EQ(Letters(c, 0, 0, 3), "aab.");
}

TEST(ImageDraw, PartsOutsideOfTheImageLeaveTheTargetAlone) {
    Canvas c(8, 1);
    Bitmap image(2, 1);
    SetRow(image, {kA, kB});
    c.graphics.SetInterpolationMode(InterpolationModeNearestNeighbor);
    c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
    c.graphics.DrawImage(&image, Rect(0, 0, 6, 1), -2, 0, 6, 1, UnitPixel);
    EXPECT_EQ(Letters(c, 0, 0, 7), "..ab....");
}

}  // namespace
