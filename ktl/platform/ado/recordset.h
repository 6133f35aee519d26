#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ktl/platform/ado/data_type.h"
#include "ktl/platform/ado/value.h"
#include "ktl/platform/string.h"

namespace ktl::ado {

/// What a recordset tells about a column.
struct Column {
    CString name;
    DataType type = DataType::Empty;
    /// Characters of a text column, else the bytes of a value; 2147483647 for a memo or a byte block, 1073741823 for a
    /// server's memo in two-byte characters.
    int definedSize = 0;
    /// Digits in all, and behind the point, of a Numeric or Decimal column; else 0.
    int precision = 0;
    int scale = 0;
    bool nullable = true;
};

/// The rows of a statement: a static cursor, which shows the rows as they were when it was opened, with an exact row
/// count. It stands on its first row after opening. Columns are counted from 0; their names are found without regard
/// to case. Every operation but `Close` throws Error (closed) on a closed recordset, and Error (no current row) where
/// it needs a row and stands at the end.
///
///     for (RecordsetRef rows = connection->OpenRecordset("Select * From w001"); !rows->IsEOF(); rows->MoveNext())
///         Use(rows->GetCell("name"));
class KTL_API Recordset {
  public:
    Recordset() = default;
    Recordset(const Recordset &) = delete;
    Recordset &operator=(const Recordset &) = delete;
    virtual ~Recordset() = default;

    virtual int GetRecordCount() const = 0;
    /// True when there is no current row: behind the last one, or with no rows at all.
    virtual bool IsEOF() const = 0;
    virtual void MoveNext() = 0;
    virtual void MoveFirst() = 0;

    virtual const std::vector<Column> &GetColumns() const = 0;
    int GetColumnCount() const { return static_cast<int>(GetColumns().size()); }
    /// Throws Error (column not found) for a bad position.
    const Column &GetColumn(int column) const;
    /// The first column of that name, or -1.
    int FindColumn(std::string_view name) const;

    /// A cell of the current row; good until the row changes. Throws Error (column not found).
    virtual const Value &GetCell(int column) = 0;
    const Value &GetCell(const CString &name);

    /// The bytes of the current cell: of a byte block or a text its length, of null 0, else the value's own width.
    virtual int GetActualSize(int column);
    /// The next `count` bytes of the current cell, fewer when less remains; null when nothing does or the cell is
    /// neither text nor bytes. Touching another column or row starts again.
    Value GetChunk(int column, int count);
    /// Sets the cell's bytes; a further call on the same column appends. `Update` stores them.
    void AppendChunk(int column, std::string_view bytes);
    /// Writes the pending chunk of the current row to the table. Throws Error when the table cannot take it. Without
    /// a pending chunk it does nothing.
    void Update();

    /// Harmless when closed already.
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;

    /// Throws Error (column not found) for an unknown name.
    int RequireColumn(std::string_view name) const;

  protected:
    /// Stores a whole cell of the current row; for `Update`.
    virtual void StoreCell(int column, const Value &value) = 0;
    /// Forgets chunk positions and pending chunks; to be called when the row changes.
    void ResetChunks();

  private:
    int m_chunkColumn = -1;
    std::size_t m_chunkPosition = 0;
    int m_pendingColumn = -1;
    std::string m_pending;
};

/// Holds a recordset, or is empty and tests as false.
using RecordsetRef = std::shared_ptr<Recordset>;

}  // namespace ktl::ado
