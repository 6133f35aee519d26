#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ktl/platform/ado/sql/ast.h"

namespace ktl::ado::sql {

/// What an executor keeps with a statement between two executions.
class Plan {
  public:
    Plan() = default;
    Plan(const Plan &) = delete;
    Plan &operator=(const Plan &) = delete;
    virtual ~Plan() = default;
};

/// A parsed statement with its present literals.
struct PreparedStatement {
    std::unique_ptr<ParsedStatement> parsed;
    std::unique_ptr<Plan> plan;
    /// True when the text that was parsed is an earlier one of the same shape.
    bool reused = false;
};

/// Keeps the statements last parsed. One that differs from an earlier one only in its literals is not parsed again:
/// its text is compared piece by piece and the literals between the pieces are read into the kept tree.
class StatementCache {
  public:
    /// Good until the next call. Throws what `ParseStatement` throws.
    PreparedStatement &Get(std::string_view statement);
    /// Parses the text anew in place of what `Get` gave for it, so that places in it are told rightly.
    static void Refresh(PreparedStatement &prepared, std::string_view statement);

  private:
    /// The most recently used first.
    std::vector<std::unique_ptr<PreparedStatement>> m_statements;
    std::unique_ptr<PreparedStatement> m_uncached;
};

}  // namespace ktl::ado::sql
