#include "ktl/platform/ado/sql/select_plan.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

namespace {

/// Column names of results are cut to this.
constexpr std::size_t kNameLength = 10;
/// Up to this many rows a Top with an order keeps only the best ones while it walks.
constexpr std::size_t kBestRows = 40'000;

BindScope ScopeOf(const ParsedStatement &parsed, const SelectStatement &select, const Table &table) {
    return {parsed, &table.GetColumns(), select.table.text.View(), select.alias.View(), false};
}

Column TypedColumn(TypeClass type) {
    Column column;
    switch (type) {
        case TypeClass::Number:
            column.type = DataType::Double;
            column.definedSize = 8;
            break;
        case TypeClass::Bool:
            column.type = DataType::Boolean;
            column.definedSize = 2;
            break;
        case TypeClass::Date:
            column.type = DataType::DBTimeStamp;
            column.definedSize = 16;
            break;
        case TypeClass::Bytes:
            column.type = DataType::LongVarBinary;
            column.definedSize = std::numeric_limits<int>::max();
            break;
        default:
            column.type = DataType::VarChar;
            column.definedSize = 254;
            break;
    }
    return column;
}

/// The prefix that an unnamed sum over rows gets, as in Max_name.
const char *AggregatePrefix(FunctionId function) {
    switch (function) {
        case FunctionId::Count:
            return "Cnt";
        case FunctionId::Max:
            return "Max";
        case FunctionId::Min:
            return "Min";
        case FunctionId::Sum:
            return "Sum";
        default:
            return "Avg";
    }
}

}  // namespace

SelectPlan::SelectPlan(const ParsedStatement &parsed, const SelectStatement &select, Table &table)
    : m_columns(std::make_shared<std::vector<Column>>()),
      m_grouping(parsed, select, ScopeOf(parsed, select, table)),
      m_scan(select.where, ScopeOf(parsed, select, table)),
      m_distinct(select.distinct),
      m_top(select.top),
      m_topPercent(select.topPercent) {
    BindItems(parsed, select, table);
    BindOrder(parsed, select, table);
    m_cells.resize(m_items.size());
}

void SelectPlan::BindItems(const ParsedStatement &parsed, const SelectStatement &select, const Table &table) {
    BindScope scope = ScopeOf(parsed, select, table);
    scope.aggregates = true;
    int unnamed = 0;
    for (const SelectItem &item : select.items) {
        if (!item.star) {
            m_items.emplace_back(item.expression, scope);
            m_aggregates = m_aggregates || m_items.back().HasAggregate();
            m_columns->push_back(DescribeItem(item, m_items.back(), table, unnamed));
            continue;
        }
        for (const Column &column : table.GetColumns()) {
            Expression all;
            all.op = Op::Column;
            all.name = column.name;
            m_items.emplace_back(all, scope);
            m_columns->push_back(column);
        }
    }
    if (IsSummed()) RequireGroupedItems(select, table);
    MakeNamesUnique();
}

/// Beside sums and groups a result column may show keys only.
void SelectPlan::RequireGroupedItems(const SelectStatement &select, const Table &table) const {
    for (const SelectItem &item : select.items) {
        if (!item.star) m_grouping.RequireGrouped(item.expression);
        if (!item.star) continue;
        for (const Column &column : table.GetColumns()) {
            Expression shown = item.expression;
            shown.op = Op::Column;
            shown.name = column.name;
            m_grouping.RequireGrouped(shown);
        }
    }
}

