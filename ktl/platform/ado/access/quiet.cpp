#include "ktl/platform/ado/access/quiet.h"

#include <cstdio>
#include <mutex>

namespace ktl::ado::access {

#ifdef __GLIBC__

namespace {

thread_local int t_depth = 0;

/// Stands in for an output stream while any thread is quiet. It lives as long as the process: a thread may still be
/// printing through it when the last Quiet ends.
class Filter {
  public:
    explicit Filter(std::FILE *&place) : m_place(place) {
        m_stream = ::fopencookie(this, "w", {nullptr, Pass, nullptr, nullptr});
        if (m_stream) std::setvbuf(m_stream, nullptr, _IONBF, 0);
    }

    void PutIn() {
        if (!m_stream) return;
        m_behind = m_place;
        m_place = m_stream;
    }
    void TakeOut() {
        if (m_stream && m_place == m_stream) m_place = m_behind;
    }

  private:
    static ssize_t Pass(void *filter, const char *data, std::size_t size) {
        if (t_depth == 0) std::fwrite(data, 1, size, static_cast<Filter *>(filter)->m_behind);
        return static_cast<ssize_t>(size);
    }

    std::FILE *&m_place;
    std::FILE *m_stream = nullptr;
    std::FILE *m_behind = nullptr;
};

struct Filters {
    std::mutex mutex;
    int users = 0;
    Filter output{stdout};
    Filter error{stderr};
};

Filters &TheFilters() {
    static Filters &filters = *new Filters;
    return filters;
}

}  // namespace

Quiet::Quiet() {
    ++t_depth;
    Filters &filters = TheFilters();
    const std::lock_guard lock(filters.mutex);
    if (filters.users++ > 0) return;
    filters.output.PutIn();
    filters.error.PutIn();
}

Quiet::~Quiet() {
    --t_depth;
    Filters &filters = TheFilters();
    const std::lock_guard lock(filters.mutex);
    if (--filters.users > 0) return;
    filters.output.TakeOut();
    filters.error.TakeOut();
}

#else

Quiet::Quiet() = default;
Quiet::~Quiet() = default;

#endif

}  // namespace ktl::ado::access
