#pragma once

#include "ktl/core/point.h"
#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"
#include "ktl/webmap/block_state.h"

/// The number of a map source. The numbers are the host's; the library knows of some whether they are degree maps or
/// label maps. 601 to 610 are five user-defined maps in two forms each.
enum ENUM_MAP_TYPE : int {};

/// Other than 0 when the map's tiles are laid out in degrees. For a user-defined map it is the number of the key
/// mapdef1_wgs to mapdef5_wgs in the section "qx" of the configuration file, read once a process.
KTL_API int IsWGS(ENUM_MAP_TYPE type);
/// 1 for a map that only holds labels, to lie over another.
KTL_API int IsLabel(ENUM_MAP_TYPE type);

/// How to cut a mosaic of `cols` by `rows` tiles so that a part fits in one bitmap: the part's size in tiles and the
/// number of parts both ways. The whole counts as one part when nothing smaller fits either; that is logged.
KTL_API void GetUnionMapInfo(int cols, int rows, int &partCols, int &partRows, int &countX, int &countY);

/// The state that the offset and length of a tile's index record tell. Offsets below 100 are states, others places.
KTL_API ENUM_BLOCK_STATE GetBlockStateByOffset(__int64 offset, int length);

/// The place that each of the two product modes remembers: a name and a point in the normalised square, which are set
/// apart from each other.
KTL_API CString GetCityNameEDS();
KTL_API void SetCityNameEDS(CString name);
KTL_API POINTD GetCityPointEDS();
KTL_API void SetCityPointEDS(POINTD point);
KTL_API CString GetCityNameQX3();
KTL_API void SetCityNameQX3(CString name);
KTL_API POINTD GetCityPointQX3();
KTL_API void SetCityPointQX3(POINTD point);
