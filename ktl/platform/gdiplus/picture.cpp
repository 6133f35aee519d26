#include "ktl/platform/gdiplus/picture.h"

#include <algorithm>
#include <array>

#include "ktl/platform/gdiplus/bitmap.h"

namespace ktl::raster {

namespace {

using namespace Gdiplus;

constexpr PixelFormat kFormats[] = {
    PixelFormat1bppIndexed, PixelFormat4bppIndexed, PixelFormat8bppIndexed,   PixelFormat16bppGrayScale,
    PixelFormat16bppRGB555, PixelFormat16bppRGB565, PixelFormat16bppARGB1555, PixelFormat24bppRGB,
    PixelFormat32bppRGB,    PixelFormat32bppARGB,   PixelFormat32bppPARGB,    PixelFormat48bppRGB,
    PixelFormat64bppARGB,   PixelFormat64bppPARGB,
};

constexpr std::array<ARGB, 16> kBasicColors = {
    0xFF000000, 0xFF800000, 0xFF008000, 0xFF808000, 0xFF000080, 0xFF800080, 0xFF008080, 0xFF808080,
    0xFFC0C0C0, 0xFFFF0000, 0xFF00FF00, 0xFFFFFF00, 0xFF0000FF, 0xFFFF00FF, 0xFF00FFFF, 0xFFFFFFFF,
};

std::vector<ARGB> HalftonePalette() {
    std::vector<ARGB> palette(kBasicColors.begin(), kBasicColors.end());
    palette.resize(40, 0);
    for (unsigned red = 0; red < 6; ++red) {
        for (unsigned green = 0; green < 6; ++green) {
            for (unsigned blue = 0; blue < 6; ++blue) {
                palette.push_back(0xFF000000U | red * 0x330000U | green * 0x3300U | blue * 0x33U);
            }
        }
    }
    return palette;
}

Status CheckSize(std::int64_t width, std::int64_t height) {
    if (width < 1 || height < 1) return InvalidParameter;
    if (width > kMaxBitmapSide || height > kMaxBitmapSide) return OutOfMemory;
    const auto bytes = static_cast<std::uint64_t>(width * height) * 4;
    return bytes > kMaxBitmapBytes ? OutOfMemory : Ok;
}

}  // namespace

std::uint32_t *Picture::Row(int y) const {
    auto *bytes = cairo_image_surface_get_data(surface.get());
    const auto stride = static_cast<std::ptrdiff_t>(cairo_image_surface_get_stride(surface.get()));
    return reinterpret_cast<std::uint32_t *>(bytes + y * stride);
}

std::vector<ARGB> DefaultPalette(PixelFormat format) {
    switch (format) {
        case PixelFormat1bppIndexed:
            return {0xFF000000U, 0xFFFFFFFFU};
        case PixelFormat4bppIndexed:
            return {kBasicColors.begin(), kBasicColors.end()};
        case PixelFormat8bppIndexed:
            return HalftonePalette();
        default:
            return {};
    }
}

Status MakePicture(std::int64_t width, std::int64_t height, PixelFormat format, std::unique_ptr<Picture> &picture) {
    const Status size = CheckSize(width, height);
    if (size != Ok) return size;
    if (std::find(std::begin(kFormats), std::end(kFormats), format) == std::end(kFormats)) return InvalidParameter;
    const bool alpha = IsAlphaPixelFormat(format) || IsIndexedPixelFormat(format);
    SurfacePtr surface(cairo_image_surface_create(alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24,
                                                  static_cast<int>(width), static_cast<int>(height)));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return OutOfMemory;
    auto made = std::make_unique<Picture>();
    made->surface = std::move(surface);
    made->format = format;
    made->rawFormat = ImageFormatMemoryBMP;
    picture = std::move(made);
    return Ok;
}

}  // namespace ktl::raster
