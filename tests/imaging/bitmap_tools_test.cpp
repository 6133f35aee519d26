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

struct BitmapToolsTest : testing::Test {
    ktl::test::DrawingStart drawing;
    ktl::test::ScratchFolder folder;
};

using BitmapPtr = std::unique_ptr<Bitmap>;

Gdiplus::ARGB PixelAt(const Bitmap &bitmap, int x, int y) {
    Color color(0, 0, 0, 0);
    bitmap.GetPixel(x, y, &color);
    return color.GetValue();
}

/// Each pixel another colour: red counts columns, green rows.
BitmapPtr Numbered(int width, int height, BYTE alpha = 255) {
    auto bitmap = std::make_unique<Bitmap>(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            bitmap->SetPixel(x, y, Color(alpha, static_cast<BYTE>(x), static_cast<BYTE>(y), 7));
    }
    return bitmap;
}

bool StartsWith(const std::string &text, const std::string &prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

const std::string kJpegMark = "\xFF\xD8";

TEST_F(BitmapToolsTest, EncodersAreFoundByTheirExactType) {
    _GUID clsid;
    EXPECT_EQ(GetImageCLSID(L"image/png", &clsid), 1);
    EXPECT_EQ(clsid.Data1, 0x557CF406U);
    const _GUID before = clsid;
    for (const wchar_t *mime : {L"image/PNG", L"image/pn", L"image/x-emf", L""}) {
        EXPECT_EQ(GetImageCLSID(mime, &clsid), 0);
    }
    EXPECT_EQ(clsid, before);
}

TEST_F(BitmapToolsTest, LoadedCopiesHoldNoFile) {
    const auto bitmap = Numbered(20, 30, 128);
    const CString path = folder.Name("地图.png");
    ASSERT_EQ(SaveBitmapToPng(bitmap.get(), path), 1);
    EXPECT_EQ(GetBitmapWithoutPath(folder.Name("missing.png"), 1), nullptr);
    const BitmapPtr kept(GetBitmapWithoutPath(path, 0));
    EXPECT_TRUE(folder.Has("地图.png"));
    const BitmapPtr copy(GetBitmapWithoutPath(path, 1));
    EXPECT_FALSE(folder.Has("地图.png"));
    ASSERT_EQ(IsValidBitmap(copy.get()), 1);
    EXPECT_EQ(copy->GetPixelFormat(), Gdiplus::PixelFormat32bppARGB);
    for (const auto &[x, y] : {std::pair(0, 0), std::pair(19, 29), std::pair(7, 11)}) {
        EXPECT_EQ(PixelAt(*copy, x, y), PixelAt(*bitmap, x, y));
    }
}

TEST_F(BitmapToolsTest, FilesThatAreNoPictureAreNeitherLoadedNorRemoved) {
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
    EXPECT_EQ(IsValidBitmap(nullptr), 0);
    EXPECT_EQ(IsValidBitmap(new Counted(&deletions)), 0);
    EXPECT_EQ(deletions, 1);
    Bitmap good(1, 1);
    EXPECT_EQ(IsValidBitmap(&good), 1);
}

TEST_F(BitmapToolsTest, TypesChooseTheFormatAndOthersAreJpeg) {
    const auto bitmap = Numbered(9, 9);
    const std::string marks[] = {kJpegMark, kJpegMark, "\x89PNG", "GIF8", "BM", "II*", kJpegMark};
    for (int type = 0; type < 7; ++type) {
        ASSERT_EQ(SaveBitmap(bitmap.get(), folder.Name("out"), static_cast<ENUM_IMAGE_TYPE>(type)), 1);
        EXPECT_TRUE(StartsWith(folder.Read("out"), marks[type])) << type;
    }
    for (const int type : {9, -1}) {
        SaveBitmap(bitmap.get(), folder.Name("odd"), static_cast<ENUM_IMAGE_TYPE>(type));
        EXPECT_TRUE(StartsWith(folder.Read("odd"), kJpegMark));
    }
    int (*const savers[])(Bitmap *, CString) = {SaveBitmapToJpeg, SaveBitmapToPng, SaveBitmapToGif, SaveBitmapToBmp};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(savers[i](bitmap.get(), folder.Name("named")), 1);
        EXPECT_TRUE(StartsWith(folder.Read("named"), marks[i + 1]));
        EXPECT_EQ(savers[i](nullptr, folder.Name("none")), 0);
        EXPECT_EQ(savers[i](bitmap.get(), folder.Name("no-folder") + "\\x"), 0);
    }
}

TEST_F(BitmapToolsTest, JpegTargetsAreKeptOnlyWhenTheyExist) {
    const auto bitmap = Numbered(9, 9);
    SaveBitmapToPng(bitmap.get(), folder.Name("a.png"));
    CString target = folder.Name("wanted.jpg");
    EXPECT_EQ(SaveAsJpeg(folder.Name("a.png"), target, 0), 1);
    EXPECT_EQ(target, folder.Name("a.jpg"));
    EXPECT_FALSE(folder.Has("wanted.jpg"));
    EXPECT_TRUE(StartsWith(folder.Read("a.jpg"), kJpegMark));

    folder.Write("there.dat", "old");
    target = folder.Name("there.dat");
    EXPECT_EQ(SaveAsJpeg(folder.Name("a.png"), target, 1), 1);
    EXPECT_EQ(target, folder.Name("there.dat"));
    EXPECT_TRUE(StartsWith(folder.Read("there.dat"), kJpegMark));
    EXPECT_FALSE(folder.Has("a.png"));
}

