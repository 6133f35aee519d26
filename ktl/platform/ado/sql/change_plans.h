#pragma once

#include <utility>
#include <vector>

#include "ktl/platform/ado/sql/assignment.h"
#include "ktl/platform/ado/sql/row_scan.h"
#include "ktl/platform/ado/sql/statement_cache.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// A plan that is good for one state of one table.
class BoundPlan : public Plan {
  public:
    explicit BoundPlan(const Table &table) : m_incarnation(table.GetIncarnation()) {}
    bool IsGoodFor(const Table &table) const { return m_incarnation == table.GetIncarnation(); }

  private:
    std::uint64_t m_incarnation;
};

/// The columns that an Insert fills, in the order of its values; throws Error (column not found, syntax).
std::vector<int> TargetColumns(const ParsedStatement &parsed, const InsertStatement &insert, const Table &table);
/// Throws Error (syntax) with both numbers.
void RequireCount(std::size_t given, std::size_t wanted, const ParsedStatement &parsed, std::size_t position);

/// An Insert of one row. The constructors throw what binding throws.
class InsertPlan : public BoundPlan {
  public:
    InsertPlan(const ParsedStatement &parsed, const InsertStatement &insert, Table &table);
    void Run(Table &table);

  private:
    /// A value a column: the statement's own literal, a computed one, or null for a column left out.
    std::vector<const Value *> m_cells;
    std::vector<std::pair<std::size_t, BoundExpression>> m_computed;
};

class UpdatePlan : public BoundPlan {
  public:
    UpdatePlan(const ParsedStatement &parsed, const UpdateStatement &update, Table &table);
    /// The number of rows that were changed: all that the condition accepts, or none when an Error comes from a value.
    long long Run(Table &table);

  private:
    long long Walk(Table &table);

    BindScope m_scope;
    std::vector<BoundAssignment> m_assignments;
    RowScan m_scan;
};

class DeletePlan : public BoundPlan {
  public:
    DeletePlan(const ParsedStatement &parsed, const DeleteStatement &remove, Table &table);
    /// As `UpdatePlan::Run`.
    long long Run(Table &table);

  private:
    RowScan m_scan;
};

}  // namespace ktl::ado::sql
