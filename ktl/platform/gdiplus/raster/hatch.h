#pragma once

#include <array>
#include <cstdint>

#include "ktl/platform/gdiplus/types.h"

namespace ktl::raster {

/// 8 by 8 straight ARGB colours, the top row first.
using HatchTile = std::array<std::uint32_t, 64>;

constexpr int kHatchStyles = 53;

/// The eight rows of a style, which must be in 0..52: the top row first, the highest bit at the left.
const std::array<std::uint8_t, 8> &HatchRows(int style);

/// The pattern in its two colours. Three of the styles soften their diagonals: a set pixel is 234/255 of the
/// foreground, and an unset one beside a set one 64/255, whatever the smoothing mode.
HatchTile MakeHatchTile(int style, std::uint32_t fore, std::uint32_t back);

}  // namespace ktl::raster
