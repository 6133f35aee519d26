#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

#include "tests/platform/gdiplus/canvas.h"

// What is drawn on a small bitmap must be what a plain evaluation of the rules gives, pixel by pixel, whatever lies
// outside of it.

namespace {

using namespace Gdiplus;
using ktl::test::Canvas;
__extension__ using Wide = __int128;

constexpr int kSize = 24;
constexpr ARGB kInk = 0x64FF0000;

using Picture = std::vector<bool>;

Picture PictureOf(Canvas &canvas) {
    Picture picture;
    for (const ARGB pixel : canvas.Pixels()) {
        EXPECT_TRUE(pixel == 0 || pixel == kInk) << std::hex << pixel;
        picture.push_back(pixel != 0);
    }
    return picture;
}

std::string Shown(const Picture &picture) {
    std::string text;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        text += picture[i] ? '#' : '.';
        if (i % kSize == kSize - 1) text += '\n';
    }
    return text;
}

/// True when the edge's crossing of row y lies at or left of x, decided without division.
bool CrossesAtOrLeft(Point a, Point b, int x, int y) {
    const Wide dx = Wide{b.X} - a.X;
    const Wide dy = Wide{b.Y} - a.Y;
    const Wide side = (Wide{x} - a.X) * dy - (Wide{y} - a.Y) * dx;
    return dy > 0 ? side >= 0 : side <= 0;
}

Picture PlainFill(const std::vector<std::vector<Point>> &rings, FillMode mode) {
    Picture picture;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            int winding = 0;
            for (const auto &ring : rings) {
                for (std::size_t i = 0; i < ring.size(); ++i) {
                    const Point a = ring[i];
                    const Point b = ring[(i + 1) % ring.size()];
                    const bool down = a.Y <= y && y < b.Y;
                    const bool up = b.Y <= y && y < a.Y;
                    if ((down || up) && CrossesAtOrLeft(a, b, x, y)) winding += down ? 1 : -1;
                }
            }
            picture.push_back(mode == FillModeAlternate ? winding % 2 != 0 : winding != 0);
        }
    }
    return picture;
}

Wide FloorDiv(Wide a, Wide b) {
    return a / b - ((a % b != 0 && (a < 0) != (b < 0)) ? 1 : 0);
}

/// The pixel of a line in a column (or row) by the definition: rounded to nearest, halves up.
void PlainLine(Picture &picture, Point a, Point b) {
    const Wide dx = Wide{b.X} - a.X;
    const Wide dy = Wide{b.Y} - a.Y;
    const bool alongX = (dx < 0 ? -dx : dx) >= (dy < 0 ? -dy : dy);
    for (int i = 0; i < kSize; ++i) {
        const Wide run = alongX ? dx : dy;
        const Wide rise = alongX ? dy : dx;
        const Wide from = alongX ? a.X : a.Y;
        const Wide to = from + run;
        if (i < (run < 0 ? to : from) || i > (run < 0 ? from : to)) continue;
        const Wide start = alongX ? a.Y : a.X;
        const Wide across = run == 0 ? start : FloorDiv(2 * (start * run + (i - from) * rise) + run, 2 * run);
        if (across < 0 || across >= kSize) continue;
        const int other = static_cast<int>(across);
        picture[static_cast<std::size_t>(alongX ? other * kSize + i : i * kSize + other)] = true;
    }
}

class RandomPoints {
  public:
    explicit RandomPoints(unsigned seed) : m_random(seed) {}

    int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    /// Around the bitmap, far off, or at the limits of int.
    int Coordinate(int spread) {
        switch (spread) {
            case 0:
                return Below(kSize);
            case 1:
                return Below(6 * kSize) - 3 * kSize;
            case 2:
                return Below(400000) - 200000;
            default: {
                const int limits[] = {INT_MIN, INT_MAX, INT_MIN + 1, INT_MAX - 1, 0, kSize, Below(kSize)};
                return limits[Below(7)];
            }
        }
    }
    std::vector<Point> Chain(int count, int spread) {
        std::vector<Point> points;
        for (int i = 0; i < count; ++i) {
            const Point p(Coordinate(spread), Coordinate(Below(3) == 0 ? 0 : spread));
            // Now and then a point is handed over more than once.
            for (int n = Below(4) == 0 ? 2 : 1; n > 0; --n) points.push_back(p);
        }
        return points;
    }

