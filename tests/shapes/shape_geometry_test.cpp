#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <tuple>

#include "ktl/shapes/shape_factory.h"
#include "ktl/shapes/shape_point.h"
#include "tests/shapes/shape_text.h"

namespace {

using ktl_test::Area;
using ktl_test::Box;
using ktl_test::Line;
using ktl_test::Make;
using ktl_test::Points;
using ktl_test::TextOf;

TEST(ShapeGeometry, SegmentsAndExtentsMeetAtEndsAndEdges) {
    EXPECT_EQ(CShape::Intersect(POINTD(0, 0), POINTD(1, 1), POINTD(1, 1), POINTD(2, 0)), 1);
    EXPECT_EQ(CShape::Intersect(POINTD(0, 0), POINTD(4, 4), POINTD(0, 1), POINTD(1, 4)), 0);
    const CExtent unit = Box(0, 0, 1, 1);
    for (const CExtent &e : {Box(1, 1, 2, 2), Box(-1, -1, 0, 0)}) EXPECT_EQ(CShape::Intersect(unit, e), 1);
    for (const CExtent &e : {Box(1.0001, 0, 2, 1), Box(0, -2, 1, -0.0001)}) EXPECT_EQ(CShape::Intersect(unit, e), 0);
}

TEST(ShapeGeometry, AnglesRunCounterClockwiseFromEast) {
    const CPointD around[] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
    for (int i = 0; i < 8; ++i) {
        EXPECT_NEAR(CShape::GetAngle(CPointD(5, 5), CPointD(5, 5) + around[i]), 45 * i, 1e-5) << i;
    }
    EXPECT_TRUE(std::isnan(CShape::GetAngle(3, 4, 3, 4)));
    // The sine keeps 24 bits.
    const auto sine = static_cast<float>(1.0 / static_cast<double>(std::sqrt(10.0F)));
    EXPECT_EQ(CShape::GetAngle(0, 0, 3, 1), std::asin(static_cast<double>(sine)) * 180.0 / 3.14159265358979);
}

TEST(ShapeGeometry, DistancesHaveSinglePrecision) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(-1e7, 1e7);
    for (int i = 0; i < 200; ++i) {
        const CPointD a(coordinate(random), coordinate(random));
        const CPointD b(coordinate(random), coordinate(random));
        const volatile float sum = static_cast<float>((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y));
        EXPECT_EQ(CShape::GetDisOfP2P(a, b), static_cast<double>(std::sqrt(static_cast<float>(sum))));
    }
}

TEST(ShapeGeometry, APointOnALeftOrBottomEdgeIsInside) {
    struct Case {
        double x, y;
        int inside;
    };
    const Case cases[] = {{2, 2, 1},  {0, 2, 1}, {2, 0, 1}, {4, 2, 0}, {2, 4, 0},
                          {-1, 2, 0}, {0, 0, 1}, {4, 4, 0}, {5, 5, 0}, {0, 4, 0}};
    for (const char *ring : {"0 0, 4 0, 4 4, 0 4", "0 0, 4 0, 4 4, 0 4, 0 0", "0 4, 4 4, 4 0, 0 0"}) {
        const CShape_Polygon square = Area(ring);
        for (const Case &c : cases) {
            EXPECT_EQ(square.PointInPolygon(c.x, c.y), c.inside) << ring << " at " << c.x << ' ' << c.y;
        }
    }
    const CShape_Polygon notched = Area("0 0, 6 0, 6 6, 3 2, 0 6");
    EXPECT_EQ(notched.PointInPolygon(CPointD(3, 4)), 0);
    EXPECT_EQ(notched.PointInPolygon(CPointD(1, 3)), 1);
    EXPECT_EQ(Area("").PointInPolygon(0, 0), 0);
}

