#include "host/side_files.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/error.h"
#include "host/image_format.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/webmap/georeference.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;

// A folder of its own under the temporary one. The export writes under fixed names here, so that the names of the
// user's folders, which GBK may lack, don't pass through it.
class StagingFolder {
  public:
    StagingFolder() {
        std::string pattern = (fs::temp_directory_path() / "ktl-XXXXXX").string();
        if (ToUtf8(FromUtf8(pattern)) != pattern) pattern = "/tmp/ktl-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) throw Error("cannot make a temporary folder like '" + pattern + "'");
        m_path = pattern;
    }
    StagingFolder(const StagingFolder &) = delete;
    StagingFolder &operator=(const StagingFolder &) = delete;
    ~StagingFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    CString Name(const std::string &file) const { return PlatformPath((m_path / file).string()); }
    std::string Read(const std::string &file) const {
        std::ifstream stream(m_path / file, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        if (bytes.empty()) throw Error("cannot write side files in '" + m_path.string() + "'");
        return bytes;
    }

  private:
    fs::path m_path;
};

}  // namespace

std::vector<SideFile> MakeSideFiles(const PlacedPicture &picture) try {
    const StagingFolder folder;
    const ImageFormat format = FormatOf(picture.path).value();
    const int isLB = picture.units == WorldUnits::kDegrees ? 1 : 0;
    const bool isTiff = format.encoder == "tiff";
    const auto exportWorldFile = isTiff ? ExportCoordTFW : ExportCoordJGW;
    exportWorldFile(folder.Name("image.wld"), picture.extent, picture.mapType, isLB, picture.width, picture.height);
    ExportCoordLB(folder.Name("image.txt"), picture.extent, picture.mapType, isLB, picture.width, picture.height);
    return {
        {WithExtension(picture.path, format.worldFileExtension), folder.Read("image.wld")},
        {picture.path + ".aux.xml", folder.Read(isTiff ? "image.tif.aux.xml" : "image.jpg.aux.xml")},
        {WithExtension(picture.path, ".txt"), folder.Read("image.txt")},
    };
} catch (const CException &) {
    throw Error("cannot write side files in the temporary folder");
}

}  // namespace ktl::host
