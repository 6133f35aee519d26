#include "ktl/platform/system.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include "ktl/platform/encoding.h"
#include "ktl/platform/filesystem.h"
#include "ktl/platform/last_error.h"

using ktl::FileSystem;

namespace {

struct ApplicationFolder {
    std::mutex mutex;
    CString folder;
};

ApplicationFolder &Folder() {
    static ApplicationFolder *const folder = new ApplicationFolder;
    return *folder;
}

std::string RunningProgram() {
    std::string path(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path;
}

BOOL Done(int error, const std::string &path) {
    if (error == 0) return TRUE;
    SetLastError(ktl::PlatformError(error, path));
    return FALSE;
}

}  // namespace

DWORD GetSysColor(int index) {
    struct SystemColor {
        int index;
        COLORREF color;
    };
    static constexpr SystemColor kColors[] = {
        {5, RGB(0xFF, 0xFF, 0xFF)},  {8, RGB(0, 0, 0)},           {13, RGB(0x00, 0x78, 0xD7)},
        {14, RGB(0xFF, 0xFF, 0xFF)}, {15, RGB(0xF0, 0xF0, 0xF0)}, {COLOR_BTNSHADOW, RGB(0xA0, 0xA0, 0xA0)},
        {18, RGB(0, 0, 0)},
    };
    for (const SystemColor &entry : kColors) {
        if (entry.index == index) return entry.color;
    }
    return 0;
}

DWORD GetModuleFileNameA(void *, char *buffer, DWORD size) {
    if (!buffer || size == 0) return 0;
    const CString path = ktl::ModuleFileName();
    const auto length = std::min(static_cast<DWORD>(path.GetLength()), size - 1);
    std::memcpy(buffer, path.GetString(), length);
    buffer[length] = '\0';
    return length;
}

DWORD GetTempPathA(DWORD size, char *buffer) {
    const CString path = ktl::TemporaryFolder();
    const auto length = static_cast<DWORD>(path.GetLength());
    if (!buffer || size <= length) return length + 1;
    std::memcpy(buffer, path.GetString(), length + 1);
    return length;
}

BOOL CreateDirectory(const char *path, void *) {
    std::string folder = ktl::SystemPath(path);
    while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
    return Done(FileSystem::Current().MakeFolder(folder), folder);
}

BOOL RemoveDirectory(const char *path) {
    const std::string folder = ktl::ExistingPath(ktl::SystemPath(path));
    return Done(FileSystem::Current().RemoveFolder(folder), folder);
}

BOOL DeleteFile(const char *path) {
    const std::string file = ktl::ExistingPath(ktl::SystemPath(path));
    return Done(FileSystem::Current().Remove(file), file);
}

BOOL MoveFile(const char *from, const char *to) {
    const std::string oldPath = ktl::ExistingPath(ktl::SystemPath(from));
    const std::string newPath = ktl::SystemPath(to);
    ktl::FileInfo info;
    const bool exists = FileSystem::Current().Stat(newPath, info) == 0;
    return Done(exists ? EEXIST : FileSystem::Current().Rename(oldPath, newPath), oldPath);
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

DWORD GetTickCount() {
    using std::chrono::milliseconds;
    using std::chrono::steady_clock;
    return static_cast<DWORD>(std::chrono::duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

namespace ktl {

void SetApplicationFolder(const CString &folder) {
    std::string path = SystemPath(folder);
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    const std::lock_guard guard(Folder().mutex);
    Folder().folder = PlatformPath(path);
}

CString ModuleFileName() {
    const std::string program = RunningProgram();
    const std::lock_guard guard(Folder().mutex);
    if (Folder().folder.IsEmpty()) return PlatformPath(program);
    return Folder().folder + "\\" + PlatformPath(program.substr(program.rfind('/') + 1));
}

CString TemporaryFolder() {
    const char *const wanted = std::getenv("TMPDIR");
    std::string folder = wanted && *wanted ? wanted : "/tmp";
    if (!folder.ends_with('/')) folder += '/';
    return PlatformPath(folder);
}

}  // namespace ktl
