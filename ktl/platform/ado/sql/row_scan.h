#pragma once

#include <optional>
#include <vector>

#include "ktl/platform/ado/sql/expression.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// The rows of a table that a condition accepts. A condition that holds `column = number` or `column In (numbers)`, by
/// itself or joined by And, goes through the table's index where it has one; any other is a walk over all rows.
class RowScan {
  public:
    /// `condition` holds one expression, or none: all rows. Throws what binding throws.
    RowScan(const std::vector<Expression> &condition, const BindScope &scope);

    /// Begins a walk.
    void Start(Table &table);
    /// Begins it at a row; false where the table cannot.
    bool StartAt(Table &table, RowNumber row);
    /// Moves the table's cursor to the next accepted row.
    bool Next(Table &table);

    /// True when the condition itself may end in an Error at some row.
    bool CanFail() const { return m_condition && m_condition->CanFail(); }

    /// For a walk of the caller's own: to be called before it, and then for each row.
    void Prepare();
    bool Accepts(Table &table);

  private:
    struct Key {
        int column;
        std::vector<const Value *> values;
    };
    void CollectKeys(const BoundExpression &condition);
    bool FindByKey(Table &table, const Key &key, std::vector<RowNumber> &rows) const;
    bool FindByBestKey(Table &table);

    std::optional<BoundExpression> m_condition;
    std::vector<Key> m_keys;
    bool m_byKey = false;
    std::vector<RowNumber> m_rows;
    std::vector<RowNumber> m_candidates;
    std::size_t m_next = 0;
};

}  // namespace ktl::ado::sql
