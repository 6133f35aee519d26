#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/ado/sql/ast.h"

/// \file
/// What the statement layer asks of a store: tables with a cursor over their rows. A store that is only read leaves
/// out everything behind the first group of each class.

namespace ktl::ado::sql {

/// A row by its place in the table, from 0. It stays the same while the table's columns stay the same.
using RowNumber = std::uint32_t;

/// One open table with one cursor. A statement uses it between `Store::OpenTable` and `EndStatement`.
class Table {
  public:
    Table() = default;
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
    virtual ~Table() = default;

    virtual const std::vector<Column> &GetColumns() const = 0;
    /// No two open tables, and no two states of a table's columns, ever have the same number.
    std::uint64_t GetIncarnation() const { return m_incarnation; }

    /// Puts the cursor in front of the first row. Rows that are appended afterwards are not met.
    virtual void Rewind() = 0;
    /// Puts it in front of that row; false in a store that walks from the first row only.
    virtual bool RewindTo(RowNumber) { return false; }
    /// Moves to the next row that is not deleted; false at the end.
    virtual bool Next() = 0;
    /// Moves to that row; false when it is deleted or there is none.
    virtual bool Seek(RowNumber row) = 0;
    virtual RowNumber GetRow() const = 0;
    /// The place of the current row as people count it, from 1; 0 in a store that does not number its rows so.
    virtual RowNumber GetRecordNumber() const { return 0; }
    /// A cell of the current row.
    virtual void ReadCell(int column, Value &value) = 0;
    /// The text of a cell that is stored as this layer's text, good until the cursor moves; empty data for a null and
    /// for any other cell. Saves a copy where it can be had.
    virtual std::string_view ViewText(int column, Value &scratch);
    /// The rows whose whole-number column has this value, in ascending order and perhaps some that no longer have it;
    /// false without an index over the column.
    virtual bool FindRows(int column, long long value, std::vector<RowNumber> &rows);
    /// True when it is known that rows come with ascending values of that column.
    virtual bool IsAscending(int column);

    /// Appends a row: a value a column, or a null pointer for one that was left out.
    virtual void Append(std::span<const Value *const> cells);
    /// Changes a cell of the current row; later reads see it.
    virtual void SetCell(int column, const Value &value);
    /// Puts text behind the memo of the current row.
    virtual void AppendToCell(int column, const Value &value);
    virtual void DeleteRow();
    /// While it is on, a change of a row is checked and seen by reads until the cursor moves, and nothing lasts: a
    /// statement whose values may fail goes through all its rows once before it changes the first.
    virtual void SetRehearsal(bool on);
    /// Makes the changes of the statement lasting. Without it `EndStatement` drops those not yet written.
    virtual void Commit() {}

    /// Ends what `OpenTable` began; throws nothing.
    virtual void EndStatement() noexcept {}

  protected:
    /// To be called when the columns changed.
    void RenewIncarnation() { m_incarnation = NewIncarnation(); }

  private:
    static std::uint64_t NewIncarnation();

    std::uint64_t m_incarnation = NewIncarnation();
};

enum class Access { Read, Write };

/// The tables of a connection.
class Store {
  public:
    Store() = default;
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;
    virtual ~Store() = default;

    /// A table for one statement: whoever calls it calls `EndStatement` (see `TableUse`). The same table may be opened
    /// again within the statement. Throws Error (file not found, in use by another, read-only).
    virtual std::shared_ptr<Table> OpenTable(const CString &name, Access access) = 0;
    virtual std::vector<TableEntry> ListTables() = 0;
    /// Lets go of every open file.
    virtual void Close() {}

    /// Makes an empty table, in place of one of that name.
    virtual void CreateTable(const CString &name, const std::vector<ColumnDefinition> &columns);
    virtual void DropTable(const CString &name);
    virtual void AlterTable(const AlterTableStatement &change);
    /// Takes the deleted rows out of the table's file.
    virtual void PackTable(const CString &name);
    /// Opens a table for a longer time; exclusively, no one else can use it until it is altered or closed.
    virtual void UseTable(const CString &name, bool exclusive);
    /// Lets go of a table's files; harmless when it is not open. An empty name: of all.
    virtual void CloseTable(const CString &name);
    /// See `Connection::HoldTable`; throws Error when the table cannot be had. The base class answers null.
    virtual std::shared_ptr<void> HoldTable(const CString &name);
};

/// A rehearsal that ends with its scope.
class Rehearsal {
  public:
    explicit Rehearsal(Table &table) : m_table(table) { table.SetRehearsal(true); }
    Rehearsal(const Rehearsal &) = delete;
    Rehearsal &operator=(const Rehearsal &) = delete;
    ~Rehearsal() { m_table.SetRehearsal(false); }

  private:
    Table &m_table;
};

/// A table in a statement's hands.
class TableUse {
  public:
    TableUse(Store &store, const CString &name, Access access) : m_table(store.OpenTable(name, access)) {}
    TableUse(const TableUse &) = delete;
    TableUse &operator=(const TableUse &) = delete;
    ~TableUse() { m_table->EndStatement(); }

    Table &operator*() const { return *m_table; }
    Table *operator->() const { return m_table.get(); }

  private:
    std::shared_ptr<Table> m_table;
};

}  // namespace ktl::ado::sql
