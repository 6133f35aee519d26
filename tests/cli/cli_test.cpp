#include <cpl_json.h>
#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "tests/cli/command_run.h"
#include "tests/host/scratch_folder.h"

namespace {

// A square area round the origin; `half` is half its side in degrees, as text.
std::string SquareOf(const std::string &half) {
    const std::string less = "-" + half;
    const auto corner = [](const std::string &l, const std::string &b) { return "[" + l + "," + b + "]"; };
    return R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{},
        "geometry":{"type":"Polygon","coordinates":[[)" +
           corner(less, less) + "," + corner(half, less) + "," + corner(half, half) + "," + corner(less, half) + "," +
           corner(less, less) + "]]}}]}";
}

class Cli : public ::testing::Test {
  protected:
    Cli() : m_square(m_in.Write("square.geojson", SquareOf("10"))) { setenv("KTL_HOME", m_home.Path("").c_str(), 1); }
    static void SetUpTestSuite() { GDALAllRegister(); }

    CommandResult Run(const std::vector<std::string> &arguments) { return RunCommand(KTL_COMMAND, arguments); }
    CommandResult Render(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "render");
        return Run(arguments);
    }
    std::string Out(const std::string &name) { return m_out.Path(name); }
    static bool IsOneLine(const std::string &text) {
        return !text.empty() && std::count(text.begin(), text.end(), '\n') == 1 && text.back() == '\n';
    }

    ScratchFolder m_in;
    ScratchFolder m_out;
    ScratchFolder m_home;
    const std::string m_square;
};

using Picture = GDALDatasetUniquePtr;

Picture OpenPicture(const std::string &path) {
    return Picture(GDALDataset::Open(path.c_str(), GDAL_OF_RASTER, nullptr, nullptr, nullptr));
}

// Red, green and blue of a pixel as 0xRRGGBB.
unsigned PixelAt(GDALDataset &picture, int x, int y) {
    unsigned rgb = 0;
    for (int band = 1; band <= 3; ++band) {
        unsigned char value = 0;
        EXPECT_EQ(picture.GetRasterBand(band)->RasterIO(GF_Read, x, y, 1, 1, &value, 1, 1, GDT_Byte, 0, 0), CE_None);
        rgb = rgb << 8 | value;
    }
    return rgb;
}

std::pair<double, double> InDegrees(const OGRSpatialReference &from, double x, double y) {
    OGRSpatialReference source(from);
    source.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRSpatialReference degrees;
    degrees.SetWellKnownGeogCS("WGS84");
    degrees.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRCoordinateTransformation *transform = OGRCreateCoordinateTransformation(&source, &degrees);
    EXPECT_TRUE(transform != nullptr && transform->Transform(1, &x, &y));
    OGRCoordinateTransformation::DestroyCT(transform);
    return {x, y};
}

TEST_F(Cli, ABadCommandLineIsOneLineAndStatusTwo) {
    struct {
        std::vector<std::string> arguments;
        const char *part;
    } const cases[] = {
        {{}, "no command"},
        {{"paint"}, "unknown command 'paint'"},
        {{"--paint"}, "--paint"},
        {{"render"}, "no SOURCE given"},
        {{"render", "--bogus"}, "--bogus"},
        {{"render", "a.geojson"}, "-o FILE"},
        {{"render", "a.geojson", "-o", "a.png", "--bogus"}, "--bogus"},
        {{"render", "a.geojson", "-o", "a.png", "--size"}, "--size"},
        {{"render", "a.geojson", "-o", "a.png", "--size", "100"}, "--size takes WxH"},
        {{"render", "a.geojson", "-o", "a.png", "--size", "10x10x10"}, "--size takes WxH"},
        {{"render", "a.geojson", "-o", "a.png", "--size", "1e3x10"}, "--size takes WxH"},
        {{"render", "a.geojson", "-o", "a.png", "--extent", "1,2,3"}, "--extent takes W,S,E,N"},
        {{"render", "a.geojson", "-o", "a.png", "--extent", "1,2,3,x"}, "--extent takes W,S,E,N"},
        {{"render", "a.geojson", "-o", "a.png", "--center", "1,2"}, "--center and --level go together"},
        {{"render", "a.geojson", "-o", "a.png", "--level", "2"}, "--center and --level go together"},
        {{"render", "a.geojson", "-o", "a.png", "--level", "2.5", "--center", "1,2"}, "--level takes"},
        {{"render", "a.geojson", "-o", "a.png", "--extent", "1,2,3,4", "--center", "1,2"}, "excludes"},
        {{"render", "a.geojson", "-o", "a.png", "--fill", "blurple"}, "--fill takes a colour"},
        {{"render", "a.geojson", "-o", "a.png", "--fill", "#12345"}, "--fill takes a colour"},
        {{"render", "a.geojson", "-o", "a.png", "--line-width", "0"}, "--line-width takes"},
        {{"render", "a.geojson", "-o", "a.png", "--point-size", "65"}, "--point-size takes"},
        {{"render", "a.geojson", "-o", "a.png", "--alpha", "256"}, "--alpha takes"},
        {{"render", "a.geojson", "-o", "a.png", "--hatch", "53"}, "--hatch takes"},
        {{"render", "a.geojson", "-o", "a.png", "--dash", "6"}, "--dash takes"},
        {{"render", "a.geojson", "-o", "a.png", "--dash", "6,0"}, "--dash takes"},
        {{"render", "a.geojson", "-o", "a.png", "--line-style", "wavy"}, "--line-style takes"},
        {{"render", "a.geojson", "-o", "a.png", "--background", "none"}, "--background takes"},
        {{"render", "a.geojson", "-o", "a.png", "--map-type", "x"}, "--map-type takes"},
    };
    for (const auto &c : cases) {
        const CommandResult result = Run(c.arguments);
        EXPECT_EQ(result.status, 2) << c.part;
        EXPECT_TRUE(IsOneLine(result.err)) << result.err;
        EXPECT_NE(result.err.find(c.part), std::string::npos) << c.part << " in: " << result.err;
        EXPECT_EQ(result.out, "") << c.part;
    }
}

TEST_F(Cli, WhatCannotBeDrawnIsOneLineStatusOneAndNoFile) {
    const std::string png = Out("a.png");
    const std::string truncated = m_in.Write("cut.geojson", SquareOf("10").substr(0, 120));
    const std::string empty = m_in.Write("empty.geojson", "");
    const std::string nothing = m_in.Write("nothing.geojson", R"({"type":"FeatureCollection","features":[]})");
    const std::string wrong = m_in.Write("wrong.shp", "this is no shapefile");
    std::filesystem::create_directory(m_in.Path("folder"));
    const std::string symbol = m_in.Write("symbol.png", "no picture");
    struct {
        std::vector<std::string> arguments;
        const char *part;
    } const cases[] = {
        {{m_in.Path("missing.shp"), "-o", png}, "no such file"},
        {{m_in.Path("two\nlines"), "-o", png}, "no such file"},
        {{empty, "-o", png}, "empty"},
        {{truncated, "-o", png}, "cannot read"},
        {{wrong, "-o", png}, "cannot read"},
        {{m_square, wrong, "-o", png}, "cannot read"},
        {{m_in.Path("folder"), "-o", png}, "no map data"},
        {{nothing, "-o", png}, "nothing to show"},
        {{m_square, "--layer", "x", "-o", png}, "no layer 'x'"},
        {{m_square, "--where", "x = ", "-o", png}, "bad filter"},
        {{m_square, "--symbol", symbol, "-o", png}, "symbol"},
        {{m_square, "--symbol", m_in.Path("none.png"), "-o", png}, "no such file"},
        {{m_square, "-o", Out("a.webp")}, "extension"},
        {{m_square, "-o", Out("a")}, "extension"},
        {{m_square, "-o", Out("no/such/a.png")}, "no directory"},
        {{m_square, "-o", png, "--size", "0x100"}, "bad size"},
        {{m_square, "-o", png, "--size", "100x0"}, "bad size"},
        {{m_square, "-o", png, "--size", "-5x100"}, "bad size"},
        {{m_square, "-o", png, "--size", "100000x100000"}, "bad size"},
        {{m_square, "-o", png, "--size", "100000x1"}, "bad size"},
        {{m_square, "-o", png, "--size", "10000x10000"}, "megapixels"},
        {{m_square, "-o", png, "--extent", "nan,0,1,1"}, "finite"},
        {{m_square, "-o", png, "--extent", "-inf,0,inf,1"}, "finite"},
        {{m_square, "-o", png, "--extent", "5,0,5,1"}, "west must be less"},
        {{m_square, "-o", png, "--extent", "5,0,4,1"}, "west must be less"},
        {{m_square, "-o", png, "--extent", "0,1,1,1"}, "south must be less"},
        {{m_square, "-o", png, "--extent", "0,2,1,1"}, "south must be less"},
        {{m_square, "-o", png, "--extent", "0,0,181,1"}, "longitudes"},
        {{m_square, "-o", png, "--extent", "0,-91,1,1"}, "latitudes"},
        {{m_square, "-o", png, "--extent", "0,86,1,89"}, "outside the map"},
        {{m_square, "-o", png, "--center", "nan,0", "--level", "3"}, "finite"},
        {{m_square, "-o", png, "--center", "0,88", "--level", "3"}, "outside the map"},
        {{m_square, "-o", png, "--center", "0,0", "--level", "0"}, "levels run"},
        {{m_square, "-o", png, "--center", "0,0", "--level", "23"}, "levels run"},
    };
    for (const auto &c : cases) {
        const CommandResult result = Render(c.arguments);
        EXPECT_EQ(result.status, 1) << c.part << ": " << result.err;
        EXPECT_TRUE(IsOneLine(result.err)) << result.err;
        EXPECT_NE(result.err.find(c.part), std::string::npos) << c.part << " in: " << result.err;
        EXPECT_EQ(m_out.Count(), 0) << c.part;
    }
}

TEST_F(Cli, AFailureLeavesThePictureThatWasThere) {
    m_out.Write("a.png", "old");
    EXPECT_EQ(Render({m_in.Path("missing.shp"), "-o", Out("a.png")}).status, 1);
    EXPECT_EQ(m_out.Read("a.png"), "old");
    // A side file that can't be written keeps the picture from changing too.
    std::filesystem::create_directory(Out("a.pgw"));
    EXPECT_EQ(Render({m_square, "--georef", "-o", Out("a.png")}).status, 1);
    EXPECT_EQ(m_out.Read("a.png"), "old");
    EXPECT_EQ(m_out.Count(), 2);
}

struct FormatCase {
    const char *picture;
    const char *worldFile;
    const char *driver;
};
constexpr FormatCase kFormats[] = {
    {"a.png", "a.pgw", "PNG"},   {"a.jpg", "a.jgw", "JPEG"},   {"a.jpeg", "a.jgw", "JPEG"}, {"A.JPG", "A.jgw", "JPEG"},
    {"a.tif", "a.tfw", "GTiff"}, {"a.tiff", "a.tfw", "GTiff"}, {"a.gif", "a.gfw", "GIF"},   {"a.bmp", "a.bpw", "BMP"},
};

// What GDAL reads from the files is what the command printed, within a pixel.
TEST_F(Cli, GdalFindsEveryPictureWhereTheReportSays) {
    for (const FormatCase &format : kFormats) {
        for (const bool degrees : {false, true}) {
            const ScratchFolder folder;
            std::vector<std::string> arguments = {m_square,   "-o",       folder.Path(format.picture),
                                                  "--georef", "--json",   "--size",
                                                  "500x400",  "--extent", "100,15,150,50"};
            if (degrees) arguments.push_back("--degrees");
            const CommandResult result = Render(arguments);
            ASSERT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.err, "") << "no progress in a pipe";
            CPLJSONDocument report;
            ASSERT_TRUE(report.LoadMemory(result.out)) << result.out;
            const CPLJSONObject root = report.GetRoot();
            const bool metres = !degrees;
            const CPLJSONObject extent = root.GetObj(metres ? "projectedExtent" : "extent");
            const double left = extent.GetDouble(metres ? "left" : "west");
            const double bottom = extent.GetDouble(metres ? "bottom" : "south");
            const double right = extent.GetDouble(metres ? "right" : "east");
            const double top = extent.GetDouble(metres ? "top" : "north");

            const Picture picture = OpenPicture(folder.Path(format.picture));
            ASSERT_NE(picture, nullptr) << format.picture;
            EXPECT_STREQ(picture->GetDriverName(), format.driver);
            EXPECT_EQ(picture->GetRasterXSize(), 500);
            EXPECT_EQ(picture->GetRasterYSize(), 400);
            double t[6] = {};
            ASSERT_EQ(picture->GetGeoTransform(t), CE_None) << format.picture;
            EXPECT_NEAR(t[0], left, t[1]) << format.picture;
            EXPECT_NEAR(t[3], top, -t[5]) << format.picture;
            EXPECT_NEAR(t[0] + 500 * t[1], right, t[1]) << format.picture;
            EXPECT_NEAR(t[3] + 400 * t[5], bottom, -t[5]) << format.picture;
            const OGRSpatialReference *system = picture->GetSpatialRef();
            ASSERT_NE(system, nullptr) << format.picture;
            EXPECT_EQ(system->IsProjected() != 0, metres) << format.picture;
            // The coordinate system says the same in degrees.
            const CPLJSONObject shown = root.GetObj("extent");
            const double pixel = (shown.GetDouble("east") - shown.GetDouble("west")) / 500;
            const auto [west, north] = InDegrees(*system, t[0], t[3]);
            EXPECT_NEAR(west, shown.GetDouble("west"), pixel) << format.picture;
            EXPECT_NEAR(north, shown.GetDouble("north"), pixel) << format.picture;

            EXPECT_EQ(root.GetArray("files").Size(), 4);
            EXPECT_TRUE(std::filesystem::exists(folder.Path(format.worldFile))) << format.worldFile;
            EXPECT_TRUE(std::filesystem::exists(folder.Path(format.picture) + ".aux.xml"));
            EXPECT_EQ(folder.Count(), 4) << "nothing else is left";
        }
    }
}

TEST_F(Cli, AStyleOptionAppliesToTheSourceBeforeIt) {
    const std::string inner = m_in.Write("inner.geojson", SquareOf("5"));
    // The default stands before all; the outer square keeps it, the inner one sets its own.
    const CommandResult result =
        Render({"--fill", "lime", "--line", "none", m_square, inner, "--fill", "#00F", "-o", Out("a.png"), "--size",
                "256x256", "--extent", "-20,-20,20,20", "--background", "yellow"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Picture picture = OpenPicture(Out("a.png"));
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(PixelAt(*picture, 128, 128), 0x0000FFU);
    // Level 4: 2048 pixels round the world, so 7 degrees are some 40 pixels.
    EXPECT_EQ(PixelAt(*picture, 128 + 40, 128), 0x00FF00U);
    EXPECT_EQ(PixelAt(*picture, 128 + 80, 128), 0xFFFF00U);
}

TEST_F(Cli, ASymbolStandsOnItsPoint) {
    const std::string symbol = m_in.Path("symbol.png");
    ASSERT_EQ(Render({m_square, "-o", symbol, "--size", "20x20", "--fill", "blue", "--line", "none", "--background",
                      "lime", "--center", "0,0", "--level", "1"})
                  .status,
              0);
    const std::string point = m_in.Write("a.csv", "id,WKT\n1,\"POINT (0 0)\"\n");
    ASSERT_EQ(
        Render({point, "--symbol", symbol, "-o", Out("a.png"), "--size", "100x100", "--center", "0,0", "--level", "5"})
            .status,
        0);
    const Picture picture = OpenPicture(Out("a.png"));
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(PixelAt(*picture, 50, 50), 0x0000FFU) << "the symbol's middle";
    EXPECT_EQ(PixelAt(*picture, 41, 41), 0x00FF00U) << "the symbol's corner";
    EXPECT_EQ(PixelAt(*picture, 35, 50), 0xFFFFFFU) << "beside the symbol";
}

// The signal must arrive while the run lasts, however fast the machine is: each try waits longer.
TEST_F(Cli, AStoppedRunSaysSoAndLeavesNothing) {
    std::string points = "id,WKT\n";
    for (int i = 0; i < 60000; ++i) points += std::to_string(i) + ",\"POINT (" + std::to_string(i % 170) + " 1)\"\n";
    const std::string source = m_in.Write("points.csv", points);
    for (const char *const signal : {"INT", "TERM"}) {
        CommandResult result;
        for (double seconds = 0.02; seconds < 20 && result.err.empty(); seconds *= 1.3) {
            result = RunCommand("/usr/bin/timeout", {"--preserve-status", "-s", signal, std::to_string(seconds),
                                                     KTL_COMMAND, "render", source, "-o", Out("a.png"), "--georef"});
            if (result.status == 0) break;
        }
        EXPECT_EQ(result.status, 130) << signal;
        EXPECT_EQ(result.err, "ktl render: interrupted\n") << signal;
        EXPECT_EQ(m_out.Count(), 0) << signal;
    }
}

TEST_F(Cli, NamesOutsideGbkAreKept) {
    const std::string name = "карта-ñ-誠-🗺";
    const std::string source = m_in.Write(name + ".geojson", SquareOf("10"));
    const CommandResult result = Render({source, "-o", Out(name + ".png"), "--georef", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    for (const char *end : {".png", ".pgw", ".png.aux.xml", ".txt"}) {
        EXPECT_TRUE(std::filesystem::exists(Out(name + end))) << end;
    }
    EXPECT_NE(result.out.find(name + ".pgw"), std::string::npos) << "the report is UTF-8";
}

TEST_F(Cli, TheReportCountsWhatWasSkippedAndWhy) {
    const std::string path = m_in.Write("a.csv",
                                        "id,WKT\n1,\"POINT (1 2)\"\n2,\n3,\"POINT (1 86)\"\n"
                                        "4,\"LINESTRING (0 80, 0 89)\"\n");
    const CommandResult json = Render({path, "-o", Out("a.png"), "--json"});
    CPLJSONDocument report;
    ASSERT_TRUE(report.LoadMemory(json.out)) << json.out << json.err;
    const CPLJSONObject features = report.GetRoot().GetObj("features");
    EXPECT_EQ(features.GetInteger("read"), 4);
    EXPECT_EQ(features.GetInteger("clipped"), 1);
    EXPECT_EQ(features.GetObj("skipped").GetInteger("withoutGeometry"), 1);
    EXPECT_EQ(features.GetObj("skipped").GetInteger("outsideMap"), 1);
    EXPECT_EQ(report.GetRoot().GetInteger("shapesDrawn"), 2);
    const CommandResult text = Render({path, "-o", Out("a.png")});
    EXPECT_NE(text.out.find("4 read, 2 skipped (1 without geometry, 1 outside the map), 1 clipped"), std::string::npos)
        << text.out;
}

// The user-defined map types take their pyramid from the configuration file, whatever else stands in it.
TEST_F(Cli, AConfigurationFileWithEndlessLinesIsReadThrough) {
    const std::string junk(10000, 'x');
    const std::string ini = junk + "\n[" + junk + "]\nmapdef1_wgs=0\n[qx]\n" + junk + "=" + junk + "\nmapdef1_wgs=1\n" +
                            "mapdef2_wgs=" + junk + "\n";
    m_home.Write("Kartelo.ini", ini);
    for (const auto &[type, map] : {std::pair("601", "degrees"), {"602", "normalised"}, {"603", "normalised"}}) {
        const CommandResult result = Render({m_square, "-o", Out("a.png"), "--map-type", type, "--json"});
        ASSERT_EQ(result.status, 0) << type << ": " << result.err;
        CPLJSONDocument report;
        ASSERT_TRUE(report.LoadMemory(result.out));
        EXPECT_EQ(report.GetRoot().GetString("map"), map) << type;
    }
}

std::set<std::string> LongOptionsIn(const std::string &text) {
    std::set<std::string> options;
    for (std::size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at + 2)) {
        const std::size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
        if (end > at + 2) options.insert(text.substr(at, end - at));
    }
    return options;
}

TEST_F(Cli, HelpManualAndParserKnowTheSameOptions) {
    const CommandResult help = Render({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *section : {"NAME\n", "SYNOPSIS\n", "DESCRIPTION\n", "OPTIONS\n", "EXAMPLES\n", "EXIT STATUS\n"}) {
        EXPECT_NE(help.out.find(section), std::string::npos) << section;
    }
    const std::set<std::string> told = LongOptionsIn(help.out);
    EXPECT_GT(told.size(), 25U);
    std::string manual = ScratchFolder().Read(std::string(KTL_SOURCE_DIR) + "/docs/man/ktl.1");
    std::erase(manual, '\\');
    std::set<std::string> inManual = LongOptionsIn(manual);
    inManual.erase("--version");
    std::set<std::string> toldByAny = told;
    toldByAny.merge(LongOptionsIn(Run({"table", "--help"}).out));
    EXPECT_EQ(inManual, toldByAny);
    for (const std::string &option : told) {
        if (option == "--help") continue;
        const CommandResult result = Render({option});
        EXPECT_EQ(result.err.find("not expected"), std::string::npos) << option << ": " << result.err;
        EXPECT_EQ(result.status, 2) << option;
    }
}

TEST_F(Cli, VersionAndHelpAreNoFailures) {
    const CommandResult version = Run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.out.starts_with("ktl ") && IsOneLine(version.out)) << version.out;
    EXPECT_EQ(Run({"--help"}).status, 0);
}

}  // namespace
