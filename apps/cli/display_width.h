#pragma once

#include <string>
#include <string_view>

namespace ktl::cli {

/// How many columns of a terminal a UTF-8 text takes: two for a wide character, none for one that combines with the
/// character before it.
int DisplayWidth(std::string_view utf8);

/// For a line on a terminal: control characters, which could move the cursor or more, become blanks, and of a text that
/// takes more than `most` columns the first ones stay, with "…" behind them.
std::string OneLine(std::string_view utf8, int most);

}  // namespace ktl::cli
