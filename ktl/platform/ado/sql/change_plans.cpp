#include "ktl/platform/ado/sql/change_plans.h"

#include <algorithm>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

std::vector<int> TargetColumns(const ParsedStatement &parsed, const InsertStatement &insert, const Table &table) {
    const auto &columns = table.GetColumns();
    std::vector<int> targets;
    for (const Name &name : insert.columns) {
        const int column = RequireColumn(columns, name, parsed);
        if (std::find(targets.begin(), targets.end(), column) != targets.end()) {
            ThrowAt(parsed.text, name.position, "Column \"" + name.text + "\" stands twice in the list",
                    error_number::kSyntax);
        }
        targets.push_back(column);
    }
    if (insert.columns.empty()) {
        for (std::size_t i = 0; i < columns.size(); ++i) targets.push_back(static_cast<int>(i));
    }
    return targets;
}

void RequireCount(std::size_t given, std::size_t wanted, const ParsedStatement &parsed, std::size_t position) {
    if (given == wanted) return;
    CString text;
    text.Format("%d values stand for %d columns", static_cast<int>(given), static_cast<int>(wanted));
    ThrowAt(parsed.text, position, text, error_number::kSyntax);
}

InsertPlan::InsertPlan(const ParsedStatement &parsed, const InsertStatement &insert, Table &table)
    : BoundPlan(table), m_cells(table.GetColumns().size(), nullptr) {
    const std::vector<int> targets = TargetColumns(parsed, insert, table);
    RequireCount(insert.values.size(), targets.size(), parsed, insert.values.front().position);
    m_computed.reserve(insert.values.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const auto target = static_cast<std::size_t>(targets[i]);
        BoundExpression value(insert.values[i], {parsed, nullptr, {}, {}, false});
        RequireAssignable(value.GetType(), table.GetColumns()[target], parsed, insert.values[i].position);
        if (const Value *literal = value.GetLiteral()) {
            m_cells[target] = literal;
        } else {
            m_computed.emplace_back(target, std::move(value));
        }
    }
}

void InsertPlan::Run(Table &table) {
    for (auto &[target, expression] : m_computed) {
        expression.Prepare();
        m_cells[target] = &expression.Evaluate(table);
    }
    table.Append(m_cells);
}

UpdatePlan::UpdatePlan(const ParsedStatement &parsed, const UpdateStatement &update, Table &table)
    : BoundPlan(table),
      m_scope{parsed, &table.GetColumns(), update.table.text.View(), {}, false},
      m_assignments(BindAssignments(update.assignments, m_scope)),
      m_scan(update.where, m_scope) {}

long long UpdatePlan::Walk(Table &table) {
    long long count = 0;
    for (m_scan.Start(table); m_scan.Next(table); ++count) {
        for (BoundAssignment &assignment : m_assignments) {
            table.SetCell(assignment.column, assignment.value.Evaluate(table));
        }
    }
    return count;
}

long long UpdatePlan::Run(Table &table) {
    PrepareAssignments(m_assignments);
    // Values that are the same for all rows fail at the first one.
    if (DependOnRow(m_assignments) || m_scan.CanFail()) {
        const Rehearsal rehearsal(table);
        Walk(table);
    }
    return Walk(table);
}

DeletePlan::DeletePlan(const ParsedStatement &parsed, const DeleteStatement &remove, Table &table)
    : BoundPlan(table), m_scan(remove.where, {parsed, &table.GetColumns(), remove.table.text.View(), {}, false}) {}

long long DeletePlan::Run(Table &table) {
    long long count = 0;
    if (m_scan.CanFail()) {
        for (m_scan.Start(table); m_scan.Next(table);) {
        }
    }
    for (m_scan.Start(table); m_scan.Next(table); ++count) table.DeleteRow();
    return count;
}

}  // namespace ktl::ado::sql
