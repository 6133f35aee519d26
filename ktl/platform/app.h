#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/thread.h"
#include "ktl/platform/types.h"
#include "ktl/platform/window.h"

/// A program's or library's application object; one stands at module level. It runs no loop: a host calls
/// `InitInstance` and `ExitInstance`.
class KTL_API CWinApp : public CWinThread {
  public:
    explicit CWinApp(const char *appName = nullptr);
    ~CWinApp() override;

    /// The base answers TRUE. FALSE means that the program must not run.
    BOOL InitInstance() override { return TRUE; }

    CString m_pszAppName;
};

/// The newest application object alive, so that a host's comes before its libraries'; null without one.
KTL_API CWinApp *AfxGetApp();

/// Starts the sockets; nonzero is success. The data argument is not used.
KTL_API BOOL AfxSocketInit(void *data = nullptr);

/// Component start-up; here it only keeps count. 0 for the first call, 1 for a repeated one.
KTL_API LONG CoInitialize(void *reserved);
KTL_API void CoUninitialize();

namespace ktl {

/// Puts another answer in place of the sockets' start (null for the machine's own), and returns the one before.
using SocketStart = bool (*)();
KTL_API SocketStart SetSocketStart(SocketStart start);
/// `CoInitialize` less `CoUninitialize`, of the whole process.
KTL_API int ComponentStarts();

}  // namespace ktl
