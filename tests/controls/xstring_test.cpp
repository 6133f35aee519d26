#include "ktl/controls/xstring.h"

#include <gtest/gtest.h>

#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/mem_file.h"
#include "tests/support/drawing_start.h"

namespace {

/// What a text writes at a version; `answer` is what `Serialize` says.
std::vector<BYTE> Stored(CXString &text, int version, int &answer) {
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    answer = text.Serialize(archive, version);
    archive.Close();
    return file.Detach();
}

TEST(XString, VersionsChooseTheirLayout) {
    struct Derived : CXString {
        // The answer of the whole is 1 whatever the layout answers.
        int Serialize200(CArchive &) override { return ++calls200 - 1; }
        int Serialize201(CArchive &) override { return ++calls201 - 1; }
        int calls200 = 0;
        int calls201 = 0;
    };
    const int cases[][4] = {{200, 1, 1, 0}, {201, 1, 0, 1}, {206, 1, 0, 1}, {0, 0, 0, 0}, {199, 0, 0, 0}};
    for (const auto &[version, expected, calls200, calls201] : cases) {
        Derived text;
        int answer = -1;
        Stored(text, version, answer);
        EXPECT_TRUE(answer == expected && text.calls200 == calls200 && text.calls201 == calls201) << version;
        CXString plain("name");
        EXPECT_EQ(Stored(plain, version, answer).empty(), calls200 == 0) << version;
    }
}

TEST(XString, StoredTextsComeBackWhole) {
    CXString text(ktl::FromUtf8("长江"));
    text.SetFontName("Arial");
    text.SetFontSize(17.5);
    text.SetFontStyle(Gdiplus::FontStyleBold);
    text.SetAlignment(Gdiplus::StringAlignmentFar);
    text.SetTextColor(0x112233, 200);
    text.SetHaloColor(0x445566, 0);
    int answer = 0;
    const std::vector<BYTE> bytes = Stored(text, 200, answer);
    const auto load = [&bytes](CXString &into, std::size_t length) {
        CMemFile part(bytes.data(), static_cast<UINT>(length));
        CArchive archive(&part, CArchive::load);
        into.Serialize(archive, 200);
    };
    CXString again;
    load(again, bytes.size());
    EXPECT_EQ(Stored(again, 200, answer), bytes);
    EXPECT_TRUE(again.GetText() == text.GetText() && again.GetFontName() == "Arial" && again.GetFontSize() == 17.5);
    EXPECT_TRUE(again.GetFontStyle() == 1 && again.GetAlignment() == Gdiplus::StringAlignmentFar);
    EXPECT_TRUE(again.GetTextColor() == 0x112233U && again.GetHaloColor() == 0x445566U);
    // A stream that is cut short throws and leaves the text as it was.
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        CXString cut("before");
        EXPECT_THROW(load(cut, length), CArchiveException) << length;
        EXPECT_TRUE(cut.GetText() == "before" && cut.GetFontSize() == 12.0) << length;
    }
}

struct XStringDrawing : testing::Test {
    ktl::test::DrawingStart drawing;
    Gdiplus::Bitmap bitmap{120, 60};
    Gdiplus::Graphics graphics{&bitmap};

    Gdiplus::RectF BoxOf(const CXString &text) {
        Gdiplus::RectF box(9, 9, 9, 9);
        text.GetRectF(&graphics, box);
        return box;
    }
    int Count(Gdiplus::ARGB wanted) {
        int count = 0;
        for (int i = 0; i < 120 * 60; ++i) {
            Gdiplus::Color color;
            bitmap.GetPixel(i % 120, i / 120, &color);
            count += color.GetValue() == wanted;
        }
        return count;
    }
};

TEST_F(XStringDrawing, BoxFollowsTheSettings) {
    CXString text(ktl::FromUtf8("湖北省"));
    const Gdiplus::RectF box = BoxOf(text);
    EXPECT_NEAR(box.Width, 36 + 4, 0.5);
    EXPECT_NEAR(box.Height, 12 * 292.0 / 256 + 1.5, 0.01);
    EXPECT_NEAR(box.X, -box.Width / 2, 0.01);
    text.SetFontSize(24);
    EXPECT_NEAR(BoxOf(text).Width, 2 * box.Width, 1.0);
    EXPECT_NEAR(BoxOf(CXString(text)).Width, 2 * box.Width, 1.0);
    text.SetAlignment(Gdiplus::StringAlignmentNear);
    EXPECT_EQ(BoxOf(text).X, 0);
    text.SetFontSize(-3);
    EXPECT_GT(BoxOf(text).Height, 0);
    EXPECT_EQ(BoxOf(CXString()).Width, 0);
    Gdiplus::RectF none(9, 9, 9, 9);
    text.GetRectF(nullptr, none);
    EXPECT_EQ(none.Width, 0);
}

TEST_F(XStringDrawing, HaloStandsAroundTheLetters) {
    CXString text("HI");
    text.SetFontName("Arial");
    text.SetFontSize(30);
    text.SetTextColor(RGB(255, 0, 0));
    for (const int alpha : {255, 0}) {
        graphics.Clear(Gdiplus::Color(0, 0, 0, 0));
        text.SetHaloColor(RGB(0, 255, 0), alpha);
        text.Draw(&graphics, CPoint(60, 20));
        EXPECT_GT(Count(0xFFFF0000U), 10);
        EXPECT_EQ(Count(0xFF00FF00U) > 10, alpha > 0);
    }
    text.Draw(nullptr, CPoint());
}

TEST(XString, MadeBeforeDrawingStartsItWorksAfterwards) {
    CXString text("early");
    text.Update();
    const ktl::test::DrawingStart drawing;
    Gdiplus::Bitmap bitmap(50, 50);
    Gdiplus::Graphics graphics(&bitmap);
    Gdiplus::RectF box;
    text.GetRectF(&graphics, box);
    EXPECT_GT(box.Width, 10);
}

}  // namespace
