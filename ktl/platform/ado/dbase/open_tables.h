#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace ktl::ado::dbase {

/// Something that holds files open and can let go of them between statements.
class IdleTable {
  public:
    virtual ~IdleTable() = default;
    /// Closes the files; called only between statements.
    virtual void Release() = 0;
};

/// The open tables of the process, of all connections: keeps their number within bounds, and tells openings of one
/// file of each other's changes. Thread-safe.
class OpenTables {
  public:
    static OpenTables &Instance();

    struct Entry {
        IdleTable *table;
        bool busy;
    };
    /// Where a table is noted; empty when it was released.
    using Place = std::optional<std::list<Entry>::iterator>;

    /// Notes a table that was opened and is in a statement; the one idle for longest may be released for it.
    void Enter(IdleTable *table, Place &place);
    void Leave(Place &place);
    /// A statement begins or ends: a table in a statement is never released. False when it was released before.
    bool SetBusy(Place &place, bool busy);

    /// Counts the changes that this process makes to a file.
    using Changes = std::shared_ptr<std::atomic<std::uint64_t>>;
    Changes ChangesOf(std::uint64_t device, std::uint64_t inode);

  private:
    std::mutex m_mutex;
    /// The one used last in front.
    std::list<Entry> m_tables;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::weak_ptr<std::atomic<std::uint64_t>>> m_changes;
};

}  // namespace ktl::ado::dbase