TEST(ShapeGeometry, RangesHitShapesByTheirOrderOfTests) {
    struct Case {
        const char *name;
        std::shared_ptr<CShape> shape;
        CExtent range;
        int intersects, contains;
    };
    const auto area = [](const char *text) { return std::make_shared<CShape_Polygon>(Area(text)); };
    const auto line = [](const char *text) { return std::make_shared<CShape_Polyline>(Line(text)); };
    const auto point = std::make_shared<CShape_Point>();
    point->SetPoint(1, 1);
    const auto marked = line("0 0, 4 0, 4 4, 0 4");
    marked->SetClosed(true);
    const char *open = "0 0, 10 0, 10 10";
    const Case cases[] = {
        {"area missed", area(open), Box(11, 0, 12, 1), 0, 0},
        {"area held", area(open), Box(-1, -1, 11, 11), 1, 1},
        {"range inside the area", area(open), Box(7, 1, 8, 2), 1, 0},
        {"edge crossed without a corner inside", area(open), Box(4, -1, 5, 0), 1, 0},
        {"implied edge crossed, corner inside", area(open), Box(4, 4, 5, 5.5), 1, 0},
        {"extent met, area missed", area(open), Box(1, 8, 2, 9), 0, 0},
        {"implied edge crossed, no corner inside", area("4 4, 0 4, 0 0, 4 0"), Box(4, 1, 5, 3), 0, 0},
        {"the same edge stored", area("4 4, 0 4, 0 0, 4 0, 4 4"), Box(4, 1, 5, 3), 1, 0},
        {"line missed within its extent", line("0 0, 10 10"), Box(0, 8, 2, 10), 0, 0},
        {"line crossed", line("0 0, 10 10"), Box(4, 0, 6, 10), 1, 0},
        {"line held", line("0 0, 10 10"), Box(0, 0, 10, 10), 1, 1},
        {"a closed mark adds no edge", marked, Box(-1, 1, 1, 3), 0, 0},
        {"point on a corner", point, Box(1, 1, 2, 2), 1, 1},
        {"point missed", point, Box(1.01, 1, 2, 2), 0, 0},
    };
    for (const Case &c : cases) {
        CExtent range = c.range;
        EXPECT_EQ(c.shape->Intersect(range, nullptr), c.intersects) << c.name;
        EXPECT_EQ(c.shape->Contain(range, nullptr), c.contains) << c.name;
    }
}

/// The same answer as without the quick rejections, for ranges turned inside out too.
TEST(ShapeGeometry, QuickRejectionsChangeNoAnswer) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> grid(0, 8);
    for (int round = 0; round < 3000; ++round) {
        CShape_Polygon polygon;
        for (int i = 0; i < 5; ++i) polygon.AddPoint(CPointD(grid(random), grid(random)));
        CExtent range(grid(random), grid(random), grid(random), grid(random));
        const POINTD corners[] = {range.BottomLeft(), range.TopLeft(), range.TopRight(), range.BottomRight()};
        bool expected = range.Contain(polygon.GetExtent());
        for (int i = 0; i < 4; ++i) {
            expected = expected || polygon.PointInPolygon(corners[i]);
            for (int j = 0; j < 4; ++j) {
                expected = expected || CShape::Intersect(polygon.GetPointAt(j), polygon.GetPointAt(j + 1), corners[i],
                                                         corners[(i + 1) % 4]);
            }
        }
        expected = expected && range.Intersect(polygon.GetExtent());
        ASSERT_EQ(polygon.Intersect(range, nullptr), expected) << TextOf(range) << " round " << round;
    }
}

template <class Shape>
void ExpectExtentsOfEdits() {
    Shape shape;
    shape.CalcExtent();
    EXPECT_EQ(TextOf(shape.GetExtent()), "0 0 0 0");
    for (const CPointD &point : Points("5 5, 6 8, 3 4")) shape.AddPoint(point);
    EXPECT_EQ(TextOf(shape.GetExtent()), "3 4 6 8");
    shape.SetPointAt(1, CPointD(6, 6));
    shape.SetLastPoint(CPointD(9, 4));
    EXPECT_EQ(TextOf(shape.GetExtent()), "3 4 9 8");
    shape.CalcExtent();
    EXPECT_EQ(TextOf(shape.GetExtent()), "5 4 9 6");
    shape.SetPointAt(0, CPointD(1, 1));
    EXPECT_EQ(TextOf(shape.GetExtent()), "1 1 1 1");
    shape.CalcExtent();
    shape.RemoveLastPoint();
    shape.RemoveAt(0);
    EXPECT_EQ(TextOf(shape.GetExtent()), "1 1 9 6");
    EXPECT_EQ(TextOf(shape.GetPointArray()), "6 6");
    shape.Offset(1, -2);
    EXPECT_EQ(TextOf(shape.GetExtent()), "2 -1 10 4");
    EXPECT_EQ(TextOf(shape.GetPointArray()), "7 4");
    shape.SetPointCount(2);
    EXPECT_EQ(TextOf(shape.GetPointArray()), "7 4, 0 0");
    for (const int index : {-1, 2}) EXPECT_THROW(shape.GetPointAt(index), CInvalidArgException);
    shape.SetPointCount(0);
    EXPECT_THROW(shape.SetLastPoint(CPointD(1, 1)), CInvalidArgException);
    EXPECT_THROW(shape.RemoveLastPoint(), CInvalidArgException);
}

