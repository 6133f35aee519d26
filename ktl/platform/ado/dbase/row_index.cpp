#include "ktl/platform/ado/dbase/row_index.h"

#include <algorithm>

namespace ktl::ado::dbase {

namespace {

constexpr unsigned kFirstBits = 6;

}  // namespace

RowIndex::RowIndex() : m_slots(std::size_t{1} << kFirstBits), m_shift(32 - kFirstBits) {}

/// The slot of that value, or the free one where it would go.
std::size_t RowIndex::SlotOf(std::int32_t value) const {
    // The high bits of the product spread runs of neighbouring values evenly.
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = (static_cast<std::uint32_t>(value) * 0x9E3779B1U) >> m_shift;
    while (m_slots[slot].first != kFree && m_slots[slot].value != value) slot = (slot + 1) & mask;
    return slot;
}

void RowIndex::Grow() {
    std::vector<Slot> old(m_slots.size() * 2);
    --m_shift;
    old.swap(m_slots);
    for (const Slot &slot : old) {
        if (slot.first != kFree) m_slots[SlotOf(slot.value)] = slot;
    }
}

void RowIndex::Insert(std::uint32_t link, std::int32_t value) {
    if ((m_used + 1) * 4 > m_slots.size() * 3) Grow();
    Slot &slot = m_slots[SlotOf(value)];
    if (slot.first == kFree) {
        slot = {value, 0};
        ++m_used;
    }
    m_links[link - 1] = {0, slot.first};
    if (slot.first != 0) m_links[slot.first - 1].previous = link;
    slot.first = link;
}

void RowIndex::Add(std::int32_t value) {
    m_ascending = m_ascending && (m_links.empty() || value >= m_last);
    m_last = value;
    m_links.emplace_back();
    Insert(static_cast<std::uint32_t>(m_links.size()), value);
}

void RowIndex::Change(sql::RowNumber row, std::int32_t from, std::int32_t to) {
    if (from == to) return;
    const Link link = m_links[row];
    if (link.previous != 0) {
        m_links[link.previous - 1].next = link.next;
    } else {
        m_slots[SlotOf(from)].first = link.next;
    }
    if (link.next != 0) m_links[link.next - 1].previous = link.previous;
    Insert(row + 1, to);
    m_ascending = false;
}

void RowIndex::Find(std::int32_t value, std::vector<sql::RowNumber> &rows) const {
    const Slot &slot = m_slots[SlotOf(value)];
    if (slot.first == kFree) return;
    const auto begin = static_cast<std::ptrdiff_t>(rows.size());
    for (std::uint32_t link = slot.first; link != 0; link = m_links[link - 1].next) rows.push_back(link - 1);
    std::sort(rows.begin() + begin, rows.end());
}

}  // namespace ktl::ado::dbase
