#include "ktl/platform/window.h"

#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "ktl/platform/app.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file_find.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/message_box.h"
#include "ktl/platform/system.h"
#include "tests/support/scratch_folder.h"

namespace {

// Writes down what its handlers are called with.
class View : public CWnd {
  public:
    std::string log;

  protected:
    static const AFX_MSGMAP *GetThisMessageMap() {
        static const AFX_MSGMAP_ENTRY entries[] = {
            ktl::OnSizeEntry<View, &View::OnSize>(),
            ktl::OnPaintEntry<View, &View::OnPaint>(),
            ktl::OnEraseBkgndEntry<View, &View::OnEraseBkgnd>(),
            ktl::OnMessageEntry<View, &View::OnNumber>(WM_USER + 1),
        };
        static const AFX_MSGMAP map = {CWnd::GetThisMessageMap(), entries, std::size(entries)};
        return &map;
    }
    const AFX_MSGMAP *GetMessageMap() const override { return GetThisMessageMap(); }
    void OnSize(UINT type, int cx, int cy) {
        CWnd::OnSize(type, cx, cy);
        log += "size " + std::to_string(cx) + "x" + std::to_string(cy) + ";";
    }
    void OnPaint() { log += "paint;"; }
    BOOL OnEraseBkgnd(CDC *) {
        log += "erase;";
        return TRUE;
    }
    LRESULT OnNumber(WPARAM wParam, LPARAM lParam) { return static_cast<LRESULT>(wParam) + lParam; }
};

// A class that takes one message for itself and leaves the others to its base.
class QuietView : public View {
  protected:
    const AFX_MSGMAP *GetMessageMap() const override {
        static const AFX_MSGMAP_ENTRY entries[] = {ktl::OnPaintEntry<QuietView, &QuietView::OnPaint>()};
        static const AFX_MSGMAP map = {View::GetThisMessageMap(), entries, std::size(entries)};
        return &map;
    }
    void OnPaint() { log += "quiet;"; }
};

}  // namespace

TEST(Window, MoveSendsTheNewSizeOnce) {
    View view;
    view.MoveWindow(10, 20, 800, 600);
    view.MoveWindow(30, 40, 800, 600);
    EXPECT_EQ(view.log, "size 800x600;");
    view.MoveWindow(0, 0, -5, 100000);
    EXPECT_EQ(view.log, "size 800x600;size 0x32767;");
    view.MoveWindow(INT32_MAX, INT32_MIN, INT32_MAX, 1);
    CRect rect;
    view.GetClientRect(&rect);
    EXPECT_EQ(rect, CRect(0, 0, 0, 1));
}

TEST(Window, PaintsOnceForAnyNumberOfRequests) {
    View view;
    view.UpdateWindow();
    view.Invalidate(FALSE);
    view.Invalidate(FALSE);
    view.UpdateWindow();
    EXPECT_EQ(view.log, "paint;");
    view.Invalidate(TRUE);
    view.Invalidate(FALSE);
    view.UpdateWindow();
    view.UpdateWindow();
    EXPECT_EQ(view.log, "paint;erase;paint;");
}

TEST(Window, MessagesReachTheClassThatMapsThem) {
    QuietView view;
    EXPECT_EQ(view.SendMessage(WM_PAINT), 0);
    EXPECT_EQ(view.SendMessage(WM_USER + 1, 40, 2), 42);
    EXPECT_EQ(view.SendMessage(WM_ERASEBKGND), TRUE);
    EXPECT_EQ(view.SendMessage(WM_USER + 2), 0);
    view.SendMessage(WM_SIZE, 0, MAKELPARAM(40000, 3));
    EXPECT_EQ(view.log, "quiet;erase;size 40000x3;");
    CWnd plain;
    EXPECT_EQ(plain.SendMessage(WM_ERASEBKGND), 0);
}

TEST(Window, AStaleHandleIsNoWindow) {
    HWND handle = nullptr;
    {
        View view;
        handle = view.GetSafeHwnd();
        EXPECT_EQ(handle, view.GetSafeHwnd());
        EXPECT_TRUE(IsWindow(handle));
        EXPECT_EQ(SendMessage(handle, WM_USER + 1, 1, 2), 3);
    }
    const View next;
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_FALSE(IsWindow(nullptr));
    EXPECT_EQ(SendMessage(handle, WM_USER + 1, 1, 2), 0);
}

