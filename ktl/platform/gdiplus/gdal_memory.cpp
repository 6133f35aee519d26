#include "ktl/platform/gdiplus/gdal_memory.h"

#include <cpl_error.h>
#include <cpl_vsi.h>
#include <gdal_frmts.h>

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>

namespace ktl::raster {

namespace {

struct DriverMaker {
    const char *name;
    void (*make)();
};

constexpr DriverMaker kDrivers[] = {
    {"MEM", GDALRegister_MEM},     {"PNG", GDALRegister_PNG},       {"JPEG", GDALRegister_JPEG},
    {"GIF", GDALRegister_GIF},     {"BIGGIF", GDALRegister_BIGGIF}, {"BMP", GDALRegister_BMP},
    {"GTiff", GDALRegister_GTiff},
};

std::string NewName() {
    static std::atomic<unsigned> next{0};
    return "/vsimem/ktl-image-" + std::to_string(++next);
}

}  // namespace

QuietGdal::QuietGdal() : m_sideFiles("GDAL_PAM_ENABLED", "NO", false) {
    CPLPushErrorHandlerEx(Note, this);
}

QuietGdal::~QuietGdal() {
    CPLPopErrorHandler();
}

void QuietGdal::Note(CPLErr, CPLErrorNum, const char *message) {
    if (std::strstr(message, "remature end")) {
        static_cast<QuietGdal *>(CPLGetErrorHandlerUserData())->m_sawEarlyEnd = true;
    }
}

MemoryFile::MemoryFile() : m_name(NewName()) {}

MemoryFile::MemoryFile(std::string_view bytes) : m_name(NewName()) {
    // The driver only reads: the constness that the call's type takes away is kept.
    auto *data = reinterpret_cast<GByte *>(const_cast<char *>(bytes.data()));
    if (VSILFILE *file = VSIFileFromMemBuffer(m_name.c_str(), data, bytes.size(), FALSE)) VSIFCloseL(file);
}

MemoryFile::~MemoryFile() {
    VSIUnlink(m_name.c_str());
}

std::string_view MemoryFile::Content() const {
    vsi_l_offset size = 0;
    const GByte *data = VSIGetMemFileBuffer(m_name.c_str(), &size, FALSE);
    return data ? std::string_view(reinterpret_cast<const char *>(data), size) : std::string_view();
}

GDALDriverH NeedDriver(const char *name) {
    if (GDALDriverH driver = GDALGetDriverByName(name)) return driver;
    static std::mutex lock;
    const std::lock_guard guard(lock);
    for (const DriverMaker &maker : kDrivers) {
        if (std::strcmp(maker.name, name) == 0) maker.make();
    }
    return GDALGetDriverByName(name);
}

GDALDatasetH WrapPixels(std::uint8_t *pixels, int width, int height, int bands, int pixelStep) {
    GDALDriverH driver = NeedDriver("MEM");
    GDALDatasetH dataset = driver ? GDALCreate(driver, "", width, height, 0, GDT_Byte, nullptr) : nullptr;
    for (int band = 0; dataset && band < bands; ++band) {
        std::array<char, 32> pointer{};
        CPLPrintPointer(pointer.data(), pixels + band, static_cast<int>(pointer.size()) - 1);
        CPLStringList options;
        options.SetNameValue("DATAPOINTER", pointer.data());
        options.SetNameValue("PIXELOFFSET", std::to_string(pixelStep).c_str());
        options.SetNameValue("LINEOFFSET", std::to_string(static_cast<long long>(pixelStep) * width).c_str());
        GDALAddBand(dataset, GDT_Byte, options.List());
    }
    return dataset;
}

}  // namespace ktl::raster