TEST(ShapeGeometry, EditsGrowTheExtentAndOnlyAskingTakesItAnew) {
    ExpectExtentsOfEdits<CShape_Polyline>();
    ExpectExtentsOfEdits<CShape_Polygon>();
}

/// The first vertex is handed in while the array moves to a larger block.
TEST(ShapeGeometry, AVertexOfTheShapeItselfCanBeAddedAgain) {
    CShape_Polyline line = Line("3 4");
    for (int i = 0; i < 300; ++i) {
        line.AddPoint(line.GetPointArray().GetAt(0));
        ASSERT_EQ(TextOf(line.GetExtent()), "3 4 3 4") << i;
    }
}

TEST(ShapeGeometry, ACopiedVertexArrayBringsItsExtent) {
    CShape_Polyline line = Line("0 0, 1 1");
    CShape_Polyline source = Line("4 4, 6 5");
    line.CopyPointArray(source.GetPointArray());
    EXPECT_EQ(TextOf(line.GetExtent()), "4 4 6 5");
    line.CopyPointArray(line.GetPointArray());
    EXPECT_EQ(TextOf(line.GetPointArray()), "4 4, 6 5");
    EXPECT_EQ(line.GetLastSecPoint().x, 4);
}

TEST(ShapeGeometry, ARingIsClosedWhenItsEndsAreEqualToTheLastBit) {
    EXPECT_EQ(Area("0 0, 1 0, 1 1, 0 0").IsClosed(), 1);
    for (const char *open : {"0 0, 1 0, 1 1", "0 0, 1 0, 0 1e-300", ""}) EXPECT_EQ(Area(open).IsClosed(), 0) << open;
}

TEST(ShapeGeometry, SnappingTakesTheFirstVertexWithinASquare) {
    CShape_Polyline line = Line("0 0, 1.5 0, 9 9");
    CShape_Polygon area = Area("0 0, 1.5 0, 9 9");
    CShape_Polyline shortLine = Line("0 0, 1 0");
    CShape_Polygon shortArea = Area("0 0, 1 0");
    CShape_Point point;
    point.SetPoint(2, 3);
    const std::tuple<CShape *, const char *, double, const char *> cases[] = {
        {&line, "0.9 -0.9", 1, "0 0"},   {&line, "1 0", 1, "1.5 0"},        {&line, "1.4 0", 1.5, "0 0"},
        {&area, "9 9.5", 0.6, "9 9"},    {&area, "9 9.5", 0.5, "-7 -7"},    {&shortLine, "0 0", 1, "-7 -7"},
        {&shortArea, "0.5 0", 1, "0 0"}, {&point, "2.5 2.6", 0.5, "-7 -7"}, {&point, "2.4 2.6", 0.5, "2 3"},
    };
    for (const auto &[shape, from, tolerance, to] : cases) {
        std::vector<POINTD> snapped = {CPointD(-7, -7)};
        EXPECT_EQ(shape->GetSnapPoint(Points(from)[0], snapped[0], tolerance), *to != '-') << from;
        EXPECT_EQ(TextOf(snapped), to) << from;
    }
}

