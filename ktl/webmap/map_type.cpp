#include "ktl/webmap/map_type.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>

#include "ktl/core/log.h"
#include "ktl/core/paths.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/parse.h"
#include "ktl/webmap/level.h"
#include "ktl/webmap/mosaic.h"

namespace {

constexpr int kDegreeMaps[] = {101, 201, 301, 401, 402, 403};
constexpr int kLabelMaps[] = {4, 46, 49, 57, 302, 303, 401, 402, 403};

constexpr int kFirstUserMap = 601;
constexpr int kUserSettings = 5;
/// The user's maps come in two forms, and the two forms of a map share its setting.
constexpr int kUserMaps = 2 * kUserSettings;

template <std::size_t count>
int IsListed(const int (&list)[count], int type) {
    return std::find(std::begin(list), std::end(list), type) != std::end(list);
}

/// One setting of the configuration file, read once a process. Two readers that race both read the file.
struct UserSetting {
    std::atomic<int> isRead{0};
    std::atomic<int> value{0};
};
UserSetting g_userSettings[kUserSettings];

int UserSettingValue(int index) {
    UserSetting &setting = g_userSettings[index];
    if (setting.isRead == 1) return setting.value;
    CString key;
    key.Format("mapdef%d_wgs", index + 1);
    setting.value = ktl::ParseInt(KtlReadINIString(KtlGetConfigFilePath(), "qx", key).View());
    setting.isRead = 1;
    return setting.value;
}

bool FitsInBitmap(int cols, int rows) {
    // Longer sides have no number of pixels in 32 bits.
    constexpr int kMostTiles = INT32_MAX / ktl::kTilePixels;
    if (cols > kMostTiles || rows > kMostTiles) return false;
    const Gdiplus::Bitmap bitmap(cols * ktl::kTilePixels, rows * ktl::kTilePixels, Gdiplus::PixelFormat32bppARGB);
    return bitmap.GetLastStatus() == Gdiplus::Ok;
}

/// A remembered place.
struct City {
    CString name = "beijing";
    POINTD point{0.3234007700683583, 0.12090790942452377};
};

City &CityEDS() {
    static City city;
    return city;
}

City &CityQX3() {
    static City city;
    return city;
}

}  // namespace

int IsWGS(ENUM_MAP_TYPE type) {
    if (IsListed(kDegreeMaps, type)) return 1;
    if (type < kFirstUserMap || type >= kFirstUserMap + kUserMaps) return 0;
    return UserSettingValue((type - kFirstUserMap) % kUserSettings);
}

int IsLabel(ENUM_MAP_TYPE type) {
    return IsListed(kLabelMaps, type);
}

void GetUnionMapInfo(int cols, int rows, int &partCols, int &partRows, int &countX, int &countY) {
    constexpr int kErrorCode = 100089;
    partCols = cols;
    partRows = rows;
    countX = 1;
    countY = 1;
    try {
        const ktl::MosaicCut cut = ktl::CutMosaic(cols, rows, FitsInBitmap);
        partCols = cut.partCols;
        partRows = cut.partRows;
        countX = cut.countX;
        countY = cut.countY;
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

ENUM_BLOCK_STATE GetBlockStateByOffset(__int64 offset, int length) {
    constexpr __int64 kFirstPlace = 100;
    if (length != 0 && (offset < 0 || offset >= kFirstPlace)) return BLOCK_STATE_STORED;
    if (offset == 0) return BLOCK_STATE_NONE;
    return static_cast<ENUM_BLOCK_STATE>(static_cast<std::int32_t>(offset & 0xFFFFFFFF));
}

CString GetCityNameEDS() {
    return CityEDS().name;
}

void SetCityNameEDS(CString name) {
    CityEDS().name = name;
}

POINTD GetCityPointEDS() {
    return CityEDS().point;
}

void SetCityPointEDS(POINTD point) {
    CityEDS().point = point;
}

CString GetCityNameQX3() {
    return CityQX3().name;
}

void SetCityNameQX3(CString name) {
    CityQX3().name = name;
}

POINTD GetCityPointQX3() {
    return CityQX3().point;
}

void SetCityPointQX3(POINTD point) {
    CityQX3().point = point;
}
