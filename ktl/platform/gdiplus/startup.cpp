#include "ktl/platform/gdiplus/startup.h"

#include <atomic>
#include <mutex>
#include <set>

namespace {

/// The tokens of the starts that are not shut down yet.
struct Starts {
    std::mutex lock;
    std::set<ULONG_PTR> tokens;
    ULONG_PTR last = 0;
    std::atomic<int> count{0};
};

/// Never destroyed: objects of static life may ask after the end of `main`.
Starts &TheStarts() {
    static auto *starts = new Starts;
    return *starts;
}

}  // namespace

namespace Gdiplus {

namespace {

Status HookNotification(ULONG_PTR *token) {
    if (token) *token = 1;
    return Ok;
}

void UnhookNotification(ULONG_PTR) {}

}  // namespace

Status GdiplusStartup(ULONG_PTR *token, const GdiplusStartupInput *input, GdiplusStartupOutput *output) {
    if (!token || !input) return InvalidParameter;
    if (input->SuppressBackgroundThread && !output) return InvalidParameter;
    if (input->GdiplusVersion != 1 && input->GdiplusVersion != 2) return UnsupportedGdiplusVersion;
    if (output) {
        output->NotificationHook = input->SuppressBackgroundThread ? HookNotification : nullptr;
        output->NotificationUnhook = input->SuppressBackgroundThread ? UnhookNotification : nullptr;
    }
    Starts &starts = TheStarts();
    const std::lock_guard guard(starts.lock);
    *token = ++starts.last;
    starts.tokens.insert(*token);
    ++starts.count;
    return Ok;
}

void GdiplusShutdown(ULONG_PTR token) {
    Starts &starts = TheStarts();
    const std::lock_guard guard(starts.lock);
    if (starts.tokens.erase(token) != 0) --starts.count;
}

}  // namespace Gdiplus

namespace ktl::raster {

bool DrawingStarted() {
    return TheStarts().count.load(std::memory_order_relaxed) > 0;
}

}  // namespace ktl::raster
