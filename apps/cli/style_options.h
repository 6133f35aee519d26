#pragma once

#include <CLI/CLI.hpp>
#include <deque>
#include <string>
#include <vector>

#include "host/render.h"

namespace ktl::cli {

/// The SOURCE arguments and the options that belong to one of them. Such an option applies to the SOURCE before it; one
/// that stands before the first SOURCE applies to every SOURCE that doesn't set it itself.
class StyleOptions {
  public:
    explicit StyleOptions(CLI::App &command);
    StyleOptions(const StyleOptions &) = delete;
    StyleOptions &operator=(const StyleOptions &) = delete;

    /// The sources of the parsed command line, in order. Throws `UsageError` for a value that makes no sense.
    std::vector<host::StyledSource> Sources() const;

  private:
    const CLI::App &m_command;
    std::deque<std::vector<std::string>> m_values;
    CLI::Option *m_source;
};

}  // namespace ktl::cli
