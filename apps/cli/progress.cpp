#include "apps/cli/progress.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "apps/cli/command.h"

namespace ktl::cli {

namespace {

constexpr std::chrono::milliseconds kBetweenLines{100};
/// Seconds.
constexpr double kBetweenSignals = 0.3;
constexpr int kStopSignals[] = {SIGINT, SIGTERM};

volatile std::sig_atomic_t interrupted = 0;
const char *message = "";
/// What the first signal does.
void (*onFirst)() = nullptr;
volatile std::sig_atomic_t isSignalled = 0;
timespec firstTime = {};

void NoteInterrupt() {
    interrupted = 1;
}

void WriteMessage() {
    const std::string_view text = message;
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) _exit(kExitInterrupted);
}

void WriteLastMessage() {
    WriteMessage();
    _exit(kExitInterrupted);
}

/// A second signal ends the program at once. One that comes along with the first doesn't count: who stops programs
/// often signals the process and then its group.
void OnSignal(int signal) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (isSignalled == 0) {
        isSignalled = 1;
        firstTime = now;
        onFirst();
        return;
    }
    const double seconds = static_cast<double>(now.tv_sec - firstTime.tv_sec) +
                           static_cast<double>(now.tv_nsec - firstTime.tv_nsec) * 1e-9;
    if (seconds < kBetweenSignals) return;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Watch(void (*action)()) {
    onFirst = action;
    isSignalled = 0;
    struct sigaction watch = {};
    watch.sa_handler = OnSignal;
    watch.sa_flags = SA_RESTART;
    for (const int signal : kStopSignals) sigaddset(&watch.sa_mask, signal);
    for (const int signal : kStopSignals) sigaction(signal, &watch, nullptr);
}

void Unwatch() {
    for (const int signal : kStopSignals) std::signal(signal, SIG_DFL);
}

}  // namespace

TerminalProgress::TerminalProgress()
    : m_isTerminal(isatty(STDERR_FILENO) != 0), m_next(std::chrono::steady_clock::now() + kBetweenLines) {
    Watch(NoteInterrupt);
}

TerminalProgress::~TerminalProgress() {
    if (m_shown) std::fputs("\r\033[K", stderr);
    Unwatch();
}

host::ProgressCallback TerminalProgress::Callback() {
    return [this](const host::Progress &progress) {
        if (m_isTerminal) Show(progress);
        return interrupted == 0;
    };
}

void TerminalProgress::Show(const host::Progress &progress) {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next) return;
    m_next = now + kBetweenLines;
    m_shown = true;
    if (progress.total > 0) {
        std::fprintf(stderr, "\r\033[K%s %lld of %lld", progress.what, progress.done, progress.total);
    } else {
        std::fprintf(stderr, "\r\033[K%s %lld", progress.what, progress.done);
    }
    std::fflush(stderr);
}

InterruptMessage::InterruptMessage(const char *text, OnInterrupt action) {
    message = text;
    Watch(action == OnInterrupt::kEnd ? WriteLastMessage : WriteMessage);
}

InterruptMessage::~InterruptMessage() {
    Unwatch();
}

}  // namespace ktl::cli
