#include "apps/cli/display_width.h"

#include <clocale>
#include <cwchar>

namespace ktl::cli {

namespace {

constexpr std::string_view kCut = "…";

// The widths of Unicode, whatever the user's own locale knows.
class UnicodeLocale {
  public:
    UnicodeLocale() : m_before(uselocale(TheLocale())) {}
    UnicodeLocale(const UnicodeLocale &) = delete;
    UnicodeLocale &operator=(const UnicodeLocale &) = delete;
    ~UnicodeLocale() { uselocale(m_before); }

  private:
    static locale_t TheLocale() {
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }
    locale_t m_before;
};

struct Character {
    std::size_t bytes;
    /// -1 for a control character.
    int width;
};

// The character at the front; a byte that is none counts as one.
Character First(std::string_view text) {
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte < 0x80) return {1, byte < ' ' || byte == 0x7F ? -1 : 1};
    std::mbstate_t state = {};
    wchar_t wide = 0;
    const std::size_t bytes = std::mbrtowc(&wide, text.data(), text.size(), &state);
    if (bytes == 0 || bytes > text.size()) return {1, 1};
    return {bytes, wcwidth(wide)};
}

int WidthOf(const Character &character) {
    return character.width < 0 ? 1 : character.width;
}

}  // namespace

int DisplayWidth(std::string_view utf8) {
    const UnicodeLocale locale;
    int width = 0;
    while (!utf8.empty()) {
        const Character character = First(utf8);
        width += WidthOf(character);
        utf8.remove_prefix(character.bytes);
    }
    return width;
}

std::string OneLine(std::string_view utf8, int most) {
    const UnicodeLocale locale;
    std::string line;
    std::size_t fits = 0;
    int width = 0;
    while (!utf8.empty()) {
        const Character character = First(utf8);
        width += WidthOf(character);
        if (width > most) return line.substr(0, fits).append(kCut);
        line += character.width < 0 ? " " : utf8.substr(0, character.bytes);
        if (width < most) fits = line.size();
        utf8.remove_prefix(character.bytes);
    }
    return line;
}

}  // namespace ktl::cli
