#include "ktl/platform/ado/access/quiet.h"

#include <cstdio>
#include <mutex>

namespace ktl::ado::access {

#ifdef __GLIBC__

namespace {

thread_local int t_depth = 0;

/// Stands in for `stderr` while any thread is quiet. It lives as long as the process: a thread may still be printing
/// through it when the last Quiet ends.
struct Filter {
    std::mutex mutex;
    int users = 0;
    std::FILE *stream = nullptr;
    std::FILE *behind = nullptr;
};

Filter &TheFilter() {
    static Filter &filter = *new Filter;
    return filter;
}

ssize_t Pass(void *, const char *data, std::size_t size) {
    if (t_depth == 0) std::fwrite(data, 1, size, TheFilter().behind);
    return static_cast<ssize_t>(size);
}

}  // namespace

Quiet::Quiet() {
    ++t_depth;
    Filter &filter = TheFilter();
    const std::lock_guard lock(filter.mutex);
    if (filter.users++ > 0) return;
    if (!filter.stream) {
        filter.stream = ::fopencookie(nullptr, "w", {nullptr, Pass, nullptr, nullptr});
        if (!filter.stream) return;
        std::setvbuf(filter.stream, nullptr, _IONBF, 0);
    }
    filter.behind = stderr;
    stderr = filter.stream;
}

Quiet::~Quiet() {
    --t_depth;
    Filter &filter = TheFilter();
    const std::lock_guard lock(filter.mutex);
    if (--filter.users == 0 && filter.stream && stderr == filter.stream) stderr = filter.behind;
}

#else

Quiet::Quiet() = default;
Quiet::~Quiet() = default;

#endif

}  // namespace ktl::ado::access
