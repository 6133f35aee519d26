#include "ktl/platform/message_box.h"

#include <cstdio>
#include <iterator>
#include <mutex>
#include <utility>

#include "ktl/platform/encoding.h"

namespace {

struct Hooks {
    std::mutex mutex;
    ktl::MessageBoxHook messageBox;
    ktl::ShellExecuteHook shellExecute;
};

Hooks &HostHooks() {
    static Hooks *const hooks = new Hooks;
    return *hooks;
}

// The program that starts nothing has no viewer for any file.
constexpr int kNoAssociation = 31;

// By button style: the answer that changes nothing.
int Refusal(UINT type) {
    static constexpr int kRefusals[] = {IDOK, IDCANCEL, IDABORT, IDNO, IDNO, IDCANCEL};
    const UINT buttons = type & MB_TYPEMASK;
    return buttons < std::size(kRefusals) ? kRefusals[buttons] : IDOK;
}

void WriteLine(const CString &text) {
    const std::string line = ktl::ToUtf8(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

int AfxMessageBox(const char *text, UINT type, UINT) {
    std::unique_lock guard(HostHooks().mutex);
    const ktl::MessageBoxHook hook = HostHooks().messageBox;
    guard.unlock();
    if (hook) return hook(text, type);
    WriteLine(text);
    return Refusal(type);
}

std::intptr_t ShellExecute(HWND, const char *verb, const char *file, const char *parameters, const char *, int) {
    std::unique_lock guard(HostHooks().mutex);
    const ktl::ShellExecuteHook hook = HostHooks().shellExecute;
    guard.unlock();
    if (hook) return hook(verb, file, parameters);
    WriteLine(file);
    return kNoAssociation;
}

namespace ktl {

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    const std::lock_guard guard(HostHooks().mutex);
    return std::exchange(HostHooks().messageBox, std::move(hook));
}

ShellExecuteHook SetShellExecuteHook(ShellExecuteHook hook) {
    const std::lock_guard guard(HostHooks().mutex);
    return std::exchange(HostHooks().shellExecute, std::move(hook));
}

}  // namespace ktl
