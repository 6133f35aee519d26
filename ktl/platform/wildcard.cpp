#include "ktl/platform/wildcard.h"

#include <vector>

#include "ktl/platform/encoding.h"
#include "ktl/platform/string.h"

namespace ktl {
namespace {

// Lower-case characters, a two-byte one as one number.
std::vector<unsigned> Characters(std::string_view text) {
    CString folded(text);
    folded.MakeLower();
    const std::string_view bytes = folded.View();
    std::vector<unsigned> characters;
    for (std::size_t i = 0; i < bytes.size(); i += CharLength(bytes, i)) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        characters.push_back(CharLength(bytes, i) == 1 ? first : first << 8 | static_cast<unsigned char>(bytes[i + 1]));
    }
    return characters;
}

class Matcher {
  public:
    Matcher(std::string_view pattern, std::string_view name)
        : m_pattern(Characters(pattern)), m_name(Characters(name)) {}

    // Walks the pattern over the set of name positions reached so far.
    bool Matches() const {
        std::vector<bool> reached(m_name.size() + 1);
        reached[0] = true;
        for (std::size_t i = 0; i < m_pattern.size(); ++i) reached = Step(i, reached);
        return reached[m_name.size()];
    }

  private:
    std::vector<bool> Step(std::size_t i, const std::vector<bool> &reached) const {
        const std::size_t end = m_name.size();
        std::vector<bool> next(end + 1);
        bool any = false;
        for (std::size_t at = 0; at <= end; ++at) {
            any = any || reached[at];
            if (m_pattern[i] == '*') next[at] = any;
            if (!reached[at] || m_pattern[i] == '*') continue;
            if (at < end && (m_pattern[i] == '?' || m_pattern[i] == m_name[at])) next[at + 1] = true;
            if (FitsNothing(i, at)) next[at] = true;
        }
        return next;
    }
    bool FitsNothing(std::size_t i, std::size_t at) const {
        const bool isEnd = at == m_name.size();
        if (m_pattern[i] == '?') return isEnd || m_name[at] == '.';
        return m_pattern[i] == '.' && isEnd && i + 1 < m_pattern.size() && IsWild(m_pattern[i + 1]);
    }
    static bool IsWild(unsigned c) { return c == '*' || c == '?'; }

    std::vector<unsigned> m_pattern;
    std::vector<unsigned> m_name;
};

}  // namespace

bool MatchesWildcard(std::string_view pattern, std::string_view name) {
    if (pattern.ends_with("*.")) {
        return name.find('.') == std::string_view::npos && MatchesWildcard(pattern.substr(0, pattern.size() - 1), name);
    }
    return pattern == "*" || pattern == "*.*" || Matcher(pattern, name).Matches();
}

}  // namespace ktl
