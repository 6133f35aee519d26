#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ktl/platform/gdiplus/surface.h"
#include "ktl/platform/gdiplus/types.h"

/// \file
/// Arithmetic on 32-bit pixels. Stored pixels are premultiplied; source-over is the one of straight colours, rounded
/// once: over an opaque pixel each channel is round((a s + (255 - a) d) / 255).

namespace ktl::raster {

/// round(v / 255) in both 16-bit halves; each is at most 255 * 255.
constexpr std::uint32_t DivideBy255Pair(std::uint32_t v) {
    v += 0x00800080U;
    return ((v + ((v >> 8) & 0x00FF00FFU)) >> 8) & 0x00FF00FFU;
}

/// A colour on its way over pixels: its channels times its alpha, not yet divided, and what is left of the pixel.
struct BlendSource {
    std::uint32_t redBlue = 0;
    std::uint32_t alphaGreen = 0;
    std::uint32_t rest = 255;

    constexpr explicit BlendSource(std::uint32_t argb)
        : redBlue((argb & 0x00FF00FFU) * (argb >> 24)),
          alphaGreen((0x00FF0000U | ((argb >> 8) & 0xFFU)) * (argb >> 24)),
          rest(255 - (argb >> 24)) {}
    constexpr BlendSource() = default;
};

constexpr std::uint32_t Over(const BlendSource &source, std::uint32_t pixel) {
    const std::uint32_t redBlue = DivideBy255Pair(source.redBlue + (pixel & 0x00FF00FFU) * source.rest);
    const std::uint32_t alphaGreen = DivideBy255Pair(source.alphaGreen + ((pixel >> 8) & 0x00FF00FFU) * source.rest);
    return redBlue | alphaGreen << 8;
}

/// A premultiplied colour over a pixel.
constexpr std::uint32_t OverPremultiplied(std::uint32_t source, std::uint32_t pixel) {
    const std::uint32_t rest = 255 - (source >> 24);
    const std::uint32_t redBlue = (source & 0x00FF00FFU) * 255 + (pixel & 0x00FF00FFU) * rest;
    const std::uint32_t alphaGreen = ((source >> 8) & 0x00FF00FFU) * 255 + ((pixel >> 8) & 0x00FF00FFU) * rest;
    return DivideBy255Pair(redBlue) | DivideBy255Pair(alphaGreen) << 8;
}

/// Stores one value in `count` pixels.
inline void FillRun(std::uint32_t *pixels, std::size_t count, std::uint32_t value) {
    typedef std::uint32_t Four __attribute__((vector_size(16)));
    const Four four = {value, value, value, value};
    for (; count >= 16; pixels += 16, count -= 16) {
        std::memcpy(pixels, &four, sizeof four);
        std::memcpy(pixels + 4, &four, sizeof four);
        std::memcpy(pixels + 8, &four, sizeof four);
        std::memcpy(pixels + 12, &four, sizeof four);
    }
    for (; count >= 4; pixels += 4, count -= 4) std::memcpy(pixels, &four, sizeof four);
    for (; count > 0; --count) *pixels++ = value;
}

inline void BlendRun(std::uint32_t *pixels, std::size_t count, const BlendSource &source) {
    for (std::size_t i = 0; i < count; ++i) pixels[i] = Over(source, pixels[i]);
}

}  // namespace ktl::raster
