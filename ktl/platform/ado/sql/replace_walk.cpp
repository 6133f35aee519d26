#include "ktl/platform/ado/sql/replace_walk.h"

#include <algorithm>
#include <limits>

#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

ReplaceWalk::ReplaceWalk(const ParsedStatement &parsed, const ReplaceStatement &replace, const BindScope &scope)
    : m_replace(replace),
      m_assignments(BindAssignments(replace.assignments, scope)),
      m_for(replace.forCondition, scope),
      m_while(replace.whileCondition, scope) {
    for (std::size_t i = 0; i < m_assignments.size(); ++i) {
        const Column &column = (*scope.columns)[static_cast<std::size_t>(m_assignments[i].column)];
        if (replace.assignments[i].additive && column.type != DataType::LongVarChar) {
            ThrowSyntax(parsed.text, replace.assignments[i].column.position, "only a memo takes Additive");
        }
    }
}

long long ReplaceWalk::Run(Table &table, RowNumber &current) {
    PrepareAssignments(m_assignments);
    m_for.Prepare();
    m_while.Prepare();
    if (DependOnRow(m_assignments) || m_for.CanFail() || m_while.CanFail()) {
        const Rehearsal rehearsal(table);
        RowNumber last = current;
        Walk(table, last);
    }
    return Walk(table, current);
}

long long ReplaceWalk::Walk(Table &table, RowNumber &current) {
    const RowNumber first = FirstRow(current);
    const long long limit = Limit();
    long long count = 0;
    long long visited = 0;
    for (table.Rewind(); visited < limit && table.Next();) {
        if (table.GetRow() < first) continue;
        // A single record that is deleted is not replaced by the one behind it.
        if (limit == 1 && table.GetRow() != first) break;
        current = table.GetRow();
        if (!m_while.Accepts(table)) break;
        ++visited;
        if (!m_for.Accepts(table)) continue;
        Assign(table);
        ++count;
    }
    return count;
}

RowNumber ReplaceWalk::FirstRow(RowNumber current) const {
    const bool all = m_replace.scope == Scope::All;
    if (all || (m_replace.scope == Scope::Default && HasFor() && !HasWhile())) return 0;
    if (m_replace.scope != Scope::Record) return current;
    return static_cast<RowNumber>(std::max<long long>(m_replace.count - 1, 0));
}

long long ReplaceWalk::Limit() const {
    if (m_replace.scope == Scope::Next) return m_replace.count;
    const bool one = m_replace.scope == Scope::Default && !HasFor() && !HasWhile();
    return one || m_replace.scope == Scope::Record ? 1 : std::numeric_limits<long long>::max();
}

void ReplaceWalk::Assign(Table &table) {
    for (std::size_t i = 0; i < m_assignments.size(); ++i) {
        const Value value = m_assignments[i].value.Evaluate(table);
        if (m_replace.assignments[i].additive) {
            table.AppendToCell(m_assignments[i].column, value);
        } else {
            table.SetCell(m_assignments[i].column, value);
        }
    }
}

}  // namespace ktl::ado::sql
