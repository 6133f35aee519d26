#include "ktl/core/extent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ktl/core/segment.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/mem_file.h"

namespace {

void ExpectExtent(const EXTENT &e, double left, double bottom, double right, double top) {
    EXPECT_TRUE(CExtent(left, bottom, right, top) == e) << e.left << " " << e.bottom << " " << e.right << " " << e.top;
}

}  // namespace

TEST(Point, ComparesExactly) {
    EXPECT_TRUE(CPointD(1, 2) == POINTD(1, 2) && CPointD(1, 2) + POINTD(1, 2) == CPointD(2, 4));
    EXPECT_TRUE(CPointD(1, 2) != CPointD(1, std::nextafter(2.0, 3.0)));
}

TEST(Extent, UnionGrowsOnEverySide) {
    CExtent e(0, 0, 10, 10);
    ExpectExtent(e + CExtent(-1, 2, 11, 3), -1, 0, 11, 10);
    e += CExtent(2, -1, 3, 12);
    ExpectExtent(e, 0, -1, 10, 12);
    ExpectExtent(UnionExtent(CExtent(0, 0, 1, 1), CExtent(5, -5, 6, -4)), 0, -5, 6, 1);
}

TEST(Extent, EdgesBelongToItAndNoNumberMeetsEverything) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    const CExtent e(0, 0, 10, 20);
    const auto expect = [&e](const EXTENT &other, int contains, int meets) {
        SCOPED_TRACE(testing::Message() << other.left << " " << other.bottom << " " << other.right << " " << other.top);
        EXPECT_TRUE(e.Contain(other) == contains && CheckObjectContained(other, e) == contains);
        EXPECT_TRUE(e.Intersect(other) == meets && Intersect(e, other) == meets && Intersect(other, e) == meets);
    };
    expect(e, 1, 1);
    expect({kNoNumber, kNoNumber, kNoNumber, kNoNumber}, 0, 1);
    for (const EXTENT &wide : {EXTENT(-0.1, 0, 10, 20), {0, -0.1, 10, 20}, {0, 0, 10.1, 20}, {0, 0, 10, 20.1}}) {
        expect(wide, 0, 1);
    }
    for (const EXTENT &touching : {EXTENT(10, 20, 11, 21), {-5, -5, 0, 0}}) expect(touching, 0, 1);
    for (const EXTENT &far : {EXTENT(10.1, 0, 11, 5), {0, 20.1, 5, 21}, {-5, 0, -0.1, 5}, {0, -5, 5, -1e-6}}) {
        expect(far, 0, 0);
    }
    EXPECT_TRUE(e.PtInExtent(POINTD(10, 20)) && e.PtInExtent(0.0, 0.0) && !e.PtInExtent(10.0001, 5));
    EXPECT_EQ(e.PtInExtent(kNoNumber, 0.5), 0);
}

// The rectangle's top is its smaller y, as the extent's bottom is.
TEST(Extent, PairsARectanglesTopWithItsBottom) {
    const CExtent client(0, 0, 100, 50);
    EXPECT_EQ(client.Contain(CRect(0, 0, 100, 50)), 1);
    for (const CRect &rect : {CRect(0, -1, 100, 50), CRect(0, 0, 100, 51)}) EXPECT_EQ(client.Contain(rect), 0);
    for (const CRect &rect : {CRect(100, 50, 120, 60), CRect(10, -20, 20, 5)}) EXPECT_EQ(client.Intersect(rect), 1);
    for (const CRect &rect : {CRect(10, -20, 20, -1), CRect(10, 51, 20, 60)}) EXPECT_EQ(client.Intersect(rect), 0);
}

TEST(Extent, ContaintComparesRightWithTop) {
    EXPECT_EQ(Containt({0, 0, 10, 10}, {1, 1, 1000, 9}), 1);  // b.right is never read
    EXPECT_EQ(Containt({0, 0, 5, 10}, {0, 0, 5, 10}), 0);     // right below top
    for (const EXTENT &b : {EXTENT(-1, 1, 9, 9), {1, -1, 9, 9}, {1, 1, 9, 11}}) {
        EXPECT_EQ(Containt({0, 0, 99, 10}, b), 0) << b.left << " " << b.bottom;
    }
}

