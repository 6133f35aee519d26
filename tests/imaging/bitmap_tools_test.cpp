#include "ktl/imaging/bitmap_tools.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "ktl/platform/gdiplus/gdiplus.h"
#include "tests/support/drawing_start.h"
#include "tests/support/scratch_folder.h"

using Gdiplus::Bitmap;
using Gdiplus::Color;

namespace {

using BitmapPtr = std::unique_ptr<Bitmap>;

Gdiplus::ARGB PixelAt(const Bitmap &bitmap, int x, int y) {
    Color color(0, 0, 0, 0);
    bitmap.GetPixel(x, y, &color);
    return color.GetValue();
}

/// Each pixel another colour: red counts columns, green rows.
BitmapPtr Numbered(int side, BYTE alpha = 255) {
    auto bitmap = std::make_unique<Bitmap>(side, side);
    for (int i = 0; i < side * side; ++i) {
        const auto x = static_cast<BYTE>(i % side);
        const auto y = static_cast<BYTE>(i / side);
        bitmap->SetPixel(x, y, Color(alpha, x, y, 7));
    }
    return bitmap;
}

struct BitmapToolsTest : testing::Test {
    ktl::test::DrawingStart drawing;
    ktl::test::ScratchFolder folder;

    bool Begins(const char *name, const std::string &mark) const { return folder.Read(name).starts_with(mark); }
};

const std::string kJpegMark = "\xFF\xD8";

TEST_F(BitmapToolsTest, EncodersAreFoundByTheirExactType) {
    _GUID clsid;
    EXPECT_EQ(GetImageCLSID(L"image/png", &clsid), 1);
    EXPECT_EQ(clsid.Data1, 0x557CF406U);
    const _GUID before = clsid;
    for (const wchar_t *mime : {L"image/PNG", L"image/pn", L""}) EXPECT_EQ(GetImageCLSID(mime, &clsid), 0);
    EXPECT_EQ(clsid, before);
}

TEST_F(BitmapToolsTest, LoadedCopiesHoldNoFile) {
    const auto bitmap = Numbered(20, 128);
    const CString path = folder.Name("地图.png");
    ASSERT_EQ(SaveBitmapToPng(bitmap.get(), path), 1);
    EXPECT_EQ(GetBitmapWithoutPath(folder.Name("missing.png"), 1), nullptr);
    const BitmapPtr kept(GetBitmapWithoutPath(path, 0));
    EXPECT_TRUE(folder.Has("地图.png"));
    const BitmapPtr copy(GetBitmapWithoutPath(path, 1));
    EXPECT_FALSE(folder.Has("地图.png"));
    ASSERT_EQ(IsValidBitmap(copy.get()), 1);
    EXPECT_EQ(copy->GetPixelFormat(), Gdiplus::PixelFormat32bppARGB);
    for (const int at : {0, 11, 19}) EXPECT_EQ(PixelAt(*copy, at, 19), PixelAt(*bitmap, at, 19));
    folder.Write("text.png", "not a picture");
    EXPECT_EQ(GetBitmapWithoutPath(folder.Name("text.png"), 1), nullptr);
    EXPECT_TRUE(folder.Has("text.png"));
}

TEST_F(BitmapToolsTest, UnusableBitmapsAreDeleted) {
    struct Counted : Bitmap {
        explicit Counted(int *deletions) : Bitmap(0, 0), m_deletions(deletions) {}
        ~Counted() override { ++*m_deletions; }
        int *m_deletions;
    };
    int deletions = 0;
    EXPECT_EQ(IsValidBitmap(new Counted(&deletions)), 0);
    EXPECT_EQ(deletions, 1);
    EXPECT_EQ(IsValidBitmap(nullptr), 0);
}

TEST_F(BitmapToolsTest, TypesChooseTheFormatAndOthersAreJpeg) {
    const auto bitmap = Numbered(9);
    const std::string marks[] = {kJpegMark, kJpegMark, "\x89PNG", "GIF8", "BM", "II*", kJpegMark, kJpegMark};
    for (int type = -1; type < 7; ++type) {
        ASSERT_EQ(SaveBitmap(bitmap.get(), folder.Name("out"), static_cast<ENUM_IMAGE_TYPE>(type)), 1);
        EXPECT_TRUE(Begins("out", marks[type < 0 ? 0 : type])) << type;
    }
    int (*const savers[])(Bitmap *, CString) = {SaveBitmapToJpeg, SaveBitmapToPng, SaveBitmapToGif, SaveBitmapToBmp};
    const char *const formats[] = {"jpeg", "png", "gif", "bmp"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(savers[i](bitmap.get(), folder.Name("named")), 1);
        EXPECT_TRUE(Begins("named", marks[i + 1]));
        EXPECT_EQ(savers[i](nullptr, folder.Name("none")) + savers[i](bitmap.get(), folder.Name("no") + "\\x"), 0);
        // The same in memory, and back.
        unsigned int size = 0;
        unsigned char *buffer = CreateBufferFromBitmap(bitmap.get(), size, formats[i]);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(buffer), size), folder.Read("named"));
        const BitmapPtr again(GetBitmapFromBuffer(buffer, static_cast<int>(size)));
        std::free(buffer);
        ASSERT_EQ(IsValidBitmap(again.get()), 1);
        EXPECT_EQ(again->GetWidth(), 9U);
    }
}

