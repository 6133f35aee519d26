// How an open table changes: cells, new rows, and the order in which they reach the files.

#include <algorithm>
#include <cstring>

#include "ktl/platform/ado/dbase/beside.h"
#include "ktl/platform/ado/dbase/cell.h"
#include "ktl/platform/ado/dbase/new_file.h"
#include "ktl/platform/ado/dbase/table.h"
#include "ktl/platform/ado/error.h"

namespace ktl::ado::dbase {

namespace {

/// Appended rows are written when they reach this size, at the latest when the statement ends.
constexpr std::size_t kAppendBytes = 256 * 1024;
/// A table that points farther than this into a lost memo file (1 GB of it) is damaged.
constexpr std::uint32_t kMostLostBlocks = 1U << 24U;

}  // namespace

void Table::SetRehearsal(bool on) {
    m_rehearsing = on;
    m_rehearsed.clear();
    // The rows that were rehearsed are read again.
    if (!on) m_window.Drop();
}

std::uint32_t Table::GreatestMemoPointer() const {
    std::uint32_t greatest = 0;
    RowWindow rows;
    const auto atOnce = static_cast<std::uint32_t>(std::max<std::size_t>(1, kAppendBytes / m_header.recordLength));
    for (sql::RowNumber row = 0; row < m_rowCount;) {
        rows.Load(m_file, m_header, row, atOnce);
        if (rows.GetRowCount() == 0) break;
        for (; row < rows.GetEnd(); ++row) {
            for (const Field &field : m_header.fields) {
                if (field.IsMemo()) greatest = std::max(greatest, MemoPointer(field, rows.RecordOf(row)));
            }
        }
    }
    return greatest;
}

/// A file that is missing is made anew. The rows' pointers led into the lost one, and must lead to none of the new
/// texts.
MemoFile *Table::NeedMemo() {
    if (MemoFile *memo = FindMemo()) return memo;
    const std::uint32_t lost = GreatestMemoPointer();
    if (!m_header.IsFoxProFamily() || lost > kMostLostBlocks) return nullptr;
    NewFile file(WithExtension(m_file.GetPath(), ".fpt"));
    MemoFile::Create(file.GetPath(), lost);
    file.Place();
    m_memoReady = false;
    return FindMemo();
}

/// Memos are kept aside: their file only ever grows.
void Table::RehearseCell(const Field &field, int column, const Value &value) {
    if (field.IsMemo() && !value.IsNull()) {
        m_rehearsed[column] = value;
    } else {
        m_rehearsed.erase(column);
        m_codec.Write(field, value, false, m_record);
    }
}

void Table::SetCell(int column, const Value &value) {
    const Field &field = FieldOf(column);
    if (m_rehearsing) return RehearseCell(field, column, value);
    KeyColumn *key = KeyFor(column);
    const std::int32_t before = key ? key->ValueIn(m_record) : 0;
    m_committed = false;
    m_codec.Write(field, value, false, m_record);
    if (field.nullBit >= 0 || field.lengthBit >= 0) {
        m_window.MarkDirty(m_record, m_header.recordLength);
    } else {
        m_window.MarkDirty(m_record + field.offset, field.width);
    }
    if (key) key->NoteChange(m_row, before, key->ValueIn(m_record));
}

void Table::AppendToCell(int column, const Value &value) {
    Value whole;
    ReadCell(column, whole);
    if (value.IsNull()) return;
    const std::string before(whole.IsNull() ? std::string_view() : whole.Bytes());
    whole.SetText(before + std::string(value.Bytes()));
    SetCell(column, whole);
}

void Table::DeleteRow() {
    *m_record = kDeletedMark;
    m_committed = false;
    m_window.MarkDirty(m_record, 1);
}

void Table::FillAutoIncrement(std::size_t fieldIndex, char *record) {
    Field &field = m_header.fields[fieldIndex];
    StoreLittle32(record + field.offset, field.nextValue);
    field.nextValue += std::max<std::uint32_t>(field.step, 1);
    char bytes[4];
    StoreLittle32(bytes, field.nextValue);
    const std::size_t at = kHeaderStart + fieldIndex * kEntrySize + kNextValueAt;
    m_file.Write(at, {bytes, sizeof bytes});
    std::memcpy(&m_headerBytes[at], bytes, sizeof bytes);
}

void Table::EncodeRow(std::span<const Value *const> cells, char *record) {
    for (std::size_t i = 0; i < m_fieldOf.size(); ++i) {
        const Field &field = m_header.fields[m_fieldOf[i]];
        if (cells[i]) {
            m_codec.Write(field, *cells[i], false, record);
        } else if ((field.flags & kColumnAutoIncrement) != 0 && field.width == 4) {
            FillAutoIncrement(m_fieldOf[i], record);
        } else {
            MarkNull(m_header, field, true, record);
        }
    }
}

void Table::Append(std::span<const Value *const> cells) {
    if (m_rowCount + m_newRowCount >= kMaxRecords) throw Error("The table is full.", error_number::kFileAccess);
    m_committed = false;
    const std::size_t start = m_newRows.size();
    m_newRows += m_blankRecord;
    try {
        EncodeRow(cells, m_newRows.data() + start);
    } catch (...) {
        m_newRows.resize(start);
        throw;
    }
    ++m_newRowCount;
    for (KeyColumn &key : m_keys) {
        if (key.index) key.index->Add(key.ValueIn(m_newRows.data() + start));
    }
    if (m_newRows.size() >= kAppendBytes) FlushRows();
}

void Table::FlushWindow() {
    if (!m_window.IsDirty()) return;
    if (m_memo) m_memo->FlushHeader();
    m_window.WriteBack(m_file, m_header);
}

void Table::FlushRows() {
    if (m_newRows.empty()) return;
    if (m_memo) m_memo->FlushHeader();
    const std::uint64_t row = static_cast<std::uint64_t>(m_rowCount) + m_flushedRows;
    m_newRows += kEndMark;
    m_file.Write(m_header.headerLength + row * m_header.recordLength, m_newRows);
    m_newRows.clear();
    m_flushedRows = m_newRowCount;
}

void Table::WriteCount() {
    std::string bytes = TodayBytes();
    bytes.resize(7);
    StoreLittle32(&bytes[3], m_rowCount);
    m_file.Write(kDateAt, bytes);
    m_date = bytes.substr(0, 3);
}

/// The day of the last change, and no word of an index file that does not know the change.
void Table::UpdateHeader() {
    if (const std::string today = TodayBytes(); m_date != today) {
        m_file.Write(kDateAt, today);
        m_date = today;
    }
    if ((m_header.tableFlags & kTableHasIndex) == 0) return;
    m_header.tableFlags = static_cast<std::uint8_t>(m_header.tableFlags & ~kTableHasIndex);
    m_headerBytes[kTableFlagsAt] = static_cast<char>(m_header.tableFlags);
    m_file.Write(kTableFlagsAt, std::string_view(m_headerBytes).substr(kTableFlagsAt, 1));
}

void Table::Commit() {
    if (m_committed) return;
    UpdateHeader();
    FlushWindow();
    FlushRows();
    m_rowCount += m_newRowCount;
    if (m_newRowCount > 0) WriteCount();
    m_newRowCount = m_flushedRows = 0;
    m_changes->fetch_add(1, std::memory_order_acq_rel);
    if (m_hold == 0) m_stamp = StampOf(m_file.Stat());
    m_committed = true;
}

}  // namespace ktl::ado::dbase
