#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

#include "ktl/shapes/shape_factory.h"
#include "ktl/shapes/shape_null.h"
#include "ktl/shapes/shape_point.h"
#include "tests/shapes/shape_text.h"

namespace {

using ktl_test::Area;
using ktl_test::Box;
using ktl_test::Line;
using ktl_test::Make;
using ktl_test::Points;
using ktl_test::TextOf;

TEST(ShapeGeometry, SegmentsMeetAtEndsAndOverlaps) {
    struct Case {
        const char *first;
        const char *second;
        int meets;
    };
    const Case cases[] = {
        {"0 0, 2 2", "0 2, 2 0", 1}, {"0 0, 1 1", "1 1, 2 0", 1}, {"0 0, 2 0", "1 0, 1 5", 1},
        {"0 0, 2 0", "1 0, 3 0", 1}, {"0 0, 1 0", "2 0, 3 0", 0}, {"0 0, 4 4", "0 1, 1 4", 0},
        {"0 0, 4 0", "1 1, 2 3", 0}, {"0 0, 4 4", "3 0, 4 1", 0}, {"0 0, 0 0", "0 0, 1 1", 1},
    };
    for (const Case &c : cases) {
        const auto a = Points(c.first);
        const auto b = Points(c.second);
        EXPECT_EQ(CShape::Intersect(a[0], a[1], b[0], b[1]), c.meets) << c.first << " and " << c.second;
        EXPECT_EQ(CShape::Intersect(b[1], b[0], a[1], a[0]), c.meets) << c.first << " and " << c.second;
    }
}

TEST(ShapeGeometry, ExtentsMeetAtEdgesAndCorners) {
    const CExtent unit = Box(0, 0, 1, 1);
    EXPECT_EQ(CShape::Intersect(unit, Box(1, 0, 2, 1)), 1);
    EXPECT_EQ(CShape::Intersect(unit, Box(1, 1, 2, 2)), 1);
    EXPECT_EQ(CShape::Intersect(unit, Box(-1, -1, 0, 0)), 1);
    EXPECT_EQ(CShape::Intersect(unit, Box(1.0001, 0, 2, 1)), 0);
    EXPECT_EQ(CShape::Intersect(unit, Box(0, -2, 1, -0.0001)), 0);
}

TEST(ShapeGeometry, AnglesRunCounterClockwiseFromEast) {
    struct Case {
        double x;
        double y;
        double angle;
    };
    for (const Case &c : {Case{1, 0, 0}, Case{1, 1, 45}, Case{0, 1, 90}, Case{-1, 1, 135}, Case{-1, 0, 180},
                          Case{-1, -1, 225}, Case{0, -1, 270}, Case{1, -1, 315}}) {
        EXPECT_NEAR(CShape::GetAngle(0, 0, c.x, c.y), c.angle, 1e-5) << c.x << ' ' << c.y;
        EXPECT_NEAR(CShape::GetAngle(CPointD(5, 5), CPointD(5 + c.x, 5 + c.y)), c.angle, 1e-5) << c.x << ' ' << c.y;
    }
    EXPECT_TRUE(std::isnan(CShape::GetAngle(3, 4, 3, 4)));
    // The sine of 30 degrees keeps 24 bits.
    const double rounded = std::asin(static_cast<double>(static_cast<float>(0.5F / std::sqrt(1.0F))));
    EXPECT_EQ(CShape::GetAngle(0, 0, std::sqrt(0.75), 0.5), std::fabs(rounded * 180.0 / 3.14159265358979));
}

TEST(ShapeGeometry, DistancesHaveSinglePrecision) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(-1e7, 1e7);
    for (int i = 0; i < 200; ++i) {
        const CPointD a(coordinate(random), coordinate(random));
        const CPointD b(coordinate(random), coordinate(random));
        const double dx = b.x - a.x;
        const double dy = b.y - a.y;
        const volatile float sum = static_cast<float>(dx * dx + dy * dy);
        EXPECT_EQ(CShape::GetDisOfP2P(a, b), static_cast<double>(std::sqrt(static_cast<float>(sum))));
    }
    EXPECT_NE(CShape::GetDisOfP2P(0, 0, 10000001.3, 0), 10000001.3);
    EXPECT_NEAR(CShape::GetDisOfP2P(0, 0, 10000001.3, 0), 10000001.3, 1.0);
}

