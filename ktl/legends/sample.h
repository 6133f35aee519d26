#pragma once

#include "ktl/platform/gdiplus/gdiplus.h"

namespace ktl {

/// A legend's sample: a new bitmap with alpha, white, smooth, painted by `paint(graphics)`. The caller owns the handle;
/// null when the bitmap cannot be made.
template <class Paint>
HBITMAP MakeSample(int width, int height, Paint paint) {
    constexpr Gdiplus::ARGB kWhite = 0xFFFFFFFF;
    Gdiplus::Bitmap bitmap(width, height, Gdiplus::PixelFormat32bppARGB);
    if (bitmap.GetLastStatus() != Gdiplus::Ok) return nullptr;
    {
        Gdiplus::Graphics graphics(&bitmap);
        graphics.SetSmoothingMode(Gdiplus::SmoothingModeHighQuality);
        graphics.Clear(Gdiplus::Color(kWhite));
        paint(graphics);
    }
    HBITMAP handle = nullptr;
    return bitmap.GetHBITMAP(Gdiplus::Color(Gdiplus::ARGB{0}), &handle) == Gdiplus::Ok ? handle : nullptr;
}

}  // namespace ktl