TEST(ShapeGeometry, TheNodeInHandComesWithItsNeighbours) {
    CShape_Polyline line = Line("0 0, 1 0, 9 9");
    CShape_Polygon area = Area("0 0, 1 0, 9 9");
    CShape_Point point;
    point.SetPoint(5, 5);
    const std::tuple<CShape *, const char *, int, const char *> cases[] = {
        {&line, "0 0", 0, "0 0, 1 0"},     {&line, "1 0.00000000005", 1, "1 0, 0 0, 9 9"},
        {&line, "1 0.0000000002", -1, ""}, {&area, "9 9", 2, "9 9, 1 0"},
        {&point, "5 5", 0, "5 5"},
    };
    for (const auto &[shape, from, node, taken] : cases) {
        int index = -1;
        CArray<POINTD, POINTD> points;
        EXPECT_EQ(shape->GetMovePoint(Points(from)[0], index, points), node >= 0) << from;
        EXPECT_EQ(index, node) << from;
        EXPECT_EQ(TextOf(points), taken) << from;
    }
}

TEST(ShapeGeometry, LengthsWithoutAnArrayIgnoreWhatHappensWithinAColumn) {
    struct Case {
        const char *line;
        int length, lengthWithArray;
        const char *kept;
    };
    // One world unit is one pixel; client y is 100 - y.
    const Case cases[] = {
        {"0 0, 0 10, 0 20, 0 30", 10, 30, "0 100, 0 90, 0 80, 0 70"},
        {"0 0, 0 0, 0 0, 5 0", 5, 5, "0 100, 0 100, 5 100"},
        {"0 0, 0 10, 10 10, 10 90", 20, 100, "0 100, 0 90, 10 90, 10 10"},
        {"", 0, 0, ""},
    };
    for (const Case &c : cases) {
        const CShape_Polyline line = Line(c.line);
        CArray<CPoint, CPoint> kept;
        EXPECT_EQ(line.GetLength(1.0, Box(0, 0, 100, 100)), c.length) << c.line;
        EXPECT_EQ(line.GetLength(1.0, Box(0, 0, 100, 100), kept), c.lengthWithArray) << c.line;
        EXPECT_EQ(TextOf(kept), c.kept) << c.line;
    }
}

TEST(ShapeGeometry, CopiesCarryEverythingButTheIndex) {
    CShape_Polyline line = Line("0 0, 4 2");
    line.SetClosed(true);
    line.SetShapeID(12);
    line.SetIndex(5);
    line.State = line.Deleted = line.Reserved = true;
    line.Select(-3);
    const std::unique_ptr<CShape> clone(line.Clone());
    auto &copy = dynamic_cast<CShape_Polyline &>(*clone);
    EXPECT_TRUE(copy.GetShapeID() == 12 && copy.GetIndex() == -1);
    EXPECT_TRUE(copy.State && copy.Selected && copy.Deleted && copy.Reserved && copy.IsClosed());
    EXPECT_EQ(TextOf(copy.GetPointArray()), "0 0, 4 2");
    EXPECT_EQ(TextOf(copy.GetExtent()), "0 0 4 2");
    EXPECT_EQ(copy.GetCenterPoint().y, 1);
    copy.Select(0);
    EXPECT_FALSE(copy.Selected);
}

TEST(ShapeGeometry, OnlyThePointHasARecordOfItsOwn) {
    EXPECT_STREQ(CShape_Point().GetRuntimeClass()->m_lpszClassName, "CShape_Point");
    EXPECT_TRUE(CShape_Point().IsKindOf(CShape::GetThisClass()));
    EXPECT_EQ(CShape_Polyline().GetRuntimeClass(), CShape::GetThisClass());
}

TEST(ShapeGeometry, EveryNumberMakesAShape) {
    for (const auto &[kind, type] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 3}, {12, 0}, {60, 0}, {-1, 0}}) {
        const auto shape = ktl::MakeShape(kind);
        ASSERT_NE(shape, nullptr) << kind;
        EXPECT_EQ(shape->GetShapeType(), type) << kind;
        EXPECT_TRUE(shape->IsPolygon() == (kind == 3) && shape->IsPolyline() == (kind == 2)) << kind;
    }
    for (int kind = -1; kind < 13; ++kind) EXPECT_EQ(ktl::StoresPolygonFlag(kind), kind >= 4 && kind <= 7) << kind;
}

}  // namespace
