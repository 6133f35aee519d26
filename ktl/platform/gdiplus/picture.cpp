#include "ktl/platform/gdiplus/picture.h"

#include <algorithm>
#include <array>
#include <cstring>

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

/// Four pixels, and the same as pairs of channels.
using Words = std::uint32_t __attribute__((vector_size(16)));
using Halves = std::uint16_t __attribute__((vector_size(16)));

/// Each 16-bit half times that of `factors`, over 255, rounded as `MultiplyByte` does.
Halves MultiplyHalves(Words values, Words factors) {
    const Halves product = reinterpret_cast<Halves>(values) * reinterpret_cast<Halves>(factors) + std::uint16_t{128};
    return (product + (product >> 8)) >> 8;
}

Words PremultiplyFour(Words samples) {
    const Words alpha = samples >> 24;
    const Words factors = alpha | alpha << 16;
    const auto redBlue = reinterpret_cast<Words>(MultiplyHalves(samples & 0x00FF00FFU, factors));
    const auto green = reinterpret_cast<Words>(MultiplyHalves((samples >> 8 & 0xFFU) | 0x00FF0000U, factors));
    return green << 8 | redBlue << 16 | redBlue >> 16;
}

Words ReorderFour(Words samples) {
    return (samples & 0xFF00FF00U) | (samples >> 16 & 0xFFU) | (samples & 0xFFU) << 16;
}

/// Runs `change` over a row four by four; what is left at the end goes through in a block of its own.
template <class Change>
void ForEachFour(std::uint32_t *row, int count, Change change) {
    const auto run = [change](std::uint32_t *at, std::size_t bytes) {
        Words words = {};
        std::memcpy(&words, at, bytes);
        words = change(words);
        std::memcpy(at, &words, bytes);
    };
    const int whole = count & ~3;
    for (int x = 0; x < whole; x += 4) run(row + x, sizeof(Words));
    if (whole < count) run(row + whole, static_cast<std::size_t>(count - whole) * sizeof(std::uint32_t));
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

void PremultiplySamples(std::uint32_t *row, int count) {
    ForEachFour(row, count, PremultiplyFour);
}

void ReorderSamples(std::uint32_t *row, int count) {
    ForEachFour(row, count, ReorderFour);
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
