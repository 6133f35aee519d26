#include "ktl/platform/ado/dbase/open_tables.h"

#include <algorithm>

namespace ktl::ado::dbase {

namespace {

/// A table holds two files at most; a process may usually open 1024.
constexpr std::size_t kMostOpen = 200;
constexpr std::size_t kSweepAt = 256;

}  // namespace

OpenTables &OpenTables::Instance() {
    // Never destroyed: connections of static life may end after it.
    static OpenTables *const tables = new OpenTables;
    return *tables;
}

void OpenTables::Enter(IdleTable *table, Place &place) {
    const std::lock_guard lock(m_mutex);
    m_tables.push_front({table, true});
    place = m_tables.begin();
    if (m_tables.size() <= kMostOpen) return;
    const auto oldest =
        std::find_if(m_tables.rbegin(), m_tables.rend(), [](const Entry &entry) { return !entry.busy; });
    if (oldest == m_tables.rend()) return;
    IdleTable *released = oldest->table;
    m_tables.erase(std::next(oldest).base());
    released->Release();
}

void OpenTables::Leave(Place &place) {
    const std::lock_guard lock(m_mutex);
    if (place) m_tables.erase(*place);
    place.reset();
}

bool OpenTables::SetBusy(Place &place, bool busy) {
    const std::lock_guard lock(m_mutex);
    if (!place) return false;
    (*place)->busy = busy;
    if (busy && *place != m_tables.begin()) m_tables.splice(m_tables.begin(), m_tables, *place);
    return true;
}

OpenTables::Changes OpenTables::ChangesOf(std::uint64_t device, std::uint64_t inode) {
    const std::lock_guard lock(m_mutex);
    if (m_changes.size() >= kSweepAt)
        std::erase_if(m_changes, [](const auto &entry) { return entry.second.expired(); });
    std::weak_ptr<std::atomic<std::uint64_t>> &entry = m_changes[{device, inode}];
    Changes changes = entry.lock();
    if (!changes) {
        changes = std::make_shared<std::atomic<std::uint64_t>>(0);
        entry = changes;
    }
    return changes;
}

}  // namespace ktl::ado::dbase
