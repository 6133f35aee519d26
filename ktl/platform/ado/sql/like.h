#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ktl::ado::sql {

/// A pattern of Like: `%` is any text, `_` one character (of one or two bytes). Case counts, and so do the pattern's
/// own trailing blanks. Characters are compared whole: a trail byte matches no ASCII letter.
class LikePattern {
  public:
    LikePattern() = default;
    /// `escape`, unless 0, makes the character behind it an ordinary one.
    explicit LikePattern(std::string_view pattern, char escape = '\0');

    /// `text` comes without a fixed-width column's padding.
    bool Matches(std::string_view text) const;

  private:
    /// A run of the pattern between two `%`.
    struct Piece {
        /// Its characters; `wild` holds the offsets in `text` that stand for any character (one byte each).
        std::string text;
        std::vector<std::size_t> wild;
    };
    static bool MatchesAt(const Piece &piece, std::string_view text, std::size_t position, std::size_t &end);
    static bool FindPiece(const Piece &piece, std::string_view text, std::size_t &position, std::size_t &end);

    std::vector<Piece> m_pieces;
};

}  // namespace ktl::ado::sql
