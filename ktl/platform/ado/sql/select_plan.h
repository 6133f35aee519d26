#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "ktl/platform/ado/sql/grouping.h"
#include "ktl/platform/ado/sql/row_scan.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado::sql {

/// A Select bound to one table.
class SelectPlan {
  public:
    /// Throws what binding throws.
    SelectPlan(const ParsedStatement &parsed, const SelectStatement &select, Table &table);

    const std::vector<Column> &GetColumns() const { return *m_columns; }
    /// For each result column the table's column that it shows, or -1 for a computed one.
    std::vector<int> GetSourceColumns() const;
    /// True when each result row is one row of the table.
    bool HasRowIdentity() const { return !IsSummed() && !m_distinct; }

    /// The recordset, and into `rows` the table's row of each result row in the order of `AddRow`.
    std::shared_ptr<StaticRecordset> Run(Table &table, std::vector<RowNumber> &rows);
    /// Up to `most` rows from the table's row `next` on, which moves behind them; null where the rows have to be
    /// gathered first. Fewer than `most` are the last ones.
    std::shared_ptr<StaticRecordset> RunPage(Table &table, RowNumber &next, std::size_t most);
    /// Hands over each result row in turn; without order, limit and sums the rows are not gathered first.
    void ForEachRow(Table &table, const std::function<void(const std::vector<const Value *> &)> &use);

  private:
    struct Key {
        /// A result column, or -1 and one expression.
        int item = -1;
        std::vector<BoundExpression> expression;
        bool descending = false;
    };
    /// A row that waits to be put in order.
    struct Waiting {
        std::vector<Value> keys;
        std::vector<Value> cells;
        RowNumber row = 0;
        std::uint32_t arrival = 0;
    };
    static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

    void BindItems(const ParsedStatement &parsed, const SelectStatement &select, const Table &table);
    void BindOrder(const ParsedStatement &parsed, const SelectStatement &select, const Table &table);
    Column DescribeItem(const SelectItem &item, const BoundExpression &bound, const Table &table, int &unnamed) const;
    void MakeNamesUnique();
    void RequireGroupedItems(const SelectStatement &select, const Table &table) const;
    int ItemOfKey(const OrderKey &key, const SelectStatement &select) const;
    /// True when a result row stands for several of the table.
    bool IsSummed() const { return m_aggregates || !m_grouping.IsEmpty(); }

    void Start(Table &table);
    void PrepareCells();
    void AccumulateCells(Table &table);
    bool EvaluateGroup(Table &table, const Group &group);
    /// Moves to the next row of the scan, evaluates its result cells and drops repeated ones of a Distinct.
    bool NextResult(Table &table);
    void EvaluateItems(Table &table);
    const Value &KeyValue(Key &key, Table &table);
    bool ComesInOrder(Table &table) const;
    std::size_t Limit() const;
    std::size_t Kept(std::size_t rows) const;
    bool GoesBefore(const Waiting &a, const Waiting &b) const;
    void Take(Table &table, Waiting &waiting);

    void RunAggregates(Table &table, StaticRecordset &result);
    void RunGroups(Table &table, StaticRecordset &result);
    void RunAsTheyCome(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows, std::size_t limit);
    void RunBest(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows, std::size_t limit);
    void RunSorted(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows);

    std::shared_ptr<std::vector<Column>> m_columns;
    std::vector<BoundExpression> m_items;
    /// The result cells of the current row.
    std::vector<const Value *> m_cells;
    std::vector<Key> m_order;
    Grouping m_grouping;
    RowScan m_scan;
    bool m_aggregates = false;
    bool m_distinct = false;
    double m_top = -1;
    bool m_topPercent = false;
    std::unordered_set<std::string> m_seen;
};

}  // namespace ktl::ado::sql
