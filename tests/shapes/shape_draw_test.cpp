#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <random>
#include <tuple>

#include "ktl/core/transform.h"
#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "ktl/shapes/label_info.h"
#include "ktl/shapes/pixel_map.h"
#include "ktl/shapes/shape_point.h"
#include "ktl/shapes/shape_symbol.h"
#include "tests/shapes/canvas.h"
#include "tests/shapes/shape_text.h"

namespace {

using ktl_test::Area;
using ktl_test::Box;
using ktl_test::Canvas;
using ktl_test::kWhite;
using ktl_test::Line;
using ktl_test::Points;
using ktl_test::TextOf;

class ShapeDrawTest : public ktl_test::DrawingTest {};

constexpr Gdiplus::ARGB kRed = 0xFFFF0000;
constexpr Gdiplus::ARGB kBlue = 0xFF0000FF;

/// One world unit is one pixel; client y is 100 - y.
const CExtent kView(0, 0, 100, 100);
constexpr double kRatio = 1.0;

void Paint(CLegend &legend, short size) {
    legend.SetForeColor(RGB(255, 0, 0));
    legend.SetBackColor(RGB(0, 0, 255));
    legend.SetSize(size);
}

/// A shape on a white surface.
class Drawn : public Canvas {
  public:
    Drawn(CShape &shape, CLegend &legend, int offsetX = 0, int offsetY = 0) : Canvas(100, 100) {
        shape.Draw(&graphics, &legend, kRatio, kView, offsetX, offsetY, 0);
    }
};

TEST_F(ShapeDrawTest, APixelIsTheOneThatTheTransformsGive) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-3.0, 3.0);
    const CExtent extent(-0.37, -0.11, 0.9, 0.63);
    for (int i = 0; i < 2000; ++i) {
        const double ratio = 1.0 + 1000.0 * std::abs(coordinate(random));
        const double x = coordinate(random);
        const double y = coordinate(random);
        const ktl::PixelMap map(ratio, extent, 13, -5);
        ASSERT_EQ(map.X(x), World2ClientX(extent, ratio, x) + 13);
        ASSERT_EQ(map.Y(y), World2ClientY(extent, ratio, y) - 5);
    }
    const ktl::PixelMap far(1e300, extent, INT_MAX, INT_MIN);
    EXPECT_TRUE(far.X(1.0) == INT_MAX && far.Y(2.0) == INT_MIN);
}

TEST_F(ShapeDrawTest, APointIsAPixelADiscOrAPicture) {
    CShape_Point point;
    point.SetPoint(20, 80);
    CLegend_Point legend;
    Paint(legend, 1);
    const Drawn pixel(point, legend, 2, 3);
    EXPECT_EQ(pixel.At(22, 23), kRed);
    EXPECT_EQ(pixel.CountPainted(), 1);

    Paint(legend, 9);
    const Drawn disc(point, legend);
    EXPECT_EQ(disc.At(20, 20), kRed);
    for (const int x : {16, 25}) EXPECT_EQ(disc.At(x, 20), kBlue) << x;
    for (const int x : {15, 26}) EXPECT_EQ(disc.At(x, 20), kWhite) << x;

    // The state changes nothing, and a legend of another kind serves as well.
    point.State = true;
    CLegend_Polygon other;
    Paint(other, 9);
    const Drawn same(point, other);
    EXPECT_EQ(same.Pixels(), disc.Pixels());
}

class PictureLegend : public CLegend_Point {
  public:
    PictureLegend(int width, int height) {
        ShapeSymbol = false;
        BitmapSymbol = std::make_unique<Gdiplus::Bitmap>(width, height, Gdiplus::PixelFormat32bppARGB);
        BitmapSymbol->SetResolution(300.0F, 300.0F);
        Gdiplus::Graphics graphics(BitmapSymbol.get());
        graphics.Clear(Gdiplus::Color(kRed));
    }
    void UseShapeSymbol() { ShapeSymbol = true; }
};

TEST_F(ShapeDrawTest, APictureStandsOnItsMiddleAtItsOwnSize) {
    CShape_Point point;
    point.SetPoint(50, 50);
    PictureLegend legend(7, 4);
    const Drawn canvas(point, legend);
    EXPECT_EQ(canvas.CountPainted(), 28);
    EXPECT_EQ(canvas.At(47, 48), kRed);
    EXPECT_EQ(canvas.At(53, 51), kRed);
    legend.UseShapeSymbol();
    const Drawn disc(point, legend);
    EXPECT_NE(disc.CountPainted(), 28);
}

