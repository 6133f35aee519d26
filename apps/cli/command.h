#pragma once

#include <CLI/CLI.hpp>

namespace ktl::cli {

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kExitInterrupted = 130;

/// A bad command line, told in one line.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Each adds a command to the program. The command runs when the command line is parsed, from its callback, and throws
/// `UsageError`, `host::Error` or `host::Interrupted` when it fails.
void AddRenderCommand(CLI::App &program);
void AddTableCommand(CLI::App &program);

}  // namespace ktl::cli
