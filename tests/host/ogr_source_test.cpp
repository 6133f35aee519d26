#include "host/ogr_source.h"

#include <gdal.h>
#include <gtest/gtest.h>

#include "host/error.h"
#include "tests/host/recording_sink.h"
#include "tests/host/scratch_folder.h"

namespace {

using namespace ktl::host;

class OgrSource : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { GDALAllRegister(); }

    ReadReport Read(const SourceOptions &options, const MapArea &area = kDegreeArea) {
        return ReadSource(options, area, m_sink);
    }
    std::string ErrorOf(const SourceOptions &options) {
        try {
            Read(options);
        } catch (const Error &error) {
            return error.what();
        }
        return "";
    }

    ScratchFolder m_folder;
    RecordingSink m_sink;
};

std::string FeatureOf(const std::string &geometry) {
    return R"({"type":"Feature","properties":{},"geometry":)" + geometry + "}";
}
std::string CollectionOf(const std::string &features, const std::string &more = "") {
    return R"({"type":"FeatureCollection",)" + more + R"("features":[)" + features + "]}";
}

TEST_F(OgrSource, EveryGeometryIsTakenApart) {
    struct {
        const char *geometry;
        std::vector<std::string> pieces;
    } const cases[] = {
        {R"({"type":"Point","coordinates":[1,2]})", {"point 1 2"}},
        {R"({"type":"MultiPoint","coordinates":[[1,2],[3,4]]})", {"point 1 2", "point 3 4"}},
        {R"({"type":"LineString","coordinates":[[0,0],[1,1]]})", {"line 0 0, 1 1"}},
        {R"({"type":"MultiLineString","coordinates":[[[0,0],[1,1]],[[2,2],[3,3]]]})",
         {"line 0 0, 1 1", "line 2 2, 3 3"}},
        {R"({"type":"Polygon","coordinates":[[[0,0],[9,0],[9,9],[0,0]],[[5,1],[6,1],[6,2],[5,1]]]})",
         {"area 0 0, 9 0, 9 9, 0 0 | 5 1, 6 1, 6 2, 5 1"}},
        {R"({"type":"MultiPolygon","coordinates":[[[[0,0],[1,0],[1,1],[0,0]]],[[[5,5],[6,5],[6,6],[5,5]]]]})",
         {"area 0 0, 1 0, 1 1, 0 0", "area 5 5, 6 5, 6 6, 5 5"}},
        {R"({"type":"GeometryCollection","geometries":[{"type":"Point","coordinates":[1,2]},
            {"type":"GeometryCollection","geometries":[{"type":"LineString","coordinates":[[0,0],[1,1]]}]}]})",
         {"point 1 2", "line 0 0, 1 1"}},
    };
    for (const auto &c : cases) {
        m_sink.pieces.clear();
        const auto report = Read({m_folder.Write("a.geojson", CollectionOf(FeatureOf(c.geometry))), "", ""});
        EXPECT_EQ(m_sink.pieces, c.pieces) << c.geometry;
        EXPECT_EQ(report.features, 1);
        EXPECT_EQ(report.Skipped(), 0);
    }
}

TEST_F(OgrSource, CurvesAndSurfacesOfWellKnownTextAreTakenApart) {
    const auto path = m_folder.Write("a.csv",
                                     "id,WKT\n"
                                     "1,\"CIRCULARSTRING (0 0, 1 1, 2 0)\"\n"
                                     "2,\"TIN (((0 0 0, 1 0 0, 0 1 0, 0 0 0)))\"\n"
                                     "3,\"POINT EMPTY\"\n");
    const auto report = Read({path, "", ""});
    ASSERT_EQ(m_sink.pieces.size(), 2U);
    EXPECT_TRUE(m_sink.pieces[0].starts_with("line 0 0, ")) << m_sink.pieces[0];
    EXPECT_GT(m_sink.pieces[0].size(), 100U) << "an arc needs many points";
    EXPECT_EQ(m_sink.pieces[1], "area 0 0, 1 0, 0 1, 0 0");
    EXPECT_EQ(report.withoutGeometry, 1);
}

TEST_F(OgrSource, EachFeatureCountsOnceByWhatBecameOfIt) {
    const auto path = m_folder.Write("a.csv",
                                     "id,WKT\n"
                                     "1,\"POINT (1 2)\"\n"
                                     "2,\n"
                                     "3,\"POINT (1 86)\"\n"
                                     "4,\"LINESTRING (0 80, 0 89)\"\n"
                                     "5,0101000000000000000000F87F000000000000F03F\n"
                                     "6,\"MULTIPOINT (1 2, 1 89)\"\n");
    const auto report = Read({path, "", ""}, kNormalisedArea);
    EXPECT_EQ(report.features, 6);
    EXPECT_EQ(report.withoutGeometry, 1);
    EXPECT_EQ(report.outside, 1);
    EXPECT_EQ(report.clipped, 2);
    EXPECT_EQ(report.notFinite, 1);
    EXPECT_EQ(report.Skipped(), 3);
    EXPECT_EQ(m_sink.pieces, (std::vector<std::string>{"point 1 2", "line 0 80, 0 85.0511", "point 1 2"}));
}

