#include "apps/cli/progress.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string_view>

#include "apps/cli/command.h"

namespace ktl::cli {

namespace {

constexpr std::chrono::milliseconds kBetweenLines{100};
constexpr int kStopSignals[] = {SIGINT, SIGTERM};

volatile std::sig_atomic_t interrupted = 0;

void NoteInterrupt(int) {
    interrupted = 1;
}

const char *message = "";

void OnMessage(int) {
    const std::string_view text = message;
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) _exit(kExitInterrupted);
}

void OnLastMessage(int signal) {
    OnMessage(signal);
    _exit(kExitInterrupted);
}

void Watch(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : kStopSignals) sigaction(signal, &action, nullptr);
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
    Watch(action == OnInterrupt::kEnd ? OnLastMessage : OnMessage);
}

InterruptMessage::~InterruptMessage() {
    Unwatch();
}

}  // namespace ktl::cli
