#include "ktl/webmap/georeference.h"

#include <gtest/gtest.h>

#include <string>

#include "ktl/platform/file.h"
#include "tests/support/application.h"
#include "tests/support/sha256.h"

namespace {

const auto kPlainMap = ENUM_MAP_TYPE(1);
const auto kDegreeMap = ENUM_MAP_TYPE(101);
const EXTENT kBeijing(116.25, 39.75, 116.75, 40.0);
const EXTENT kSquare(-0.5, -0.5, 0.5, 0.5);

struct CoordinateFiles : testing::Test {
    std::string Text(const char *name) const { return ktl::ToUtf8(application.Folder().Read(name)); }
    CString Name(const char *name) const { return application.Folder().Name(name); }
    /// What tells that a sidecar is byte for byte as it was when other programs were seen to read it.
    std::string HashOf(const char *name) const {
        const std::string text = application.Folder().Read(name);
        return ktl::test::Sha256({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
    }
    const ktl::test::Application application;
};
constexpr const char *kMercatorHash = "79fff975d9f782e44dd54811799588b2158b27f115c69caa588e04e0f310b1a2";
constexpr const char *kDegreeHash = "0b0abb464907d7b341c6716c4bdd7f75e83b1bc71774b0099b53fc79e490728c";

}  // namespace

TEST_F(CoordinateFiles, TextOfADegreeMapIsChinese) {
    // isLB is not looked at.
    for (const int isLB : {0, 1}) {
        ExportCoordLB(Name("a.txt"), kBeijing, kDegreeMap, isLB, 512, 256);
        EXPECT_EQ(Text("a.txt"),
                  "图片宽度(像素):512\r\n图片高度(像素):256\r\n\r\n"
                  "左下角:116.250000000000000,39.750000000000000\r\n"
                  "左上角:116.250000000000000,40.000000000000000\r\n"
                  "右上角:116.750000000000000,40.000000000000000\r\n"
                  "右下角:116.750000000000000,39.750000000000000\r\n\r\n");
    }
}

TEST_F(CoordinateFiles, TextOfAnyOtherMapIsInDegrees) {
    ExportCoordLB(Name("a.txt"), kBeijing, kPlainMap, 1, 512, 256);
    EXPECT_EQ(Text("a.txt").find("Width:512\r\nHeight:256\r\n\r\nBottomLeft:116.250000,39.750000\r\n"), 0u);
    // Longer text of before goes; the square is turned to degrees.
    application.Folder().Write("a.txt", std::string(1000, 'x'));
    ExportCoordLB(Name("a.txt"), EXTENT(-0.5, -0.25, 0.5, 0.25), kPlainMap, 0, 1, 2);
    EXPECT_EQ(Text("a.txt"),
              "Width:1\r\nHeight:2\r\n\r\n"
              "BottomLeft:-180.000000,-66.513260\r\nTopLeft:-180.000000,66.513260\r\n"
              "TopRight:180.000000,66.513260\r\nBottomRight:180.000000,-66.513260\r\n");
}

TEST_F(CoordinateFiles, ChineseTextTellsMetresToo) {
    const std::string text = ktl::ToUtf8(ktl::CoordSummary(EXTENT(0, 0, 45, 0), 1, 2, ktl::Language::Chinese));
    const char *const parts[] = {
        "图片宽度(像素):1\n图片高度(像素):2\n\nWeb墨卡托坐标系（地图原始坐标）\n左下角:0.0",
        "右下角:5009377.225095927715302,0.000000000000000\n\nWGS84坐标系（经纬度坐标）\n左下角:0.0",
        "右下角:45.000000000000000,0.000000000000000\n\n说明：Web墨卡托坐标的单位是米，WGS84坐标的单位是度。\n"};
    for (const char *part : parts) EXPECT_NE(text.find(part), std::string::npos) << text;
}

TEST_F(CoordinateFiles, WorldFileOfADegreeMap) {
    // isLB is not looked at.
    ExportCoordJGW(Name("a.jgw"), kBeijing, kDegreeMap, 0, 512, 256);
    EXPECT_EQ(Text("a.jgw"),
              "0.000976562500000\r\n0\r\n0\r\n-0.000976562500000\r\n116.250000000000000\r\n40.000000000000000\r\n");
    EXPECT_EQ(HashOf("a.jpg.aux.xml"), kDegreeHash);
    ExportCoordTFWWGS(Name("a.tfw"), kBeijing, 512, 256);
    EXPECT_EQ(Text("a.tfw"), Text("a.jgw"));
    EXPECT_EQ(HashOf("a.tif.aux.xml"), kDegreeHash);
}

TEST_F(CoordinateFiles, WorldFileOfAnyOtherMapIsInMetres) {
    ExportCoordJGW(Name("a.jgw"), kSquare, kPlainMap, 0, 4, 4);
    EXPECT_EQ(HashOf("a.jpg.aux.xml"), kMercatorHash);
    // The y values hang on the last bits of the C library's functions: three decimals are compared.
    std::string text = Text("a.jgw");
    for (std::size_t dot = text.find('.'); dot != std::string::npos; dot = text.find('.', dot + 1)) {
        text.erase(dot + 4, 12);
    }
    EXPECT_EQ(text, "10018754.450\r\n0\r\n0\r\n-10018756.719\r\n-20037508.900\r\n20037518.615\r\n");
    ExportCoordTFW(Name("b.tfw"), kSquare, kPlainMap, 0, 4, 4);
    EXPECT_EQ(Text("b.tfw"), Text("a.jgw"));
    EXPECT_EQ(HashOf("b.tif.aux.xml"), kMercatorHash);
}

TEST_F(CoordinateFiles, SidecarsNameReplacesThreeBytes) {
    ExportCoordJGWWGS(Name("map"), kBeijing, 2, 2);
    EXPECT_TRUE(application.Folder().Has("jpg.aux.xml"));
    ExportCoordTFWWGS(Name("dir.world"), kBeijing, 2, 2);
    EXPECT_TRUE(application.Folder().Has("dir.wotif.aux.xml"));
}

TEST_F(CoordinateFiles, FailuresAreThrownLoggedOrLeftOut) {
    EXPECT_THROW(ExportCoordLB(Name("none/a.txt"), kBeijing, kPlainMap, 1, 1, 1), CFileException);
    EXPECT_THROW(ExportCoordLBWGS(Name("none/a.txt"), kBeijing, 1, 1), CFileException);
    std::filesystem::create_directory(application.Folder().Path("a.jpg.aux.xml"));
    ExportCoordJGWWGS(Name("a.jgw"), kBeijing, 512, 256);
    EXPECT_TRUE(application.Folder().Has("a.jgw"));
    EXPECT_TRUE(application.Questions().empty());
    ExportCoordTFW(Name("none/a.tfw"), kBeijing, kPlainMap, 1, 2, 2);
    EXPECT_EQ(application.Logged(100088), 1);
    EXPECT_EQ(application.Questions().size(), 1u);
}