TEST(Extent, SplitsAt55PercentClockwiseFromTheUpperLeft) {
    CExtent parts[4];
    SplitExtent(CExtent(0, 0, 100, 200), parts[0], parts[1], parts[2], parts[3]);
    const double x = 100.0 * 0.55;
    const double y = 200.0 * 0.55;
    const CExtent expected[] = {{0, y, x, 200}, {x, y, 100, 200}, {x, 0, 100, y}, {0, 0, x, y}};
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(parts[i] == expected[i]) << i;
    // The source may be one of the parts.
    SplitExtent(parts[0], parts[0], parts[1], parts[2], parts[3]);
    EXPECT_DOUBLE_EQ(parts[3].top, 90.0 * 0.55 + y);
}

TEST(Segments, MeetAsTheTableTells) {
    struct Case {
        double a[4], b[4];
        int meet;
    };
    // Crossing, with a common end, an end on the other, an overlap; apart on one line, with boxes that meet, parallel;
    // a point on the other.
    const Case cases[] = {
        {{0, 0, 10, 10}, {0, 10, 10, 0}, 1}, {{0, 0, 10, 10}, {10, 10, 20, 0}, 1}, {{0, 0, 10, 0}, {5, 0, 5, 5}, 1},
        {{0, 0, 10, 0}, {5, 0, 15, 0}, 1},   {{0, 0, 10, 0}, {11, 0, 15, 0}, 0},   {{0, 0, 10, 10}, {6, 5, 10, 0}, 0},
        {{0, 0, 10, 10}, {1, 0, 11, 10}, 0}, {{3, 3, 3, 3}, {0, 0, 10, 10}, 1},
    };
    const auto meet = [](const double(&p)[4], const double(&q)[4]) {
        return ktl::SegmentsIntersect(p[0], p[1], p[2], p[3], q[0], q[1], q[2], q[3]);
    };
    for (const Case &c : cases) {
        EXPECT_TRUE(meet(c.a, c.b) == c.meet && meet(c.b, c.a) == c.meet) << c.b[0] << " " << c.b[1];
    }
}

// Across without an end inside, wholly inside, over a corner, past it, and along a side.
TEST(Extent, MeetsASegmentThatCrossesIt) {
    const CExtent e(0, 0, 10, 10);
    EXPECT_TRUE(e.Intersect(-5, 5, 15, 5) && e.Intersect(POINTD(4, 4), POINTD(5, 6)) && e.Intersect(-1, 5, 5, 11));
    EXPECT_FALSE(e.Intersect(-6, 5, 5, 16));
    EXPECT_TRUE(e.Intersect(-5, 10, 15, 10));
}

TEST(Extent, StreamIsFourRawDoubles) {
    CMemFile file;
    CExtent extent(-0.5, -0.25, 0.5, 0.75);
    CPointD point(1.5, -2.5);
    const auto serialize = [&](CMemFile &target, UINT mode, int version) {
        CArchive archive(&target, mode);
        extent.Serialize(archive, version);
        point.Serialize(archive, 201 - version);
        archive.Close();
    };
    serialize(file, CArchive::store, 0);
    const std::vector<BYTE> bytes = file.Detach();
    ASSERT_EQ(bytes.size(), 48U);
    for (UINT length = 0; length < 48; ++length) {
        CMemFile part(bytes.data(), length);
        EXPECT_THROW(serialize(part, CArchive::load, 201), CArchiveException);
    }
    extent = CExtent();
    CMemFile whole(bytes.data(), 48);
    serialize(whole, CArchive::load, 201);
    ExpectExtent(extent, -0.5, -0.25, 0.5, 0.75);
    EXPECT_TRUE(point == CPointD(1.5, -2.5));
}
