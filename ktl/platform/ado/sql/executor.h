#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/ado/sql/statement_cache.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// Runs statements over the tables of a store. Names and types are checked before the first row is touched, and so are
/// the values of all rows that a statement changes: a fault of theirs leaves every row as it was. What a disk refuses
/// leaves earlier rows of an Update changed, and an Insert without any of its rows.
class Executor {
  public:
    explicit Executor(std::shared_ptr<Store> store) : m_store(std::move(store)) {}

    /// Rows written, or rows found by a Select; 0 where that has no meaning. Throws Error.
    long long Execute(std::string_view statement);
    /// The rows of a Select; a closed recordset for any other statement, which is run. Throws Error.
    RecordsetRef Select(std::string_view statement);
    /// As `Connection::ReadPages`.
    void ReadPages(std::string_view statement, const std::function<bool(const RecordsetRef &page)> &use);

  private:
    RecordsetRef Run(PreparedStatement &prepared, std::string_view text, const SelectStatement &select);
    /// Where a walk in pages stands.
    struct PagePlace {
        RowNumber next = 0;
        std::uint64_t incarnation = 0;
        bool isEnd = false;
    };
    RecordsetRef ReadPage(std::string_view statement, PagePlace &place);
    long long Run(PreparedStatement &prepared, std::string_view text, const InsertStatement &insert);
    template <class PlanType, class ChangeStatement>
    long long Change(PreparedStatement &prepared, std::string_view text, const ChangeStatement &statement);
    long long Run(const ParsedStatement &parsed, const ReplaceStatement &replace);
    void Run(const UseStatement &use);
    CString TableOrArea(const Name &table) const;
    long long InsertSelected(PreparedStatement &prepared, std::string_view text);

    std::shared_ptr<Store> m_store;
    StatementCache m_cache;
    /// The current record of each table that Use opened, and the table of the current work area.
    std::map<std::string, RowNumber, std::less<>> m_records;
    CString m_area;
};

}  // namespace ktl::ado::sql
