#include "host/runtime.h"

#include <cpl_conv.h>

#include <cstdlib>
#include <filesystem>

#include "host/error.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/system.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;

fs::path Variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? fs::path() : fs::path(value);
}

// The library points GDAL at its own "data" folder. Where there is none, GDAL finds its data as it always does.
void UseInstalledGdalData(const fs::path &folder) {
    std::error_code error;
    if (!fs::is_directory(folder / "data", error)) CPLSetConfigOption("GDAL_DATA", nullptr);
}

}  // namespace

Runtime::Runtime(const std::string &folder) {
    std::error_code ignored;
    fs::create_directories(folder, ignored);
    SetApplicationFolder(PlatformPath(folder));
    UseInstalledGdalData(folder);
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&m_drawing, &input, nullptr) != Gdiplus::Ok) throw Error("drawing cannot start");
}

Runtime::~Runtime() {
    Gdiplus::GdiplusShutdown(m_drawing);
    SetApplicationFolder(CString());
}

std::string Runtime::DefaultFolder() {
    if (const fs::path home = Variable("KTL_HOME"); !home.empty()) return fs::absolute(home).string();
    if (const fs::path data = Variable("XDG_DATA_HOME"); data.is_absolute()) return (data / "ktl").string();
    if (const fs::path home = Variable("HOME"); home.is_absolute()) return (home / ".local/share/ktl").string();
    return (fs::temp_directory_path() / "ktl").string();
}

}  // namespace ktl::host
