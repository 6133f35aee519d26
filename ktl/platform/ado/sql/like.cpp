#include "ktl/platform/ado/sql/like.h"

#include <algorithm>
#include <cstring>

#include "ktl/platform/ado/names.h"

namespace ktl::ado::sql {

namespace {

/// True when `position` begins a character of the text.
bool IsCharacterStart(std::string_view text, std::size_t position) {
    // A byte below 0x40 is never a trail byte, so the walk can start behind the last of them.
    std::size_t start = position;
    while (start > 0 && static_cast<unsigned char>(text[start - 1]) >= 0x40) --start;
    while (start < position) start += GbkLength(text, start);
    return start == position;
}

}  // namespace

LikePattern::LikePattern(std::string_view pattern, char escape) : m_pieces(1) {
    for (std::size_t i = 0; i < pattern.size();) {
        const std::size_t length = GbkLength(pattern, i);
        Piece &piece = m_pieces.back();
        if (length == 1 && escape != '\0' && pattern[i] == escape && i + 1 < pattern.size()) {
            const std::size_t escaped = GbkLength(pattern, i + 1);
            piece.text += pattern.substr(i + 1, escaped);
            i += 1 + escaped;
            continue;
        }
        if (length == 1 && pattern[i] == '%') {
            m_pieces.emplace_back();
        } else {
            if (length == 1 && pattern[i] == '_') piece.wild.push_back(piece.text.size());
            piece.text += pattern.substr(i, length);
        }
        i += length;
    }
}

/// Matches the whole piece from a character's start on; `end` is where it ends in the text.
bool LikePattern::MatchesAt(const Piece &piece, std::string_view text, std::size_t position, std::size_t &end) {
    std::size_t from = 0;
    for (const std::size_t wild : piece.wild) {
        const std::string_view plain = std::string_view(piece.text).substr(from, wild - from);
        if (text.substr(position, plain.size()) != plain) return false;
        position += plain.size();
        if (position >= text.size()) return false;
        position += GbkLength(text, position);
        from = wild + 1;
    }
    const std::string_view rest = std::string_view(piece.text).substr(from);
    if (position > text.size() || text.substr(position, rest.size()) != rest) return false;
    end = position + rest.size();
    return true;
}

/// The first place from `position` (a character's start) on where the piece matches.
bool LikePattern::FindPiece(const Piece &piece, std::string_view text, std::size_t &position, std::size_t &end) {
    if (piece.wild.empty()) {
        while (position + piece.text.size() <= text.size()) {
            const void *found =
                memmem(text.data() + position, text.size() - position, piece.text.data(), piece.text.size());
            if (found == nullptr) return false;
            const auto at = static_cast<std::size_t>(static_cast<const char *>(found) - text.data());
            position = at;
            end = at + piece.text.size();
            if (IsCharacterStart(text, at)) return true;
            ++position;
        }
        return false;
    }
    for (; position < text.size(); position += GbkLength(text, position)) {
        if (MatchesAt(piece, text, position, end)) return true;
    }
    return false;
}

bool LikePattern::Matches(std::string_view text) const {
    if (m_pieces.empty()) return text.empty();
    std::size_t end = 0;
    if (!MatchesAt(m_pieces.front(), text, 0, end)) return false;
    if (m_pieces.size() == 1) return end == text.size();
    for (std::size_t i = 1; i + 1 < m_pieces.size(); ++i) {
        if (m_pieces[i].text.empty()) continue;
        std::size_t position = end;
        if (!FindPiece(m_pieces[i], text, position, end)) return false;
    }
    // The last piece has to reach the end: the last place where it does is the only one that counts.
    const Piece &last = m_pieces.back();
    if (last.text.empty()) return true;
    for (std::size_t position = end; position < text.size(); position += GbkLength(text, position)) {
        std::size_t reached = 0;
        if (MatchesAt(last, text, position, reached) && reached == text.size()) return true;
    }
    return false;
}

}  // namespace ktl::ado::sql
