#pragma once

#include <functional>

namespace ktl::host {

/// Where a long run stands; `total` is -1 while it is not known.
struct Progress {
    const char *what = "";
    long long done = 0;
    long long total = -1;
};
/// Returns false to stop the run, which then throws `Interrupted`. May be empty.
using ProgressCallback = std::function<bool(const Progress &)>;

}  // namespace ktl::host