TEST(Window, PeerCarriesWhatHappens) {
    struct Peer : ktl::WindowPeer {
        std::string log;
        void Invalidate(CWnd &, bool erase) override { log += erase ? "erase;" : "paint;"; }
        void Moved(CWnd &, const CRect &rect) override { log += "moved " + std::to_string(rect.left) + ";"; }
        void TextChanged(CWnd &, const CString &text) override { log += ktl::ToUtf8(text) + ";"; }
        void Shown(CWnd &, bool visible) override { log += visible ? "shown;" : "hidden;"; }
        LRESULT Deliver(CWnd &window, UINT message, WPARAM wParam, LPARAM lParam) override {
            log += "deliver;";
            return WindowPeer::Deliver(window, message, wParam, lParam);
        }
    };
    Peer peer;
    View view;
    view.SetPeer(&peer);
    view.MoveWindow(7, 0, 10, 10, FALSE);
    view.SetWindowText(ktl::FromUtf8("地图"));
    EXPECT_FALSE(view.ShowWindow(SW_SHOW));
    EXPECT_TRUE(view.ShowWindow(SW_HIDE));
    view.Invalidate(FALSE);
    EXPECT_EQ(view.SendMessage(WM_USER + 1, 1, 1), 2);
    EXPECT_EQ(peer.log, "moved 7;deliver;地图;shown;hidden;paint;deliver;");
}

TEST(App, TheNewestAliveIsTheProgram) {
    CWinApp *const before = AfxGetApp();
    {
        CWinApp library("library");
        {
            const CWinApp host("host");
            EXPECT_EQ(AfxGetApp(), &host);
        }
        EXPECT_EQ(AfxGetApp(), &library);
        EXPECT_TRUE(library.InitInstance());
        MSG message;
        EXPECT_FALSE(library.PreTranslateMessage(&message));
    }
    EXPECT_EQ(AfxGetApp(), before);
    EXPECT_TRUE(AfxSocketInit());
    ktl::SetSocketStart([] { return false; });
    EXPECT_FALSE(AfxSocketInit());
    ktl::SetSocketStart(nullptr);
}

TEST(MessageBox, WithoutAHostAQuestionIsRefused) {
    struct Case {
        UINT type;
        int answer;
    };
    const Case cases[] = {{MB_OK, IDOK},
                          {MB_YESNO | MB_ICONQUESTION, IDNO},
                          {MB_YESNOCANCEL, IDNO},
                          {MB_OKCANCEL | MB_ICONSTOP, IDCANCEL},
                          {MB_ABORTRETRYIGNORE, IDABORT},
                          {MB_RETRYCANCEL, IDCANCEL}};
    for (const Case &c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(AfxMessageBox(ktl::FromUtf8("是否"), c.type), c.answer) << c.type;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "是否\n");
    }
    testing::internal::CaptureStderr();
    EXPECT_LE(ShellExecute(nullptr, "open", "error.log", nullptr, nullptr, SW_SHOW), 32);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error.log\n");
}

TEST(System, ModuleLiesInTheFolderThatTheHostGives) {
    char buffer[1024] = {};
    const DWORD length = GetModuleFileNameA(nullptr, buffer, sizeof buffer);
    EXPECT_EQ(CString(buffer).GetLength(), static_cast<int>(length));
    EXPECT_EQ(CString(buffer).Right(18), "\\ktl_platform_test");
    ktl::SetApplicationFolder(ktl::FromUtf8("/data/誠/"));
    EXPECT_EQ(ktl::ModuleFileName(), ktl::FromUtf8("\\data\\誠\\ktl_platform_test"));
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, 4), 3U);
    EXPECT_STREQ(buffer, "\\da");
    ktl::SetApplicationFolder("");
    EXPECT_GT(GetTempPathA(0, nullptr), 1U);
    EXPECT_EQ(CString(buffer, static_cast<int>(GetTempPathA(sizeof buffer, buffer))).Right(1), "\\");
    EXPECT_EQ(GetSysColor(COLOR_BTNSHADOW), 0x00A0A0A0U);
}

TEST(System, FoldersAreMadeOnceAndWithTheirParentOnly) {
    const ktl::test::ScratchFolder folder;
    EXPECT_TRUE(CreateDirectory(folder.Name("誠") + "\\"));
    EXPECT_TRUE(folder.Has("誠"));
    EXPECT_FALSE(CreateDirectory(folder.Name("誠")));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(CreateDirectory(folder.Name("no/where")));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    folder.Write("a", "1");
    folder.Write("b", "2");
    EXPECT_FALSE(MoveFile(folder.Name("a"), folder.Name("b")));
    EXPECT_TRUE(MoveFile(folder.Name("A"), folder.Name("誠/c")));
    EXPECT_FALSE(RemoveDirectory(folder.Name("誠")));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
    EXPECT_TRUE(DeleteFile(folder.Name("誠/C")));
    EXPECT_TRUE(RemoveDirectory(folder.Name("誠")));
}
