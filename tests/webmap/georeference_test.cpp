#include "ktl/webmap/georeference.h"

#include <gdal.h>
#include <gtest/gtest.h>
#include <ogr_srs_api.h>

#include <cerrno>
#include <memory>
#include <string>

#include "ktl/core/ktl_app.h"
#include "ktl/platform/file.h"
#include "tests/support/application.h"
#include "tests/support/faulty_filesystem.h"

namespace {

using ktl::test::Application;

const auto kPlainMap = ENUM_MAP_TYPE(1);
const auto kDegreeMap = ENUM_MAP_TYPE(101);
const EXTENT kBeijing(116.25, 39.75, 116.75, 40.0);

constexpr const char *kMercatorXml =
    "<PAMDataset>\n"
    "  <SRS>PROJCS[&quot;WGS_1984_Web_Mercator&quot;,GEOGCS[&quot;GCS_WGS_1984_Major_Auxiliary_Sphere&quot;,"
    "DATUM[&quot;WGS_1984_Major_Auxiliary_Sphere&quot;,SPHEROID[&quot;WGS_1984_Major_Auxiliary_Sphere&quot;,"
    "6378137.0,0.0]],PRIMEM[&quot;Greenwich&quot;,0.0],UNIT[&quot;Degree&quot;,0.0174532925199433]],"
    "PROJECTION[&quot;Mercator_1SP&quot;],PARAMETER[&quot;False_Easting&quot;,0.0],"
    "PARAMETER[&quot;False_Northing&quot;,0.0],PARAMETER[&quot;Central_Meridian&quot;,0.0],"
    "PARAMETER[&quot;latitude_of_origin&quot;,0.0],UNIT[&quot;Meter&quot;,1.0]]</SRS>\n"
    "  <Metadata domain=\"IMAGE_STRUCTURE\">\n"
    "    <MDI key=\"SOURCE_COLOR_SPACE\">YCbCr</MDI>\n"
    "    <MDI key=\"INTERLEAVE\">PIXEL</MDI>\n"
    "    <MDI key=\"COMPRESSION\">JPEG</MDI>\n"
    "  </Metadata>\n"
    "  <Metadata domain=\"ESRI\">\n"
    "    <MDI key=\"PyramidResamplingType\">NEAREST</MDI>\n"
    "  </Metadata>\n"
    "</PAMDataset>\n";

std::string DegreeXml() {
    std::string text =
        "<PAMDataset>\n"
        "  <SRS>GEOGCS[&quot;WGS 84&quot;,DATUM[&quot;WGS_1984&quot;,SPHEROID[&quot;WGS 84&quot;,6378137,298.257223563,"
        "AUTHORITY[&quot;EPSG&quot;,&quot;7030&quot;]],AUTHORITY[&quot;EPSG&quot;,&quot;6326&quot;]],"
        "PRIMEM[&quot;Greenwich&quot;,0],UNIT[&quot;degree&quot;,0.0174532925199433],"
        "AUTHORITY[&quot;EPSG&quot;,&quot;4326&quot;]]</SRS>\n"
        "  <Metadata domain=\"IMAGE_STRUCTURE\">\n"
        "    <MDI key=\"SOURCE_COLOR_SPACE\">YCbCr</MDI>\n"
        "    <MDI key=\"INTERLEAVE\">PIXEL</MDI>\n"
        "    <MDI key=\"COMPRESSION\">JPEG</MDI>\n"
        "  </Metadata>\n"
        "  <Metadata>\n"
        "    <MDI key=\"AREA_OR_POINT\">Area</MDI>\n"
        "  </Metadata>\n";
    for (const char band : {'1', '2', '3'}) {
        text += std::string("  <PAMRasterBand band=\"") + band +
                "\">\n"
                "    <Metadata domain=\"IMAGE_STRUCTURE\">\n"
                "      <MDI key=\"COMPRESSION\">JPEG</MDI>\n"
                "    </Metadata>\n"
                "  </PAMRasterBand>\n";
    }
    return text + "</PAMDataset>\n";
}

std::string Utf8(const std::string &gbk) {
    return ktl::ToUtf8(gbk);
}

}  // namespace

TEST(CoordinateText, OfADegreeMapIsChinese) {
    const Application application;
    // isLB is not looked at.
    for (const int isLB : {0, 1}) {
        ExportCoordLB(application.Folder().Name("a.txt"), kBeijing, kDegreeMap, isLB, 512, 256);
        EXPECT_EQ(Utf8(application.Folder().Read("a.txt")),
                  "图片宽度(像素):512\r\n图片高度(像素):256\r\n\r\n"
                  "左下角:116.250000000000000,39.750000000000000\r\n"
                  "左上角:116.250000000000000,40.000000000000000\r\n"
                  "右上角:116.750000000000000,40.000000000000000\r\n"
                  "右下角:116.750000000000000,39.750000000000000\r\n\r\n");
    }
}

