#pragma once

#include <vector>

#include "ktl/platform/ado/sql/assignment.h"
#include "ktl/platform/ado/sql/row_scan.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// Replace walks records from a work area's current one on, unlike Update, and leaves the area where it ended.
class ReplaceWalk {
  public:
    /// Throws what binding throws. Borrows `replace` and what the scope borrows.
    ReplaceWalk(const ParsedStatement &parsed, const ReplaceStatement &replace, const BindScope &scope);

    /// The number of records that were changed. An Error that comes from a value leaves all records and `current` as
    /// they were.
    long long Run(Table &table, RowNumber &current);

  private:
    using Scope = ReplaceStatement::Scope;

    bool HasFor() const { return !m_replace.forCondition.empty(); }
    bool HasWhile() const { return !m_replace.whileCondition.empty(); }
    RowNumber FirstRow(RowNumber current) const;
    long long Limit() const;
    long long Walk(Table &table, RowNumber &current);
    void Assign(Table &table);

    const ReplaceStatement &m_replace;
    std::vector<BoundAssignment> m_assignments;
    RowScan m_for;
    RowScan m_while;
};

}  // namespace ktl::ado::sql