Column SelectPlan::DescribeItem(const SelectItem &item, const BoundExpression &bound, const Table &table,
                                int &unnamed) const {
    Column column = TypedColumn(bound.GetType());
    const bool aggregate = bound.GetOp() == Op::Aggregate;
    const BoundExpression *operand = aggregate && !bound.GetOperands().empty() ? &bound.GetOperands()[0] : nullptr;
    const int inner = operand ? operand->GetColumn() : -1;
    const bool keepsType = bound.GetFunction() == FunctionId::Max || bound.GetFunction() == FunctionId::Min;
    if (bound.GetColumn() >= 0) {
        column = table.GetColumns()[static_cast<std::size_t>(bound.GetColumn())];
    } else if (aggregate && bound.GetFunction() == FunctionId::Count) {
        column.type = DataType::Integer;
        column.definedSize = 4;
    } else if (keepsType && inner >= 0) {
        column = table.GetColumns()[static_cast<std::size_t>(inner)];
    }
    if (!item.alias.IsEmpty()) {
        column.name = item.alias;
    } else if (aggregate) {
        const CString tail = inner >= 0 ? "_" + item.expression.operands[0].name : CString();
        column.name = CString(CutText((AggregatePrefix(bound.GetFunction()) + tail).View(), kNameLength));
    } else if (bound.GetColumn() < 0) {
        column.name.Format("Exp_%d", ++unnamed);
    }
    return column;
}

/// A repeated name gets _a, _b and so on.
void SelectPlan::MakeNamesUnique() {
    for (std::size_t i = 0; i < m_columns->size(); ++i) {
        char letter = 'a';
        const CString name = (*m_columns)[i].name;
        const auto taken = [&] {
            return std::any_of(
                m_columns->begin(), m_columns->begin() + static_cast<std::ptrdiff_t>(i),
                [&](const Column &other) { return EqualNames(other.name.View(), (*m_columns)[i].name.View()); });
        };
        while (taken() && letter <= 'z') {
            (*m_columns)[i].name = CString(CutText(name.View(), kNameLength - 2)) + "_" + letter++;
        }
    }
}

void SelectPlan::BindOrder(const ParsedStatement &parsed, const SelectStatement &select, const Table &table) {
    BindScope scope = ScopeOf(parsed, select, table);
    scope.aggregates = !m_grouping.IsEmpty();
    for (const OrderKey &wanted : select.order) {
        Key key;
        key.descending = wanted.descending;
        key.item = ItemOfKey(wanted, select);
        if (key.item >= static_cast<int>(m_items.size())) {
            ThrowAt(parsed.text, wanted.position, "Order By names a result column that there is not",
                    error_number::kColumnNotFound);
        }
        if (key.item < 0) {
            if (!m_grouping.IsEmpty()) m_grouping.RequireGrouped(wanted.expression);
            key.expression.emplace_back(wanted.expression, scope);
        }
        m_order.push_back(std::move(key));
    }
}

/// The result column that the key names by its number or by its alias, or -1.
int SelectPlan::ItemOfKey(const OrderKey &key, const SelectStatement &select) const {
    if (key.number > 0 || key.expression.op != Op::Column) return key.number - 1;
    int found = -1;
    for (std::size_t i = 0; i < select.items.size() && !select.items[i].star; ++i) {
        const CString &alias = select.items[i].alias;
        if (!alias.IsEmpty() && EqualNames(alias.View(), key.expression.name.View())) found = static_cast<int>(i);
    }
    return found;
}

std::vector<int> SelectPlan::GetSourceColumns() const {
    std::vector<int> sources;
    sources.reserve(m_items.size());
    for (const BoundExpression &item : m_items) sources.push_back(item.GetColumn());
    return sources;
}

void SelectPlan::Start(Table &table) {
    PrepareCells();
    m_seen.clear();
    m_scan.Start(table);
}

void SelectPlan::PrepareCells() {
    for (BoundExpression &item : m_items) item.Prepare();
    for (Key &key : m_order) {
        for (BoundExpression &expression : key.expression) expression.Prepare();
    }
}

void SelectPlan::AccumulateCells(Table &table) {
    for (BoundExpression &item : m_items) item.Accumulate(table);
    for (Key &key : m_order) {
        for (BoundExpression &expression : key.expression) expression.Accumulate(table);
    }
}

