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
/// Rows that lie at most so many windows apart are looked at in one go.
constexpr std::uint32_t kNearWindows = 4;

CodePage ChooseCodePage(const std::string &path, std::uint8_t mark) {
    const std::string beside = FindBeside(path, ".cpg");
    std::string name;
    if (!beside.empty() && ReadWholeFile(beside, name) == 0) return CodePage::FromName(name.substr(0, 64));
    return CodePage::FromMark(mark);
}

[[noreturn]] void ThrowInUse(const std::string &path) {
    throw Error("Table \"" + TableNameOf(path) + "\" is in use by another.", error_number::kInUseByAnother);
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

void Table::RequireWritable(sql::Access access) const {
    if (access == sql::Access::Write && !m_file.IsWritable()) ThrowFileError("written", m_file.GetPath(), EACCES);
}

bool Table::Begin(sql::Access access) {
    if (m_depth > 0) return BeginAgain(access);
    if (!OpenTables::Instance().SetBusy(m_place, true)) return false;
    try {
        RequireWritable(access);
        const bool good = BeginOnFile(access);
        if (!good) OpenTables::Instance().SetBusy(m_place, false);
        return good;
    } catch (...) {
        if (!m_exclusive) m_file.Unlock();
        OpenTables::Instance().SetBusy(m_place, false);
        throw;
    }
}

bool Table::BeginAgain(sql::Access access) {
    RequireWritable(access);
    const bool writes = access == sql::Access::Write;
    if (writes && !m_writing && !LockFor(access)) ThrowInUse(m_file.GetPath());
    m_writing = m_writing || writes;
    if (++m_depth == 2 && m_hold != 0) StartStatement();
    return true;
}

void Table::StartStatement() {
    m_committed = true;
    if (m_memoReady && m_memo) m_memo->RenewBudget();
    for (KeyColumn &key : m_keys) key.changes = 0;
}

std::shared_ptr<void> Table::Hold() {
    if (m_hold != 0 || m_depth != 1) return nullptr;
    m_hold = ++m_lastHold;
    // The statement that took the lock goes on as the hold.
    ++m_depth;
    return {this, [table = shared_from_this(), number = m_hold](void *) { table->EndHold(number); }};
}

void Table::EndHold(unsigned number) noexcept {
    if (m_hold != number) return;
    m_hold = 0;
    try {
        m_stamp = StampOf(m_file.Stat());
    } catch (const Error &) {
        m_stamp = {};
    }
    EndStatement();
}

bool Table::BeginOnFile(sql::Access access) {
    if (!LockFor(access)) ThrowInUse(m_file.GetPath());
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
    StartStatement();
    return true;
}

std::string Table::ReadHeaderBytes() const {
    std::string bytes(kHeaderStart, '\0');
    bytes.resize(m_file.Read(0, bytes.data(), bytes.size()));
    if (bytes.size() < kHeaderStart) return bytes;
    bytes.resize(std::max<std::size_t>(LoadLittle16(bytes.data() + kHeaderLengthAt), kHeaderStart));
    bytes.resize(kHeaderStart + m_file.Read(kHeaderStart, bytes.data() + kHeaderStart, bytes.size() - kHeaderStart));
    return bytes;
}

/// Reads the header again; a changed set of columns makes this another table for bound statements.
void Table::LoadHeader(const FileInfo &info) {
    const std::string bytes = ReadHeaderBytes();
    // Date and count change with the rows, autoincrement values too; all else is the table's form.
    std::string form = bytes;
    if (form.size() > kCountAt + 4) form.replace(kDateAt, 7, 7, '\0');
    if (form != m_headerBytes || m_columns.empty()) {
        TakeForm(bytes);
        m_headerBytes = std::move(form);
    }
    m_date = bytes.substr(kDateAt, 3);
    // A file that ends early has fewer rows than its count says.
    const std::uint64_t room = info.size > m_header.headerLength ? info.size - m_header.headerLength : 0;
    const std::uint64_t rows = room / m_header.recordLength;
    m_rowCount = static_cast<std::uint32_t>(std::min<std::uint64_t>(LoadLittle32(bytes.data() + kCountAt), rows));
    ForgetIndexes();
}

void Table::TakeForm(std::string_view bytes) {
    const auto mark = bytes.size() > kCodePageAt ? static_cast<std::uint8_t>(bytes[kCodePageAt]) : std::uint8_t{0};
    m_columns.clear();
    m_codePage = ChooseCodePage(m_file.GetPath(), mark);
    m_header = ParseHeader(bytes, m_codePage);
    DescribeColumns();
    m_memo.reset();
    m_memoPath.clear();
    if (m_header.HasMemo()) LookForMemo();
    RenewIncarnation();
}

void Table::DescribeColumns() {
    m_fieldOf.clear();
    m_keys = {};
    m_blankRecord.assign(m_header.recordLength, kLiveMark);
    for (std::size_t i = 0; i < m_header.fields.size(); ++i) {
        const Field &field = m_header.fields[i];
        BlankCell(field, m_blankRecord.data());
        if (field.IsHidden()) continue;
        NoteKeyColumn(field);
        m_columns.push_back(field.Describe());
        m_fieldOf.push_back(i);
    }
    if (m_columns.empty()) throw Error("Not a table: it has no columns.", error_number::kNotATable);
}

/// The next column is a key when it is a whole number with a key's name.
void Table::NoteKeyColumn(const Field &field) {
    const bool shape = EqualNames(field.name.View(), "ShapeID");
    if (field.type != 'I' || field.width != 4 || (!shape && !EqualNames(field.name.View(), "ID"))) return;
    KeyColumn &key = m_keys[shape ? 1 : 0];
    if (key.column >= 0) return;
    key.column = static_cast<int>(m_columns.size());
    key.field = &field;
}

void Table::ForgetIndexes() {
    for (KeyColumn &key : m_keys) key.index.reset();
}

void Table::DropBuffers() {
    m_window.Drop();
    m_seekBytes = 0;
    m_record = nullptr;
    m_rehearsing = false;
    m_rehearsed.clear();
    m_newRows.clear();
    m_newRowCount = m_flushedRows = 0;
}

void Table::EndStatement() noexcept {
    if (--m_depth > (m_hold != 0 ? 1 : 0)) return;
    // What was changed and not committed is not in the file, or in rows behind the count; the indexes know it.
    if (!m_committed) {
        ForgetIndexes();
        m_stamp = {};
        m_hold = 0;
        m_depth = 0;
    }
    DropBuffers();
    if (m_hold != 0) return;
    m_writing = false;
    if (!m_exclusive) m_file.Unlock();
    OpenTables::Instance().SetBusy(m_place, m_exclusive);
}

const Field &Table::FieldOf(int column) const {
    return m_header.fields[m_fieldOf[static_cast<std::size_t>(column)]];
}

// Rows.

/// False when the file ends before the row.
bool Table::LoadWindow(sql::RowNumber first, std::size_t bytes) {
    FlushWindow();
    const std::uint64_t rows = std::max<std::uint64_t>(bytes / m_header.recordLength, 1);
    m_window.Load(m_file, m_header, first,
                  static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, m_rowCount - first)));
    return m_window.GetRowCount() > 0;
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
    if (!m_window.Holds(m_row) && !LoadWindow(m_row, kWalkBytes)) return false;
    m_record = m_window.RecordOf(m_row);
    if (m_rehearsing) m_rehearsed.clear();
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
    if (!m_window.Holds(row)) {
        const bool near = m_window.GetRowCount() > 0 && row >= m_window.GetEnd() &&
                          row - m_window.GetEnd() <= m_window.GetRowCount() * kNearWindows;
        m_seekBytes = near ? std::min(m_seekBytes * 4, kWalkBytes) : m_header.recordLength;
        if (!LoadWindow(row, m_seekBytes)) return false;
    }
    m_record = m_window.RecordOf(row);
    if (m_rehearsing) m_rehearsed.clear();
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
    if (m_rehearsing && m_rehearsed.contains(column)) {
        value = m_rehearsed[column];
        return;
    }
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

// Indexes.

KeyColumn *Table::KeyFor(int column) {
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
        key.index->Add(key.ValueIn(m_record));
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
