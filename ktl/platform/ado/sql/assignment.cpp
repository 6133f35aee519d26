#include "ktl/platform/ado/sql/assignment.h"

#include <algorithm>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/token.h"

namespace ktl::ado::sql {

int RequireColumn(const std::vector<Column> &columns, const Name &name, const ParsedStatement &parsed) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (EqualNames(columns[i].name.View(), name.text.View())) return static_cast<int>(i);
    }
    ThrowAt(parsed.text, name.position, "Column \"" + name.text + "\" is not found", error_number::kColumnNotFound);
}

void RequireAssignable(TypeClass given, const Column &column, const ParsedStatement &parsed, std::size_t position) {
    const TypeClass taken = ClassOf(column.type);
    if (given == TypeClass::Null || given == taken) return;
    if (given == TypeClass::Number && taken == TypeClass::Bool) return;
    if (given == TypeClass::Text && taken == TypeClass::Bytes) return;
    ThrowAt(parsed.text, position,
            CString("Column \"") + column.name + "\" takes a " + ClassName(taken) + ", not a " + ClassName(given) + ",",
            error_number::kOperandTypes);
}

std::vector<BoundAssignment> BindAssignments(const std::vector<Assignment> &assignments, const BindScope &scope) {
    std::vector<BoundAssignment> bound;
    bound.reserve(assignments.size());
    for (const Assignment &assignment : assignments) {
        const int column = RequireColumn(*scope.columns, assignment.column, scope.statement);
        bound.push_back({column, BoundExpression(assignment.value, scope)});
        RequireAssignable(bound.back().value.GetType(), (*scope.columns)[static_cast<std::size_t>(column)],
                          scope.statement, assignment.value.position);
    }
    return bound;
}

void PrepareAssignments(std::vector<BoundAssignment> &assignments) {
    for (BoundAssignment &assignment : assignments) assignment.value.Prepare();
}

bool DependOnRow(const std::vector<BoundAssignment> &assignments) {
    return std::any_of(assignments.begin(), assignments.end(),
                       [](const BoundAssignment &assignment) { return assignment.value.ReadsRow(); });
}

}  // namespace ktl::ado::sql
