#include "ktl/webmap/map_type.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <tuple>

#include "ktl/platform/exception.h"
#include "ktl/webmap/mosaic.h"
#include "tests/support/application.h"
#include "tests/support/drawing_start.h"

using ktl::test::Application;

TEST(MapType, DegreeAndLabelMapsByNumber) {
    const Application application;  // without a configuration file
    const std::set<int> degrees = {101, 201, 301, 401, 402, 403};
    const std::set<int> labels = {4, 46, 49, 57, 302, 303, 401, 402, 403};
    for (int number = -2; number < 700; ++number) {
        EXPECT_EQ(IsLabel(ENUM_MAP_TYPE(number)), labels.count(number)) << number;
        if (number >= 601 && number <= 610) continue;
        EXPECT_EQ(IsWGS(ENUM_MAP_TYPE(number)), degrees.count(number)) << number;
    }
}

// One test, since each setting is read once a process.
TEST(MapType, UserMapsAreReadOncePerPair) {
    const Application application;
    application.Folder().Write("Kartelo.ini",
                               "[qx]\r\nmapdef1_wgs=1\r\nmapdef2_wgs=2\r\nmapdef3_wgs=no\r\nmapdef5_wgs=-1\r\n");
    for (const auto &[number, value] : {std::pair{606, 1}, {602, 2}, {603, 0}, {609, 0}}) {
        EXPECT_EQ(IsWGS(ENUM_MAP_TYPE(number)), value) << number;
    }
    application.Folder().Write("Kartelo.ini", "[qx]\r\nmapdef1_wgs=0\r\nmapdef4_wgs=1\r\nmapdef5_wgs=3\r\n");
    // The setting of 610 is read only now.
    for (const auto &[number, value] : {std::pair{601, 1}, {604, 0}, {610, 3}, {611, 0}}) {
        EXPECT_EQ(IsWGS(ENUM_MAP_TYPE(number)), value) << number;
    }
}

TEST(BlockState, OffsetsBelow100AreStates) {
    const std::tuple<__int64, int, int> cases[] = {
        {0, 0, 1},     {0, 5, 1},  {5, 0, 5},   {5, 1, 5},         {99, 1, 99},           {100, 1, 2},
        {100, 0, 100}, {-1, 1, 2}, {-1, 0, -1}, {LLONG_MAX, 1, 2}, {0x100000007LL, 0, 7}, {LLONG_MIN, -1, 2},
    };
    for (const auto &[offset, length, state] : cases) {
        EXPECT_EQ(GetBlockStateByOffset(offset, length), state) << offset;
    }
}

// The limit is a number of tiles in a part; the expected parts were found by following the two searches by hand.
TEST(Mosaic, IsHalvedCoarselyAndThenGrownBack) {
    struct Case {
        int cols, rows, most;
        ktl::MosaicCut cut;
    };
    // 40x10 is too much, 20x10 fits; back from 40x10: 39x10 ... 30x10 fits.
    // 10x10, 10x5, 5x5 fits; back from 10x5: 9x5, 8x5, 7x5, 6x5 fits. 9x9, 9x4 fits; back from 9x9: 8x8, 7x7, 6x6 fits.
    const Case cases[] = {{3, 2, 6, {3, 2, 1, 1}},
                          {40, 10, 300, {30, 10, 2, 1}},
                          {10, 10, 30, {6, 5, 2, 2}},
                          {9, 9, 42, {6, 6, 2, 2}},
                          {1, 7, 2, {1, 2, 1, 4}}};
    for (const Case &c : cases) {
        const auto cut = ktl::CutMosaic(c.cols, c.rows, [&](int cols, int rows) { return cols * rows <= c.most; });
        EXPECT_TRUE(cut.partCols == c.cut.partCols && cut.partRows == c.cut.partRows) << c.cols;
        EXPECT_TRUE(cut.countX == c.cut.countX && cut.countY == c.cut.countY) << c.cols;
    }
    EXPECT_THROW(ktl::CutMosaic(100, 100, [](int, int) { return false; }), CInvalidArgException);
}

TEST(Mosaic, PartsFitInARealBitmap) {
    const ktl::test::DrawingStart drawing;
    const Application application;
    int partCols = 0, partRows = 0, countX = 0, countY = 0;
    // 128 tiles are 32768 pixels, one more than a bitmap's side.
    GetUnionMapInfo(128, 1, partCols, partRows, countX, countY);
    EXPECT_TRUE(partCols == 127 && partRows == 1 && countX == 2 && countY == 1) << partCols << " " << countX;
    GetUnionMapInfo(INT_MAX, 1, partCols, partRows, countX, countY);
    EXPECT_TRUE(partCols > 0 && partCols <= 127 && partRows == 1 && countX == (INT_MAX - 1) / partCols + 1) << partCols;
    EXPECT_FALSE(application.Folder().Has("error.log"));
    // No tiles at all are logged.
    GetUnionMapInfo(-3, 5, partCols, partRows, countX, countY);
    EXPECT_TRUE(partCols == -3 && partRows == 5 && countX == 1 && countY == 1);
    EXPECT_EQ(application.Logged(100089), 1);
}

TEST(Cities, NamesAndPointsAreSetApart) {
    EXPECT_TRUE(GetCityNameEDS() == "beijing" && GetCityPointQX3().x == 0.3234007700683583);
    SetCityNameEDS("a");
    SetCityPointQX3(POINTD(1, 2));
    EXPECT_TRUE(GetCityNameEDS() == "a" && GetCityNameQX3() == "beijing");
    EXPECT_TRUE(GetCityPointEDS().y == 0.12090790942452377 && GetCityPointQX3().y == 2.0);
}
