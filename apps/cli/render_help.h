#pragma once

namespace ktl::cli {

/// What `ktl render --help` prints.
extern const char *const kRenderHelp;

}  // namespace ktl::cli
