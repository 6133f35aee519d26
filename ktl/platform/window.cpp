#include "ktl/platform/window.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>

namespace {

constexpr LONG kLargestSide = 32767;

// Windows by handle. A handle is a number that is not used again, so that a stale one finds nothing.
class HandleTable {
  public:
    static HandleTable &Instance() {
        // Never destroyed: windows of static life leave it at the program's end.
        static HandleTable *const table = new HandleTable;
        return *table;
    }

    HWND Add(CWnd *window) {
        const std::lock_guard guard(m_mutex);
        const std::uintptr_t handle = ++m_last;
        m_windows[handle] = window;
        return reinterpret_cast<HWND>(handle);
    }
    void Remove(HWND handle) {
        const std::lock_guard guard(m_mutex);
        m_windows.erase(reinterpret_cast<std::uintptr_t>(handle));
    }
    CWnd *Find(HWND handle) {
        const std::lock_guard guard(m_mutex);
        const auto found = m_windows.find(reinterpret_cast<std::uintptr_t>(handle));
        return found != m_windows.end() ? found->second : nullptr;
    }

  private:
    std::mutex m_mutex;
    std::map<std::uintptr_t, CWnd *> m_windows;
    std::uintptr_t m_last = 0;
};

CRect HeldToLimits(const CRect &rect) {
    const auto side = [](LONG first, LONG last) {
        const auto length = std::clamp<long long>(static_cast<long long>(last) - first, 0, kLargestSide);
        return static_cast<LONG>(std::min<long long>(first + length, 0x7FFFFFFF));
    };
    return {rect.left, rect.top, side(rect.left, rect.right), side(rect.top, rect.bottom)};
}

CRect RectOf(int x, int y, int width, int height) {
    const auto end = [](int first, int length) {
        return static_cast<LONG>(std::clamp<long long>(static_cast<long long>(first) + length, INT32_MIN, INT32_MAX));
    };
    return {x, y, end(x, width), end(y, height)};
}

}  // namespace

namespace ktl {

LRESULT WindowPeer::Deliver(CWnd &window, UINT message, WPARAM wParam, LPARAM lParam) {
    return window.WindowProc(message, wParam, lParam);
}

}  // namespace ktl

CWnd::CWnd() = default;

CWnd::~CWnd() {
    if (m_handle) HandleTable::Instance().Remove(m_handle);
}

const CRuntimeClass *CWnd::GetThisClass() {
    static const CRuntimeClass record = {"CWnd", sizeof(CWnd), 0xFFFF, nullptr, CObject::GetThisClass()};
    return &record;
}

const CRuntimeClass *CWnd::GetRuntimeClass() const {
    return GetThisClass();
}

HWND CWnd::GetSafeHwnd() {
    if (!m_handle) m_handle = HandleTable::Instance().Add(this);
    return m_handle;
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL repaint) {
    MoveWindow(RectOf(x, y, width, height), repaint);
}

void CWnd::MoveWindow(const CRect &rect, BOOL repaint) {
    const CRect before = m_rect;
    m_rect = HeldToLimits(rect);
    if (m_peer) m_peer->Moved(*this, m_rect);
    const bool isResized = m_rect.Width() != before.Width() || m_rect.Height() != before.Height();
    if (isResized) SendMessage(WM_SIZE, SIZE_RESTORED, MAKELPARAM(m_rect.Width(), m_rect.Height()));
    if (repaint) Invalidate();
}

void CWnd::GetClientRect(CRect *rect) const {
    *rect = CRect(0, 0, m_rect.Width(), m_rect.Height());
}

void CWnd::GetWindowRect(CRect *rect) const {
    *rect = m_rect;
}

void CWnd::Invalidate(BOOL erase) {
    m_isInvalid = true;
    m_mustErase = m_mustErase || erase;
    if (m_peer) m_peer->Invalidate(*this, erase != FALSE);
}

void CWnd::UpdateWindow() {
    if (!m_isInvalid) return;
    // Valid before the handlers run: what they invalidate is for the next time.
    m_isInvalid = false;
    const bool mustErase = m_mustErase;
    m_mustErase = false;
    if (mustErase) SendMessage(WM_ERASEBKGND);
    SendMessage(WM_PAINT);
}

void CWnd::SetWindowText(const char *text) {
    m_text = text;
    if (m_peer) m_peer->TextChanged(*this, m_text);
}

BOOL CWnd::ShowWindow(int show) {
    const bool wasVisible = m_isVisible;
    m_isVisible = show != SW_HIDE;
    if (m_peer) m_peer->Shown(*this, m_isVisible);
    return wasVisible ? TRUE : FALSE;
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (m_peer) return m_peer->Deliver(*this, message, wParam, lParam);
    return WindowProc(message, wParam, lParam);
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    for (const AFX_MSGMAP *map = GetMessageMap(); map; map = map->pBaseMap) {
        for (std::size_t i = 0; i < map->nEntries; ++i) {
            if (map->lpEntries[i].nMessage == message) return map->lpEntries[i].pfn(*this, wParam, lParam);
        }
    }
    return 0;
}

BOOL CWnd::PreTranslateMessage(MSG *) {
    return FALSE;
}

const AFX_MSGMAP *CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {
        ktl::OnSizeEntry<CWnd, &CWnd::OnSize>(),
        ktl::OnPaintEntry<CWnd, &CWnd::OnPaint>(),
        ktl::OnEraseBkgndEntry<CWnd, &CWnd::OnEraseBkgnd>(),
    };
    static const AFX_MSGMAP map = {nullptr, entries, std::size(entries)};
    return &map;
}

const AFX_MSGMAP *CWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

void CWnd::OnSize(UINT, int, int) {}

void CWnd::OnPaint() {}

BOOL CWnd::OnEraseBkgnd(CDC *) {
    return FALSE;
}

BOOL IsWindow(HWND window) {
    return HandleTable::Instance().Find(window) ? TRUE : FALSE;
}

LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    CWnd *found = HandleTable::Instance().Find(window);
    return found ? found->SendMessage(message, wParam, lParam) : 0;
}
