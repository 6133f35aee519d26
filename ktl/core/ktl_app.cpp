#include "ktl/core/ktl_app.h"

#include <cpl_conv.h>
#include <gdal.h>
#include <ogr_api.h>

#include <string>

#include "ktl/core/paths.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/message_box.h"

namespace {

/// The application object and the answer of its start. Made at the first use, so that it is there whatever the order in
/// which the objects at module level are made.
class Library {
  public:
    Library() : m_isStarted(m_app.InitInstance()) {}
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
    ~Library() {
        if (m_isStarted) m_app.ExitInstance();
    }

    BOOL IsStarted() const { return m_isStarted; }
    CKtlApp &App() { return m_app; }

    static Library &Instance() {
        static Library library;
        return library;
    }

  private:
    CKtlApp m_app;
    BOOL m_isStarted;
};

/// Sets GDAL_DATA to "data" in the application's folder, but only when there is such a folder: a missing one would keep
/// GDAL from its own installed data, in every thread but this one. Takes back what an earlier call set.
void SetGdalData() {
    static std::string set;
    const CString folder = KtlGetAppPathName() + "\\data";
    if (KtlIsValidFolderPath(folder)) {
        set = ktl::SystemPath(folder);
        CPLSetConfigOption("GDAL_DATA", set.c_str());
    } else if (!set.empty() && set == CPLGetConfigOption("GDAL_DATA", "")) {
        set.clear();
        CPLSetConfigOption("GDAL_DATA", nullptr);
    } else {
        return;
    }
    // The places that this thread looks in were settled when the drivers were registered.
    CPLFinderClean();
}

[[maybe_unused]] const int kStartedOnLoad = ktl::StartLibrary();

}  // namespace

BOOL CKtlApp::InitInstance() {
    CWinApp::InitInstance();
    if (!AfxSocketInit()) {
        // The wording speaks of a database although the step is the sockets'; it stays as users know it.
        AfxMessageBox(ktl::FromUtf8("数据库初始化失败。"));
        return FALSE;
    }
    CoInitialize(nullptr);
    GDALAllRegister();
    OGRRegisterAll();
    // Only the platform that the system comes from asks GDAL for another encoding of names by this; here names are the
    // system's UTF-8 bytes with either value.
    CPLSetConfigOption("GDAL_FILENAME_IS_UTF8", "NO");
    SetGdalData();
    return TRUE;
}

int CKtlApp::ExitInstance() {
    CoUninitialize();
    return CWinApp::ExitInstance();
}

BOOL PreTranslateMessage_KTL(tagMSG *message) {
    return Library::Instance().App().PreTranslateMessage(message);
}

namespace ktl {

int StartLibrary() {
    if (!Library::Instance().IsStarted()) return 0;
    SetGdalData();
    return 1;
}

}  // namespace ktl
