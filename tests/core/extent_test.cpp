#include "ktl/core/extent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ktl/core/segment.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/mem_file.h"

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

void ExpectExtent(const EXTENT &e, double left, double bottom, double right, double top) {
    EXPECT_TRUE(CExtent(left, bottom, right, top) == e) << e.left << " " << e.bottom << " " << e.right << " " << e.top;
}

}  // namespace

TEST(Point, ComparesExactlyWithEitherClass) {
    const CPointD p(1.0, 2.0);
    const POINTD same(1.0, 2.0);
    EXPECT_TRUE(p == same && p == CPointD(same) && !(p != same));
    EXPECT_TRUE(p != CPointD(1.0, std::nextafter(2.0, 3.0)));
    EXPECT_TRUE((p + same) == CPointD(2.0, 4.0));
}

TEST(Extent, UnionGrowsOnEverySide) {
    CExtent e(0, 0, 10, 10);
    EXPECT_TRUE((e + CExtent(-1, 2, 11, 3)) == CExtent(-1, 0, 11, 10));
    ExpectExtent(e, 0, 0, 10, 10);
    e += CExtent(2, -1, 3, 12);
    ExpectExtent(e, 0, -1, 10, 12);
    ExpectExtent(UnionExtent(CExtent(0, 0, 1, 1), CExtent(5, -5, 6, -4)), 0, -5, 6, 1);
}

TEST(Extent, EdgesBelongToIt) {
    const CExtent e(0, 0, 10, 20);
    struct Case {
        EXTENT other;
        int contains;
        int meets;
    };
    const Case cases[] = {{{0, 0, 10, 20}, 1, 1},        {{1, 1, 9, 19}, 1, 1},    {{-0.1, 1, 9, 19}, 0, 1},
                          {{1, 1, 10.1, 19}, 0, 1},      {{10, 20, 11, 21}, 0, 1}, {{-5, -5, 0, 0}, 0, 1},
                          {{10.1, 0, 11, 5}, 0, 0},      {{0, 20.1, 5, 21}, 0, 0}, {{-5, 0, -0.1, 5}, 0, 0},
                          {{-5, -5, 5, -0.000001}, 0, 0}};
    for (const Case &c : cases) {
        const std::string where = std::to_string(c.other.left) + " " + std::to_string(c.other.bottom);
        EXPECT_EQ(e.Contain(c.other), c.contains) << where;
        EXPECT_EQ(CheckObjectContained(c.other, e), c.contains) << where;
        EXPECT_EQ(e.Intersect(c.other), c.meets) << where;
        EXPECT_EQ(Intersect(e, c.other), c.meets) << where;
        EXPECT_EQ(Intersect(c.other, e), c.meets) << where;
    }
    EXPECT_TRUE(e.PtInExtent(POINTD(10, 20)) && e.PtInExtent(0.0, 0.0) && !e.PtInExtent(10.0001, 5));
    EXPECT_TRUE(CExtent().PtInExtent(0.0, 0.0) && CExtent().Intersect(EXTENT(-1, -1, 1, 1)));
}

TEST(Extent, NoNumberIsInNothingButMeetsEverything) {
    const CExtent e(0, 0, 1, 1);
    EXPECT_EQ(e.PtInExtent(kNoNumber, 0.5), 0);
    EXPECT_EQ(e.Intersect(EXTENT(kNoNumber, kNoNumber, kNoNumber, kNoNumber)), 1);
}

// The rectangle's top is its smaller y, as the extent's bottom is.
TEST(Extent, PairsARectanglesTopWithItsBottom) {
    const CExtent client(0, 0, 100, 50);
    EXPECT_EQ(client.Contain(CRect(0, 0, 100, 50)), 1);
    EXPECT_EQ(client.Contain(CRect(0, -1, 100, 50)), 0);
    EXPECT_EQ(client.Contain(CRect(0, 0, 100, 51)), 0);
    EXPECT_EQ(client.Intersect(CRect(100, 50, 120, 60)), 1);
    EXPECT_EQ(client.Intersect(CRect(10, -20, 20, -1)), 0);
    EXPECT_EQ(client.Intersect(CRect(10, 51, 20, 60)), 0);
}

TEST(Extent, ContaintComparesRightWithTop) {
    struct Case {
        EXTENT a;
        EXTENT b;
        int expected;
    };
    const Case cases[] = {
        {{0, 0, 10, 10}, {1, 1, 9, 9}, 1},  {{0, 0, 10, 10}, {1, 1, 1000, 9}, 1},  // b.right is never read
        {{0, 0, 5, 10}, {0, 0, 5, 10}, 0},                                         // right below top
        {{0, 0, 10, 10}, {-1, 1, 9, 9}, 0}, {{0, 0, 10, 10}, {1, -1, 9, 9}, 0},   {{0, 0, 99, 10}, {1, 1, 9, 11}, 0},
    };
    for (const Case &c : cases) EXPECT_EQ(Containt(c.a, c.b), c.expected) << c.b.right << " " << c.b.top;
}

