#pragma once

#include <cstdint>
#include <vector>

#include "ktl/platform/export.h"
#include "ktl/platform/types.h"

/// The pixels behind a handle that `Gdiplus::Bitmap::GetHBITMAP` gave: 32-bit B, G, R, A, premultiplied, the lowest row
/// first. Whoever holds the handle owns it and ends it with `DeleteObject`.
struct KTL_API HBITMAP__ {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> bits;

    /// The pixel as 0xAARRGGBB with y growing downward; 0 outside.
    std::uint32_t At(int x, int y) const;
};

/// Ends a handle. FALSE for null, and for a handle that is no more.
KTL_API BOOL DeleteObject(HBITMAP handle);

namespace ktl {

/// A new handle on pixels that are all 0; null when a side is below 1 or memory is short.
KTL_API HBITMAP CreateHBitmap(int width, int height);
/// How many handles live; a host that cleans up after itself ends with none.
KTL_API std::size_t CountHBitmaps();

}  // namespace ktl
