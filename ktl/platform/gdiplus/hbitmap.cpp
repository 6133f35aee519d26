#include "ktl/platform/gdiplus/hbitmap.h"

#include <memory>
#include <mutex>
#include <new>
#include <unordered_set>

namespace {

/// The handles that live: a handle ended twice is told from a good one.
struct Handles {
    std::mutex lock;
    std::unordered_set<HBITMAP> live;
};

/// Never destroyed, for handles that end after `main`.
Handles &TheHandles() {
    static auto *handles = new Handles;
    return *handles;
}

}  // namespace

std::uint32_t HBITMAP__::At(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    return bits[static_cast<std::size_t>(height - 1 - y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)];
}

BOOL DeleteObject(HBITMAP handle) {
    Handles &handles = TheHandles();
    {
        const std::lock_guard guard(handles.lock);
        if (handles.live.erase(handle) == 0) return FALSE;
    }
    delete handle;
    return TRUE;
}

namespace ktl {

HBITMAP CreateHBitmap(int width, int height) {
    if (width < 1 || height < 1) return nullptr;
    try {
        auto handle = std::make_unique<HBITMAP__>();
        handle->width = width;
        handle->height = height;
        handle->bits.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        Handles &handles = TheHandles();
        const std::lock_guard guard(handles.lock);
        handles.live.insert(handle.get());
        return handle.release();
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

std::size_t CountHBitmaps() {
    Handles &handles = TheHandles();
    const std::lock_guard guard(handles.lock);
    return handles.live.size();
}

}  // namespace ktl
