#pragma once

#include <string>
#include <string_view>

/// \file
/// Private to the drawing layer.

namespace ktl::raster {

/// UTF-8 from wide text; what is no character becomes U+FFFD.
std::string Utf8FromWide(std::wstring_view text);

}  // namespace ktl::raster
