#pragma once

#include <optional>
#include <string_view>

#include "ktl/platform/types.h"

namespace ktl::host {

/// A colour from "#RRGGBB", "#RGB" or a name of the web's basic colours in any case; empty for anything else.
std::optional<COLORREF> ParseColor(std::string_view text);

}  // namespace ktl::host
