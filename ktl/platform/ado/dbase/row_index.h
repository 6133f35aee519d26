#pragma once

#include <cstdint>
#include <vector>

#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::dbase {

/// The rows of a table by the value of one whole-number column: a hash table of values, each the head of a list of
/// rows. Adding, changing and finding cost the same at any size.
class RowIndex {
  public:
    RowIndex();

    std::uint32_t GetRowCount() const { return static_cast<std::uint32_t>(m_links.size()); }
    /// The next row: rows are added in order, from 0.
    void Add(std::int32_t value);
    void Change(sql::RowNumber row, std::int32_t from, std::int32_t to);
    /// Appends the rows with that value, in ascending order.
    void Find(std::int32_t value, std::vector<sql::RowNumber> &rows) const;
    /// True while no row has a smaller value than one before it.
    bool IsAscending() const { return m_ascending; }

  private:
    /// Rows are counted from 1 in the lists; 0 is none.
    struct Link {
        std::uint32_t previous = 0;
        std::uint32_t next = 0;
    };
    struct Slot {
        std::int32_t value = 0;
        std::uint32_t first = kFree;
    };
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;

    std::size_t SlotOf(std::int32_t value) const;
    void Grow();
    void Insert(std::uint32_t link, std::int32_t value);

    std::vector<Slot> m_slots;
    /// 32 less the number of bits that a slot's place takes.
    unsigned m_shift;
    std::size_t m_used = 0;
    std::vector<Link> m_links;
    std::int32_t m_last = 0;
    bool m_ascending = true;
};

}  // namespace ktl::ado::dbase
