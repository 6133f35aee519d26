#include "ktl/platform/gdiplus/wide_text.h"

#include <cstdint>

namespace ktl::raster {

namespace {

void Append(std::string &out, std::uint32_t code) {
    const auto tail = [&](int shift) { out.push_back(static_cast<char>(0x80U | (code >> shift & 0x3FU))); };
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0U | code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0U | code >> 12));
        tail(6);
        tail(0);
    } else {
        out.push_back(static_cast<char>(0xF0U | code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

std::string Utf8FromWide(std::wstring_view text) {
    std::string out;
    out.reserve(text.size() * 3);
    for (const wchar_t c : text) {
        const auto code = static_cast<std::uint32_t>(c);
        const bool isCharacter = code < 0x110000 && (code < 0xD800 || code > 0xDFFF);
        Append(out, isCharacter ? code : 0xFFFD);
    }
    return out;
}

}  // namespace ktl::raster
