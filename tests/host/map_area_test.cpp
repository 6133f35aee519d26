#include "host/map_area.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/host/geometry_text.h"

namespace {

using ktl::host::Cut;
using ktl::host::kDegreeArea;
using ktl::host::kNormalisedArea;
using ktl::host::MapArea;
using ktl::host::Path;

struct CutCase {
    const char *name;
    const char *path;
    Cut cut;
    const char *pieces;
};

constexpr MapArea kBelow60 = {-60.0, 60.0};

TEST(MapArea, LinesAreCutAtTheEdgesAndTheDateLine) {
    const CutCase cases[] = {
        {"inside", "0 0, 10 10", Cut::kWhole, "0 0, 10 10"},
        {"on the edge", "-180 60, 180 -60", Cut::kWhole, "-180 60, 180 -60"},
        {"out and in again", "0 50, 0 70, 10 70, 10 50", Cut::kClipped, "0 50, 0 60 | 10 60, 10 50"},
        {"through the whole area", "0 -80, 0 80", Cut::kClipped, "0 -60, 0 60"},
        {"all beyond", "0 70, 10 80", Cut::kOutside, ""},
        {"touching the edge from outside", "0 70, 5 60, 10 70", Cut::kOutside, ""},
        {"short over the date line", "179 0, -179 2", Cut::kWhole, "179 0, 180 1 | -180 1, -179 2"},
        {"short over it the other way", "-179 0, 179 2", Cut::kWhole, "180 1, 179 2 | -179 0, -180 1"},
        {"over it and back", "179 0, -179 2, 179 4", Cut::kWhole,
         "179 0, 180 1 | 180 3, 179 4 | -180 1, -179 2, -180 3"},
        {"0 to 360", "170 0, 190 0", Cut::kWhole, "170 0, 180 0 | -180 0, -170 0"},
        {"0 to 360, all west", "190 0, 200 0", Cut::kWhole, "-170 0, -160 0"},
        {"long on the flat map", "-170 10, 170 10", Cut::kWhole, "-170 10, 170 10"},
        {"along the date line", "180 0, 180 10", Cut::kWhole, "180 0, 180 10"},
        {"metres taken for degrees", "100000 0, 200000 10", Cut::kOutside, ""},
        {"one end far off", "170 0, 1000 0", Cut::kClipped, "170 0, 180 0"},
        {"one point", "5 5", Cut::kOutside, ""},
        {"two equal points", "5 5, 5 5", Cut::kWhole, "5 5, 5 5"},
    };
    for (const CutCase &c : cases) {
        std::vector<Path> pieces;
        EXPECT_EQ(CutLine(PathOf(c.path), kBelow60, pieces), c.cut) << c.name;
        EXPECT_EQ(TextOf(pieces), c.pieces) << c.name;
    }
}

TEST(MapArea, RingsAreCutAtTheEdgesAndTheDateLine) {
    const CutCase cases[] = {
        {"inside and closed", "0 0, 10 0, 10 10, 0 0", Cut::kWhole, "0 0, 10 0, 10 10, 0 0"},
        {"left open", "0 0, 10 0, 10 10", Cut::kWhole, "0 0, 10 0, 10 10, 0 0"},
        {"over the north edge", "0 50, 10 50, 10 70, 0 70, 0 50", Cut::kClipped, "0 60, 0 50, 10 50, 10 60, 0 60"},
        {"all beyond", "0 70, 10 70, 10 80, 0 70", Cut::kOutside, ""},
        {"touching the edge from outside", "0 60, 10 60, 10 80, 0 60", Cut::kOutside, ""},
        {"over the date line", "176 0, -177 0, -177 10, 176 10, 176 0", Cut::kWhole,
         "176 0, 180 0, 180 10, 176 10, 176 0 | -180 0, -177 0, -177 10, -180 10, -180 0"},
        {"0 to 360", "170 0, 190 0, 190 10, 170 10, 170 0", Cut::kWhole,
         "170 0, 180 0, 180 10, 170 10, 170 0 | -180 0, -170 0, -170 10, -180 10, -180 0"},
        {"the world's box", "-180 -50, 180 -50, 180 50, -180 50, -180 -50", Cut::kWhole,
         "-180 -50, 180 -50, 180 50, -180 50, -180 -50"},
        {"a wide box of four corners", "-170 0, 170 0, 170 10, -170 10, -170 0", Cut::kWhole,
         "-170 0, 170 0, 170 10, -170 10, -170 0"},
        {"two points", "0 0, 10 0", Cut::kOutside, ""},
    };
    for (const CutCase &c : cases) {
        std::vector<Path> pieces;
        EXPECT_EQ(CutRing(PathOf(c.path), kBelow60, pieces), c.cut) << c.name;
        EXPECT_EQ(TextOf(pieces), c.pieces) << c.name;
    }
}

bool IsInside(const std::vector<Path> &rings, double l, double b) {
    bool inside = false;
    for (const Path &ring : rings) {
        for (std::size_t i = 1; i < ring.size(); ++i) {
            const auto &p = ring[i - 1];
            const auto &q = ring[i];
            if ((p.b > b) == (q.b > b)) continue;
            if (p.l + (q.l - p.l) * (b - p.b) / (q.b - p.b) > l) inside = !inside;
        }
    }
    return inside;
}

// A coast round the south pole in both forms that occur: with its way along the map's edge, and as a closed walk round
// the globe that jumps at the date line.
TEST(MapArea, ARingRoundThePoleCoversThePole) {
    const char *const flat = "-180 -90, 180 -90, 180 -70, 90 -65, 0 -70, -90 -75, -180 -70, -180 -90";
    const char *const walk = "179 -70, 90 -65, 0 -70, -90 -75, -179 -70, 179 -70";
    for (const char *text : {flat, walk}) {
        for (const MapArea &area : {kDegreeArea, kNormalisedArea}) {
            std::vector<Path> pieces;
            const Cut cut = CutRing(PathOf(text), area, pieces);
            EXPECT_EQ(cut, area.south > -90.0 ? Cut::kClipped : Cut::kWhole) << text;
            const double nearPole = std::max(area.south, -90.0) + 0.5;
            for (double l = -179.5; l < 180.0; l += 7.0) {
                EXPECT_TRUE(IsInside(pieces, l, nearPole)) << text << " at " << l;
                EXPECT_TRUE(IsInside(pieces, l, -78.0)) << text << " at " << l;
                EXPECT_FALSE(IsInside(pieces, l, -60.0)) << text << " at " << l;
            }
            for (const Path &piece : pieces) {
                for (const auto &p : piece) EXPECT_TRUE(area.Contains(p)) << text << " at " << p.l << " " << p.b;
            }
        }
    }
}

TEST(MapArea, PointsWrapOnceAndNoFurther) {
    struct {
        double l, b;
        Cut cut;
        double wrapped;
    } const cases[] = {
        {180.0, 0.0, Cut::kWhole, 180.0},   {190.0, 0.0, Cut::kWhole, -170.0}, {-190.0, 60.0, Cut::kWhole, 170.0},
        {0.0, 60.0001, Cut::kOutside, 0.0}, {541.0, 0.0, Cut::kOutside, 0.0},  {0.0, -90.0, Cut::kOutside, 0.0},
    };
    for (const auto &c : cases) {
        Path out;
        EXPECT_EQ(CutPoint({c.l, c.b}, kBelow60, out), c.cut) << c.l << " " << c.b;
        ASSERT_EQ(out.size(), c.cut == Cut::kWhole ? 1U : 0U);
        EXPECT_TRUE(out.empty() || out.front().l == c.wrapped) << c.l;
    }
}

}  // namespace
