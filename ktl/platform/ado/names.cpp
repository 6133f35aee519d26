#include "ktl/platform/ado/names.h"

namespace ktl::ado {

namespace {

constexpr char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

}  // namespace

bool EqualNames(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size();) {
        if (GbkLength(a, i) == 2) {
            if (a.substr(i, 2) != b.substr(i, 2)) return false;
            i += 2;
        } else if (Lower(a[i]) == Lower(b[i])) {
            ++i;
        } else {
            return false;
        }
    }
    return true;
}

std::string FoldedName(std::string_view name) {
    std::string folded(name);
    for (std::size_t i = 0; i < folded.size(); i += GbkLength(name, i)) {
        if (GbkLength(name, i) == 1) folded[i] = Lower(folded[i]);
    }
    return folded;
}

std::string_view CutText(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    std::size_t end = 0;
    while (end + GbkLength(text, end) <= size) end += GbkLength(text, end);
    return text.substr(0, end);
}

}  // namespace ktl::ado
