#include "ktl/webmap/map_type.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <memory>

#include "ktl/core/log.h"
#include "ktl/core/utility.h"
#include "ktl/platform/gdiplus/bitmap.h"

namespace {

constexpr int kDegreeMaps[] = {101, 201, 301, 401, 402, 403};
constexpr int kLabelMaps[] = {4, 46, 49, 57, 302, 303, 401, 402, 403};
constexpr int kFirstUserMap = 601;
constexpr int kUserMaps = 5;
constexpr int kUserMapNumbers = 2 * kUserMaps;
constexpr int kMosaicErrorCode = 100089;

/// The user's maps come in two forms that share one setting.
struct UserMap {
    int isRead = 0;
    int value = 0;
};
UserMap g_userMaps[kUserMaps];

struct City {
    CString name = "beijing";
    POINTD point{0.3234007700683583, 0.12090790942452377};
};

City &CityOf(int mode) {
    static City cities[2];
    return cities[mode];
}
constexpr int kEDS = 0;
constexpr int kQX3 = 1;

bool BitmapCanBeMade(int cols, int rows) {
    constexpr int kLimit = 1 << 22;
    if (cols <= 0 || rows <= 0 || cols >= kLimit || rows >= kLimit) return false;
    const Gdiplus::Bitmap bitmap(cols << 8, rows << 8, Gdiplus::PixelFormat32bppARGB);
    return bitmap.GetLastStatus() == Gdiplus::Ok;
}

/// Makes the piece smaller by a tile, on the way to a square; false when nothing is left.
bool Creep(int &cols, int &rows) {
    const int difference = cols - rows;
    if (difference >= 0) --cols;
    if (difference <= 0) --rows;
    return cols > 0 && rows > 0;
}

void FindPiece(int &cols, int &rows) {
    if (BitmapCanBeMade(cols, rows)) return;
    int lastCols = 0;
    int lastRows = 0;
    while (!BitmapCanBeMade(cols, rows)) {
        lastCols = cols;
        lastRows = rows;
        (cols > rows ? cols : rows) /= 2;
        if (cols <= 0 || rows <= 0) return;
    }
    const int goodCols = cols;
    const int goodRows = rows;
    cols = lastCols;
    rows = lastRows;
    do {
        if (!Creep(cols, rows)) {
            cols = goodCols;
            rows = goodRows;
            return;
        }
    } while (!BitmapCanBeMade(cols, rows));
}

int Pieces(int whole, int part) {
    return part > 0 ? static_cast<int>(std::ceil(static_cast<double>(whole) / static_cast<double>(part))) : 0;
}

}  // namespace

int IsWGS(ENUM_MAP_TYPE type) {
    if (std::find(std::begin(kDegreeMaps), std::end(kDegreeMaps), type) != std::end(kDegreeMaps)) return 1;
    if (type < kFirstUserMap || type >= kFirstUserMap + kUserMapNumbers) return 0;
    const int index = (type - kFirstUserMap) % kUserMaps;
    UserMap &map = g_userMaps[index];
    if (map.isRead == 1) return map.value;
    CString key;
    key.Format("mapdef%d_wgs", index + 1);
    map.value = std::atoi(KtlReadINIString(KtlGetConfigFilePath(), "qx", key));
    map.isRead = 1;
    return map.value;
}

int IsLabel(ENUM_MAP_TYPE type) {
    return std::find(std::begin(kLabelMaps), std::end(kLabelMaps), type) != std::end(kLabelMaps) ? 1 : 0;
}

void GetUnionMapInfo(int cols, int rows, int &partCols, int &partRows, int &countX, int &countY) {
    partCols = cols;
    partRows = rows;
    countX = 1;
    countY = 1;
    try {
        FindPiece(partCols, partRows);
        countX = Pieces(cols, partCols);
        countY = Pieces(rows, partRows);
    } catch (const std::exception &) {
        KtlCatchError(kMosaicErrorCode, 1);
    }
}

ENUM_BLOCK_STATE GetBlockStateByOffset(__int64 offset, int length) {
    constexpr __int64 kFirstPlace = 100;
    if (length != 0 && (offset < 0 || offset >= kFirstPlace)) return ENUM_BLOCK_STATE(2);
    if (offset == 0) return ENUM_BLOCK_STATE(1);
    return ENUM_BLOCK_STATE(static_cast<int>(static_cast<std::uint32_t>(offset)));
}

CString GetCityNameEDS() {
    return CityOf(kEDS).name;
}
void SetCityNameEDS(CString name) {
    CityOf(kEDS).name = name;
}
POINTD GetCityPointEDS() {
    return CityOf(kEDS).point;
}
void SetCityPointEDS(POINTD point) {
    CityOf(kEDS).point = point;
}
CString GetCityNameQX3() {
    return CityOf(kQX3).name;
}
void SetCityNameQX3(CString name) {
    CityOf(kQX3).name = name;
}
POINTD GetCityPointQX3() {
    return CityOf(kQX3).point;
}
void SetCityPointQX3(POINTD point) {
    CityOf(kQX3).point = point;
}
