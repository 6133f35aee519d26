#include "ktl/platform/ado/connection_string.h"

#include <algorithm>

#include "ktl/platform/encoding.h"

namespace ktl::ado {

namespace {

/// Takes the text up to `stop` (a GBK trail byte is never one), or the quoted text that starts here, and leaves
/// `position` on the stop or at the end.
CString TakePart(std::string_view text, std::size_t &position, char stop) {
    while (position < text.size() && text[position] == ' ') ++position;
    std::string part;
    if (stop == ';' && position < text.size() && (text[position] == '\'' || text[position] == '"')) {
        const char quote = text[position++];
        while (position < text.size()) {
            if (text[position] == quote) {
                if (position + 1 >= text.size() || text[position + 1] != quote) break;
                ++position;
            }
            const std::size_t length = CharLength(text, position);
            part += text.substr(position, length);
            position += length;
        }
        while (position < text.size() && text[position] != stop) ++position;
        return part;
    }
    while (position < text.size() && text[position] != stop) {
        const std::size_t length = CharLength(text, position);
        part += text.substr(position, length);
        position += length;
    }
    CString result(part);
    return result.TrimRight();
}

}  // namespace

ConnectionString::ConnectionString(const CString &text) {
    const std::string_view all = text.View();
    std::size_t position = 0;
    while (position < all.size()) {
        if (all[position] == ';' || all[position] == ' ') {
            ++position;
            continue;
        }
        std::size_t end = position;
        const CString name = TakePart(all, end, '=');
        if (end >= all.size()) break;
        position = end + 1;
        m_settings.emplace_back(name, TakePart(all, position, ';'));
    }
}

CString ConnectionString::Get(const char *name) const {
    const auto found = std::find_if(m_settings.rbegin(), m_settings.rend(),
                                    [&](const auto &setting) { return setting.first.CompareNoCase(name) == 0; });
    return found == m_settings.rend() ? CString() : found->second;
}

bool ConnectionString::Has(const char *name) const {
    return std::any_of(m_settings.begin(), m_settings.end(),
                       [&](const auto &setting) { return setting.first.CompareNoCase(name) == 0; });
}

void ConnectionString::Set(const char *name, const CString &value) {
    m_settings.emplace_back(name, value);
}

}  // namespace ktl::ado
