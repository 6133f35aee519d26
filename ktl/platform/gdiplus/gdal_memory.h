#pragma once

#include "ktl/platform/types.h"

// GDAL's headers come after those that name TRUE and FALSE.
#include <cpl_conv.h>
#include <cpl_string.h>
#include <gdal.h>

#include <cstdint>
#include <string>
#include <string_view>

/// \file
/// Private to the image codecs: GDAL used on memory only, in silence, with everything released.

namespace ktl::raster {

/// For its life, on this thread: GDAL prints nothing, and looks for and leaves no side-files.
class QuietGdal {
  public:
    QuietGdal();
    ~QuietGdal();
    QuietGdal(const QuietGdal &) = delete;
    QuietGdal &operator=(const QuietGdal &) = delete;

    /// True once a decoder has said that the file ends too early, which is only a warning to it.
    bool SawEarlyEnd() const { return m_sawEarlyEnd; }

  private:
    static void CPL_STDCALL Note(CPLErr level, CPLErrorNum number, const char *message);

    CPLConfigOptionSetter m_sideFiles;
    bool m_sawEarlyEnd = false;
};

/// A file that GDAL sees, and no one else.
class MemoryFile {
  public:
    /// A name for a file to be written.
    MemoryFile();
    /// A file of foreign bytes, which must last as long.
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    const std::string &Name() const { return m_name; }
    std::string_view Content() const;

  private:
    std::string m_name;
};

/// An open dataset; null when there is none.
class Dataset {
  public:
    explicit Dataset(GDALDatasetH handle = nullptr) : m_handle(handle) {}
    ~Dataset() {
        if (m_handle) GDALClose(m_handle);
    }
    Dataset(const Dataset &) = delete;
    Dataset &operator=(const Dataset &) = delete;

    explicit operator bool() const { return m_handle != nullptr; }
    GDALDatasetH Get() const { return m_handle; }

  private:
    GDALDatasetH m_handle;
};

/// The driver, registered when nobody has done it yet; null when GDAL was built without it.
GDALDriverH NeedDriver(const char *name);

/// A dataset over foreign pixels in memory: `bands` bytes a pixel, or fewer with `pixelStep` bytes from one to the
/// next.
GDALDatasetH WrapPixels(std::uint8_t *pixels, int width, int height, int bands, int pixelStep);

}  // namespace ktl::raster