TEST(CoordinateText, OfAnyOtherMapIsInDegrees) {
    const Application application;
    const CString name = application.Folder().Name("a.txt");
    ExportCoordLB(name, kBeijing, kPlainMap, 1, 512, 256);
    const std::string expected =
        "Width:512\r\nHeight:256\r\n\r\n"
        "BottomLeft:116.250000,39.750000\r\nTopLeft:116.250000,40.000000\r\n"
        "TopRight:116.750000,40.000000\r\nBottomRight:116.750000,39.750000\r\n";
    EXPECT_EQ(application.Folder().Read("a.txt"), expected);
    // Longer text of before goes; the square is turned to degrees.
    application.Folder().Write("a.txt", std::string(1000, 'x'));
    ExportCoordLB(name, EXTENT(-0.5, -0.25, 0.5, 0.25), kPlainMap, 0, 1, 2);
    EXPECT_EQ(application.Folder().Read("a.txt"),
              "Width:1\r\nHeight:2\r\n\r\n"
              "BottomLeft:-180.000000,-66.513260\r\nTopLeft:-180.000000,66.513260\r\n"
              "TopRight:180.000000,66.513260\r\nBottomRight:180.000000,-66.513260\r\n");
}

TEST(CoordinateText, ChineseBuildTellsMetresToo) {
    const std::string text = ktl::ToUtf8(ktl::CoordSummary(EXTENT(0, 0, 45, 0), 1, 2, ktl::Language::Chinese));
    EXPECT_EQ(text.find("图片宽度(像素):1\n图片高度(像素):2\n\nWeb墨卡托坐标系（地图原始坐标）\n左下角:0.0"), 0u)
        << text;
    EXPECT_NE(text.find("右下角:5009377.225095927715302,0.000000000000000\n\nWGS84坐标系（经纬度坐标）\n左下角:0.0"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("右下角:45.000000000000000,0.000000000000000\n"), std::string::npos) << text;
}

TEST(CoordinateText, MissingFolderThrows) {
    const Application application;
    EXPECT_THROW(ExportCoordLB(application.Folder().Name("none/a.txt"), kBeijing, kPlainMap, 1, 1, 1), CFileException);
    EXPECT_THROW(ExportCoordLBWGS(application.Folder().Name("none/a.txt"), kBeijing, 1, 1), CFileException);
}

TEST(WorldFile, OfADegreeMap) {
    const Application application;
    // isLB is not looked at.
    ExportCoordJGW(application.Folder().Name("a.jgw"), kBeijing, kDegreeMap, 0, 512, 256);
    EXPECT_EQ(application.Folder().Read("a.jgw"),
              "0.000976562500000\r\n0\r\n0\r\n-0.000976562500000\r\n116.250000000000000\r\n40.000000000000000\r\n");
    EXPECT_EQ(application.Folder().Read("a.jpg.aux.xml"), DegreeXml());
    ExportCoordTFWWGS(application.Folder().Name("a.tfw"), kBeijing, 512, 256);
    EXPECT_EQ(application.Folder().Read("a.tfw"), application.Folder().Read("a.jgw"));
    EXPECT_EQ(application.Folder().Read("a.tif.aux.xml"), DegreeXml());
}

TEST(WorldFile, OfAnyOtherMapIsInMetres) {
    const Application application;
    const std::string expected =
        "10018754.450191855430603\r\n0\r\n0\r\n-10018756.719642968848348\r\n"
        "-20037508.900383710861206\r\n20037518.615682937204838\r\n";
    ExportCoordJGW(application.Folder().Name("a.jgw"), EXTENT(-0.5, -0.5, 0.5, 0.5), kPlainMap, 0, 4, 4);
    std::string text = application.Folder().Read("a.jgw");
    EXPECT_EQ(application.Folder().Read("a.jpg.aux.xml"), kMercatorXml);
    // The y values hang on the last bits of the C library's functions: six digits are compared.
    const auto withoutTail = [](std::string lines) {
        for (std::size_t dot = lines.find('.'); dot != std::string::npos; dot = lines.find('.', dot + 1)) {
            lines.erase(dot + 4, 12);
        }
        return lines;
    };
    EXPECT_EQ(withoutTail(text), withoutTail(expected));
    ExportCoordTFW(application.Folder().Name("b.tfw"), EXTENT(-0.5, -0.5, 0.5, 0.5), kPlainMap, 0, 4, 4);
    EXPECT_EQ(application.Folder().Read("b.tfw"), text);
    EXPECT_EQ(application.Folder().Read("b.tif.aux.xml"), kMercatorXml);
}

TEST(WorldFile, SidecarsNameReplacesThreeBytes) {
    const Application application;
    ExportCoordJGWWGS(application.Folder().Name("map"), kBeijing, 2, 2);
    EXPECT_TRUE(application.Folder().Has("jpg.aux.xml"));
    ExportCoordTFWWGS(application.Folder().Name("dir.world"), kBeijing, 2, 2);
    EXPECT_TRUE(application.Folder().Has("dir.wotif.aux.xml"));
}

TEST(WorldFile, SidecarThatCannotBeMadeIsLeftOut) {
    const Application application;
    std::filesystem::create_directory(application.Folder().Path("a.jpg.aux.xml"));
    ExportCoordJGWWGS(application.Folder().Name("a.jgw"), kBeijing, 512, 256);
    EXPECT_TRUE(application.Folder().Has("a.jgw"));
    EXPECT_FALSE(application.Folder().Has("error.log"));
}

TEST(WorldFile, FailuresAreLogged) {
    const Application application;
    ExportCoordTFW(application.Folder().Name("none/a.tfw"), kBeijing, kPlainMap, 1, 2, 2);
    EXPECT_EQ(application.Logged(100088), 1);
    EXPECT_EQ(application.Questions().size(), 1u);
}

namespace {

struct DatasetCloser {
    void operator()(void *dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, DatasetCloser>;

void MakeImage(const char *format, const std::string &path, int width, int height) {
    const Dataset memory(GDALCreate(GDALGetDriverByName("MEM"), "", width, height, 3, GDT_Byte, nullptr));
    const Dataset file(
        GDALCreateCopy(GDALGetDriverByName(format), path.c_str(), memory.get(), 0, nullptr, nullptr, nullptr));
    ASSERT_NE(file, nullptr);
}

/// The place of longitude 116.25 and latitude 39.75 in the image's coordinates.
void PlaceOfBeijing(GDALDatasetH image, double &x, double &y) {
    const auto srs = GDALGetSpatialRef(image);
    ASSERT_NE(srs, nullptr);
    const auto degrees = OSRNewSpatialReference(nullptr);
    OSRImportFromEPSG(degrees, 4326);
    OSRSetAxisMappingStrategy(degrees, OAMS_TRADITIONAL_GIS_ORDER);
    const auto transform = OCTNewCoordinateTransformation(degrees, srs);
    ASSERT_NE(transform, nullptr);
    x = 116.25;
    y = 39.75;
    EXPECT_TRUE(OCTTransform(transform, 1, &x, &y, nullptr));
    OCTDestroyCoordinateTransformation(transform);
    OSRDestroySpatialReference(degrees);
}

struct Readback {
    const char *format;
    const char *image;
    const char *worldFile;
    ENUM_MAP_TYPE type;
};

}  // namespace

// Other programs read what was written: the corner, less the half pixel by which world files are commonly understood,
// and a coordinate system in which the place lies where we say.
TEST(WorldFile, IsReadByGdal) {
    ktl::StartLibrary();
    const Application application;
    const Readback cases[] = {
        {"JPEG", "a.jpg", "a.jgw", kDegreeMap},
        {"JPEG", "b.jpg", "b.jgw", kPlainMap},
        {"GTiff", "c.tif", "c.tfw", kDegreeMap},
        {"GTiff", "d.tif", "d.tfw", kPlainMap},
    };
    for (const Readback &c : cases) {
        SCOPED_TRACE(c.image);
        const std::string path = application.Folder().Path(c.image);
        MakeImage(c.format, path, 64, 32);
        const auto write = c.format == std::string("JPEG") ? ExportCoordJGW : ExportCoordTFW;
        write(application.Folder().Name(c.worldFile), kBeijing, c.type, 1, 64, 32);

        const Dataset image(GDALOpen(path.c_str(), GA_ReadOnly));
        ASSERT_NE(image, nullptr);
        double gt[6] = {};
        ASSERT_EQ(GDALGetGeoTransform(image.get(), gt), CE_None);
        double x = 0;
        double y = 0;
        PlaceOfBeijing(image.get(), x, y);
        const double tolerance = c.type == kDegreeMap ? 1e-9 : 1.0;
        EXPECT_NEAR(gt[0] + 0.5 * gt[1], x, tolerance);
        EXPECT_NEAR(gt[3] + 0.5 * gt[5] + 32 * gt[5], y, tolerance);
    }
}
