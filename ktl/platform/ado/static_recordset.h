#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "ktl/platform/ado/recordset.h"

namespace ktl::ado {

/// A recordset whose rows lie packed in memory, for every store. Fill it with `AddRow`, then hand it out.
class KTL_API StaticRecordset final : public Recordset {
  public:
    /// Stores a cell of the row with this index (in the order of `AddRow`) in the table behind; throws Error.
    using CellWriter = std::function<void(int row, int column, const Value &value)>;

    explicit StaticRecordset(std::vector<Column> columns);
    /// Shares the description of the columns.
    explicit StaticRecordset(std::shared_ptr<const std::vector<Column>> columns);

    /// `values` holds one value a column.
    void AddRow(const Value *const *values);
    void AddRow(const std::vector<Value> &values);
    /// Puts the rows into the given order; `order` holds indexes of rows in the order of `AddRow` and may leave some
    /// out. Rows keep the index that the cell writer is told.
    void Reorder(const std::vector<std::uint32_t> &order);
    /// Without a writer the recordset is read-only.
    void SetCellWriter(CellWriter writer) { m_writer = std::move(writer); }

    int GetRecordCount() const override;
    bool IsEOF() const override;
    void MoveNext() override;
    void MoveFirst() override;
    const std::vector<Column> &GetColumns() const override;
    const Value &GetCell(int column) override;
    void Close() override;
    bool IsOpen() const override { return m_open; }

  protected:
    void StoreCell(int column, const Value &value) override;

  private:
    void RequireOpen() const;
    void LoadRow();

    std::shared_ptr<const std::vector<Column>> m_columns;
    /// The cells of all rows, each a kind byte and its value.
    std::string m_cells;
    struct Row {
        std::size_t offset;
        std::uint32_t index;
    };
    std::vector<Row> m_rows;
    std::size_t m_position = 0;
    std::vector<Value> m_current;
    bool m_currentLoaded = false;
    bool m_open = true;
    CellWriter m_writer;
};

}  // namespace ktl::ado