TEST_F(OgrSource, OtherCoordinateSystemsBecomeDegreesLongitudeFirst) {
    struct {
        const char *system;
        const char *point;
        double l, b, tolerance;
    } const cases[] = {
        {"urn:ogc:def:crs:EPSG::3857", "[12957264.0, 4852500.0]", 116.3979, 39.9074, 1e-3},
        {"urn:ogc:def:crs:EPSG::4490", "[116.39, 39.91]", 116.39, 39.91, 1e-6},
        {"urn:ogc:def:crs:EPSG::27700", "[530000, 180000]", -0.1285, 51.5037, 1e-3},
    };
    for (const auto &c : cases) {
        m_sink.pieces.clear();
        const std::string crs = std::string(R"("crs":{"type":"name","properties":{"name":")") + c.system + R"("}},)";
        const std::string point = std::string(R"({"type":"Point","coordinates":)") + c.point + "}";
        Read({m_folder.Write("a.geojson", CollectionOf(FeatureOf(point), crs)), "", ""});
        ASSERT_EQ(m_sink.pieces.size(), 1U) << c.system;
        const Path path = PathOf(m_sink.pieces[0].substr(6));
        EXPECT_NEAR(path.front().l, c.l, c.tolerance) << c.system;
        EXPECT_NEAR(path.front().b, c.b, c.tolerance) << c.system;
    }
}

TEST_F(OgrSource, LayerAndFilterChoose) {
    const std::string path = m_folder.Write("a.topojson", R"({"type":"Topology","arcs":[],"objects":{
        "towns":{"type":"GeometryCollection","geometries":[
            {"type":"Point","coordinates":[1,1],"properties":{"n":1}},
            {"type":"Point","coordinates":[2,2],"properties":{"n":2}}]},
        "wells":{"type":"GeometryCollection","geometries":[
            {"type":"Point","coordinates":[3,3],"properties":{"n":3}}]}}})");
    Read({path, "", ""});
    EXPECT_EQ(m_sink.pieces.size(), 3U);
    m_sink.pieces.clear();
    Read({path, "wells", ""});
    EXPECT_EQ(m_sink.pieces, std::vector<std::string>{"point 3 3"});
    m_sink.pieces.clear();
    Read({path, "towns", "n > 1"});
    EXPECT_EQ(m_sink.pieces, std::vector<std::string>{"point 2 2"});
    EXPECT_EQ(ErrorOf({path, "roads", ""}), "no layer 'roads' in '" + path + "', which has towns, wells");
    EXPECT_NE(ErrorOf({path, "towns", "n >"}).find("bad filter 'n >' for layer 'towns'"), std::string::npos);
}

TEST_F(OgrSource, WhatCannotBeReadSaysWhyInOneLine) {
    const std::string whole = CollectionOf(FeatureOf(R"({"type":"Point","coordinates":[1,2]})"));
    std::filesystem::create_symlink("loop.geojson", m_folder.Path("loop.geojson"));
    struct {
        std::string path;
        const char *part;
    } const cases[] = {
        {m_folder.Path("missing.geojson"), "no such file or directory"},
        {m_folder.Path("loop.geojson"), "symbolic links"},
        {m_folder.Write("empty.geojson", ""), "the file is empty"},
        {m_folder.Write("cut.geojson", whole.substr(0, whole.size() / 2)), "cannot read"},
        {m_folder.Write("picture.png", "\x89PNG\r\n\x1a\n"), "cannot read"},
        {m_folder.Path(""), "no map data"},
    };
    for (const auto &c : cases) {
        const std::string text = ErrorOf({c.path, "", ""});
        EXPECT_NE(text.find(c.part), std::string::npos) << c.path << ": " << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
}

// A shapefile whose geometry ends in the middle opens well and fails at some record.
TEST_F(OgrSource, AFileThatEndsInTheMiddleIsAnErrorAndNotAShorterLayer) {
    const std::string geojson = m_folder.Write(
        "a.geojson", CollectionOf(FeatureOf(R"({"type":"LineString","coordinates":[[0,0],[1,1],[2,2]]})") + "," +
                                  FeatureOf(R"({"type":"LineString","coordinates":[[0,0],[1,1],[2,2]]})")));
    GDALDatasetH source = GDALOpenEx(geojson.c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr);
    GDALDatasetH copy = GDALCreateCopy(GDALGetDriverByName("ESRI Shapefile"), m_folder.Path("a.shp").c_str(), source,
                                       FALSE, nullptr, nullptr, nullptr);
    ASSERT_NE(copy, nullptr);
    GDALClose(copy);
    GDALClose(source);
    Read({m_folder.Path("a.shp"), "", ""});
    EXPECT_EQ(m_sink.pieces.size(), 2U);
    m_folder.Write("a.shp", m_folder.Read("a.shp").substr(0, 200));
    EXPECT_NE(ErrorOf({m_folder.Path("a.shp"), "", ""}).find("to its end"), std::string::npos);
}

TEST_F(OgrSource, TheCallbackStopsTheRun) {
    const auto path = m_folder.Write("a.geojson", CollectionOf(FeatureOf(R"({"type":"Point","coordinates":[1,2]})")));
    EXPECT_THROW(ReadSource({path, "", ""}, kDegreeArea, m_sink, [](const Progress &) { return false; }), Interrupted);
    EXPECT_TRUE(m_sink.pieces.empty());
}

}  // namespace
