#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/language.h"
#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/webmap/map_type.h"

/// \file
/// The files that tell other programs where an exported image lies: a text summary, or a world file with a PAM sidecar
/// (.aux.xml) that holds the coordinate system. `path` is the full name of the summary or world file; `width` and
/// `height` are the image's, in pixels. An existing file is replaced. Texts have CR LF line ends, sidecars LF.
///
/// The forms without "WGS" ask `IsWGS(type)`: for a degree map they do as the WGS form does, with `extent` taken as
/// degrees whatever `isLB` says. Otherwise `extent` is normalised when `isLB` is 0, and degrees when not.

/// The summary: the image's size and the corners in degrees. Throws CFileException when the file cannot be made.
KTL_API void ExportCoordLBWGS(CString path, EXTENT extent, int width, int height);
KTL_API void ExportCoordLB(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height);

/// World file and sidecar in degrees, or in Web Mercator metres for a map that is not a degree map. The sidecar's name
/// is `path` with its last three characters replaced by "jpg.aux.xml" or "tif.aux.xml". The world file names the outer
/// corner of the upper left pixel, not its centre: meant so. A failure is logged as 100088.
KTL_API void ExportCoordJGWWGS(CString path, EXTENT extent, int width, int height);
KTL_API void ExportCoordJGW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height);
KTL_API void ExportCoordTFWWGS(CString path, EXTENT extent, int width, int height);
KTL_API void ExportCoordTFW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height);

namespace ktl {

/// The summary's text for a map that is not a degree map; `degrees` holds its corners. The Chinese form tells them in
/// metres too.
KTL_API CString CoordSummary(const EXTENT &degrees, int width, int height, Language language = kBuildLanguage);

}  // namespace ktl
