#include "ktl/platform/ado/dbase/table.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "ktl/platform/ado/dbase/beside.h"
#include "ktl/platform/ado/dbase/cell.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado::dbase {

namespace {

/// How much of the file a walk over the rows reads at a time, and at most a single look at a row.
constexpr std::size_t kWalkBytes = 256 * 1024;
/// Appended rows are written when they reach this size, at the latest when the statement ends.
constexpr std::size_t kAppendBytes = 256 * 1024;
/// A statement that changes more keys than this drops the index instead of mending it.
constexpr std::uint32_t kManyKeyChanges = 1000;

CodePage ChooseCodePage(const std::string &path, std::uint8_t mark) {
    const std::string beside = FindBeside(path, ".cpg");
    std::string name;
    if (!beside.empty() && ReadWholeFile(beside, name) == 0) return CodePage::FromName(name.substr(0, 64));
    return CodePage::FromMark(mark);
}

}  // namespace

Table::Table(const std::string &systemPath) {
    m_file.Open(systemPath);
    const FileInfo info = m_file.Stat();
    m_device = info.device;
    m_inode = info.inode;
    m_changes = OpenTables::Instance().ChangesOf(info.device, info.inode);
    OpenTables::Instance().Enter(this, m_place);
}

Table::~Table() {
    OpenTables::Instance().Leave(m_place);
}

void Table::Release() {
    m_place.reset();
    m_file.Close();
    m_memo.reset();
    ForgetIndexes();
}

bool Table::LockFor(sql::Access access) {
    if (m_exclusive) return true;
    return m_file.Lock(access == sql::Access::Write ? FileLock::Exclusive : FileLock::Shared);
}

bool Table::MakeExclusive() {
    // The lock of the running statement becomes the lasting one.
    m_exclusive = m_exclusive || m_file.Lock(FileLock::Exclusive);
    return m_exclusive;
}

bool Table::IsReplaced(const FileInfo &info) const {
    if (info.links == 0) return true;
    FileInfo named;
    const int error = FileSystem::Current().Stat(m_file.GetPath(), named);
    return error != 0 || named.device != info.device || named.inode != info.inode;
}

Table::Stamp Table::StampOf(const FileInfo &info) const {
    return {info.size, info.changed, info.changedFraction, m_changes->load(std::memory_order_acquire)};
}

bool Table::Begin(sql::Access access) {
    const auto requireWritable = [&] {
        if (access == sql::Access::Write && !m_file.IsWritable()) {
            ThrowFileError("written", m_file.GetPath(), EACCES);
        }
    };
    if (m_depth > 0) {
        requireWritable();
        if (access == sql::Access::Write && !m_writing && !LockFor(access)) {
            throw Error("The table is in use by another.", error_number::kInUseByAnother);
        }
        m_writing = m_writing || access == sql::Access::Write;
        ++m_depth;
        return true;
    }
    if (!OpenTables::Instance().SetBusy(m_place, true)) return false;
    try {
        requireWritable();
        const bool good = BeginOnFile(access);
        if (!good) OpenTables::Instance().SetBusy(m_place, false);
        return good;
    } catch (...) {
        if (!m_exclusive) m_file.Unlock();
        OpenTables::Instance().SetBusy(m_place, false);
        throw;
    }
}

bool Table::BeginOnFile(sql::Access access) {
    if (!LockFor(access)) throw Error("The table is in use by another.", error_number::kInUseByAnother);
    const FileInfo info = m_file.Stat();
    const Stamp stamp = StampOf(info);
    if (stamp != m_stamp || info.links == 0) {
        if (IsReplaced(info)) {
            if (!m_exclusive) m_file.Unlock();
            return false;
        }
        LoadHeader(info);
        m_stamp = stamp;
    }
    m_depth = 1;
    m_writing = access == sql::Access::Write;
    m_memoReady = false;
    m_committed = true;
    for (KeyColumn &key : m_keys) key.changes = 0;
    return true;
}

/// Reads the header again; a changed set of columns makes this another table for bound statements.
void Table::LoadHeader(const FileInfo &info) {
    std::string bytes(kHeaderStart, '\0');
    bytes.resize(m_file.Read(0, bytes.data(), bytes.size()));
    if (bytes.size() == kHeaderStart) {
        const std::size_t length = LoadLittle16(bytes.data() + kHeaderLengthAt);
        bytes.resize(std::max(length, kHeaderStart));
        bytes.resize(kHeaderStart +
                     m_file.Read(kHeaderStart, bytes.data() + kHeaderStart, bytes.size() - kHeaderStart));
    }
    // Date and count change with the rows, autoincrement values too; all else is the table's form.
    std::string form = bytes;
    if (form.size() > kCountAt + 4) form.replace(kDateAt, 7, 7, '\0');
    if (form != m_headerBytes || m_columns.empty()) {
        m_codePage = ChooseCodePage(m_file.GetPath(),
                                    bytes.size() > kCodePageAt ? static_cast<std::uint8_t>(bytes[kCodePageAt]) : 0);
        m_header = ParseHeader(bytes, m_codePage);
        m_headerBytes = std::move(form);
        DescribeColumns();
        m_memo.reset();
        m_memoPath.clear();
        if (m_header.HasMemo()) LookForMemo();
        RenewIncarnation();
    }
    m_date = bytes.substr(kDateAt, 3);
    // A file that ends early has fewer rows than its count says.
    const std::uint64_t room = info.size > m_header.headerLength ? info.size - m_header.headerLength : 0;
    const std::uint64_t rows = room / m_header.recordLength;
    m_rowCount = static_cast<std::uint32_t>(std::min<std::uint64_t>(LoadLittle32(bytes.data() + kCountAt), rows));
    ForgetIndexes();
}

