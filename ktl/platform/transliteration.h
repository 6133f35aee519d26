#pragma once

#include <string_view>

namespace ktl {

/// A plain form, in characters that GBK has, of a character that it lacks: UTF-8, several letters or none. `found`
/// tells whether there is one.
std::string_view Transliterate(char32_t character, bool &found);

}  // namespace ktl