void SelectPlan::EvaluateItems(Table &table) {
    for (std::size_t i = 0; i < m_items.size(); ++i) m_cells[i] = &m_items[i].Evaluate(table);
}

bool SelectPlan::NextResult(Table &table) {
    while (m_scan.Next(table)) {
        EvaluateItems(table);
        if (!m_distinct || m_seen.insert(Fingerprint(m_cells)).second) return true;
    }
    return false;
}

const Value &SelectPlan::KeyValue(Key &key, Table &table) {
    return key.item >= 0 ? *m_cells[static_cast<std::size_t>(key.item)] : key.expression.front().Evaluate(table);
}

/// True when the walk itself meets the rows in the wanted order.
bool SelectPlan::ComesInOrder(Table &table) const {
    if (m_order.empty()) return true;
    const Key &key = m_order.front();
    if (m_order.size() > 1 || key.descending) return false;
    const BoundExpression &expression =
        key.item >= 0 ? m_items[static_cast<std::size_t>(key.item)] : key.expression.front();
    return expression.GetColumn() >= 0 && table.IsAscending(expression.GetColumn());
}

std::size_t SelectPlan::Limit() const {
    return m_top < 0 || m_topPercent ? kNoLimit : static_cast<std::size_t>(std::min(m_top, 1e15));
}

/// How many of so many rows Top keeps.
std::size_t SelectPlan::Kept(std::size_t rows) const {
    if (m_topPercent) return static_cast<std::size_t>(std::ceil(static_cast<double>(rows) * m_top / 100));
    return std::min(rows, Limit());
}

bool SelectPlan::GoesBefore(const Waiting &a, const Waiting &b) const {
    for (std::size_t i = 0; i < m_order.size(); ++i) {
        const int order = CompareNullsFirst(a.keys[i], b.keys[i]);
        if (order != 0) return (order < 0) != m_order[i].descending;
    }
    return a.arrival < b.arrival;
}

std::shared_ptr<StaticRecordset> SelectPlan::Run(Table &table, std::vector<RowNumber> &rows) {
    auto result = std::make_shared<StaticRecordset>(std::shared_ptr<const std::vector<Column>>(m_columns));
    const std::size_t limit = Limit();
    const bool inOrder = m_order.empty() || (limit != kNoLimit && ComesInOrder(table));
    Start(table);
    if (!m_grouping.IsEmpty()) {
        RunGroups(table, *result);
    } else if (m_aggregates) {
        RunAggregates(table, *result);
    } else if (inOrder) {
        RunAsTheyCome(table, *result, rows, limit);
    } else if (limit <= kBestRows) {
        RunBest(table, *result, rows, limit);
    } else {
        RunSorted(table, *result, rows);
    }
    return result;
}

std::shared_ptr<StaticRecordset> SelectPlan::RunPage(Table &table, RowNumber &next, std::size_t most) {
    if (!m_order.empty() || IsSummed() || m_distinct || m_top >= 0) return nullptr;
    for (BoundExpression &item : m_items) item.Prepare();
    if (!m_scan.StartAt(table, next)) return nullptr;
    auto page = std::make_shared<StaticRecordset>(std::shared_ptr<const std::vector<Column>>(m_columns));
    for (; most > 0 && NextResult(table); --most) {
        page->AddRow(m_cells.data());
        next = table.GetRow() + 1;
    }
    return page;
}

void SelectPlan::RunAggregates(Table &table, StaticRecordset &result) {
    while (m_scan.Next(table)) AccumulateCells(table);
    EvaluateItems(table);
    if (m_top != 0) result.AddRow(m_cells.data());
}

/// The cursor stands on the group's last row while its result row is made.
bool SelectPlan::EvaluateGroup(Table &table, const Group &group) {
    PrepareCells();
    m_grouping.BeginGroup();
    for (const RowNumber row : group.rows) {
        if (!table.Seek(row)) continue;
        AccumulateCells(table);
        m_grouping.TakeRow(table);
    }
    EvaluateItems(table);
    return m_grouping.Accepts(table) && (!m_distinct || m_seen.insert(Fingerprint(m_cells)).second);
}

