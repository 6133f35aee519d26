#include "ktl/controls/xstring.h"

#include <gtest/gtest.h>

#include <memory>

#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/mem_file.h"
#include "tests/support/drawing_start.h"

namespace {

/// How many bytes a text writes at a version, and what `Serialize` answers.
std::pair<int, ULONGLONG> Stored(CXString &text, int version, CMemFile &file) {
    CArchive archive(&file, CArchive::store);
    const int answer = text.Serialize(archive, version);
    archive.Close();
    return {answer, file.GetLength()};
}

TEST(XString, VersionsChooseTheirLayout) {
    struct Case {
        int version, answer;
        bool writes;
    };
    const Case cases[] = {{200, 1, true}, {201, 1, false}, {206, 1, false},
                          {0, 0, false},  {199, 0, false}, {-1, 0, false}};
    for (const Case &c : cases) {
        CXString text("name");
        CMemFile file;
        const auto [answer, size] = Stored(text, c.version, file);
        EXPECT_EQ(answer, c.answer) << c.version;
        EXPECT_EQ(size > 0, c.writes) << c.version;
    }
}

TEST(XString, LayoutsAreReplacedByDerivedClasses) {
    struct Derived : CXString {
        int Serialize200(CArchive &) override { return ++calls200 - 1; }
        int Serialize201(CArchive &) override { return ++calls201 - 1; }
        int calls200 = 0;
        int calls201 = 0;
    };
    Derived text;
    CMemFile file;
    // The answer is 1 whatever the layout answers.
    EXPECT_EQ(Stored(text, 200, file).first, 1);
    EXPECT_EQ(Stored(text, 205, file).first, 1);
    EXPECT_EQ(text.calls200, 1);
    EXPECT_EQ(text.calls201, 1);
}

TEST(XString, StoredTextsComeBackWhole) {
    CXString text(ktl::FromUtf8("长江"));
    text.SetFontName("Arial");
    text.SetFontSize(17.5);
    text.SetFontStyle(Gdiplus::FontStyleBold);
    text.SetAlignment(Gdiplus::StringAlignmentFar);
    text.SetTextColor(0x112233, 200);
    text.SetHaloColor(0x445566, 0);
    CMemFile file;
    const ULONGLONG size = Stored(text, 200, file).second;
    const auto load = [&file](CXString &into, ULONGLONG length) {
        CMemFile part;
        std::vector<char> bytes(length);
        file.SeekToBegin();
        file.Read(bytes.data(), static_cast<UINT>(length));
        part.Write(bytes.data(), static_cast<UINT>(length));
        part.SeekToBegin();
        CArchive archive(&part, CArchive::load);
        into.Serialize(archive, 200);
    };
    CXString again;
    load(again, size);
    EXPECT_EQ(again.GetText(), text.GetText());
    EXPECT_EQ(again.GetFontName(), text.GetFontName());
    EXPECT_EQ(again.GetFontSize(), 17.5);
    EXPECT_EQ(again.GetFontStyle(), Gdiplus::FontStyleBold);
    EXPECT_EQ(again.GetAlignment(), Gdiplus::StringAlignmentFar);
    EXPECT_EQ(again.GetTextColor(), 0x112233U);
    EXPECT_EQ(again.GetHaloColor(), 0x445566U);
    // A stream that is cut short throws and leaves the text as it was.
    for (ULONGLONG length = 0; length < size; ++length) {
        CXString cut("before");
        EXPECT_THROW(load(cut, length), CArchiveException) << length;
        EXPECT_EQ(cut.GetText(), "before");
        EXPECT_EQ(cut.GetFontSize(), 12.0);
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
        for (int y = 0; y < 60; ++y) {
            for (int x = 0; x < 120; ++x) {
                Gdiplus::Color color;
                bitmap.GetPixel(x, y, &color);
                count += color.GetValue() == wanted ? 1 : 0;
            }
        }
        return count;
    }
};

TEST_F(XStringDrawing, BoxFollowsTheSettings) {
    CXString text(ktl::FromUtf8("湖北省"));
    text.SetFontSize(12);
    EXPECT_NEAR(BoxOf(text).Width, 36 + 4, 0.5);
    EXPECT_NEAR(BoxOf(text).Height, 12 * 292.0 / 256 + 1.5, 0.01);
    EXPECT_NEAR(BoxOf(text).X, -BoxOf(text).Width / 2, 0.01);
    const Gdiplus::REAL before = BoxOf(text).Width;
    text.SetFontSize(24);
    EXPECT_NEAR(BoxOf(text).Width, 2 * before, 1.0);
    text.SetAlignment(Gdiplus::StringAlignmentNear);
    EXPECT_EQ(BoxOf(text).X, 0);
    text.SetFontSize(-3);
    EXPECT_GT(BoxOf(text).Height, 0);
    EXPECT_EQ(BoxOf(CXString()).Width, 0);
    Gdiplus::RectF box(9, 9, 9, 9);
    text.GetRectF(nullptr, box);
    EXPECT_EQ(box.Width, 0);
}

TEST_F(XStringDrawing, HaloStandsAroundTheLetters) {
    CXString text("HI");
    text.SetFontName("Arial");
    text.SetFontSize(30);
    text.SetFontStyle(Gdiplus::FontStyleBold);
    text.SetTextColor(RGB(255, 0, 0));
    text.SetHaloColor(RGB(0, 255, 0));
    text.Draw(&graphics, CPoint(60, 20));
    EXPECT_GT(Count(0xFFFF0000U), 10);
    EXPECT_GT(Count(0xFF00FF00U), 10);
    graphics.Clear(Gdiplus::Color(0, 0, 0, 0));
    text.SetHaloColor(RGB(0, 255, 0), 0);
    text.Draw(&graphics, CPoint(60, 20));
    EXPECT_GT(Count(0xFFFF0000U), 10);
    EXPECT_EQ(Count(0xFF00FF00U), 0);
    text.Draw(nullptr, CPoint());
}

TEST(XString, MadeBeforeDrawingStartsItWorksAfterwards) {
    CXString text("early");
    text.Update();
    const ktl::test::DrawingStart drawing;
    Gdiplus::Bitmap bitmap(50, 50);
    Gdiplus::Graphics graphics(&bitmap);
    const CXString copy(text);
    Gdiplus::RectF box;
    copy.GetRectF(&graphics, box);
    EXPECT_GT(box.Width, 10);
}

}  // namespace
