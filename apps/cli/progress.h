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

/// What the first Ctrl-C or termination signal does, besides writing a message to standard error. A second one ends the
/// program at once.
enum class OnInterrupt {
    /// Ends the program with the status of an interrupted run: for runs that leave nothing behind whenever they stop.
    kEnd,
    /// Nothing: for what must come to its end.
    kGoOn,
};

/// For the time of this object; one at a time.
class InterruptMessage {
  public:
    InterruptMessage(const char *message, OnInterrupt action);
    InterruptMessage(const InterruptMessage &) = delete;
    InterruptMessage &operator=(const InterruptMessage &) = delete;
    ~InterruptMessage();
};

}  // namespace ktl::cli
