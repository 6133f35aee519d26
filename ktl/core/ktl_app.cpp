#include "ktl/core/ktl_app.h"

#include <cpl_conv.h>
#include <gdal.h>
#include <ogr_api.h>

#include "ktl/core/utility.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/message_box.h"

namespace {

class Library {
  public:
    Library() : m_started(m_app.InitInstance() != FALSE) {}
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
    ~Library() {
        if (m_started) m_app.ExitInstance();
    }
    bool Started() const { return m_started; }
    CKtlApp &App() { return m_app; }

  private:
    CKtlApp m_app;
    bool m_started;
};

Library &TheLibrary() {
    static Library library;
    return library;
}

[[maybe_unused]] const bool kStartedOnLoad = ktl::StartLibrary();

/// GDAL's support data beside the application, where a host ships it; otherwise GDAL keeps to its own installation,
/// without which it would know no coordinate system.
void SetSupportFolder() {
    const CString folder = KtlGetAppPathName() + "\\data";
    if (KtlIsValidFolderPath(folder)) CPLSetConfigOption("GDAL_DATA", ktl::SystemPath(folder).c_str());
}

}  // namespace

BOOL CKtlApp::InitInstance() {
    CWinApp::InitInstance();
    if (!AfxSocketInit()) {
        // The wording speaks of a database though the step is the sockets'; users know it so.
        AfxMessageBox(ktl::FromUtf8("数据库初始化失败。"));
        return FALSE;
    }
    CoInitialize(nullptr);
    GDALAllRegister();
    OGRRegisterAll();
    // Names reach GDAL as the system's own bytes.
    CPLSetConfigOption("GDAL_FILENAME_IS_UTF8", "NO");
    SetSupportFolder();
    return TRUE;
}

int CKtlApp::ExitInstance() {
    CoUninitialize();
    return CWinApp::ExitInstance();
}

BOOL PreTranslateMessage_KTL(tagMSG *message) {
    return TheLibrary().App().PreTranslateMessage(message);
}

bool ktl::StartLibrary() {
    return TheLibrary().Started();
}