TEST(Extent, SplitsAt55PercentClockwiseFromTheUpperLeft) {
    CExtent parts[4];
    SplitExtent(CExtent(0, 0, 100, 100), parts[0], parts[1], parts[2], parts[3]);
    const double cut = 100.0 * 0.55;
    ExpectExtent(parts[0], 0, cut, cut, 100);
    ExpectExtent(parts[1], cut, cut, 100, 100);
    ExpectExtent(parts[2], cut, 0, 100, cut);
    ExpectExtent(parts[3], 0, 0, cut, cut);
    // The source may be one of the parts.
    SplitExtent(parts[0], parts[0], parts[1], parts[2], parts[3]);
    EXPECT_DOUBLE_EQ(parts[3].right, cut * 0.55);
    EXPECT_DOUBLE_EQ(parts[3].top, 45.0 * 0.55 + cut);
}

TEST(Segments, MeetAsTheTableTells) {
    struct Case {
        double a[4];
        double b[4];
        int meet;
    };
    const Case cases[] = {
        {{0, 0, 10, 10}, {0, 10, 10, 0}, 1},   // cross
        {{0, 0, 10, 10}, {10, 10, 20, 0}, 1},  // common end
        {{0, 0, 10, 0}, {5, 0, 5, 5}, 1},      // an end on the other
        {{0, 0, 10, 0}, {5, 0, 15, 0}, 1},     // overlap on one line
        {{0, 0, 10, 0}, {11, 0, 15, 0}, 0},    // on one line, apart
        {{0, 0, 10, 10}, {6, 5, 10, 0}, 0},    // boxes meet, segments not
        {{0, 0, 10, 10}, {1, 0, 11, 10}, 0},   // parallel
        {{3, 3, 3, 3}, {0, 0, 10, 10}, 1},     // a point on the other
    };
    for (const Case &c : cases) {
        const auto meet = [](const double(&p)[4], const double(&q)[4]) {
            return ktl::SegmentsIntersect(p[0], p[1], p[2], p[3], q[0], q[1], q[2], q[3]);
        };
        EXPECT_EQ(meet(c.a, c.b), c.meet) << c.b[0] << " " << c.b[1];
        EXPECT_EQ(meet(c.b, c.a), c.meet) << c.b[0] << " " << c.b[1];
    }
}

TEST(Extent, MeetsASegmentThatCrossesItWithoutAnEndInside) {
    const CExtent e(0, 0, 10, 10);
    EXPECT_EQ(e.Intersect(-5, 5, 15, 5), 1);
    EXPECT_EQ(e.Intersect(POINTD(5, 5), POINTD(50, 50)), 1);
    EXPECT_EQ(e.Intersect(-1, 5, 5, 11), 1);    // cuts the upper left corner
    EXPECT_EQ(e.Intersect(-6, 5, 5, 16), 0);    // passes it
    EXPECT_EQ(e.Intersect(-5, 15, 5, 5), 1);    // ends inside
    EXPECT_EQ(e.Intersect(-5, 10, 15, 10), 1);  // along a side
}

TEST(Extent, StreamIsFourRawDoubles) {
    CMemFile file;
    const CExtent written(-0.5, -0.25, 0.5, 0.75);
    {
        CArchive ar(&file, CArchive::store);
        CExtent(written).Serialize(ar, 200);
        CPointD(1.5, -2.5).Serialize(ar, 0);
        ar.Close();
    }
    ASSERT_EQ(file.GetLength(), 48u);
    for (ULONGLONG length = 0; length <= 48; ++length) {
        file.SetLength(48);
        file.SeekToBegin();
        CMemFile part;
        std::vector<char> bytes(length + 1);
        file.Read(bytes.data(), static_cast<UINT>(length));
        part.Write(bytes.data(), static_cast<UINT>(length));
        part.SeekToBegin();
        CArchive ar(&part, CArchive::load);
        CExtent extent;
        CPointD point;
        if (length < 48) {
            EXPECT_THROW(
                {
                    extent.Serialize(ar, 201);
                    point.Serialize(ar, 201);
                },
                CArchiveException);
            continue;
        }
        extent.Serialize(ar, 201);
        point.Serialize(ar, 201);
        EXPECT_TRUE(extent == written && point == CPointD(1.5, -2.5));
    }
}