  private:
    std::mt19937 m_random;
};

INT CountOf(const std::vector<Point> &points) {
    return static_cast<INT>(points.size());
}

TEST(Clipping, FillsEqualThePlainRule) {
    constexpr unsigned kSeed = 20240501;
    SCOPED_TRACE(kSeed);
    RandomPoints random(kSeed);
    for (int i = 0; i < 4000; ++i) {
        const int spread = i % 4;
        const FillMode mode = random.Below(2) == 0 ? FillModeAlternate : FillModeWinding;
        std::vector<std::vector<Point>> rings;
        for (int n = 1 + random.Below(3); n > 0; --n) rings.push_back(random.Chain(3 + random.Below(9), spread));
        Canvas c(kSize, kSize);
        const SolidBrush brush(Color{kInk});
        if (rings.size() == 1) {
            c.graphics.FillPolygon(&brush, rings[0].data(), CountOf(rings[0]), mode);
        } else {
            GraphicsPath path(mode);
            for (const auto &ring : rings) path.AddPolygon(ring.data(), CountOf(ring));
            c.graphics.FillPath(&brush, &path);
        }
        const Picture expected = PlainFill(rings, mode);
        const Picture drawn = PictureOf(c);
        ASSERT_EQ(drawn, expected) << i << " spread " << spread << "\n" << Shown(drawn) << "\n" << Shown(expected);
    }
}

TEST(Clipping, SinglePrecisionFillsEqualTheRuleInSixteenths) {
    constexpr unsigned kSeed = 77;
    SCOPED_TRACE(kSeed);
    RandomPoints random(kSeed);
    for (int i = 0; i < 2000; ++i) {
        const int spread = 16 * kSize * (i % 2 == 0 ? 1 : 40);
        std::vector<Point> sixteenths;
        std::vector<PointF> points;
        for (int n = 3 + random.Below(6); n > 0; --n) {
            const Point p(random.Below(spread) - spread / 4, random.Below(spread) - spread / 4);
            sixteenths.push_back(p);
            points.push_back(PointF(static_cast<REAL>(p.X) / 16, static_cast<REAL>(p.Y) / 16));
        }
        Canvas c(kSize, kSize);
        const SolidBrush brush(Color{kInk});
        c.graphics.FillPolygon(&brush, points.data(), static_cast<INT>(points.size()));
        const Picture drawn = PictureOf(c);
        for (int at = 0; at < kSize * kSize; ++at) {
            const int x = at % kSize * 16;
            const int y = at / kSize * 16;
            bool inside = false;
            for (std::size_t k = 0; k < sixteenths.size(); ++k) {
                const Point a = sixteenths[k];
                const Point b = sixteenths[(k + 1) % sixteenths.size()];
                if ((a.Y <= y) != (b.Y <= y) && CrossesAtOrLeft(a, b, x, y)) inside = !inside;
            }
            ASSERT_EQ(drawn[static_cast<std::size_t>(at)], inside) << i << " pixel " << x / 16 << "," << y / 16;
        }
    }
}

TEST(Clipping, OnePixelLinesEqualThePlainRule) {
    constexpr unsigned kSeed = 4711;
    SCOPED_TRACE(kSeed);
    RandomPoints random(kSeed);
    for (int i = 0; i < 6000; ++i) {
        const std::vector<Point> points = random.Chain(2 + random.Below(6), i % 4);
        const bool closed = random.Below(2) == 0;
        Canvas c(kSize, kSize);
        const Pen pen(Color{kInk});
        closed ? c.graphics.DrawPolygon(&pen, points.data(), CountOf(points))
               : c.graphics.DrawLines(&pen, points.data(), CountOf(points));
        Picture expected(kSize * kSize);
        for (std::size_t k = 1; k < points.size(); ++k) PlainLine(expected, points[k - 1], points[k]);
        if (closed) PlainLine(expected, points.back(), points.front());
        const Picture drawn = PictureOf(c);
        ASSERT_EQ(drawn, expected) << i << "\n" << Shown(drawn) << "\n" << Shown(expected);
    }
}

