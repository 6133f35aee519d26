#pragma once

namespace ktl::cli {

/// What `ktl table --help` prints.
extern const char *const kTableHelp;

}  // namespace ktl::cli