TEST(ShapeGeometry, APointOnALeftOrBottomEdgeIsInside) {
    struct Case {
        double x;
        double y;
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
        int intersects;
        int contains;
    };
    const auto area = [](const char *text) { return std::make_shared<CShape_Polygon>(Area(text)); };
    const auto line = [](const char *text) { return std::make_shared<CShape_Polyline>(Line(text)); };
    const auto point = std::make_shared<CShape_Point>();
    point->SetPoint(1, 1);
    const char *open = "0 0, 10 0, 10 10";
    const char *closed = "0 0, 10 0, 10 10, 0 0";
    const Case cases[] = {
        {"area missed", area(open), Box(11, 0, 12, 1), 0, 0},
        {"area held", area(open), Box(-1, -1, 11, 11), 1, 1},
        {"range inside the area", area(open), Box(7, 1, 8, 2), 1, 0},
        {"edge crossed without a corner inside", area(open), Box(4, -1, 5, 0), 1, 0},
        {"implied edge crossed, corner inside", area(open), Box(4, 4, 5, 5.5), 1, 0},
        {"extent met, area missed", area(open), Box(1, 8, 2, 9), 0, 0},
        {"implied edge crossed, no corner inside", area("4 4, 0 4, 0 0, 4 0"), Box(4, 1, 5, 3), 0, 0},
        {"the same edge stored", area("4 4, 0 4, 0 0, 4 0, 4 4"), Box(4, 1, 5, 3), 1, 0},
        {"stored edge crossed", area(closed), Box(4, 4, 5, 5.5), 1, 0},
        {"line missed within its extent", line("0 0, 10 10"), Box(0, 8, 2, 10), 0, 0},
        {"line crossed", line("0 0, 10 10"), Box(4, 0, 6, 10), 1, 0},
        {"line held", line("0 0, 10 10"), Box(0, 0, 10, 10), 1, 1},
        {"vertex inside", line("0 0, 10 10"), Box(9, 9, 20, 20), 1, 0},
        {"point on a corner", point, Box(1, 1, 2, 2), 1, 1},
        {"point missed", point, Box(1.01, 1, 2, 2), 0, 0},
    };
    for (const Case &c : cases) {
        CExtent range = c.range;
        EXPECT_EQ(c.shape->Intersect(range, nullptr), c.intersects) << c.name;
        EXPECT_EQ(c.shape->Contain(range, nullptr), c.contains) << c.name;
    }
}

TEST(ShapeGeometry, AClosedMarkAddsNoEdgeToTheHitTest) {
    CShape_Polyline line = Line("0 0, 4 0, 4 4, 0 4");
    line.SetClosed(true);
    CExtent range = Box(-1, 1, 1, 3);
    EXPECT_EQ(line.Intersect(range, nullptr), 0);
}

/// The same answer as without the quick rejections, for ranges turned inside out too.
TEST(ShapeGeometry, QuickRejectionsChangeNoAnswer) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> grid(0, 8);
    for (int round = 0; round < 3000; ++round) {
        CShape_Polygon polygon;
        for (int i = 0; i < 5; ++i) polygon.AddPoint(CPointD(grid(random), grid(random)));
        CExtent range(grid(random), grid(random), grid(random), grid(random));
        bool expected = false;
        const POINTD corners[] = {range.BottomLeft(), range.TopLeft(), range.TopRight(), range.BottomRight()};
        for (int i = 0; i < 4; ++i) {
            expected = expected || polygon.PointInPolygon(corners[i]);
            for (int j = 0; j < 4; ++j) {
                expected = expected || CShape::Intersect(polygon.GetPointAt(j), polygon.GetPointAt(j + 1), corners[i],
                                                         corners[(i + 1) % 4]);
            }
        }
        if (!range.Intersect(polygon.GetExtent())) expected = false;
        if (range.Intersect(polygon.GetExtent()) && range.Contain(polygon.GetExtent())) expected = true;
        ASSERT_EQ(polygon.Intersect(range, nullptr), expected) << TextOf(range) << " round " << round;
    }
}

