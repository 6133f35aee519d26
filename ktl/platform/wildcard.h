#pragma once

#include <string_view>

namespace ktl {

/// True when the name (GBK) fits the pattern by the platform's rules: '*' any text, '?' one character or none at the
/// name's end or before a dot; "*.*" fits every name, and a dot before a wildcard also fits the name's end. Case does
/// not count.
bool MatchesWildcard(std::string_view pattern, std::string_view name);

}  // namespace ktl
