#pragma once

#include <vector>

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/sql/expression.h"

namespace ktl::ado::sql {

/// A column and the value that it is to get.
struct BoundAssignment {
    int column;
    BoundExpression value;
};

/// The position of the column of that name; throws Error (column not found) with the place.
int RequireColumn(const std::vector<Column> &columns, const Name &name, const ParsedStatement &parsed);
/// Numbers may go into logical columns, texts into byte blocks; otherwise the classes have to be the same. Throws Error
/// (operand types) with the place.
void RequireAssignable(TypeClass given, const Column &column, const ParsedStatement &parsed, std::size_t position);

/// Throws what binding throws.
std::vector<BoundAssignment> BindAssignments(const std::vector<Assignment> &assignments, const BindScope &scope);
/// To be called before the rows of an execution.
void PrepareAssignments(std::vector<BoundAssignment> &assignments);
/// True when the values of some row, but not of another, may not fit their columns.
bool DependOnRow(const std::vector<BoundAssignment> &assignments);

}  // namespace ktl::ado::sql