TEST(Clipping, AnOpaquePenDrawsThePixelsOfOneWithAlpha) {
    constexpr unsigned kSeed = 99;
    SCOPED_TRACE(kSeed);
    RandomPoints random(kSeed);
    for (int i = 0; i < 2000; ++i) {
        const std::vector<Point> points = random.Chain(2 + random.Below(6), i % 4);
        const auto width = static_cast<REAL>(1 + random.Below(9));
        Pen thin(Color{kInk}, width);
        Canvas through(kSize, kSize), direct(kSize, kSize);
        Pen alpha(Color{kInk}, width), opaque(Color(255, 0, 0), width);
        for (Pen *pen : {&alpha, &opaque}) {
            pen->SetLineJoin(static_cast<LineJoin>(i / 4 % 3));
            pen->SetLineCap(static_cast<LineCap>(i % 4), static_cast<LineCap>(i / 8 % 4), DashCapFlat);
            if (i % 5 == 0) pen->SetDashStyle(DashStyleDashDot);
        }
        through.graphics.DrawLines(&alpha, points.data(), CountOf(points));
        direct.graphics.DrawLines(&opaque, points.data(), CountOf(points));
        Picture opaquePicture;
        for (const ARGB pixel : direct.Pixels()) opaquePicture.push_back(pixel != 0);
        ASSERT_EQ(PictureOf(through), opaquePicture) << i;
    }
}

/// The same drawing on a bitmap with room on all sides, of which the middle is compared.
TEST(Clipping, WideAndDashedLinesAreThoseOfALargerBitmap) {
    constexpr unsigned kSeed = 1234;
    constexpr int kRoom = 120;
    SCOPED_TRACE(kSeed);
    RandomPoints random(kSeed);
    for (int i = 0; i < 1500; ++i) {
        std::vector<Point> points;
        for (int n = 2 + random.Below(7); n > 0; --n) {
            points.emplace_back(random.Below(kSize + 2 * kRoom) - kRoom, random.Below(kSize + 2 * kRoom) - kRoom);
            if (random.Below(2) == 0) points.push_back(points.back() + Point(random.Below(9) - 4, random.Below(9) - 4));
        }
        Canvas small(kSize, kSize), large(kSize + 2 * kRoom, kSize + 2 * kRoom);
        Pen pen(Color{kInk}, static_cast<REAL>(random.Below(12)));
        pen.SetLineJoin(static_cast<LineJoin>(random.Below(3)));
        pen.SetLineCap(static_cast<LineCap>(random.Below(4)), static_cast<LineCap>(random.Below(4)),
                       random.Below(2) == 0 ? DashCapFlat : DashCapRound);
        pen.SetDashStyle(static_cast<DashStyle>(random.Below(5)));
        const bool closed = random.Below(2) == 0;
        std::vector<Point> moved;
        for (const Point p : points) moved.push_back(p + Point(kRoom, kRoom));
        if (closed) {
            small.graphics.DrawPolygon(&pen, points.data(), CountOf(points));
            large.graphics.DrawPolygon(&pen, moved.data(), CountOf(moved));
        } else {
            small.graphics.DrawLines(&pen, points.data(), CountOf(points));
            large.graphics.DrawLines(&pen, moved.data(), CountOf(moved));
        }
        const std::vector<ARGB> all = large.Pixels();
        Picture expected;
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                expected.push_back(all[static_cast<std::size_t>((y + kRoom) * (kSize + 2 * kRoom) + x + kRoom)] != 0);
            }
        }
        const Picture drawn = PictureOf(small);
        ASSERT_EQ(drawn, expected) << i << " width " << pen.GetWidth() << " dash " << pen.GetDashStyle() << "\n"
                                   << Shown(drawn) << "\n"
                                   << Shown(expected);
    }
}