void Table::DescribeColumns() {
    m_columns.clear();
    m_fieldOf.clear();
    m_keys = {};
    m_blankRecord.assign(m_header.recordLength, kLiveMark);
    for (std::size_t i = 0; i < m_header.fields.size(); ++i) {
        const Field &field = m_header.fields[i];
        BlankCell(field, m_blankRecord.data());
        if (field.IsHidden()) continue;
        const bool shape = EqualNames(field.name.View(), "ShapeID");
        if (field.type == 'I' && field.width == 4 && (shape || EqualNames(field.name.View(), "ID"))) {
            KeyColumn &key = m_keys[shape ? 1 : 0];
            if (key.column < 0) {
                key.column = static_cast<int>(m_columns.size());
                key.field = &field;
            }
        }
        m_columns.push_back(field.Describe());
        m_fieldOf.push_back(i);
    }
    if (m_columns.empty()) throw Error("Not a table: it has no columns.", error_number::kNotATable);
}

void Table::ForgetIndexes() {
    for (KeyColumn &key : m_keys) key.index.reset();
}

void Table::DropBuffers() {
    m_windowRows = 0;
    m_dirtyBegin = m_dirtyEnd = 0;
    m_record = nullptr;
    m_newRows.clear();
    m_newRowCount = m_flushedRows = 0;
}

void Table::EndStatement() noexcept {
    if (--m_depth > 0) return;
    // What was changed and not committed is not in the file, or in rows behind the count; the indexes know it.
    if (!m_committed) {
        ForgetIndexes();
        m_stamp = {};
    }
    DropBuffers();
    m_writing = false;
    if (!m_exclusive) m_file.Unlock();
    OpenTables::Instance().SetBusy(m_place, m_exclusive);
}

const Field &Table::FieldOf(int column) const {
    return m_header.fields[m_fieldOf[static_cast<std::size_t>(column)]];
}

// Rows.

void Table::LoadWindow(sql::RowNumber first, std::size_t bytes) {
    FlushWindow();
    const std::uint32_t length = m_header.recordLength;
    const auto rows = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(std::max<std::uint64_t>(bytes / length, 1), m_rowCount - first));
    const std::size_t wanted = static_cast<std::size_t>(rows) * length;
    if (m_window.size() < wanted) m_window.resize(wanted);
    const std::uint64_t offset = m_header.headerLength + static_cast<std::uint64_t>(first) * length;
    m_windowFirst = first;
    m_windowRows = static_cast<std::uint32_t>(m_file.Read(offset, m_window.data(), wanted) / length);
}

void Table::Rewind() {
    m_nextRow = 0;
    m_scanEnd = m_rowCount;
}

bool Table::RewindTo(sql::RowNumber row) {
    m_nextRow = row;
    m_scanEnd = m_rowCount;
    return true;
}

bool Table::NextOfAll() {
    if (m_nextRow >= m_scanEnd) return false;
    m_row = m_nextRow++;
    if (m_row - m_windowFirst >= m_windowRows || m_row < m_windowFirst) {
        LoadWindow(m_row, kWalkBytes);
        if (m_windowRows == 0) return false;
    }
    m_record = m_window.data() + static_cast<std::size_t>(m_row - m_windowFirst) * m_header.recordLength;
    return true;
}

bool Table::Next() {
    while (NextOfAll()) {
        if (*m_record != kDeletedMark) return true;
    }
    return false;
}

bool Table::Seek(sql::RowNumber row) {
    if (row >= m_rowCount) return false;
    m_row = row;
    if (row < m_windowFirst || row - m_windowFirst >= m_windowRows) {
        LoadWindow(row, m_header.recordLength);
        if (m_windowRows == 0) return false;
    }
    m_record = m_window.data() + static_cast<std::size_t>(row - m_windowFirst) * m_header.recordLength;
    return *m_record != kDeletedMark;
}

// Cells.

void Table::LookForMemo() {
    m_memoPath = FindBeside(m_file.GetPath(), ".fpt");
    m_memoKind = MemoKind::Fpt;
    if (!m_memoPath.empty() || m_header.IsFoxProFamily()) return;
    m_memoPath = FindBeside(m_file.GetPath(), ".dbt");
    m_memoKind = (m_header.version & 0x0FU) == 0x0BU ? MemoKind::Dbase4 : MemoKind::Dbase3;
}

