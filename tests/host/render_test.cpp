#include "host/render.h"

#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "host/error.h"
#include "host/render_window.h"
#include "host/runtime.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "tests/host/scratch_folder.h"

namespace {

using namespace ktl::host;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);

class RenderTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { GDALAllRegister(); }

    ScratchFolder m_folder;
    Runtime m_runtime{m_folder.Path("home")};
};

COLORREF PixelAt(RenderWindow &window, double l, double b, WorldUnits units) {
    const CPointD world = WorldFromDegrees(LonLat{l, b}, units);
    const CPoint pixel = window.World2Client(world);
    Gdiplus::Color color;
    EXPECT_EQ(window.GetPicture()->GetPixel(pixel.x, pixel.y, &color), Gdiplus::Ok) << l << " " << b;
    return RGB(color.GetR(), color.GetG(), color.GetB());
}

Style FlatStyle() {
    Style style;
    style.fill = kRed;
    style.line = kBlue;
    style.point = kGreen;
    style.pointLine.reset();
    style.pointSize = 9;
    return style;
}

Path Square(double west, double south, double east, double north) {
    return {{west, south}, {east, south}, {east, north}, {west, north}, {west, south}};
}

TEST_F(RenderTest, HolesStayOpenAndBridgesUnseen) {
    for (const bool smooth : {false, true}) {
        ShapeSet shapes(FlatStyle(), WorldUnits::kDegrees);
        shapes.AddArea({Square(-60, -60, 60, 60), Square(-10, -10, 10, 10), Square(20, 20, 40, 41)});
        shapes.BuildIndex();
        RenderWindow window(WorldUnits::kDegrees, ENUM_MAP_TYPE(101), kWhite);
        window.SetSmooth(smooth);
        window.AddShapes(shapes);
        window.SetPictureSize(512, 512);
        window.ShowExtent(shapes.GetExtent());
        window.Paint();
        EXPECT_EQ(window.GetShapesDrawn(), 1);
        const auto at = [&](double l, double b) { return PixelAt(window, l, b, WorldUnits::kDegrees); };
        EXPECT_EQ(at(0, 0), kWhite) << "in the first hole";
        EXPECT_EQ(at(30, 30), kWhite) << "in the second hole";
        EXPECT_EQ(at(15, 15), kRed) << "between the holes";
        EXPECT_EQ(at(-90, 0), kWhite) << "outside";
        for (double share = 0.1; share < 0.95; share += 0.1) {
            EXPECT_EQ(at(-60 + 50 * share, -60 + 50 * share), kRed) << "on the bridge at " << share;
        }
        if (smooth) continue;
        EXPECT_EQ(at(-60, 0), kBlue) << "the outer outline";
        EXPECT_EQ(at(-10, 0), kBlue) << "the first hole's outline";
        EXPECT_EQ(at(30, 20), kBlue) << "the second hole's outline";
    }
}

TEST_F(RenderTest, AreasLieUnderLinesUnderPointsWhateverTheirOrder) {
    ShapeSet shapes(FlatStyle(), WorldUnits::kNormalised);
    shapes.AddPoint({0, 0});
    shapes.AddLine({{-50, 20}, {50, 20}});
    shapes.AddArea({Square(-60, -60, 60, 60)});
    shapes.BuildIndex();
    RenderWindow window(WorldUnits::kNormalised, ENUM_MAP_TYPE(0), kWhite);
    window.AddShapes(shapes);
    window.SetPictureSize(512, 512);
    window.ShowExtent(shapes.GetExtent());
    window.Paint();
    EXPECT_EQ(PixelAt(window, 0, 0, WorldUnits::kNormalised), kGreen);
    EXPECT_EQ(PixelAt(window, 30, 20, WorldUnits::kNormalised), kBlue);
    EXPECT_EQ(PixelAt(window, 30, 30, WorldUnits::kNormalised), kRed);
}

TEST_F(RenderTest, WhatReachesIntoThePictureIsDrawnAndWhatDoesNotIsNotCounted) {
    ShapeSet shapes(FlatStyle(), WorldUnits::kDegrees);
    shapes.AddPoint({0, 0});
    shapes.AddPoint({90, 0});
    shapes.BuildIndex();
    RenderWindow window(WorldUnits::kDegrees, ENUM_MAP_TYPE(101), kWhite);
    window.AddShapes(shapes);
    window.SetPictureSize(100, 100);
    // The first point lies two pixels left of the picture, the other far off.
    window.ShowLevel(CPointD(52.0 * 360.0 / 2048.0, 0.0), 4);
    window.Paint();
    EXPECT_EQ(window.GetShapesDrawn(), 1);
    Gdiplus::Color color;
    window.GetPicture()->GetPixel(0, 50, &color);
    EXPECT_EQ(RGB(color.GetR(), color.GetG(), color.GetB()), kGreen);
}

