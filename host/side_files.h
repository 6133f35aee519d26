#pragma once

#include <string>
#include <vector>

#include "host/shape_set.h"
#include "ktl/webmap/map_type.h"

namespace ktl::host {

/// A picture's name and size, and the extent that it shows in world coordinates.
struct PlacedPicture {
    std::string path;  ///< UTF-8
    int width = 0;
    int height = 0;
    CExtent extent;
    WorldUnits units = WorldUnits::kNormalised;
    ENUM_MAP_TYPE mapType{};
};

struct SideFile {
    std::string path;
    std::string bytes;
};

/// The files that tell other programs where a picture lies, not yet written: the world file under the extension that
/// GDAL looks for, IMAGE.EXT.aux.xml with the coordinate system, and a text summary with the extension .txt. Throws
/// `Error` when the temporary folder can't be written to.
std::vector<SideFile> MakeSideFiles(const PlacedPicture &picture);

}  // namespace ktl::host
