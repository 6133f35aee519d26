#include <gtest/gtest.h>

#include <cstdlib>

#include "ktl/platform/gdiplus/raster/hatch.h"
#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;

const Color kBlack(0, 0, 0);
const Color kWhite(255, 255, 255);

/// The 8 by 8 pixels from (0, 0) as rows of hexadecimal bytes; black is set.
std::string PaintedRows(int style) {
    Canvas c(16, 16);
    const HatchBrush brush(static_cast<HatchStyle>(style), kBlack, kWhite);
    c.graphics.FillRectangle(&brush, 0, 0, 16, 16);
    std::string rows;
    for (int y = 0; y < 8; ++y) {
        unsigned byte = 0;
        for (int x = 0; x < 8; ++x) {
            byte = byte << 1 | (c.At(x, y) == kBlack.GetValue() ? 1U : 0U);
            EXPECT_EQ(c.At(x, y), c.At(x + 8, y + 8));
        }
        char text[4];
        std::snprintf(text, sizeof text, "%02X ", byte);
        rows += text;
    }
    return rows;
}

TEST(Hatch, PaintedRowsOfUnsoftenedStyles) {
    const struct {
        int style;
        std::string rows;
    } cases[] = {{HatchStyleHorizontal, "FF 00 00 00 00 00 00 00 "},
                 {HatchStyleVertical, "80 80 80 80 80 80 80 80 "},
                 {HatchStyleLargeGrid, "FF 80 80 80 80 80 80 80 "},
                 {HatchStyle20Percent, "88 00 22 00 88 00 22 00 "},
                 {HatchStyle40Percent, "AA 55 AA 51 AA 55 AA 15 "},
                 {HatchStyle90Percent, "FF FF FF F7 FF FF FF 7F "},
                 {HatchStyleWideDownwardDiagonal, "C1 E0 70 38 1C 0E 07 83 "},
                 {HatchStyleNarrowVertical, "55 55 55 55 55 55 55 55 "},
                 {HatchStyleLargeConfetti, "B1 30 03 1B D8 C0 0C 8D "},
                 {HatchStyleWave, "00 18 25 C0 00 18 25 C0 "},
                 {HatchStyleWeave, "88 54 22 45 88 14 22 51 "},
                 {HatchStyleDivot, "00 10 08 10 00 80 01 80 "},
                 {HatchStyleSphere, "77 89 8F 8F 77 98 F8 F8 "},
                 {HatchStyleSolidDiamond, "10 38 7C FE 7C 38 10 00 "}};
    for (const auto &test : cases) EXPECT_EQ(PaintedRows(test.style), test.rows) << test.style;
}

TEST(Hatch, PercentagesDarkenStepByStep) {
    int before = 0;
    for (int style = HatchStyle05Percent; style <= HatchStyle90Percent; ++style) {
        int set = 0;
        for (const std::uint8_t row : ktl::raster::HatchRows(style)) set += std::popcount(row);
        EXPECT_GT(set, before) << style;
        before = set;
    }
}

TEST(Hatch, DiagonalsAreSoftenedWhateverTheMode) {
    for (const SmoothingMode mode : {SmoothingModeNone, SmoothingModeAntiAlias}) {
        for (const HatchStyle style :
             {HatchStyleForwardDiagonal, HatchStyleBackwardDiagonal, HatchStyleDiagonalCross}) {
            Canvas c(16, 16);
            c.graphics.SetSmoothingMode(mode);
            c.graphics.SetPixelOffsetMode(PixelOffsetModeHalf);
            const HatchBrush brush(style, kBlack, kWhite);
            c.graphics.FillRectangle(&brush, 0, 0, 16, 16);
            const auto &rows = ktl::raster::HatchRows(style);
            for (int y = 0; y < 16; ++y) {
                for (int x = 0; x < 16; ++x) {
                    const auto isSet = [&](int at) { return (rows[y & 7] & (0x80 >> (at & 7))) != 0; };
                    const int grey = isSet(x) ? 0x15 : isSet(x + 7) || isSet(x + 1) ? 0xBF : 0xFF;
                    EXPECT_LE(std::abs(static_cast<int>(c.At(x, y) & 0xFF) - grey), 1) << style << " " << x << "," << y;
                }
            }
        }
    }
}

TEST(Hatch, FollowsTheOriginAndNotTheShapeOrTheTransform) {
    const Point origins[] = {{0, 0}, {3, 6}, {-7, -4}, {1, 1}};
    for (const Point origin : origins) {
        for (const SmoothingMode mode : {SmoothingModeNone, SmoothingModeAntiAlias}) {
            Canvas c(64, 64);
            c.graphics.SetSmoothingMode(mode);
            c.graphics.SetRenderingOrigin(origin.X, origin.Y);
            c.graphics.TranslateTransform(5, 5);
            const HatchBrush brush(HatchStyleDashedHorizontal, kBlack, kWhite);
            c.graphics.FillEllipse(&brush, 0, 0, 50, 50);
            const auto &rows = ktl::raster::HatchRows(HatchStyleDashedHorizontal);
            for (int y = 20; y < 40; ++y) {
                for (int x = 20; x < 40; ++x) {
                    const int row = ((y - origin.Y) % 8 + 8) % 8;
                    const int column = ((x - origin.X) % 8 + 8) % 8;
                    const bool isSet = (rows[static_cast<std::size_t>(row)] & (0x80 >> column)) != 0;
                    EXPECT_EQ(c.At(x, y), (isSet ? kBlack : kWhite).GetValue()) << x << "," << y;
                }
            }
        }
    }
}

TEST(Hatch, BothColoursBlendAsSolidOnes) {
    Canvas hatched(16, 16), solid(16, 16);
    const Color fore(100, 200, 30, 40), back(180, 0, 90, 255);
    const HatchBrush brush(HatchStyleVertical, fore, back);
    for (Canvas *c : {&hatched, &solid}) c->graphics.Clear(Color(20, 60, 100));
    hatched.graphics.FillRectangle(&brush, 0, 0, 16, 16);
    const SolidBrush foreBrush(fore), backBrush(back);
    for (int x = 0; x < 16; ++x) {
        solid.graphics.FillRectangle(x % 8 == 0 ? &foreBrush : &backBrush, x, 0, 1, 16);
    }
    EXPECT_EQ(hatched.Pixels(), solid.Pixels());
}

TEST(Hatch, StylesOutsideTheTableAreRefused) {
    const ktl::test::DrawingStart started;
    for (const int style : {-1, 53, 1000}) {
        const HatchBrush brush(static_cast<HatchStyle>(style), kBlack);
        EXPECT_EQ(brush.GetLastStatus(), InvalidParameter) << style;
        EXPECT_FALSE(brush.IsUsable());
    }
    EXPECT_EQ(HatchBrush(HatchStyleCross, kWhite).BackgroundValue(), kBlack);
}

}  // namespace