TEST_F(BitmapToolsTest, JpegTargetsAreKeptOnlyWhenTheyExist) {
    SaveBitmapToPng(Numbered(9).get(), folder.Name("a.png"));
    CString target = folder.Name("wanted.jpg");
    EXPECT_EQ(SaveAsJpeg(folder.Name("a.png"), target, 0), 1);
    EXPECT_EQ(target, folder.Name("a.jpg"));
    EXPECT_TRUE(Begins("a.jpg", kJpegMark) && !folder.Has("wanted.jpg"));
    folder.Write("there.dat", "old");
    target = folder.Name("there.dat");
    EXPECT_EQ(SaveAsJpeg(folder.Name("a.png"), target, 1), 1);
    EXPECT_TRUE(Begins("there.dat", kJpegMark) && !folder.Has("a.png"));
    // A failure loses nothing; onto itself, the file that was written is not removed as the source.
    folder.Write("broken.png", "not a picture");
    target.Empty();
    EXPECT_EQ(SaveAsJpeg(folder.Name("broken.png"), target, 1), 0);
    EXPECT_TRUE(folder.Has("broken.png") && !folder.Has("broken.jpg"));
    target.Empty();
    EXPECT_EQ(SaveAsJpeg(folder.Name("a.jpg"), target, 1), 1);
    EXPECT_TRUE(folder.Has("a.jpg"));
}

TEST_F(BitmapToolsTest, BadBuffersAndFormatsFail) {
    Bitmap bitmap(2, 2);
    Bitmap unusable(0, 0);
    unsigned int size = 5;
    EXPECT_EQ(CreateBufferFromBitmap(&bitmap, size, "jpg"), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_TRUE(!CreateBufferFromPNG(&unusable, size) && !CreateBufferFromPNG(nullptr, size));
    unsigned char rubbish[] = {1, 2, 3};
    for (const int length : {3, 0, -1}) EXPECT_EQ(IsValidBitmap(GetBitmapFromBuffer(rubbish, length)), 0);
    EXPECT_EQ(GetBitmapFromBuffer(nullptr, 3), nullptr);
    const auto translucent = Numbered(12, 200);
    unsigned char *png = CreateBufferFromPNG(translucent.get(), size);
    const BitmapPtr again(GetBitmapFromBuffer(png, static_cast<int>(size)));
    std::free(png);
    EXPECT_EQ(PixelAt(*again, 11, 9), PixelAt(*translucent, 11, 9));
}

TEST_F(BitmapToolsTest, ChildTilesAreThePartsOfTheirParent) {
    const auto parent = Numbered(256);
    struct Case {
        const char *parentKey, *childKey;
        int x, y, side;
    };
    const Case cases[] = {{"tq", "tq", 0, 0, 256},       {"tq", "tqr", 128, 0, 128}, {"tq", "tqs", 128, 128, 128},
                          {"tq", "tqt", 0, 128, 128},    {"t", "trt", 128, 64, 64},  {"", "ssss", 240, 240, 16},
                          {"", "ssssssss", 255, 255, 1}, {"", "qqqqqqqr", 1, 0, 1}};
    for (const Case &c : cases) {
        const BitmapPtr child(GetParentBitmap(parent.get(), c.parentKey, c.childKey));
        ASSERT_EQ(child->GetWidth(), 256U);
        const int scale = 256 / c.side;
        int wrong = 0;
        for (int i = 0; i < 256 * 256; ++i) {
            const int x = i % 256;
            const int y = i / 256;
            wrong += PixelAt(*child, x, y) != PixelAt(*parent, c.x + x / scale, c.y + y / scale);
        }
        EXPECT_EQ(wrong, 0) << c.childKey;
    }
    const BitmapPtr deeper(GetParentBitmap(parent.get(), "", "sssssssss"));
    const BitmapPtr none(GetParentBitmap(nullptr, "", "q"));
    EXPECT_EQ(PixelAt(*deeper, 100, 100) + PixelAt(*none, 1, 1), 0U);
}

TEST_F(BitmapToolsTest, SwatchIsOutlinedOnTheKeyColour) {
    // A COLORREF: red in the low byte. Of alpha only the low byte counts.
    HBITMAP icon = GetColorIcon(0x00C08040, 0x1FF);
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->width, 16);
    for (const int edge : {3, 13}) EXPECT_EQ(icon->At(edge, 8), 0xFF000000U) << edge;
    for (const int outside : {2, 14}) EXPECT_EQ(icon->At(outside, 8), 0xFFFF00FFU) << outside;
    for (const int inside : {4, 12}) EXPECT_EQ(icon->At(inside, inside), 0xFF4080C0U) << inside;
    EXPECT_TRUE(DeleteObject(icon));
    icon = GetColorIcon(0x00000000, 0x80);
    EXPECT_NEAR(static_cast<int>(icon->At(8, 8) & 0xFF), 127, 1);
    EXPECT_EQ(icon->At(8, 8) >> 24, 255U);
    DeleteObject(icon);
    EXPECT_EQ(ktl::CountHBitmaps(), 0U);
}

}  // namespace
