#pragma once

#include <cstddef>

#include "ktl/platform/export.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

class CDC;
class CWnd;

/// Names a window across threads; a stale one is told from a living one.
struct HWND__;
using HWND = HWND__ *;

constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_SETTEXT = 0x000C;
constexpr UINT WM_PAINT = 0x000F;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_ERASEBKGND = 0x0014;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
constexpr UINT WM_RBUTTONDOWN = 0x0204;
constexpr UINT WM_RBUTTONUP = 0x0205;
constexpr UINT WM_MOUSEWHEEL = 0x020A;
/// The first number for messages of one's own.
constexpr UINT WM_USER = 0x0400;

constexpr UINT SIZE_RESTORED = 0;
constexpr UINT SIZE_MINIMIZED = 1;
constexpr UINT SIZE_MAXIMIZED = 2;

constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOW = 5;

/// Two 16-bit numbers in one message argument.
constexpr LPARAM MAKELPARAM(int low, int high) {
    return static_cast<LPARAM>(static_cast<DWORD>(static_cast<WORD>(low)) | static_cast<DWORD>(static_cast<WORD>(high))
                                                                                << 16);
}
constexpr WORD LOWORD(LPARAM value) {
    return static_cast<WORD>(value & 0xFFFF);
}
constexpr WORD HIWORD(LPARAM value) {
    return static_cast<WORD>(value >> 16 & 0xFFFF);
}

/// A message with its window and arguments.
struct tagMSG {
    HWND hwnd = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    DWORD time = 0;
    CPoint pt;
};
using MSG = tagMSG;

/// One line of a message map: the message and what calls its handler.
struct AFX_MSGMAP_ENTRY {
    UINT nMessage;
    LRESULT (*pfn)(CWnd &window, WPARAM wParam, LPARAM lParam);
};

/// A class's message map: its lines, and the map of the base class.
struct AFX_MSGMAP {
    const AFX_MSGMAP *pBaseMap;
    const AFX_MSGMAP_ENTRY *lpEntries;
    std::size_t nEntries;
};

namespace ktl {

/// Lines of a message map. The handler is a member of the window class, of any access that the map's place has:
///
///     const AFX_MSGMAP *CMapView::GetMessageMap() const {
///         static const AFX_MSGMAP_ENTRY entries[] = {
///             ktl::OnSizeEntry<CMapView, &CMapView::OnSize>(),
///             ktl::OnMessageEntry<CMapView, &CMapView::OnTile>(WM_USER + 1),
///         };
///         static const AFX_MSGMAP map = {CWnd::GetThisMessageMap(), entries, std::size(entries)};
///         return &map;
///     }
template <class Window, void (Window::*handler)(UINT type, int cx, int cy)>
constexpr AFX_MSGMAP_ENTRY OnSizeEntry();
template <class Window, void (Window::*handler)()>
constexpr AFX_MSGMAP_ENTRY OnPaintEntry();
template <class Window, BOOL (Window::*handler)(CDC *)>
constexpr AFX_MSGMAP_ENTRY OnEraseBkgndEntry();
template <class Window, LRESULT (Window::*handler)(WPARAM, LPARAM)>
constexpr AFX_MSGMAP_ENTRY OnMessageEntry(UINT message);

/// The road from a `CWnd` to a real window. A host derives from it; every operation runs on the thread that called the
/// `CWnd`.
class KTL_API WindowPeer {
  public:
    virtual ~WindowPeer() = default;

    /// The window shall be painted; `erase` asks for its background first.
    virtual void Invalidate(CWnd &window, bool erase) = 0;
    /// The window was moved or resized by `MoveWindow`.
    virtual void Moved(CWnd &, const CRect &) {}
    virtual void TextChanged(CWnd &, const CString &) {}
    virtual void Shown(CWnd &, bool) {}
    /// Brings a message to the window and waits for its answer; a host whose windows have a thread of their own carries
    /// the call over to it.
    virtual LRESULT Deliver(CWnd &window, UINT message, WPARAM wParam, LPARAM lParam);
};

}  // namespace ktl

