#include "host/color.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

#include "host/text_number.h"

namespace ktl::host {

namespace {

struct NamedColor {
    std::string_view name;
    std::uint32_t rgb;
};

constexpr NamedColor kNamedColors[] = {
    {"aqua", 0x00FFFF},     {"beige", 0xF5F5DC},     {"black", 0x000000},     {"blue", 0x0000FF},
    {"brown", 0xA52A2A},    {"coral", 0xFF7F50},     {"crimson", 0xDC143C},   {"cyan", 0x00FFFF},
    {"darkblue", 0x00008B}, {"darkgray", 0xA9A9A9},  {"darkgreen", 0x006400}, {"darkred", 0x8B0000},
    {"fuchsia", 0xFF00FF},  {"gold", 0xFFD700},      {"gray", 0x808080},      {"green", 0x008000},
    {"grey", 0x808080},     {"indigo", 0x4B0082},    {"ivory", 0xFFFFF0},     {"khaki", 0xF0E68C},
    {"lavender", 0xE6E6FA}, {"lightblue", 0xADD8E6}, {"lightgray", 0xD3D3D3}, {"lightgreen", 0x90EE90},
    {"lime", 0x00FF00},     {"linen", 0xFAF0E6},     {"magenta", 0xFF00FF},   {"maroon", 0x800000},
    {"navy", 0x000080},     {"olive", 0x808000},     {"orange", 0xFFA500},    {"orchid", 0xDA70D6},
    {"pink", 0xFFC0CB},     {"plum", 0xDDA0DD},      {"purple", 0x800080},    {"red", 0xFF0000},
    {"salmon", 0xFA8072},   {"seagreen", 0x2E8B57},  {"sienna", 0xA0522D},    {"silver", 0xC0C0C0},
    {"skyblue", 0x87CEEB},  {"slategray", 0x708090}, {"snow", 0xFFFAFA},      {"steelblue", 0x4682B4},
    {"tan", 0xD2B48C},      {"teal", 0x008080},      {"tomato", 0xFF6347},    {"turquoise", 0x40E0D0},
    {"violet", 0xEE82EE},   {"wheat", 0xF5DEB3},     {"white", 0xFFFFFF},     {"yellow", 0xFFFF00},
};

constexpr COLORREF FromRgb(std::uint32_t rgb) {
    return RGB(rgb >> 16, rgb >> 8, rgb);
}

std::optional<COLORREF> ParseHex(std::string_view digits) {
    std::string six;
    if (digits.size() == 3) {
        for (const char c : digits) six.append(2, c);
    } else if (digits.size() == 6) {
        six = digits;
    } else {
        return std::nullopt;
    }
    std::uint32_t rgb = 0;
    const auto [end, error] = std::from_chars(six.data(), six.data() + six.size(), rgb, 16);
    if (error != std::errc() || end != six.data() + six.size()) return std::nullopt;
    return FromRgb(rgb);
}

}  // namespace

std::optional<COLORREF> ParseColor(std::string_view text) {
    if (text.starts_with('#')) return ParseHex(text.substr(1));
    const std::string lower = LowerAscii(text);
    const auto *found = std::find_if(std::begin(kNamedColors), std::end(kNamedColors),
                                     [&](const NamedColor &named) { return named.name == lower; });
    if (found == std::end(kNamedColors)) return std::nullopt;
    return FromRgb(found->rgb);
}

}  // namespace ktl::host