MemoFile *Table::FindMemo() {
    if (m_memoReady) return m_memo.get();
    m_memoReady = true;
    if (m_memo && m_memo->IsCurrent()) {
        m_memo->BeginStatement();
        return m_memo.get();
    }
    m_memo.reset();
    LookForMemo();
    if (!m_memoPath.empty()) m_memo = std::make_unique<MemoFile>(m_memoPath, m_memoKind);
    return m_memo.get();
}

void Table::ReadCell(int column, Value &value) {
    const Field &field = FieldOf(column);
    if (field.type == 'I' && field.nullBit < 0 && field.width == 4) {
        return value.SetInteger(static_cast<std::int32_t>(LoadLittle32(m_record + field.offset)));
    }
    m_codec.Read(field, m_record, value);
}

std::string_view Table::ViewText(int column, Value &scratch) {
    const Field &field = FieldOf(column);
    if (field.type == 'C' && field.nullBit < 0 && m_codePage.IsGbk()) return FieldText(m_header, field, m_record);
    ReadCell(column, scratch);
    return scratch.GetKind() == Value::Kind::Text ? scratch.Text() : std::string_view();
}

void Table::MarkDirty(std::size_t from, std::size_t to) {
    m_committed = false;
    m_dirtyBegin = m_dirtyEnd == 0 ? from : std::min(m_dirtyBegin, from);
    m_dirtyEnd = std::max(m_dirtyEnd, to);
}

void Table::SetCell(int column, const Value &value) {
    const Field &field = FieldOf(column);
    KeyColumn *key = KeyFor(column);
    const std::int32_t before = key ? static_cast<std::int32_t>(LoadLittle32(m_record + field.offset)) : 0;
    m_committed = false;
    m_codec.Write(field, value, false, m_record);
    const auto begin = static_cast<std::size_t>(m_record - m_window.data());
    const bool bits = field.nullBit >= 0 || field.lengthBit >= 0;
    const std::size_t from = bits ? begin : begin + field.offset;
    MarkDirty(from, bits ? begin + m_header.recordLength : from + field.width);
    if (!key || !key->index) return;
    if (++key->changes > kManyKeyChanges) {
        key->index.reset();
    } else {
        key->index->Change(m_row, before, static_cast<std::int32_t>(LoadLittle32(m_record + field.offset)));
    }
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
    const auto at = static_cast<std::size_t>(m_record - m_window.data());
    MarkDirty(at, at + 1);
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

void Table::Append(std::span<const Value *const> cells) {
    if (m_rowCount + m_newRowCount >= kMaxRecords) throw Error("The table is full.", error_number::kFileAccess);
    m_committed = false;
    const std::size_t start = m_newRows.size();
    m_newRows += m_blankRecord;
    try {
        char *record = m_newRows.data() + start;
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
    } catch (...) {
        m_newRows.resize(start);
        throw;
    }
    ++m_newRowCount;
    for (KeyColumn &key : m_keys) {
        if (!key.index) continue;
        key.index->Add(static_cast<std::int32_t>(LoadLittle32(m_newRows.data() + start + key.field->offset)));
    }
    if (m_newRows.size() >= kAppendBytes) FlushRows();
}

// Writing back.

void Table::FlushWindow() {
    if (m_dirtyEnd == 0) return;
    if (m_memo) m_memo->FlushHeader();
    const std::uint64_t offset =
        m_header.headerLength + static_cast<std::uint64_t>(m_windowFirst) * m_header.recordLength + m_dirtyBegin;
    m_file.Write(offset, std::string_view(m_window).substr(m_dirtyBegin, m_dirtyEnd - m_dirtyBegin));
    m_dirtyBegin = m_dirtyEnd = 0;
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
    m_stamp = StampOf(m_file.Stat());
    m_committed = true;
}

// Indexes.

Table::KeyColumn *Table::KeyFor(int column) {
    for (KeyColumn &key : m_keys) {
        if (key.column == column) return &key;
    }
    return nullptr;
}

void Table::BuildIndex(KeyColumn &key) {
    key.index.emplace();
    const sql::RowNumber next = m_nextRow;
    const sql::RowNumber end = m_scanEnd;
    for (Rewind(); NextOfAll();) {
        key.index->Add(static_cast<std::int32_t>(LoadLittle32(m_record + key.field->offset)));
    }
    m_nextRow = next;
    m_scanEnd = end;
}

bool Table::FindRows(int column, long long value, std::vector<sql::RowNumber> &rows) {
    KeyColumn *key = KeyFor(column);
    if (!key) return false;
    if (!key->index) BuildIndex(*key);
    if (value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max()) {
        key->index->Find(static_cast<std::int32_t>(value), rows);
    }
    return true;
}

bool Table::IsAscending(int column) {
    KeyColumn *key = KeyFor(column);
    if (!key) return false;
    if (!key->index) BuildIndex(*key);
    return key->index->IsAscending();
}

}  // namespace ktl::ado::dbase
