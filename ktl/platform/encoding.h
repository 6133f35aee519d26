#pragma once

#include <string>
#include <string_view>

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"

/// \file
/// The one place where text changes its encoding. Inside the library text is GBK (code page 936 with the user areas of
/// the platform's table); sources, the file system and the command line are UTF-8.

namespace ktl {

/// GBK from UTF-8. What GBK lacks is transliterated where a plain form is known (a mark that only combines with the
/// letter before it falls away), otherwise replaced by '?'; `*replaced`, when given, grows by the number of characters
/// that changed in either way, or bytes that were no UTF-8.
KTL_API CString FromUtf8(std::string_view utf8, int *replaced = nullptr);
/// UTF-8 from GBK. Never fails: bytes that are no character become U+FFFD.
KTL_API std::string ToUtf8(std::string_view gbk);
inline std::string ToUtf8(const CString &gbk) {
    return ToUtf8(gbk.View());
}
inline std::string ToUtf8(const std::string &gbk) {
    return ToUtf8(std::string_view(gbk));
}
/// Null counts as empty.
inline std::string ToUtf8(const char *gbk) {
    return ToUtf8(gbk ? std::string_view(gbk) : std::string_view());
}

/// Wide (UTF-32) text from GBK and back, by the same table.
KTL_API std::wstring WideFromGbk(std::string_view gbk);
KTL_API CString GbkFromWide(std::wstring_view wide, int *replaced = nullptr);

/// UTF-16 text, as old streams and profiles hold it, from GBK and back. Half a surrogate pair counts as a character
/// that GBK lacks.
KTL_API std::u16string Utf16FromGbk(std::string_view gbk);
KTL_API CString GbkFromUtf16(std::u16string_view text, int *replaced = nullptr);

/// The system's file name (UTF-8, '/') for a GBK path with '\' or '/' separators. A trail byte 0x5C is no separator.
KTL_API std::string SystemPath(const CString &path);
/// The GBK path with '\' separators for the system's file name. Characters that GBK lacks change as in `FromUtf8`.
KTL_API CString PlatformPath(std::string_view systemPath);

/// True for the first byte of a two-byte character.
constexpr bool IsLeadByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x81 && byte <= 0xFE;
}
/// Bytes of the character at `position`: 2, or 1 for a single byte, a lone lead byte at the end or one before a NUL.
constexpr std::size_t CharLength(std::string_view text, std::size_t position) {
    return IsLeadByte(text[position]) && position + 1 < text.size() && text[position + 1] != '\0' ? 2 : 1;
}

}  // namespace ktl
