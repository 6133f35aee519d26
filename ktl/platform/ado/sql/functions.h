#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "ktl/platform/ado/sql/arithmetic.h"
#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::sql {

/// What the language knows of a function.
struct FunctionFacts {
    const char *name;
    FunctionId id;
    /// A sum over rows.
    bool aggregate;
    std::size_t minArguments;
    std::size_t maxArguments;
    /// Null: that of the first argument.
    TypeClass result;
    /// What the first argument and the others have to be; Null: anything.
    TypeClass first;
    TypeClass rest;
};

/// Null when no function has this name; case is ignored.
const FunctionFacts *FindFunction(std::string_view name);
/// The facts of a function under its first name; for None null.
const FunctionFacts *FindFunction(FunctionId id);

/// The value of a function that is no sum over rows. No argument is null. Throws Error (operand types, numeric
/// overflow) for a value that the function does not take.
void CallFunction(FunctionId function, std::span<const Value *const> arguments, Value &result);

}  // namespace ktl::ado::sql
