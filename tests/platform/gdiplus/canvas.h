#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/graphics_path.h"
#include "ktl/platform/gdiplus/pen.h"
#include "tests/support/drawing_start.h"

namespace ktl::test {

/// A bitmap, what draws on it, and questions about its pixels. The pixels are 0 at first.
class Canvas {
  public:
    explicit Canvas(int width = 100, int height = 100, Gdiplus::PixelFormat format = Gdiplus::PixelFormat32bppARGB)
        : bitmap(width, height, format), graphics(&bitmap) {}

  private:
    DrawingStart m_started;

  public:
    Gdiplus::Bitmap bitmap;
    Gdiplus::Graphics graphics;

    Gdiplus::ARGB At(int x, int y) const {
        Gdiplus::Color color(0);
        EXPECT_EQ(bitmap.GetPixel(x, y, &color), Gdiplus::Ok);
        return color.GetValue();
    }
    int Width() const { return static_cast<int>(bitmap.GetWidth()); }
    int Height() const { return static_cast<int>(bitmap.GetHeight()); }
    /// All pixels, row by row, straight.
    std::vector<Gdiplus::ARGB> Pixels() {
        const int width = Width();
        const int height = Height();
        std::vector<Gdiplus::ARGB> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        Gdiplus::BitmapData data;
        data.Stride = width * 4;
        data.Scan0 = pixels.data();
        const Gdiplus::Rect all(0, 0, width, height);
        EXPECT_EQ(bitmap.LockBits(&all, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf,
                                  Gdiplus::PixelFormat32bppARGB, &data),
                  Gdiplus::Ok);
        EXPECT_EQ(bitmap.UnlockBits(&data), Gdiplus::Ok);
        return pixels;
    }
    /// How many pixels have been touched.
    int Count() {
        int count = 0;
        for (const Gdiplus::ARGB pixel : Pixels()) count += pixel != 0 ? 1 : 0;
        return count;
    }
    /// The smallest box of touched pixels as "x,y wxh", "" for none.
    std::string Bounds() {
        const auto pixels = Pixels();
        int left = Width(), top = Height(), right = -1, bottom = -1;
        for (int y = 0; y < Height(); ++y) {
            for (int x = 0; x < Width(); ++x) {
                if (pixels[static_cast<std::size_t>(y * Width() + x)] == 0) continue;
                left = std::min(left, x), top = std::min(top, y);
                right = std::max(right, x), bottom = std::max(bottom, y);
            }
        }
        if (right < 0) return "";
        return std::to_string(left) + "," + std::to_string(top) + " " + std::to_string(right - left + 1) + "x" +
               std::to_string(bottom - top + 1);
    }
    /// Pixels x0..x1 of a row: '#' where touched, '.' where not.
    std::string Row(int y, int x0, int x1) const {
        std::string row;
        for (int x = x0; x <= x1; ++x) row += At(x, y) != 0 ? '#' : '.';
        return row;
    }
};

}  // namespace ktl::test
