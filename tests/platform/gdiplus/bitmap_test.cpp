#include "ktl/platform/gdiplus/bitmap.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/support/drawing_start.h"

using namespace Gdiplus;

namespace {

struct BitmapTest : testing::Test {
    ktl::test::DrawingStart drawing;
};

TEST_F(BitmapTest, SizesBeyondTheLimitsAreRefused) {
    struct Case {
        INT width, height;
        PixelFormat format;
        Status status;
    };
    const Case cases[] = {
        {1, 1, PixelFormat32bppARGB, Ok},
        {32767, 1, PixelFormat24bppRGB, Ok},
        {0, 5, PixelFormat32bppARGB, InvalidParameter},
        {5, -1, PixelFormat32bppARGB, InvalidParameter},
        {5, 5, PixelFormatUndefined, InvalidParameter},
        {5, 5, 0x12345, InvalidParameter},
        {32768, 1, PixelFormat32bppARGB, OutOfMemory},
        {30000, 30000, PixelFormat32bppARGB, OutOfMemory},
        {2147483647, 2147483647, PixelFormat32bppARGB, OutOfMemory},
        {65536, 65536, PixelFormat8bppIndexed, OutOfMemory},
    };
    for (const Case &c : cases) {
        const Bitmap bitmap(c.width, c.height, c.format);
        EXPECT_EQ(bitmap.GetLastStatus(), c.status) << c.width << " by " << c.height;
        // The reason stays: asking twice must not make a dead bitmap good.
        EXPECT_EQ(bitmap.GetLastStatus(), c.status);
        EXPECT_EQ(bitmap.GetWidth(), c.status == Ok ? static_cast<UINT>(c.width) : 0U);
    }
}

TEST_F(BitmapTest, PixelsKeepWhatTheFormatCanHold) {
    struct Case {
        PixelFormat format;
        ARGB fresh, set, got;
    };
    const Case cases[] = {
        {PixelFormat32bppARGB, 0x00000000, 0xFF123456, 0xFF123456},
        {PixelFormat32bppARGB, 0x00000000, 0x80FF8000, 0x80FF8000},
        {PixelFormat32bppARGB, 0x00000000, 0x00FFFFFF, 0x00000000},
        {PixelFormat32bppPARGB, 0x00000000, 0x40404040, 0x40404040},
        {PixelFormat32bppRGB, 0xFF000000, 0x00123456, 0xFF123456},
        {PixelFormat24bppRGB, 0xFF000000, 0x80FF8000, 0xFFFF8000},
    };
    for (const Case &c : cases) {
        Bitmap bitmap(3, 2, c.format);
        Color color;
        ASSERT_EQ(bitmap.GetPixel(2, 1, &color), Ok);
        EXPECT_EQ(color.GetValue(), c.fresh) << std::hex << c.format;
        ASSERT_EQ(bitmap.SetPixel(2, 1, Color(c.set)), Ok);
        ASSERT_EQ(bitmap.GetPixel(2, 1, &color), Ok);
        EXPECT_EQ(color.GetValue(), c.got) << std::hex << c.format;
        bitmap.GetPixel(1, 1, &color);
        EXPECT_EQ(color.GetValue(), c.fresh);
    }
}

TEST_F(BitmapTest, PixelsOutsideAndOfIndexedFormatsAreRefused) {
    Bitmap bitmap(3, 2);
    Color color;
    EXPECT_EQ(bitmap.GetPixel(3, 0, &color), InvalidParameter);
    EXPECT_EQ(bitmap.GetPixel(0, -1, &color), InvalidParameter);
    EXPECT_EQ(bitmap.SetPixel(0, 2, Color()), InvalidParameter);
    EXPECT_EQ(bitmap.GetLastStatus(), InvalidParameter);
    EXPECT_EQ(bitmap.GetLastStatus(), Ok);
    Bitmap indexed(2, 2, PixelFormat8bppIndexed);
    EXPECT_EQ(indexed.SetPixel(0, 0, Color()), InvalidParameter);
    EXPECT_EQ(indexed.GetPixel(0, 0, &color), Ok);
    EXPECT_EQ(color.GetValue(), 0xFF000000U);
}

// Pixels at a position of an alpha step must come back the same: otherwise each read and write round fades a picture.
TEST_F(BitmapTest, ReadingAndWritingBackChangesNothing) {
    Bitmap bitmap(256, 256);
    for (int a = 0; a < 256; ++a) {
        for (int c = 0; c < 256; ++c) {
            bitmap.SetPixel(c, a, Color(static_cast<BYTE>(a), static_cast<BYTE>(c), static_cast<BYTE>(255 - c), 128));
        }
    }
    Bitmap again(256, 256);
    int changed = 0;
    for (int a = 0; a < 256; ++a) {
        for (int c = 0; c < 256; ++c) {
            Color first;
            Color second;
            bitmap.GetPixel(c, a, &first);
            again.SetPixel(c, a, first);
            again.GetPixel(c, a, &second);
            changed += first == second ? 0 : 1;
            // Half a step of what alpha leaves of a channel, and the rounding on the way back.
            if (a > 0) {
                EXPECT_NEAR(first.GetRed(), c, 128.0 / a + 0.5) << a;
            }
        }
    }
    EXPECT_EQ(changed, 0);
}

TEST_F(BitmapTest, LockedBlocksShowEachFormatsBytes) {
    Bitmap bitmap(3, 3);
    bitmap.SetPixel(1, 1, Color(0x80, 0xFF, 0x40, 0x00));
    struct Case {
        PixelFormat format;
        INT stride;
        std::vector<BYTE> bytes;
    };
    const Case cases[] = {
        {PixelFormat32bppARGB, 8, {0x00, 0x40, 0xFF, 0x80}},
        {PixelFormat32bppPARGB, 8, {0x00, 0x20, 0x80, 0x80}},
        {PixelFormat32bppRGB, 8, {0x00, 0x40, 0xFF, 0xFF}},
        {PixelFormat24bppRGB, 8, {0x00, 0x40, 0xFF}},
    };
    for (const Case &c : cases) {
        const Rect area(1, 1, 2, 2);
        BitmapData data;
        ASSERT_EQ(bitmap.LockBits(&area, ImageLockModeRead, c.format, &data), Ok);
        EXPECT_EQ(data.Stride, c.stride);
        EXPECT_EQ(data.Width, 2U);
        const auto *bytes = static_cast<const BYTE *>(data.Scan0);
        EXPECT_EQ(std::vector<BYTE>(bytes, bytes + c.bytes.size()), c.bytes) << std::hex << c.format;
        BitmapData second;
        EXPECT_EQ(bitmap.LockBits(nullptr, ImageLockModeRead, c.format, &second), WrongState);
        EXPECT_EQ(bitmap.UnlockBits(&data), Ok);
        EXPECT_EQ(bitmap.UnlockBits(&data), WrongState);
    }
    const Rect outside(2, 2, 2, 1);
    BitmapData data;
    EXPECT_EQ(bitmap.LockBits(&outside, ImageLockModeRead, PixelFormat32bppARGB, &data), InvalidParameter);
}

TEST_F(BitmapTest, WritingABlockChangesItsPartOnly) {
    Bitmap bitmap(4, 2, PixelFormat24bppRGB);
    std::vector<BYTE> own(2 * 8, 0x77);
    BitmapData data;
    data.Scan0 = own.data();
    data.Stride = 8;
    const Rect area(1, 0, 2, 2);
    const UINT flags = ImageLockModeWrite | ImageLockModeUserInputBuf;
    ASSERT_EQ(bitmap.LockBits(&area, flags, PixelFormat32bppARGB, &data), Ok);
    ASSERT_EQ(bitmap.UnlockBits(&data), Ok);
    const ARGB expected[] = {0xFF000000, 0xFF777777, 0xFF777777, 0xFF000000};
    for (int x = 0; x < 4; ++x) {
        Color color;
        bitmap.GetPixel(x, 1, &color);
        EXPECT_EQ(color.GetValue(), expected[x]) << x;
    }
}

TEST_F(BitmapTest, CopiesHaveTheirOwnPixelsAndFormat) {
    Bitmap bitmap(4, 4);
    bitmap.SetPixel(2, 1, Color(0x80, 0x40, 0x80, 0xFF));
    const std::unique_ptr<Bitmap> part(bitmap.Clone(2, 1, 2, 3, PixelFormat24bppRGB));
    ASSERT_NE(part, nullptr);
    Color color;
    part->GetPixel(0, 0, &color);
    EXPECT_EQ(color.GetValue(), 0xFF4080FFU);
    EXPECT_EQ(part->GetHeight(), 3U);
    const std::unique_ptr<Image> whole(static_cast<const Image &>(bitmap).Clone());
    bitmap.SetPixel(2, 1, Color());
    static_cast<Bitmap &>(*whole).GetPixel(2, 1, &color);
    EXPECT_EQ(color.GetValue(), 0x804080FFU);
    EXPECT_EQ(bitmap.Clone(2, 2, 3, 1, PixelFormat32bppARGB), nullptr);
}

TEST_F(BitmapTest, ForeignPixelsAreTakenWithTheirStride) {
    const BYTE rows[] = {1, 2, 3, 4, 5, 6, 0, 0, 11, 12, 13, 14, 15, 16, 0, 0};
    const Bitmap down(2, 2, 8, PixelFormat24bppRGB, rows);
    const Bitmap up(2, 2, -8, PixelFormat24bppRGB, rows + 8);
    Color color;
    down.GetPixel(1, 0, &color);
    EXPECT_EQ(color.GetValue(), 0xFF060504U);
    up.GetPixel(1, 0, &color);
    EXPECT_EQ(color.GetValue(), 0xFF100F0EU);
    EXPECT_EQ(Bitmap(2, 2, 4, PixelFormat24bppRGB, rows).GetLastStatus(), InvalidParameter);
    EXPECT_EQ(Bitmap(2, 2, 8, PixelFormat8bppIndexed, rows).GetLastStatus(), InvalidParameter);
}

TEST_F(BitmapTest, HandleMixesInTheBackgroundAndKeepsAlpha) {
    struct Case {
        PixelFormat format;
        ARGB pixel, background;
        std::uint32_t expected;
    };
    const Case cases[] = {
        {PixelFormat32bppARGB, 0x68686868, 0x00000000, 0x682A2A2A},
        {PixelFormat32bppARGB, 0x68686868, 0x00FF00FF, 0x68C12AC1},
        {PixelFormat32bppARGB, 0x00000000, 0x00FF00FF, 0x00FF00FF},
        {PixelFormat32bppARGB, 0xFF102030, 0x00FF00FF, 0xFF102030},
        {PixelFormat24bppRGB, 0xFF102030, 0x00FF00FF, 0xFF102030},
    };
    for (const Case &c : cases) {
        Bitmap bitmap(2, 3, c.format);
        bitmap.SetPixel(1, 0, Color(c.pixel));
        HBITMAP handle = nullptr;
        ASSERT_EQ(bitmap.GetHBITMAP(Color(c.background), &handle), Ok);
        EXPECT_EQ(handle->At(1, 0), c.expected) << std::hex << c.pixel << " on " << c.background;
        // The upper row comes last.
        EXPECT_EQ(handle->bits[5], c.expected);
        EXPECT_EQ(handle->At(2, 0), 0U);
        EXPECT_EQ(ktl::CountHBitmaps(), 1U);
        EXPECT_TRUE(DeleteObject(handle));
        EXPECT_FALSE(DeleteObject(handle));
    }
    EXPECT_FALSE(DeleteObject(nullptr));
    EXPECT_EQ(ktl::CountHBitmaps(), 0U);
}

}  // namespace
