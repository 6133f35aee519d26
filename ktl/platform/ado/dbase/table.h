#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ktl/platform/ado/dbase/code_page.h"
#include "ktl/platform/ado/dbase/data_file.h"
#include "ktl/platform/ado/dbase/header.h"
#include "ktl/platform/ado/dbase/key_column.h"
#include "ktl/platform/ado/dbase/memo_file.h"
#include "ktl/platform/ado/dbase/open_tables.h"
#include "ktl/platform/ado/dbase/record_codec.h"
#include "ktl/platform/ado/dbase/row_window.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::dbase {

/// An open .dbf file with its memo file and the indexes over `ID` and `ShapeID`.
///
/// A statement's writes reach the files before it ends, in the order memo text, memo header, rows, row count, so that
/// a process that is killed leaves at most rows that the count does not tell of. Nothing of the rows is remembered
/// from one statement to the next but the indexes, and these only while the file's change time says that nobody else
/// wrote. Locks cover one statement, or all those of a hold.
class Table final : public sql::Table,
                    public std::enable_shared_from_this<Table>,
                    private IdleTable,
                    private MemoSource {
  public:
    /// Opens the file; throws Error. `Begin` has to follow.
    explicit Table(const std::string &systemPath);
    ~Table() override;

    /// Begins a statement, or a second use within one. False when the file was removed or replaced since, or was
    /// closed to save handles: the caller opens it anew. Throws Error when others use it in a way that stands against
    /// `access`, or when it can only be read.
    bool Begin(sql::Access access);
    /// Keeps all others from the table until it is closed. False when someone is using it.
    bool MakeExclusive();
    bool IsExclusive() const { return m_exclusive; }
    /// Keeps the running statement's lock from one statement to the next, until what is returned goes. These neither
    /// lock nor look whether others wrote; each still writes through. A statement that fails half-way ends the hold.
    /// Null when the table is held already.
    std::shared_ptr<void> Hold();

    const Header &GetHeader() const { return m_header; }
    const CodePage &GetCodePage() const { return m_codePage; }
    const std::string &GetPath() const { return m_file.GetPath(); }
    /// Empty when the table has none.
    const std::string &GetMemoPath() const { return m_memoPath; }
    std::uint32_t GetRowCount() const { return m_rowCount; }
    /// The raw record under the cursor.
    const char *GetRecord() const { return m_record; }
    /// Moves to the next row whether it is deleted or not.
    bool NextOfAll();
    /// The memo file, or null when there is none.
    MemoFile *FindMemo() override;

    const std::vector<Column> &GetColumns() const override { return m_columns; }
    void Rewind() override;
    bool RewindTo(sql::RowNumber row) override;
    bool Next() override;
    bool Seek(sql::RowNumber row) override;
    sql::RowNumber GetRow() const override { return m_row; }
    sql::RowNumber GetRecordNumber() const override { return m_row + 1; }
    void ReadCell(int column, Value &value) override;
    std::string_view ViewText(int column, Value &scratch) override;
    bool FindRows(int column, long long value, std::vector<sql::RowNumber> &rows) override;
    bool IsAscending(int column) override;
    void Append(std::span<const Value *const> cells) override;
    void SetCell(int column, const Value &value) override;
    void AppendToCell(int column, const Value &value) override;
    void DeleteRow() override;
    void SetRehearsal(bool on) override;
    void Commit() override;
    void EndStatement() noexcept override;

  private:
    /// What tells that nobody else wrote to the file.
    struct Stamp {
        std::uint64_t size = 0;
        std::int64_t changed = 0;
        std::uint32_t changedFraction = 0;
        std::uint64_t ownChanges = 0;
        friend bool operator==(const Stamp &, const Stamp &) = default;
    };
    void Release() override;
    bool BeginOnFile(sql::Access access);
    bool BeginAgain(sql::Access access);
    void StartStatement();
    void EndHold(unsigned number) noexcept;
    bool LockFor(sql::Access access);
    void RequireWritable(sql::Access access) const;
    bool IsReplaced(const FileInfo &info) const;
    Stamp StampOf(const FileInfo &info) const;
    void LoadHeader(const FileInfo &info);
    std::string ReadHeaderBytes() const;
    void TakeForm(std::string_view bytes);
    void DescribeColumns();
    void NoteKeyColumn(const Field &field);
    void LookForMemo();
    MemoFile *NeedMemo() override;
    std::uint32_t GreatestMemoPointer() const;
    void ForgetIndexes();
    void DropBuffers();

    const Field &FieldOf(int column) const;
    bool LoadWindow(sql::RowNumber first, std::size_t bytes);
    void FlushWindow();
    void FlushRows();
    void WriteCount();
    void RehearseCell(const Field &field, int column, const Value &value);
    void EncodeRow(std::span<const Value *const> cells, char *record);
    void UpdateHeader();
    void FillAutoIncrement(std::size_t fieldIndex, char *record);
    KeyColumn *KeyFor(int column);
    void BuildIndex(KeyColumn &key);

    DataFile m_file;
    Header m_header;
    std::string m_headerBytes;
    /// Year, month and day as they stand in the header.
    std::string m_date;
    CodePage m_codePage;
    RecordCodec m_codec{m_header, m_codePage, *this};
    std::string m_memoPath;
    MemoKind m_memoKind = MemoKind::Fpt;
    std::unique_ptr<MemoFile> m_memo;
    bool m_memoReady = false;
    std::vector<Column> m_columns;
    /// The field of each column.
    std::vector<std::size_t> m_fieldOf;
    std::string m_blankRecord;
    std::array<KeyColumn, 2> m_keys;

    OpenTables::Place m_place;
    OpenTables::Changes m_changes;
    Stamp m_stamp;
    std::uint64_t m_device = 0;
    std::uint64_t m_inode = 0;
    std::uint32_t m_rowCount = 0;

    int m_depth = 0;
    bool m_writing = false;
    bool m_exclusive = false;
    /// The running hold, which counts as a statement around others; 0 is none.
    unsigned m_hold = 0;
    unsigned m_lastHold = 0;

    /// Around the cursor.
    RowWindow m_window;
    /// How much the next look at a single row reads: more while the rows come one behind the other.
    std::size_t m_seekBytes = 0;
    sql::RowNumber m_row = 0;
    sql::RowNumber m_nextRow = 0;
    sql::RowNumber m_scanEnd = 0;
    char *m_record = nullptr;
    bool m_rehearsing = false;
    /// The memos of the current row that the rehearsal has set, by column.
    std::map<int, Value> m_rehearsed;

    /// Appended rows that are not yet written, and the number of those that are.
    std::string m_newRows;
    std::uint32_t m_newRowCount = 0;
    std::uint32_t m_flushedRows = 0;
    bool m_committed = true;
};

}  // namespace ktl::ado::dbase
