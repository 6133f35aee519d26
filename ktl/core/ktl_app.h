#pragma once

#include "ktl/platform/app.h"
#include "ktl/platform/export.h"
#include "ktl/platform/window.h"

/// The library's application object, of which it has one at module level. `InitInstance` runs when the library loads;
/// drawing is the host's to start.
class KTL_API CKtlApp : public CWinApp {
  public:
    CKtlApp() : CWinApp("ktl") {}

    /// Starts the sockets (0 and a message when they fail), components and GDAL with its drivers.
    BOOL InitInstance() override;
    int ExitInstance() override;
};

/// Hands a message to the library's application object, so that the library's windows see it first; the host calls it
/// from its message loop. Nonzero when the message is dealt with.
KTL_API BOOL PreTranslateMessage_KTL(tagMSG *message);

namespace ktl {

/// Starts the library: 1, or 0 when it must not be used. libktl.so calls it as it loads; a program that links the
/// static archives calls it itself. Further calls answer the same, and point GDAL at the "data" folder of the present
/// application folder, so call it again after `SetApplicationFolder`.
KTL_API int StartLibrary();

}  // namespace ktl