TEST(Clipping, AClipRectangleCutsLikeTheBitmapsEdge) {
    RandomPoints random(5);
    const Rect clip(5, 3, 11, 13);
    for (int i = 0; i < 500; ++i) {
        const std::vector<Point> points = random.Chain(3 + random.Below(6), i % 3);
        Canvas whole(kSize, kSize), cut(kSize, kSize);
        cut.graphics.SetClip(clip);
        const SolidBrush brush(Color{kInk});
        Pen pen(Color{kInk}, static_cast<REAL>(1 + i % 4));
        for (Canvas *c : {&whole, &cut}) {
            i % 2 == 0 ? c->graphics.FillPolygon(&brush, points.data(), CountOf(points))
                       : c->graphics.DrawPolygon(&pen, points.data(), CountOf(points));
        }
        const std::vector<ARGB> all = whole.Pixels(), inside = cut.Pixels();
        for (int at = 0; at < kSize * kSize; ++at) {
            const auto k = static_cast<std::size_t>(at);
            ASSERT_EQ(inside[k], clip.Contains(at % kSize, at / kSize) ? all[k] : 0) << i;
        }
    }
}

TEST(Clipping, TooManyCrossingsAreDoneInBands) {
    // A comb of 3000 teeth, 1000 rows high: six million crossings.
    constexpr int kTeeth = 3000;
    std::vector<Point> comb;
    for (int i = 0; i < kTeeth; ++i) {
        comb.emplace_back(i * 2, -10);
        comb.emplace_back(i * 2, 1010);
        comb.emplace_back(i * 2 + 1, 1010);
        comb.emplace_back(i * 2 + 1, -10);
    }
    Canvas c(2 * kTeeth, 1000, PixelFormat32bppARGB);
    const SolidBrush brush(Color{kInk});
    EXPECT_EQ(c.graphics.FillPolygon(&brush, comb.data(), CountOf(comb)), Ok);
    const std::vector<ARGB> pixels = c.Pixels();
    int wrong = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) wrong += (pixels[i] != 0) != (i % 2 == 0) ? 1 : 0;
    EXPECT_EQ(wrong, 0);
}

TEST(Clipping, CoordinatesThatAreNoNumbersDoNoHarm) {
    Canvas c(kSize, kSize);
    const REAL inf = HUGE_VALF;
    const PointF points[] = {{NAN, 3}, {inf, 4}, {5, -inf}, {1e30F, -1e30F}, {NAN, NAN}};
    const SolidBrush brush(Color{kInk});
    for (const REAL width : {0.0F, 1.0F, 5.0F, NAN, inf}) {
        for (const DashStyle dash : {DashStyleSolid, DashStyleDot}) {
            for (const SmoothingMode mode : {SmoothingModeNone, SmoothingModeAntiAlias}) {
                Pen pen(Color{kInk}, width);
                pen.SetDashStyle(dash);
                c.graphics.SetSmoothingMode(mode);
                EXPECT_EQ(c.graphics.DrawLines(&pen, points, 5), Ok);
                EXPECT_EQ(c.graphics.DrawPolygon(&pen, points, 5), Ok);
                EXPECT_EQ(c.graphics.FillPolygon(&brush, points, 5), Ok);
                c.graphics.DrawEllipse(&pen, 1.0F, 1.0F, inf, 5.0F);
                c.graphics.DrawArc(&pen, 1.0F, 1.0F, 5.0F, 5.0F, NAN, inf);
                c.graphics.FillRectangle(&brush, -inf, 0.0F, inf, 5.0F);
            }
        }
    }
    c.graphics.SetSmoothingMode(SmoothingModeNone);
    c.graphics.Clear(Color(0U));
    const Pen pen(Color{kInk});
    c.graphics.DrawLine(&pen, 0, 0, 5, 0);
    EXPECT_EQ(c.Count(), 6);
}

}  // namespace