/// A window without a toolkit: a rectangle, a text and a message map. A `ktl::WindowPeer` carries it to a real window;
/// without one it works alone, for drawing off screen.
class KTL_API CWnd : public CObject {
  public:
    CWnd();
    CWnd(const CWnd &) = delete;
    CWnd &operator=(const CWnd &) = delete;
    ~CWnd() override;

    static const CRuntimeClass *GetThisClass();
    const CRuntimeClass *GetRuntimeClass() const override;

    /// Borrowed; null lets go of the peer.
    void SetPeer(ktl::WindowPeer *peer) { m_peer = peer; }
    ktl::WindowPeer *GetPeer() const { return m_peer; }
    /// The window's name for other threads, good for its life.
    HWND GetSafeHwnd();
    /// The parent is borrowed.
    void SetParent(CWnd *parent) { m_parent = parent; }
    CWnd *GetParent() const { return m_parent; }

    /// Puts the window at a place of its parent; widths and heights are held in 0 to 32767. A new size sends WM_SIZE.
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(const CRect &rect, BOOL repaint = TRUE);
    /// (0, 0, width, height).
    void GetClientRect(CRect *rect) const;
    /// The window in its parent.
    void GetWindowRect(CRect *rect) const;

    /// Asks for painting; `UpdateWindow` or the peer brings it about.
    virtual void Invalidate(BOOL erase = TRUE);
    /// Sends WM_ERASEBKGND, when it is asked for, and WM_PAINT to an invalid window, and nothing to a valid one.
    void UpdateWindow();

    void SetWindowText(const char *text);
    CString GetWindowText() const { return m_text; }
    BOOL ShowWindow(int show);
    BOOL IsWindowVisible() const { return m_isVisible; }

    /// The handler's answer; 0 when the message has none.
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// Finds the handler in the message map and calls it. Of the peers and `SendMessage` only.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Nonzero when the message is dealt with. The base answers 0.
    virtual BOOL PreTranslateMessage(MSG *message);

  protected:
    static const AFX_MSGMAP *GetThisMessageMap();
    /// The class's own map; a derived class names its base's map in it.
    virtual const AFX_MSGMAP *GetMessageMap() const;

    /// The base handlers do nothing; a background is not erased here (0).
    void OnSize(UINT type, int cx, int cy);
    void OnPaint();
    BOOL OnEraseBkgnd(CDC *dc);

  private:
    ktl::WindowPeer *m_peer = nullptr;
    CWnd *m_parent = nullptr;
    HWND m_handle = nullptr;
    CRect m_rect;
    CString m_text;
    bool m_isVisible = false;
    bool m_isInvalid = false;
    bool m_mustErase = false;
};

/// FALSE for null and for the handle of a window that is gone.
KTL_API BOOL IsWindow(HWND window);
/// The handler's answer; 0 when the window is gone. The caller sees to it that the window lives through the call.
KTL_API LRESULT SendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

namespace ktl {

template <class Window, void (Window::*handler)(UINT type, int cx, int cy)>
constexpr AFX_MSGMAP_ENTRY OnSizeEntry() {
    return {WM_SIZE, [](CWnd &window, WPARAM wParam, LPARAM lParam) -> LRESULT {
                (static_cast<Window &>(window).*handler)(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam));
                return 0;
            }};
}

template <class Window, void (Window::*handler)()>
constexpr AFX_MSGMAP_ENTRY OnPaintEntry() {
    return {WM_PAINT, [](CWnd &window, WPARAM, LPARAM) -> LRESULT {
                (static_cast<Window &>(window).*handler)();
                return 0;
            }};
}

template <class Window, BOOL (Window::*handler)(CDC *)>
constexpr AFX_MSGMAP_ENTRY OnEraseBkgndEntry() {
    return {WM_ERASEBKGND, [](CWnd &window, WPARAM wParam, LPARAM) -> LRESULT {
                return (static_cast<Window &>(window).*handler)(reinterpret_cast<CDC *>(wParam));
            }};
}

template <class Window, LRESULT (Window::*handler)(WPARAM, LPARAM)>
constexpr AFX_MSGMAP_ENTRY OnMessageEntry(UINT message) {
    return {message, [](CWnd &window, WPARAM wParam, LPARAM lParam) -> LRESULT {
                return (static_cast<Window &>(window).*handler)(wParam, lParam);
            }};
}

}  // namespace ktl