void SelectPlan::RunGroups(Table &table, StaticRecordset &result) {
    std::vector<Waiting> all;
    for (const Group &group : m_grouping.Gather(table, m_scan)) {
        if (!EvaluateGroup(table, group)) continue;
        Waiting waiting;
        Take(table, waiting);
        waiting.arrival = static_cast<std::uint32_t>(all.size());
        for (const Value *cell : m_cells) waiting.cells.push_back(*cell);
        all.push_back(std::move(waiting));
    }
    std::sort(all.begin(), all.end(), [this](const Waiting &a, const Waiting &b) { return GoesBefore(a, b); });
    all.resize(Kept(all.size()));
    for (const Waiting &row : all) result.AddRow(row.cells);
}

void SelectPlan::RunAsTheyCome(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows, std::size_t limit) {
    while (rows.size() < limit && NextResult(table)) {
        result.AddRow(m_cells.data());
        rows.push_back(table.GetRow());
    }
    if (!m_topPercent) return;
    std::vector<std::uint32_t> kept(Kept(rows.size()));
    std::iota(kept.begin(), kept.end(), 0U);
    result.Reorder(kept);
}

void SelectPlan::Take(Table &table, Waiting &waiting) {
    waiting.keys.clear();
    for (Key &key : m_order) waiting.keys.push_back(KeyValue(key, table));
    waiting.row = table.GetRow();
}

/// Keeps the best `limit` rows in a heap whose top is the worst of them.
void SelectPlan::RunBest(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows, std::size_t limit) {
    std::vector<Waiting> best;
    const auto before = [this](const Waiting &a, const Waiting &b) { return GoesBefore(a, b); };
    Waiting next;
    for (std::uint32_t arrival = 0; limit > 0 && NextResult(table); ++arrival) {
        Take(table, next);
        next.arrival = arrival;
        if (best.size() == limit) {
            if (!GoesBefore(next, best.front())) continue;
            std::pop_heap(best.begin(), best.end(), before);
            best.pop_back();
        }
        next.cells.clear();
        for (const Value *cell : m_cells) next.cells.push_back(*cell);
        best.push_back(std::move(next));
        std::push_heap(best.begin(), best.end(), before);
        next = Waiting();
    }
    std::sort_heap(best.begin(), best.end(), before);
    for (const Waiting &row : best) {
        result.AddRow(row.cells);
        rows.push_back(row.row);
    }
}

void SelectPlan::RunSorted(Table &table, StaticRecordset &result, std::vector<RowNumber> &rows) {
    std::vector<Waiting> all;
    while (NextResult(table)) {
        Waiting waiting;
        Take(table, waiting);
        waiting.arrival = static_cast<std::uint32_t>(all.size());
        all.push_back(std::move(waiting));
        rows.push_back(table.GetRow());
        result.AddRow(m_cells.data());
    }
    std::sort(all.begin(), all.end(), [this](const Waiting &a, const Waiting &b) { return GoesBefore(a, b); });
    std::vector<std::uint32_t> order;
    for (std::size_t i = 0; i < Kept(all.size()); ++i) order.push_back(all[i].arrival);
    result.Reorder(order);
}

void SelectPlan::ForEachRow(Table &table, const std::function<void(const std::vector<const Value *> &)> &use) {
    if (m_order.empty() && !IsSummed() && !m_topPercent) {
        Start(table);
        for (std::size_t left = Limit(); left > 0 && NextResult(table); --left) use(m_cells);
        return;
    }
    std::vector<RowNumber> rows;
    const auto result = Run(table, rows);
    for (; !result->IsEOF(); result->MoveNext()) {
        for (std::size_t i = 0; i < m_cells.size(); ++i) m_cells[i] = &result->GetCell(static_cast<int>(i));
        use(m_cells);
    }
}

}  // namespace ktl::ado::sql