TEST_F(ShapeDrawTest, AnAreaIsFilledAndOutlinedThreeWide) {
    CShape_Polygon area = Area("20 20, 60 20, 60 60, 20 60");
    CLegend_Polygon legend;
    Paint(legend, 1);
    const Drawn canvas(area, legend, 5, 0);
    EXPECT_EQ(canvas.At(40, 60), kRed);
    for (const int x : {24, 25, 26, 64, 65, 66}) EXPECT_EQ(canvas.At(x, 60), kBlue) << x;
    for (const int x : {23, 67}) EXPECT_EQ(canvas.At(x, 60), kWhite) << x;
    EXPECT_EQ(canvas.CountPainted(), 43 * 43);
    area.State = true;
    const Drawn hovered(area, legend);
    EXPECT_EQ(hovered.At(40, 60), 0xFFFF7F7FU);
    EXPECT_EQ(hovered.At(20, 60), 0xFF7F7FFFU);
}

TEST_F(ShapeDrawTest, LineStylesDrawACasingUnderTheCore) {
    CShape_Polyline line = Line("10 50, 90 50");
    CLegend_Polyline legend;
    Paint(legend, 5);
    for (const int style : {0, 1, 2, 3, 4, 5}) {
        legend.SetLineStyle(style);
        const Drawn canvas(line, legend);
        EXPECT_EQ(canvas.At(50, 47), style >= 2 && style <= 4 ? kBlue : kWhite) << style;
        EXPECT_EQ(canvas.At(12, 50), style == 3 ? kWhite : kRed) << style;
    }
    Canvas casing(100, 100);
    line.DrawEx(1, &casing.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(casing.At(50, 50), kBlue);
}

TEST_F(ShapeDrawTest, ADragIsMadePermanentOnceAPass) {
    struct Case {
        int style, commit;
        double x, y;
    };
    Canvas canvas(20, 20);
    for (const Case &c : {Case{1, 0, 0, 0}, {1, -7, 5, -3}, {2, 1, 10, -6}, {4, 2, 10, -6}, {5, 1, 5, -3}}) {
        CLegend_Polyline legend;
        legend.SetLineStyle(c.style);
        CShape_Polyline line = Line("0 0, 1 1");
        line.Draw(&canvas.graphics, &legend, 2.0, kView, 10, 6, c.commit);
        EXPECT_TRUE(line.GetFirstPoint().x == c.x && line.GetMinY() == c.y) << c.style << ' ' << c.commit;
    }
    CLegend_Polygon legend;
    // A shape out of sight moves too.
    CShape_Polygon area = Area("900 900, 901 900, 901 901");
    area.Draw(&canvas.graphics, &legend, 2.0, kView, 10, 6, 1);
    EXPECT_EQ(area.GetFirstPoint().x, 905);
    CShape_Point point;
    point.Draw(nullptr, nullptr, 2.0, kView, 10, 6, 1);
    EXPECT_EQ(point.GetPoint().y, -3);
}

TEST_F(ShapeDrawTest, TrackersMarkEveryVertex) {
    Canvas canvas(100, 100);
    Line("20 80, 60 80").DrawTracker(&canvas.graphics, kRatio, kView, 1, 0);
    EXPECT_EQ(canvas.At(21, 20), 0xFFFFFF00U);
    EXPECT_EQ(canvas.At(17, 16), 0xFF5B5B5BU);
    EXPECT_EQ(canvas.At(25, 24), 0xFF5B5B5BU);
    EXPECT_EQ(canvas.CountPainted(), 2 * 81);
    Canvas one(100, 100);
    CShape_Point point;
    point.SetPoint(20, 80);
    point.DrawTracker(&one.graphics, kRatio, kView, 1, 0);
    Area("60 80").DrawTracker(&one.graphics, kRatio, kView, 1, 0);
    EXPECT_EQ(one.Pixels(), canvas.Pixels());
}

/// A walk of vertices, some on one pixel, some far outside of the surface.
std::vector<CPointD> RandomWalk(std::mt19937 &random, int count) {
    std::uniform_real_distribution<double> place(-150.0, 250.0);
    std::uniform_real_distribution<double> step(-1.5, 1.5);
    std::uniform_int_distribution<int> choice(0, 9);
    std::vector<CPointD> walk;
    CPointD at(place(random), place(random));
    for (int i = 0; i < count; ++i) {
        const int kind = choice(random);
        if (kind == 0) at = CPointD(place(random), place(random));
        if (kind == 1) at = CPointD(place(random) * 1e4, place(random));
        if (kind > 1) at.Offset(step(random), step(random));
        walk.push_back(at);
    }
    return walk;
}

struct Look {
    Gdiplus::SmoothingMode smoothing;
    short size;
    short alpha;
};
const Look kLooks[] = {
    {Gdiplus::SmoothingModeNone, 1, 255},      {Gdiplus::SmoothingModeNone, 4, 100},
    {Gdiplus::SmoothingModeNone, 12, 255},     {Gdiplus::SmoothingModeAntiAlias, 1, 255},
    {Gdiplus::SmoothingModeAntiAlias, 7, 100},
};

/// The shape looks as if all its vertices, or those that a line's filter keeps, were handed to the surface.
template <class Legend, class Shape>
void ExpectLook(const std::vector<CPointD> &vertices, const Look &look, int round) {
    constexpr bool kIsArea = std::is_same_v<Shape, CShape_Polygon>;
    Legend legend;
    Paint(legend, look.size);
    legend.SetAlpha(look.alpha);
    Shape shape;
    std::vector<Gdiplus::Point> pixels;
    for (const CPointD &p : vertices) {
        shape.AddPoint(p);
        const Gdiplus::Point pixel = World2Client(kView, kRatio, p);
        if (!kIsArea && pixels.size() >= 2 && std::abs(pixel.X - pixels.back().X) < 2 &&
            std::abs(pixel.Y - pixels.back().Y) < 2) {
            continue;
        }
        pixels.push_back(pixel);
    }
    if constexpr (!kIsArea) {
        legend.SetLineStyle(round % 4 == 0 ? 4 : 1);
        legend.SetDashStyle(Gdiplus::DashStyleDash);
        shape.SetClosed(round % 3 == 0);
    }
    Canvas canvas(100, 100);
    Canvas plain(100, 100);
    canvas.graphics.SetSmoothingMode(look.smoothing);
    plain.graphics.SetSmoothingMode(look.smoothing);
    const auto count = static_cast<int>(pixels.size());
    const std::unique_ptr<Gdiplus::Brush> brush(legend.GetForeBrush(0));
    const std::unique_ptr<Gdiplus::Pen> pen(kIsArea ? legend.GetBackPen(0) : legend.GetForePen(0));
    if (kIsArea) {
        shape.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
        plain.graphics.FillPolygon(brush.get(), pixels.data(), count);
    } else {
        shape.DrawEx(0, &canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
    }
    if (kIsArea || round % 3 == 0) {
        plain.graphics.DrawPolygon(pen.get(), pixels.data(), count);
    } else {
        plain.graphics.DrawLines(pen.get(), pixels.data(), count);
    }
    ASSERT_EQ(canvas.Pixels(), plain.Pixels()) << kIsArea << ' ' << look.smoothing << ' ' << look.size << ' ' << round;
}

TEST_F(ShapeDrawTest, AreasAndLinesLookAsIfEveryKeptVertexWereHandedOver) {
    std::mt19937 random(4711);
    std::vector<std::vector<CPointD>> lists;
    for (int i = 0; i < 200; ++i) lists.push_back(RandomWalk(random, 60));
    for (const char *degenerate : {"", "5 5", "5 5, 5 5", "5 5, 5.2 5.2, 5.1 5", "5 5, 30 5", "5 5, 20 5, 18 5, 20 5",
                                   "5 5, 20 5, 21 4", "5 5, 6 5, 7 5, 8 5, 9 5"}) {
        for (int i = 0; i < 2; ++i) lists.push_back(Points(degenerate));
    }
    for (std::size_t i = 0; i < lists.size(); ++i) {
        ExpectLook<CLegend_Polygon, CShape_Polygon>(lists[i], kLooks[i / 40 % 5], static_cast<int>(i));
        ExpectLook<CLegend_Polyline, CShape_Polyline>(lists[i], kLooks[i / 40 % 5], static_cast<int>(i));
    }
    Canvas canvas(10, 10);
    CLegend_Polygon legend;
    Area("5 5, 30 5").Draw(nullptr, &legend, kRatio, kView, 0, 0, 0);
    Line("5 5, 30 5").Draw(&canvas.graphics, nullptr, kRatio, kView, 0, 0, 0);
}

TEST_F(ShapeDrawTest, AShapeThatATransformBringsIntoSightIsDrawn) {
    CLegend_Polygon legend;
    Paint(legend, 1);
    CShape_Polygon area = Area("-180 20, -140 20, -140 60, -180 60");
    Drawn canvas(area, legend);
    EXPECT_EQ(canvas.CountPainted(), 0);
    canvas.graphics.TranslateTransform(200.0F, 0.0F);
    area.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(canvas.At(40, 60), kRed);
}

/// A symbol of the given shapes.
class GivenSymbol : public CShape_Symbol {
  public:
    void Take(CShape *shape) { ShapeArray.Add(shape); }
};

TEST_F(ShapeDrawTest, ASymbolIsAPictureOfSixteenWithAWhiteFrame) {
    GivenSymbol symbol;
    for (const bool isEmpty : {true, false}) {
        if (!isEmpty) symbol.Take(new CShape_Polygon(Area("500 500, 900 500, 900 900, 500 900")));
        const HBITMAP handle = symbol.GetHBitmap(100, 100);
        ASSERT_NE(handle, nullptr);
        EXPECT_TRUE(handle->width == 16 && handle->height == 16);
        EXPECT_EQ(handle->At(8, 8), isEmpty ? 0xFFFFFFFFU : 0xFF000000U);
        for (int i = 0; i < 16; ++i) {
            for (const auto &[x, y] : {std::pair{i, 0}, {i, 15}, {0, i}, {15, i}}) {
                EXPECT_EQ(handle->At(x, y), 0xFFFFFFFFU) << x << ' ' << y;
            }
        }
        DeleteObject(handle);
    }
}

using Labels = CArray<STRUCT_LABEL_INFO, STRUCT_LABEL_INFO>;

Labels LabelsOf(CShape &shape, const char *text, Gdiplus::Graphics &graphics) {
    CLegend_Text legend;
    Labels labels;
    shape.SetShapeID(4);
    shape.GetLabelInfo(text, &legend, nullptr, labels, &graphics, kRatio, kView, 7, 9, 0);
    return labels;
}

TEST_F(ShapeDrawTest, TheSpaceBetweenLettersGoesDownByTwos) {
    const CShape_Polyline line;
    for (const auto &[length, count, space] :
         {std::tuple{80, 1, 40}, {1000, 3, 80}, {20, 9, 2}, {19, 9, -1}, {0, 0, -1}, {161, 1, 80}, {159, 1, 78}}) {
        for (const int size : {0, 64}) EXPECT_EQ(line.GetTextSpace(length, count, size), space) << length;
    }
}

TEST_F(ShapeDrawTest, ALineCarriesAsManyCopiesAsFit) {
    struct Case {
        const char *line, *text, *anchors, *letters;
    };
    const Case cases[] = {
        {"0 100, 80 100", "A", "40 0", "A"},
        {"0 100, 1000 100", "ABC", "100 0, 180 0, 260 0, 420 0, 500 0, 580 0, 740 0, 820 0, 900 0", "ABCABCABC"},
        {"0 100, 10 100", "ABCDEFGHI", "", ""},
        {"0 100, 0 100, 0 60, 0 60, 0 20", "A", "0 40", "A"},
        {"0 100, 80 100", "", "", ""},
    };
    Canvas canvas(10, 10);
    for (const Case &c : cases) {
        CShape_Polyline line = Line(c.line);
        const Labels labels = LabelsOf(line, c.text, canvas.graphics);
        std::vector<CPoint> anchors;
        std::string letters;
        for (const STRUCT_LABEL_INFO &label : labels) {
            anchors.push_back(label.Point);
            letters += label.Text;
            EXPECT_EQ(label.ShapeID, 4);
            EXPECT_NEAR(label.Rect.X + label.Rect.Width / 2, static_cast<float>(label.Point.x), 0.01);
        }
        EXPECT_EQ(TextOf(anchors), c.anchors) << c.line;
        EXPECT_EQ(letters, c.letters) << c.line;
    }
}

TEST_F(ShapeDrawTest, AreasAreLabelledInTheMiddleAndPointsFromTheirAnchor) {
    Canvas canvas(10, 10);
    CShape_Polygon area = Area("10 10, 30 10, 30 90");
    const Labels areaLabels = LabelsOf(area, "name", canvas.graphics);
    ASSERT_EQ(areaLabels.GetSize(), 1);
    EXPECT_EQ(areaLabels[0].Point, CPoint(27, 59));
    EXPECT_GT(areaLabels[0].Rect.Width, 10.0F);
    EXPECT_NEAR(areaLabels[0].Rect.Y + areaLabels[0].Rect.Height / 2, 59.0F, 0.01F);
    CShape_Point point;
    point.SetPoint(10, 10);
    const Labels pointLabels = LabelsOf(point, "a name of more than sixteen", canvas.graphics);
    ASSERT_EQ(pointLabels.GetSize(), 1);
    EXPECT_EQ(pointLabels[0].Point, CPoint(17, 99));
    EXPECT_EQ(pointLabels[0].Text, "a name of more t\nhan sixteen");
    EXPECT_GT(pointLabels[0].Rect.Height, areaLabels[0].Rect.Height * 1.5F);
    EXPECT_LT(pointLabels[0].Rect.Y, 50.0F);
}

}  // namespace
