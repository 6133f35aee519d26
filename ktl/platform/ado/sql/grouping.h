#pragma once

#include <vector>

#include "ktl/platform/ado/sql/expression.h"
#include "ktl/platform/ado/sql/row_scan.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// The rows of one group, in the table's order.
struct Group {
    std::vector<Value> keys;
    std::vector<RowNumber> rows;
};

/// The Group By of a Select: what the rows are told apart by, and which groups Having lets through.
class Grouping {
  public:
    /// Without a Group By there are no keys, and all rows are one group. Throws what binding throws, and Error (syntax)
    /// for a column outside sums that is no key.
    Grouping(const ParsedStatement &parsed, const SelectStatement &select, const BindScope &scope);

    bool IsEmpty() const { return m_keys.empty(); }
    /// Throws Error (syntax) when the expression reads a column that is no key, other than in a sum over rows.
    void RequireGrouped(const Expression &expression) const;

    /// The groups in the order of their keys, nulls first. The walk has been started.
    std::vector<Group> Gather(Table &table, RowScan &scan);
    /// To be called before the rows of a group, for each of them, and behind the last.
    void BeginGroup();
    void TakeRow(Table &table);
    bool Accepts(Table &table);

  private:
    void BindKey(const OrderKey &key, const SelectStatement &select, const BindScope &scope);

    const ParsedStatement &m_parsed;
    std::vector<BoundExpression> m_keys;
    /// One, or none.
    std::vector<BoundExpression> m_having;
    /// The keys that are plain columns, and the result columns that are keys as they stand.
    std::vector<CString> m_columns;
    std::vector<const Expression *> m_items;
};

/// Nulls come first.
int CompareNullsFirst(const Value &a, const Value &b);
/// A text that two rows share only when all their cells are equal.
std::string Fingerprint(const std::vector<const Value *> &cells);

}  // namespace ktl::ado::sql
