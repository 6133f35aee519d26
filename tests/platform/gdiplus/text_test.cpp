#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ktl/platform/gdiplus/gdiplus.h"
#include "tests/support/drawing_start.h"

using namespace Gdiplus;

namespace {

struct TextTest : testing::Test {
    ktl::test::DrawingStart drawing;
    Bitmap bitmap{200, 120, PixelFormat32bppARGB};
    Graphics graphics{&bitmap};
    Font song{L"宋体", 12, FontStyleRegular, UnitPixel};
    SolidBrush black{Color(0, 0, 0)};

    RectF Measure(const std::wstring &text, const RectF &area, const StringFormat *format = nullptr) {
        RectF box(-1, -1, -1, -1);
        EXPECT_EQ(graphics.MeasureString(text.c_str(), -1, &song, area, format, &box), Ok);
        return box;
    }
    RectF At(const std::wstring &text, REAL x, REAL y, const StringFormat *format = nullptr) {
        return Measure(text, RectF(x, y, 0, 0), format);
    }
    /// The sum of the advances: what a typographic format, which has no padding, measures.
    REAL Advance(const std::wstring &text) { return At(text, 0, 0, StringFormat::GenericTypographic()).Width; }

    /// The smallest box of pixels that are not clear.
    Rect Ink() {
        int left = 1000, top = 1000, right = -1, bottom = -1;
        for (int y = 0; y < 120; ++y) {
            for (int x = 0; x < 200; ++x) {
                Color color;
                bitmap.GetPixel(x, y, &color);
                if (color.GetAlpha() < 40) continue;
                left = std::min(left, x);
                top = std::min(top, y);
                right = std::max(right, x);
                bottom = std::max(bottom, y);
            }
        }
        return {left, top, right - left + 1, bottom - top + 1};
    }
    std::vector<ARGB> Pixels() {
        std::vector<ARGB> pixels;
        for (int y = 0; y < 120; ++y) {
            for (int x = 0; x < 200; ++x) {
                Color color;
                bitmap.GetPixel(x, y, &color);
                pixels.push_back(color.GetValue());
            }
        }
        return pixels;
    }
};

constexpr REAL kEm = 12;
constexpr REAL kLine = kEm * 292 / 256;

TEST_F(TextTest, FamiliesHaveTheirDesignValues) {
    struct Case {
        const wchar_t *name;
        int em, ascent, descent, spacing;
    };
    const Case cases[] = {
        {L"宋体", 256, 220, 36, 292},
        {L"SimSun", 256, 220, 36, 292},
        {L"Arial", 2048, 1854, 434, 2355},
        {L"tahoma", 2048, 2049, 423, 2472},
    };
    for (const Case &c : cases) {
        const FontFamily family(c.name);
        EXPECT_EQ(family.GetLastStatus(), Ok);
        EXPECT_EQ(family.GetEmHeight(0), c.em);
        EXPECT_EQ(family.GetCellAscent(0), c.ascent);
        EXPECT_EQ(family.GetCellDescent(0), c.descent);
        EXPECT_EQ(family.GetLineSpacing(0), c.spacing);
    }
    const Font arial(L"Arial", 16, FontStyleRegular, UnitPixel);
    EXPECT_NEAR(arial.GetHeight(96.0F), 18.398, 0.001);
    EXPECT_NEAR(Font(L"Arial", 12, FontStyleRegular, UnitPoint).GetHeight(96.0F), 18.398, 0.001);
}

TEST_F(TextTest, MissingFamiliesFallBackForFontsOnly) {
    const FontFamily missing(L"No Such Family");
    EXPECT_EQ(missing.GetLastStatus(), FontFamilyNotFound);
    EXPECT_EQ(Font(&missing, 12).GetLastStatus(), InvalidParameter);
    const Font font(L"No Such Family", 12);
    EXPECT_EQ(font.GetLastStatus(), Ok);
    FontFamily used;
    WCHAR name[LF_FACESIZE];
    ASSERT_EQ(font.GetFamily(&used), Ok);
    used.GetFamilyName(name);
    EXPECT_STREQ(name, L"Microsoft Sans Serif");
    for (const REAL size : {0.0F, -1.0F, std::nanf("")}) {
        EXPECT_EQ(Font(L"Arial", size).GetLastStatus(), InvalidParameter);
    }
    EXPECT_EQ(Font(L"Arial", 12, FontStyleRegular, UnitDisplay).GetLastStatus(), InvalidParameter);
}

TEST_F(TextTest, BoxIsAdvanceAndAThirdOfAnEmByLinesAndAnEighth) {
    for (const wchar_t *text : {L"A", L"武汉市", L"Long Island", L"长江 Yangtze"}) {
        const RectF box = At(text, 0, 0);
        EXPECT_NEAR(box.Width, Advance(text) + kEm / 3, 0.01) << text;
        EXPECT_NEAR(box.Height, kLine + kEm / 8, 0.001);
    }
    EXPECT_NEAR(Advance(L"武汉市"), 36, 0.5);
    EXPECT_NEAR(At(L"a\nb\nc", 0, 0).Height, 3 * kLine + kEm / 8, 0.001);
    EXPECT_NEAR(At(L"a\r\nb", 0, 0).Width, std::max(At(L"a", 0, 0).Width, At(L"b", 0, 0).Width), 0.001);
    EXPECT_NEAR(At(L"a", 0, 0, StringFormat::GenericTypographic()).Height, kLine, 0.001);
}

TEST_F(TextTest, BlanksAtTheEndDontCount) {
    EXPECT_EQ(At(L"", 3, 4).Width, 0);
    EXPECT_EQ(At(L"", 3, 4).Height, 0);
    EXPECT_NEAR(At(L"ab   ", 0, 0).Width, At(L"ab", 0, 0).Width, 0.01);
    EXPECT_GT(At(L"  ab", 0, 0).Width, At(L"ab", 0, 0).Width + 3);
    EXPECT_NEAR(At(L"    ", 0, 0).Width, At(L" ", 0, 0).Width, 0.01);
    EXPECT_GT(Advance(L" "), 2);
    const StringFormat measureAll(StringFormatFlagsMeasureTrailingSpaces);
    EXPECT_NEAR(At(L"ab   ", 0, 0, &measureAll).Width, At(L"ab", 0, 0).Width + 3 * Advance(L" "), 0.1);
}

TEST_F(TextTest, AlignmentMovesTheBox) {
    const RectF plain = At(L"东湖", 0, 0);
    const RectF areas[] = {{100, 60, 0, 0}, {10, 20, 150, 90}};
    for (const RectF &area : areas) {
        for (int i = 0; i < 3; ++i) {
            StringFormat format;
            format.SetAlignment(static_cast<StringAlignment>(i));
            format.SetLineAlignment(static_cast<StringAlignment>(2 - i));
            const RectF box = Measure(L"东湖", area, &format);
            EXPECT_NEAR(box.X, area.X + (area.Width - plain.Width) * static_cast<REAL>(i) / 2, 0.01);
            EXPECT_NEAR(box.Y, area.Y + (area.Height - plain.Height) * static_cast<REAL>(2 - i) / 2, 0.01);
            EXPECT_NEAR(box.Width, plain.Width, 0.01);
            graphics.Clear(Color(0, 0, 0, 0));
            ASSERT_EQ(graphics.DrawString(L"东湖", -1, &song, area, &format, &black), Ok);
            const Rect ink = Ink();
            EXPECT_GE(static_cast<REAL>(ink.X), box.X + kEm / 6 - 1.5F);
            EXPECT_LE(static_cast<REAL>(ink.GetRight()), box.GetRight() - kEm / 6 + 1.5F);
            EXPECT_GE(static_cast<REAL>(ink.Y), box.Y - 1);
            EXPECT_LE(static_cast<REAL>(ink.GetBottom()), box.Y + kLine + 1);
        }
    }
}

TEST_F(TextTest, BaselineLiesAnAscentBelowTheTop) {
    const Font large(L"宋体", 32, FontStyleRegular, UnitPixel);
    ASSERT_EQ(graphics.DrawString(L"HEH", -1, &large, PointF(20, 30), &black), Ok);
    EXPECT_NEAR(Ink().GetBottom(), 30 + 32 * 220.0 / 256, 1.5);
    EXPECT_NEAR(Ink().X, 20 + 32 / 6.0, 3);
}

TEST_F(TextTest, ABoxWrapsCutsAndCounts) {
    INT fitted = 0;
    INT lines = 0;
    RectF box;
    const std::wstring text = L"alpha beta gamma";
    const REAL narrow = At(L"alpha beta", 0, 0).Width + 2;
    graphics.MeasureString(text.c_str(), -1, &song, RectF(0, 0, narrow, 100), nullptr, &box, &fitted, &lines);
    EXPECT_EQ(lines, 2);
    EXPECT_EQ(fitted, 16);
    EXPECT_NEAR(box.Height, 2 * kLine + kEm / 8, 0.01);
    EXPECT_LE(box.Width, narrow);
    // Too low: the height is the area's, unless nothing is clipped.
    EXPECT_EQ(Measure(text, RectF(0, 0, 150, 8)).Height, 8);
    const StringFormat noClip(StringFormatFlagsNoClip);
    EXPECT_NEAR(Measure(L"x", RectF(0, 0, 150, 8), &noClip).Height, kLine + kEm / 8, 0.01);
    // Whole lines only: none has a place.
    const StringFormat lineLimit(StringFormatFlagsLineLimit);
    EXPECT_EQ(Measure(text, RectF(0, 0, 150, 8), &lineLimit).Width, 0);
    // Without wrapping: fewer characters.
    const StringFormat noWrap(StringFormatFlagsNoWrap);
    graphics.MeasureString(text.c_str(), -1, &song, RectF(0, 0, narrow, 100), &noWrap, &box, &fitted, &lines);
    EXPECT_EQ(lines, 1);
    EXPECT_GE(fitted, 10);
    EXPECT_LE(fitted, 12);
    // A newline is a character that fits.
    graphics.MeasureString(L"a\nb", -1, &song, RectF(0, 0, 100, 100), nullptr, &box, &fitted, &lines);
    EXPECT_EQ(fitted, 3);
    EXPECT_EQ(lines, 2);
    // Only so many characters are read as are told.
    graphics.MeasureString(L"abcdef", 2, &song, RectF(0, 0, 100, 100), nullptr, &box, &fitted, &lines);
    EXPECT_EQ(fitted, 2);
}

TEST_F(TextTest, NothingIsDrawnOutsideTheBox) {
    for (const int flags : {0, static_cast<int>(StringFormatFlagsNoWrap)}) {
        for (const StringTrimming trimming :
             {StringTrimmingNone, StringTrimmingCharacter, StringTrimmingEllipsisWord}) {
            StringFormat format(flags);
            format.SetTrimming(trimming);
            graphics.Clear(Color(0, 0, 0, 0));
            const RectF area(50, 40, 43, 20);
            graphics.DrawString(L"无边无际 without end 无边无际", -1, &song, area, &format, &black);
            const Rect ink = Ink();
            EXPECT_GE(ink.X, 50);
            EXPECT_GE(ink.Y, 40);
            EXPECT_LE(ink.GetRight(), 93);
            EXPECT_LE(ink.GetBottom(), 60);
            EXPECT_GT(ink.Width, 20);
        }
    }
}

TEST_F(TextTest, TextInItsOwnMeasuredBoxIsTheSame) {
    StringFormat centred;
    centred.SetAlignment(StringAlignmentCenter);
    for (int i = 0; i < 60; ++i) {
        std::wstring text;
        for (int k = 0; k <= i % 12; ++k)
            text += static_cast<wchar_t>(i % 3 == 0 ? L'一' + i * 37 + k * 91 : L'A' + k + i);
        if (i % 5 == 0) text += L" end";
        const RectF box = At(text, 100, 50, &centred);
        graphics.Clear(Color(0, 0, 0, 0));
        graphics.DrawString(text.c_str(), -1, &song, PointF(100, 50), &centred, &black);
        const auto atPoint = Pixels();
        graphics.Clear(Color(0, 0, 0, 0));
        graphics.DrawString(text.c_str(), -1, &song, box, &centred, &black);
        EXPECT_EQ(Pixels(), atPoint) << i;
    }
}

TEST_F(TextTest, BadArgumentsAreRefused) {
    RectF box;
    const FontFamily missing(L"No Such Family");
    const Font unusable(&missing, 12);
    EXPECT_EQ(graphics.DrawString(nullptr, 1, &song, PointF(), &black), InvalidParameter);
    EXPECT_EQ(graphics.DrawString(L"a", -2, &song, PointF(), &black), InvalidParameter);
    EXPECT_EQ(graphics.DrawString(L"a", 1, nullptr, PointF(), &black), InvalidParameter);
    EXPECT_EQ(graphics.DrawString(L"a", 1, &unusable, PointF(), &black), InvalidParameter);
    EXPECT_EQ(graphics.DrawString(L"a", 1, &song, PointF(), nullptr), InvalidParameter);
    EXPECT_EQ(graphics.MeasureString(L"a", 1, &song, PointF(), static_cast<RectF *>(nullptr)), InvalidParameter);
    graphics.SetCompositingMode(CompositingModeSourceCopy);
    EXPECT_EQ(graphics.DrawString(L"a", 1, &song, PointF(), &black), InvalidParameter);
    EXPECT_EQ(graphics.MeasureString(L"a", 1, &song, PointF(), &box), Ok);
}

TEST_F(TextTest, HintsAndBrushesChangeThePixels) {
    const Font large(L"Arial", 30, FontStyleRegular, UnitPixel);
    const auto grays = [&] {
        const auto pixels = Pixels();
        return std::count_if(pixels.begin(), pixels.end(), [](ARGB p) { return p >> 24 != 0 && p >> 24 != 255; });
    };
    graphics.DrawString(L"Sø", -1, &large, PointF(10, 10), &black);
    EXPECT_GT(grays(), 10);
    graphics.Clear(Color(0, 0, 0, 0));
    graphics.SetTextRenderingHint(TextRenderingHintSingleBitPerPixel);
    graphics.DrawString(L"Sø", -1, &large, PointF(10, 10), &black);
    EXPECT_EQ(grays(), 0);
    graphics.Clear(Color(0, 0, 0, 0));
    const SolidBrush half(Color(128, 200, 0, 0));
    graphics.DrawString(L"Sø", -1, &large, PointF(10, 10), &half);
    const auto pixels = Pixels();
    EXPECT_EQ(*std::max_element(pixels.begin(), pixels.end()) >> 24, 128U);
}

TEST_F(TextTest, StylesAreDrawn) {
    const auto darkness = [&](int style) {
        const Font font(L"Arial", 24, style, UnitPixel);
        graphics.Clear(Color(0, 0, 0, 0));
        graphics.DrawString(L"mill", -1, &font, PointF(10, 10), &black);
        double sum = 0;
        for (const ARGB pixel : Pixels()) sum += pixel >> 24;
        return sum;
    };
    const double regular = darkness(FontStyleRegular);
    EXPECT_GT(darkness(FontStyleBold), regular * 1.1);
    EXPECT_GT(darkness(FontStyleUnderline), regular * 1.05);
    EXPECT_GT(darkness(FontStyleStrikeout), regular * 1.02);
    EXPECT_NE(darkness(FontStyleItalic), regular);
}

TEST_F(TextTest, StrangeTextIsHarmless) {
    const std::wstring nul(L"a\0b", 3);
    const std::wstring texts[] = {nul,
                                  L"\r",
                                  L"\n\n",
                                  std::wstring(1, static_cast<wchar_t>(0xD800)),
                                  std::wstring(1, static_cast<wchar_t>(0x7FFFFFFF)),
                                  std::wstring(5000, L'长'),
                                  L"\t\x202E reversed",
                                  L"\U0001F600"};
    for (const std::wstring &text : texts) {
        for (const RectF &area : {RectF(0, 0, 0, 0), RectF(5, 5, 60, 50), RectF(0, 0, 1, 1), RectF(0, 0, -5, -5)}) {
            RectF box;
            INT fitted = -1;
            const int length = static_cast<int>(text.size());
            EXPECT_EQ(graphics.MeasureString(text.c_str(), length, &song, area, nullptr, &box, &fitted, nullptr), Ok);
            EXPECT_GE(fitted, 0);
            EXPECT_LE(fitted, length);
            EXPECT_TRUE(std::isfinite(box.Width) && std::isfinite(box.Height));
            EXPECT_EQ(graphics.DrawString(text.c_str(), length, &song, area, nullptr, &black), Ok);
        }
    }
}

TEST_F(TextTest, ThreadsMeasureAtTheSameTime) {
    const REAL expected = At(L"洞庭湖", 0, 0).Width;
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int &count : wrong) {
        threads.emplace_back([&count, expected] {
            Bitmap own(50, 50);
            Graphics target(&own);
            const SolidBrush brush(Color(1, 2, 3));
            for (int i = 0; i < 100; ++i) {
                const Font font(L"宋体", 12, FontStyleRegular, UnitPixel);
                RectF box;
                target.MeasureString(L"洞庭湖", -1, &font, PointF(), &box);
                target.DrawString(L"洞庭湖", -1, &font, PointF(), &brush);
                count += box.Width == expected ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