template <class Shape>
void ExpectExtentsOfEdits() {
    Shape shape;
    EXPECT_EQ(TextOf(shape.GetExtent()), "0 0 0 0");
    shape.CalcExtent();
    for (const CPointD &point : Points("5 5, 6 8, 3 4")) shape.AddPoint(point);
    EXPECT_EQ(TextOf(shape.GetExtent()), "3 4 6 8");
    shape.SetPointAt(1, CPointD(6, 6));
    EXPECT_EQ(TextOf(shape.GetExtent()), "3 4 6 8");
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
    CShape_Polygon area = Area("3 4");
    for (int i = 0; i < 300; ++i) {
        line.AddPoint(line.GetPointAt(0));
        area.AddPoint(area.GetPointArray().GetAt(0));
        ASSERT_EQ(TextOf(line.GetExtent()), "3 4 3 4") << i;
        ASSERT_EQ(TextOf(area.GetExtent()), "3 4 3 4") << i;
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
    EXPECT_EQ(Area("0 0, 1 0, 1 1").IsClosed(), 0);
    EXPECT_EQ(Area("0 0, 1 0, 1 1, 0 1e-300").IsClosed(), 0);
    EXPECT_EQ(Area("").IsClosed(), 0);
}

TEST(ShapeGeometry, SnappingTakesTheFirstVertexWithinASquare) {
    struct Case {
        const char *point;
        double tolerance;
        const char *snapped;
    };
    const Case cases[] = {
        {"0.9 -0.9", 1, "0 0"}, {"1 0", 1, "1.5 0"}, {"1.4 0", 1.5, "0 0"},
        {"9 9.5", 0.6, "9 9"},  {"9 9.5", 0.5, ""},  {"5 5", 1, ""},
    };
    CShape_Polyline line = Line("0 0, 1.5 0, 9 9");
    CShape_Polygon area = Area("0 0, 1.5 0, 9 9");
    for (const Case &c : cases) {
        for (CShape *shape : {static_cast<CShape *>(&line), static_cast<CShape *>(&area)}) {
            POINTD snapped = CPointD(-7, -7);
            const int found = shape->GetSnapPoint(Points(c.point)[0], snapped, c.tolerance);
            EXPECT_EQ(found, *c.snapped != 0) << c.point;
            const CPointD expected = *c.snapped ? Points(c.snapped)[0] : CPointD(-7, -7);
            EXPECT_TRUE(expected == snapped) << c.point;
        }
    }
    POINTD snapped;
    CShape_Polyline shortLine = Line("0 0, 1 0");
    CShape_Polygon shortArea = Area("0 0, 1 0");
    EXPECT_EQ(shortLine.GetSnapPoint(CPointD(0, 0), snapped, 1), 0);
    EXPECT_EQ(shortArea.GetSnapPoint(CPointD(0, 0), snapped, 1), 1);
    CShape_Point point;
    point.SetPoint(2, 3);
    EXPECT_EQ(point.GetSnapPoint(CPointD(2.5, 2.6), snapped, 0.5), 0);
    EXPECT_EQ(point.GetSnapPoint(CPointD(2.4, 2.6), snapped, 0.5), 1);
    EXPECT_EQ(snapped.y, 3);
}

TEST(ShapeGeometry, TheNodeInHandComesWithItsNeighbours) {
    struct Case {
        const char *point;
        int index;
        const char *points;
    };
    const Case cases[] = {
        {"0 0", 0, "0 0, 1 0"},
        {"1 0.00000000005", 1, "1 0, 0 0, 9 9"},
        {"9 9", 2, "9 9, 1 0"},
        {"1 0.0000000002", -1, ""},
    };
    CShape_Polyline line = Line("0 0, 1 0, 9 9");
    CShape_Polygon area = Area("0 0, 1 0, 9 9");
    for (const Case &c : cases) {
        for (CShape *shape : {static_cast<CShape *>(&line), static_cast<CShape *>(&area)}) {
            int index = -1;
            CArray<POINTD, POINTD> points;
            EXPECT_EQ(shape->GetMovePoint(Points(c.point)[0], index, points), c.index >= 0) << c.point;
            EXPECT_EQ(index, c.index) << c.point;
            EXPECT_EQ(TextOf(points), c.points) << c.point;
        }
    }
    CShape_Polyline shortLine = Line("0 0, 1 0");
    int index = -1;
    CArray<POINTD, POINTD> points;
    EXPECT_EQ(shortLine.GetMovePoint(CPointD(1, 0), index, points), 1);
    CShape_Point point;
    point.SetPoint(5, 5);
    points.RemoveAll();
    EXPECT_EQ(point.GetMovePoint(CPointD(5, 5), index, points), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(TextOf(points), "5 5");
}

TEST(ShapeGeometry, LengthsWithoutAnArrayIgnoreWhatHappensWithinAColumn) {
    struct Case {
        const char *line;
        int length;
        int lengthWithArray;
        const char *kept;
    };
    // One world unit is one pixel; client y is 100 - y.
    const Case cases[] = {
        {"0 0, 0 10, 0 20, 0 30", 10, 30, "0 100, 0 90, 0 80, 0 70"},
        {"0 0, 3 4", 5, 5, "0 100, 3 96"},
        {"0 0, 0 0, 0 0, 5 0", 5, 5, "0 100, 0 100, 5 100"},
        {"0 0, 0 10, 10 10, 10 90", 20, 100, "0 100, 0 90, 10 90, 10 10"},
        {"0 0", 0, 0, "0 100"},
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
    EXPECT_EQ(copy.GetShapeID(), 12);
    EXPECT_EQ(copy.GetIndex(), -1);
    EXPECT_TRUE(copy.State && copy.Selected && copy.Deleted && copy.Reserved && copy.IsClosed());
    EXPECT_EQ(TextOf(copy.GetPointArray()), "0 0, 4 2");
    EXPECT_EQ(TextOf(copy.GetExtent()), "0 0 4 2");
    EXPECT_EQ(copy.GetCenterPoint().y, 1);
    copy.Select(0);
    EXPECT_FALSE(copy.Selected);
}

TEST(ShapeGeometry, OnlyThePointHasARecordOfItsOwn) {
    CShape_Point point;
    CShape_Polyline line;
    CShape_NULL null;
    EXPECT_STREQ(point.GetRuntimeClass()->m_lpszClassName, "CShape_Point");
    EXPECT_TRUE(point.IsKindOf(CShape::GetThisClass()));
    EXPECT_EQ(line.GetRuntimeClass(), CShape::GetThisClass());
    EXPECT_EQ(null.GetRuntimeClass(), CShape::GetThisClass());
    EXPECT_FALSE(line.IsKindOf(CShape_Point::GetThisClass()));
}

TEST(ShapeGeometry, EveryNumberMakesAShape) {
    struct Case {
        int kind;
        int type;
        bool storesFlag;
    };
    for (const Case &c : {Case{0, 0, false}, Case{1, 1, false}, Case{2, 2, false}, Case{3, 3, false},
                          Case{12, 0, false}, Case{60, 0, false}, Case{-1, 0, false}}) {
        const auto shape = ktl::MakeShape(c.kind);
        ASSERT_NE(shape, nullptr) << c.kind;
        EXPECT_EQ(shape->GetShapeType(), c.type) << c.kind;
        EXPECT_EQ(ktl::StoresPolygonFlag(c.kind), c.storesFlag) << c.kind;
        EXPECT_EQ(shape->IsPolygon(), c.kind == 3) << c.kind;
        EXPECT_EQ(shape->IsPolyline(), c.kind == 2) << c.kind;
    }
    for (const int kind : {4, 5, 6, 7}) EXPECT_TRUE(ktl::StoresPolygonFlag(kind)) << kind;
    for (const int kind : {8, 9, 10, 11}) EXPECT_FALSE(ktl::StoresPolygonFlag(kind)) << kind;
}

}  // namespace
