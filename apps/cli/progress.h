#pragma once

#include <chrono>

#include "host/progress.h"

namespace ktl::cli {

/// Shows progress in one line of standard error that renews itself, if that is a terminal, and stops the run after
/// Ctrl-C or a termination signal. A second one ends the program at once. The line is wiped with the object.
class TerminalProgress {
  public:
    TerminalProgress();
    TerminalProgress(const TerminalProgress &) = delete;
    TerminalProgress &operator=(const TerminalProgress &) = delete;
    ~TerminalProgress();

    /// For the time of this object.
    host::ProgressCallback Callback();

  private:
    void Show(const host::Progress &progress);

    bool m_isTerminal;
    bool m_shown = false;
    std::chrono::steady_clock::time_point m_next;
};

/// For runs that leave nothing behind whenever they stop: Ctrl-C or a termination signal writes `message` to standard
/// error and ends the program at once, with the status of an interrupted run. For the time of this object; one at a
/// time.
class InstantInterrupt {
  public:
    explicit InstantInterrupt(const char *message);
    InstantInterrupt(const InstantInterrupt &) = delete;
    InstantInterrupt &operator=(const InstantInterrupt &) = delete;
    ~InstantInterrupt();
};

}  // namespace ktl::cli
