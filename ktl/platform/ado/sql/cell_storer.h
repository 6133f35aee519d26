#pragma once

#include <memory>
#include <vector>

#include "ktl/platform/ado/sql/select_plan.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// Stores a cell of a recordset's row in the table that it came from.
class CellStorer {
  public:
    /// `rows` holds the table's row of each row of the recordset.
    CellStorer(std::weak_ptr<Store> store, const CString &table, std::uint64_t incarnation, const SelectPlan &plan,
               std::vector<RowNumber> rows);

    /// Throws Error: a computed column, a table whose columns changed, a row that is gone, a connection that is closed.
    void Write(int row, int column, const Value &value) const;

  private:
    std::weak_ptr<Store> m_store;
    CString m_table;
    std::uint64_t m_incarnation;
    std::vector<int> m_sources;
    std::vector<RowNumber> m_rows;
};

}  // namespace ktl::ado::sql
