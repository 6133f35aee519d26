#pragma once

#include "ktl/platform/ado/sql/ast.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::sql {

/// A sum over rows: Count, Max, Min, Sum or Avg of the values that are not null.
class Aggregate {
  public:
    explicit Aggregate(FunctionId function = FunctionId::None) : m_function(function) {}

    /// Begins anew: Count is 0, the others are null.
    void Reset();
    /// Takes a row's value in.
    void Take(const Value &value);
    const Value &GetResult() const { return m_result; }

  private:
    FunctionId m_function;
    long long m_count = 0;
    Value m_result;
};

}  // namespace ktl::ado::sql
