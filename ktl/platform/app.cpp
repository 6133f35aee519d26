#include "ktl/platform/app.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace {

// The applications alive, the oldest first.
struct AppList {
    std::mutex mutex;
    std::vector<CWinApp *> apps;
};

AppList &Apps() {
    // Never destroyed: applications of static life leave it at the program's end.
    static AppList *const list = new AppList;
    return *list;
}

std::atomic<ktl::SocketStart> g_socketStart{nullptr};
std::atomic<int> g_componentStarts{0};

}  // namespace

CWinApp::CWinApp(const char *appName) : m_pszAppName(appName) {
    m_bAutoDelete = FALSE;
    const std::lock_guard guard(Apps().mutex);
    Apps().apps.push_back(this);
}

CWinApp::~CWinApp() {
    const std::lock_guard guard(Apps().mutex);
    std::erase(Apps().apps, this);
}

CWinApp *AfxGetApp() {
    const std::lock_guard guard(Apps().mutex);
    return Apps().apps.empty() ? nullptr : Apps().apps.back();
}

BOOL AfxSocketInit(void *) {
    // The system's sockets need no start.
    const ktl::SocketStart start = g_socketStart.load();
    return !start || start() ? TRUE : FALSE;
}

LONG CoInitialize(void *) {
    return g_componentStarts++ == 0 ? 0 : 1;
}

void CoUninitialize() {
    --g_componentStarts;
}

namespace ktl {

SocketStart SetSocketStart(SocketStart start) {
    return g_socketStart.exchange(start);
}

int ComponentStarts() {
    return g_componentStarts.load();
}

}  // namespace ktl
