#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace ktl {

/// The text of a printf format, by the platform's rules and whatever the locale; see `CString::Format`.
std::string FormatText(std::string_view format, va_list args);

}  // namespace ktl