TEST_F(BitmapToolsTest, AFailedConversionLosesNothing) {
    folder.Write("broken.png", "not a picture");
    CString target;
    EXPECT_EQ(SaveAsJpeg(folder.Name("broken.png"), target, 1), 0);
    EXPECT_EQ(target, folder.Name("broken.jpg"));
    EXPECT_TRUE(folder.Has("broken.png"));
    EXPECT_FALSE(folder.Has("broken.jpg"));
    // Onto itself: the file that was written is not removed as the source.
    SaveBitmapToJpeg(Numbered(9, 9).get(), folder.Name("b.jpg"));
    target.Empty();
    EXPECT_EQ(SaveAsJpeg(folder.Name("b.jpg"), target, 1), 1);
    EXPECT_TRUE(folder.Has("b.jpg"));
}

TEST_F(BitmapToolsTest, BuffersGoThereAndBack) {
    const auto bitmap = Numbered(12, 10, 200);
    const std::pair<const char *, std::string> formats[] = {
        {"png", "\x89PNG"}, {"jpeg", kJpegMark}, {"gif", "GIF8"}, {"bmp", "BM"}, {"tiff", "II*"}};
    for (const auto &[format, mark] : formats) {
        unsigned int size = 0;
        unsigned char *buffer = CreateBufferFromBitmap(bitmap.get(), size, format);
        ASSERT_NE(buffer, nullptr) << format;
        EXPECT_TRUE(StartsWith(std::string(reinterpret_cast<char *>(buffer), size), mark)) << format;
        const BitmapPtr again(GetBitmapFromBuffer(buffer, static_cast<int>(size)));
        std::free(buffer);
        ASSERT_EQ(IsValidBitmap(again.get()), 1);
        EXPECT_EQ(again->GetWidth(), 12U);
    }
    unsigned int size = 0;
    unsigned char *png = CreateBufferFromPNG(bitmap.get(), size);
    const BitmapPtr again(GetBitmapFromBuffer(png, static_cast<int>(size)));
    std::free(png);
    EXPECT_EQ(PixelAt(*again, 11, 9), PixelAt(*bitmap, 11, 9));
}

TEST_F(BitmapToolsTest, BadBuffersAndFormatsFail) {
    Bitmap bitmap(2, 2);
    Bitmap unusable(0, 0);
    unsigned int size = 5;
    EXPECT_EQ(CreateBufferFromBitmap(&bitmap, size, "jpg"), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(CreateBufferFromPNG(&unusable, size), nullptr);
    EXPECT_EQ(CreateBufferFromPNG(nullptr, size), nullptr);
    unsigned char rubbish[] = {1, 2, 3};
    EXPECT_EQ(IsValidBitmap(GetBitmapFromBuffer(rubbish, 3)), 0);
    EXPECT_EQ(IsValidBitmap(GetBitmapFromBuffer(rubbish, 0)), 0);
    EXPECT_EQ(IsValidBitmap(GetBitmapFromBuffer(nullptr, 3)), 0);
}

TEST_F(BitmapToolsTest, ChildTilesAreThePartsOfTheirParent) {
    const auto parent = Numbered(256, 256);
    struct Case {
        const char *parentKey, *childKey;
        int x, y, side;
    };
    const Case cases[] = {
        {"tq", "tq", 0, 0, 256},      {"tq", "tqq", 0, 0, 128},      {"tq", "tqr", 128, 0, 128},
        {"tq", "tqs", 128, 128, 128}, {"tq", "tqt", 0, 128, 128},    {"t", "trt", 128, 64, 64},
        {"", "ssss", 240, 240, 16},   {"", "ssssssss", 255, 255, 1}, {"", "qqqqqqqr", 1, 0, 1},
    };
    for (const Case &c : cases) {
        const BitmapPtr child(GetParentBitmap(parent.get(), c.parentKey, c.childKey));
        ASSERT_EQ(child->GetWidth(), 256U);
        const int scale = 256 / c.side;
        int wrong = 0;
        for (int y = 0; y < 256; ++y) {
            for (int x = 0; x < 256; ++x) {
                wrong += PixelAt(*child, x, y) == PixelAt(*parent, c.x + x / scale, c.y + y / scale) ? 0 : 1;
            }
        }
        EXPECT_EQ(wrong, 0) << c.childKey;
    }
    const BitmapPtr deeper(GetParentBitmap(parent.get(), "", "sssssssss"));
    EXPECT_EQ(PixelAt(*deeper, 100, 100), 0U);
    const BitmapPtr none(GetParentBitmap(nullptr, "", "q"));
    EXPECT_EQ(PixelAt(*none, 1, 1), 0U);
}

TEST_F(BitmapToolsTest, SwatchIsOutlinedOnTheKeyColour) {
    // A COLORREF: red in the low byte. Of alpha only the low byte counts.
    HBITMAP icon = GetColorIcon(0x00C08040, 0x1FF);
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->width, 16);
    struct Case {
        int x, y;
        std::uint32_t pixel;
    };
    const Case cases[] = {{0, 0, 0xFFFF00FF},  {2, 8, 0xFFFF00FF},   {3, 3, 0xFF000000}, {13, 13, 0xFF000000},
                          {8, 13, 0xFF000000}, {14, 14, 0xFFFF00FF}, {4, 4, 0xFF4080C0}, {12, 12, 0xFF4080C0}};
    for (const Case &c : cases) EXPECT_EQ(icon->At(c.x, c.y), c.pixel) << c.x << "," << c.y;
    EXPECT_TRUE(DeleteObject(icon));
    icon = GetColorIcon(0x00000000, 0x80);
    EXPECT_NEAR(static_cast<int>(icon->At(8, 8) & 0xFF), 127, 1);
    EXPECT_EQ(icon->At(8, 8) >> 24, 255U);
    DeleteObject(icon);
    EXPECT_EQ(ktl::CountHBitmaps(), 0U);
}

}  // namespace
