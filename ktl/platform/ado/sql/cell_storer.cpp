#include "ktl/platform/ado/sql/cell_storer.h"

#include "ktl/platform/ado/error.h"

namespace ktl::ado::sql {

CellStorer::CellStorer(std::weak_ptr<Store> store, const CString &table, std::uint64_t incarnation,
                       const SelectPlan &plan, std::vector<RowNumber> rows)
    : m_store(std::move(store)),
      m_table(table),
      m_incarnation(incarnation),
      m_sources(plan.GetSourceColumns()),
      m_rows(std::move(rows)) {}

void CellStorer::Write(int row, int column, const Value &value) const {
    const std::shared_ptr<Store> store = m_store.lock();
    const int source = m_sources[static_cast<std::size_t>(column)];
    if (!store) throw Error("The recordset's connection is gone.", error_number::kClosed);
    if (source < 0) throw Error("A computed column cannot be written.", error_number::kReadOnly);
    const TableUse table(*store, m_table, Access::Write);
    if (table->GetIncarnation() != m_incarnation || !table->Seek(m_rows[static_cast<std::size_t>(row)])) {
        throw Error("The table has changed since the recordset was opened.", error_number::kNoCurrentRow);
    }
    Value converted = value;
    ConvertTo(ClassOf(table->GetColumns()[static_cast<std::size_t>(source)].type), converted);
    table->SetCell(source, converted);
    table->Commit();
}

}  // namespace ktl::ado::sql