struct ShowCase {
    double west, south, east, north;
    int width, height;
    int level;
};

TEST_F(RenderTest, AnExtentIsShownWholeAtTheDeepestLevelThatTakesIt) {
    const ShowCase cases[] = {
        {-180, -90, 180, 90, 2048, 1024, 4},      {-180, -90, 180, 90, 2047, 1024, 3},
        {-180, -90, 180, 90, 4000, 1023, 3},      {100, 15, 150, 50, 1600, 1200, 6},
        {116.3, 39.8, 116.5, 40.0, 300, 400, 12}, {0, 0, 1e-6, 1e-6, 800, 600, 22},
        {-180, -90, 180, 90, 256, 256, 1},
    };
    for (const ShowCase &c : cases) {
        RenderWindow window(WorldUnits::kDegrees, ENUM_MAP_TYPE(101), kWhite);
        window.SetPictureSize(c.width, c.height);
        window.ShowExtent(CExtent(c.west, c.south, c.east, c.north));
        const CExtent shown = window.GetCurDataExtent();
        const double slack = 1e-6 * (c.east - c.west);
        EXPECT_EQ(window.GetLevel(), c.level) << c.west << " at " << c.width;
        EXPECT_LE(shown.left, c.west + slack);
        EXPECT_GE(shown.right, c.east - slack);
        EXPECT_LE(shown.bottom, c.south + slack);
        EXPECT_GE(shown.top, c.north - slack);
        EXPECT_NEAR(window.GetRatio(), 256 * std::exp2(c.level - 1) / 360.0, 1e-6 * window.GetRatio());
    }
}

TEST_F(RenderTest, AWorldThatDoesNotFitIsDrawnWithSmallerTiles) {
    RenderWindow window(WorldUnits::kNormalised, ENUM_MAP_TYPE(0), kWhite);
    window.SetPictureSize(100, 60);
    window.ShowExtent(CExtent(-0.5, -0.5, 0.5, 0.5));
    EXPECT_EQ(window.GetLevel(), 1);
    EXPECT_NEAR(window.GetRatio(), 60.0, 1e-9);
    EXPECT_LE(window.GetCurDataExtent().bottom, -0.5 + 1e-9);
}

TEST_F(RenderTest, EveryLevelIsShownExactly) {
    for (const WorldUnits units : {WorldUnits::kNormalised, WorldUnits::kDegrees}) {
        const bool degrees = units == WorldUnits::kDegrees;
        for (int level = 1; level <= 22; ++level) {
            for (const auto &[width, height] : {std::pair(1024, 768), {333, 777}, {1, 1}}) {
                RenderWindow window(units, ENUM_MAP_TYPE(degrees ? 101 : 0), kWhite);
                window.SetPictureSize(width, height);
                window.ShowLevel(CPointD(0.1, 0.2), level);
                EXPECT_EQ(window.GetLevel(), level) << width;
                EXPECT_NEAR(window.GetCurDataExtent().CenterPoint().x, 0.1, 1e-12);
                EXPECT_NEAR(window.GetRatio() * (degrees ? 360.0 : 1.0) / 256 / std::exp2(level - 1), 1.0, 1e-9);
            }
        }
    }
}

