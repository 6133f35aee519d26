#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "ktl/platform/ado/access/database.h"
#include "ktl/platform/ado/access/field.h"
#include "ktl/platform/ado/access/quiet.h"
#include "ktl/platform/ado/sql/table.h"
#include "ktl/platform/export.h"

namespace ktl::ado::access {

/// One table of an Access file, read row by row. A row's number is its page times 256 plus its place in the page.
class KTL_API Table final : public sql::Table {
  public:
    /// Throws Error when there is no such table or its definition is damaged.
    Table(std::shared_ptr<Database> database, const CString &name);
    ~Table() override;

    /// Begins a statement; libmdb's messages are dropped until `EndStatement`.
    void Begin();
    void EndStatement() noexcept override { m_quiet.reset(); }

    const std::vector<Column> &GetColumns() const override { return m_columns; }
    void Rewind() override;
    /// Throws Error when pages that belong to the table cannot be read, or a row contradicts itself: a shorter table
    /// would pass for a whole one.
    bool Next() override;
    bool Seek(sql::RowNumber row) override;
    sql::RowNumber GetRow() const override { return m_page * kRowsOfPage + m_row; }
    void ReadCell(int column, Value &value) override;

  private:
    static constexpr std::uint32_t kRowsOfPage = 256;
    /// Where a field of the current row lies in its page.
    struct Place {
        bool null = true;
        std::uint16_t start = 0;
        std::uint16_t size = 0;
    };

    void DescribeColumns();
    bool NextPage();
    /// The rows of the current page, after a look at its head.
    std::uint32_t CountRows() const;
    void RequirePage() const;
    /// Finds the fields of a row of the current page; false when it is deleted.
    bool LoadRow(std::uint32_t row);

    std::shared_ptr<Database> m_database;
    CString m_name;
    S_MdbTableDef *m_table;
    std::vector<Column> m_columns;
    std::vector<FieldType> m_types;
    std::uint32_t m_page = 0;
    std::uint32_t m_row = 0;
    std::uint32_t m_rowCount = 0;
    std::uint32_t m_nextRow = 0;
    bool m_metRows = false;
    std::vector<Place> m_places;
    std::optional<Quiet> m_quiet;
};

}  // namespace ktl::ado::access
