#pragma once

#include "host/table_rows.h"

namespace ktl::host {

/// Passes a table on. Of a layer's table, whose first columns are ID and ShapeID, these two and the rows that an ID of
/// -1 marks as deleted stay behind.
class UserRows : public TableSink {
  public:
    explicit UserRows(TableSink &sink) : m_sink(sink) {}

    void TakeColumns(const std::vector<TableColumn> &columns) override;
    bool TakeRow(const TableRow &row) override;

  private:
    TableSink &m_sink;
    std::ptrdiff_t m_skipped = 0;
    TableRow m_row;
};

/// Those of a source.
RowSupply UserRowsOf(const TableSource &source);

}  // namespace ktl::host