// Rings of the example data run over the date line and round the south pole.
TEST_F(RenderTest, TheWorldIsDrawnWithoutStreaksAndWithAntarctica) {
    for (const WorldUnits units : {WorldUnits::kNormalised, WorldUnits::kDegrees}) {
        Style style = FlatStyle();
        style.line.reset();
        ShapeSet shapes(style, units);
        const SourceOptions source = {std::string(KTL_SOURCE_DIR) + "/examples/data/countries-50m.topojson",
                                      "countries", ""};
        const ReadReport report = ReadSource(source, AreaOf(units), shapes);
        shapes.BuildIndex();
        const bool degrees = units == WorldUnits::kDegrees;
        EXPECT_EQ(report.features, 241);
        EXPECT_EQ(report.Skipped(), 0);
        EXPECT_EQ(report.clipped, degrees ? 0 : 1) << "Antarctica alone reaches beyond the normalised map";
        RenderWindow window(units, ENUM_MAP_TYPE(degrees ? 101 : 0), kWhite);
        window.AddShapes(shapes);
        window.SetPictureSize(1024, 1024);
        window.ShowExtent(WorldFromDegrees(CExtent(-180, AreaOf(units).south, 180, AreaOf(units).north), units));
        window.Paint();
        struct {
            const char *name;
            double l, b;
            COLORREF color;
        } const probes[] = {
            {"China", 105, 35, kRed},
            {"Russia west of the date line", 170, 67, kRed},
            {"Chukotka east of it", -172, 66, kRed},
            {"Lesotho in South Africa", 28.3, -29.6, kRed},
            {"Antarctica", 20, -80, kRed},
            {"Antarctica in the west", -100, -82, kRed},
            {"Atlantic", -35, 35, kWhite},
            {"Atlantic at Fiji's latitude", -20, -16.5, kWhite},
            {"Greenland Sea", 0, 69.5, kWhite},
            {"Southern Ocean", -120, -60, kWhite},
        };
        for (const auto &probe : probes) EXPECT_EQ(PixelAt(window, probe.l, probe.b, units), probe.color) << probe.name;
        const double nearPole = AreaOf(units).south + 0.5;
        EXPECT_EQ(PixelAt(window, 100, nearPole, units), kRed) << "the south edge";
    }
}

TEST_F(RenderTest, StoppingWhileDrawingLeavesNothing) {
    std::string rows = "id,WKT\n";
    for (int i = 0; i < 3000; ++i) rows += std::to_string(i) + ",\"POINT (1 2)\"\n";
    RenderOptions options;
    options.sources = {{{m_folder.Write("a.csv", rows), "", ""}, Style()}};
    options.output = m_folder.Path("a.png");
    options.georeference = true;
    const int before = m_folder.Count();
    bool drawing = false;
    const auto stop = [&](const Progress &progress) {
        drawing = std::string(progress.what) == "drawing";
        return !drawing;
    };
    EXPECT_THROW(Render(options, stop), Interrupted);
    EXPECT_TRUE(drawing);
    EXPECT_EQ(m_folder.Count(), before);
}

TEST_F(RenderTest, LineStylesAndHatchesReachThePicture) {
    struct {
        const char *name;
        void (*set)(Style &);
        int colors;
    } const cases[] = {
        {"plain", [](Style &) {}, 2},
        {"wide", [](Style &s) { s.lineWidth = 7; }, 2},
        {"cased", [](Style &s) { SetLineStyleByName(s, "cased"), s.casing = kGreen, s.lineWidth = 5; }, 3},
        {"rail", [](Style &s) { SetLineStyleByName(s, "rail"), s.casing = kGreen, s.lineWidth = 5; }, 2},
        {"rail alone", [](Style &s) { SetLineStyleByName(s, "rail"), s.lineWidth = 5; }, 2},
        {"dashed", [](Style &s) { SetLineStyleByName(s, "dash"), s.casing = kGreen, s.lineWidth = 5; }, 3},
        {"no line", [](Style &s) { s.line.reset(); }, 1},
        {"half there", [](Style &s) { s.alpha = 128; }, 2},
    };
    for (const auto &c : cases) {
        Style style = FlatStyle();
        c.set(style);
        ShapeSet shapes(style, WorldUnits::kDegrees);
        shapes.AddLine({{-50, 0}, {50, 0}});
        shapes.BuildIndex();
        RenderWindow window(WorldUnits::kDegrees, ENUM_MAP_TYPE(101), kWhite);
        window.AddShapes(shapes);
        window.SetPictureSize(256, 64);
        window.ShowLevel(CPointD(0, 0), 1);
        window.Paint();
        std::set<unsigned> colors;
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 256; ++x) {
                Gdiplus::Color color;
                window.GetPicture()->GetPixel(x, y, &color);
                colors.insert(color.GetValue());
            }
        }
        EXPECT_EQ(static_cast<int>(colors.size()), c.colors) << c.name;
    }
    EXPECT_EQ(ParseHatch("cross"), 4);
    EXPECT_EQ(ParseHatch("SolidDiamond"), 52);
    EXPECT_EQ(ParseHatch("0"), 0);
    EXPECT_EQ(ParseHatch("-1"), std::nullopt);
    EXPECT_EQ(ParseHatch("53"), std::nullopt);
    EXPECT_EQ(HatchNames().size(), 53U);
}

}  // namespace
