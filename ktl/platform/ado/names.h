#pragma once

#include <string>
#include <string_view>

#include "ktl/platform/export.h"

namespace ktl::ado {

/// Bytes of the character at `position` of GBK text: 2 only for a lead byte with a proper trail byte (0x40 to 0xFE
/// without 0x7F). Unlike `ktl::CharLength` a cut-off character never swallows the quote behind it.
constexpr std::size_t GbkLength(std::string_view text, std::size_t position) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if (byte(position) < 0x81 || byte(position) > 0xFE || position + 1 >= text.size()) return 1;
    const unsigned char trail = byte(position + 1);
    return trail >= 0x40 && trail <= 0xFE && trail != 0x7F ? 2 : 1;
}

/// True when the names differ by the case of ASCII letters at most; a trail byte is no letter.
KTL_API bool EqualNames(std::string_view a, std::string_view b);
/// The name with its ASCII letters in lower case.
KTL_API std::string FoldedName(std::string_view name);
/// The longest start of GBK text that has at most `size` bytes and splits no character.
KTL_API std::string_view CutText(std::string_view text, std::size_t size);

}  // namespace ktl::ado
