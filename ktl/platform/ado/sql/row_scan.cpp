#include "ktl/platform/ado/sql/row_scan.h"

#include <algorithm>

#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

RowScan::RowScan(const std::vector<Expression> &condition, const BindScope &scope) {
    if (condition.empty()) return;
    m_condition.emplace(condition.front(), scope);
    const TypeClass type = m_condition->GetType();
    if (type != TypeClass::Bool && type != TypeClass::Null) {
        ThrowAt(scope.statement.text, condition.front().position, "The condition is not a logical value",
                error_number::kOperandTypes);
    }
    CollectKeys(*m_condition);
}

void RowScan::CollectKeys(const BoundExpression &condition) {
    const auto &operands = condition.GetOperands();
    if (condition.GetOp() == Op::And) {
        for (const BoundExpression &operand : operands) CollectKeys(operand);
    } else if (condition.GetOp() == Op::Equal) {
        for (const std::size_t side : {std::size_t{0}, std::size_t{1}}) {
            const Value *value = operands[1 - side].GetLiteral();
            if (operands[side].GetColumn() >= 0 && value) m_keys.push_back({operands[side].GetColumn(), {value}});
        }
    } else if (condition.GetOp() == Op::In && operands[0].GetColumn() >= 0 && !condition.IsNegated()) {
        Key key{operands[0].GetColumn(), {}};
        for (std::size_t i = 1; i < operands.size(); ++i) key.values.push_back(operands[i].GetLiteral());
        if (std::find(key.values.begin(), key.values.end(), nullptr) == key.values.end()) m_keys.push_back(key);
    }
}

bool RowScan::FindByKey(Table &table, const Key &key, std::vector<RowNumber> &rows) const {
    rows.clear();
    for (const Value *value : key.values) {
        const auto number = value->IsNumber() ? value->ToInteger() : std::nullopt;
        if (!number || !table.FindRows(key.column, *number, rows)) return false;
    }
    if (key.values.size() > 1) {
        std::sort(rows.begin(), rows.end());
        rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    }
    return true;
}

/// Of several keys the one with the fewest rows.
bool RowScan::FindByBestKey(Table &table) {
    constexpr std::size_t kFew = 4;
    bool found = false;
    for (const Key &key : m_keys) {
        if (found && m_rows.size() <= kFew) break;
        if (!FindByKey(table, key, found ? m_candidates : m_rows)) continue;
        if (found && m_candidates.size() < m_rows.size()) m_rows.swap(m_candidates);
        found = true;
    }
    return found;
}

void RowScan::Prepare() {
    if (m_condition) m_condition->Prepare();
}

bool RowScan::Accepts(Table &table) {
    return !m_condition || m_condition->IsTrue(table);
}

void RowScan::Start(Table &table) {
    Prepare();
    m_next = 0;
    m_byKey = FindByBestKey(table);
    if (!m_byKey) table.Rewind();
}

bool RowScan::StartAt(Table &table, RowNumber row) {
    Start(table);
    if (!m_byKey) return table.RewindTo(row);
    m_next = static_cast<std::size_t>(std::lower_bound(m_rows.begin(), m_rows.end(), row) - m_rows.begin());
    return true;
}

bool RowScan::Next(Table &table) {
    if (m_byKey) {
        while (m_next < m_rows.size()) {
            if (table.Seek(m_rows[m_next++]) && Accepts(table)) return true;
        }
        return false;
    }
    while (table.Next()) {
        if (Accepts(table)) return true;
    }
    return false;
}

}  // namespace ktl::ado::sql
