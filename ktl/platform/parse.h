#pragma once

#include <string_view>

#include "ktl/platform/export.h"

namespace ktl {

/// `atof` whatever the locale: blanks and a sign may lead, what follows the number is ignored, 0 without one. Infinity,
/// not-a-number and hexadecimal forms are no numbers here.
KTL_API double ParseDouble(std::string_view text);
/// `atoi`, held at the limits of `int`.
KTL_API int ParseInt(std::string_view text);

}  // namespace ktl
