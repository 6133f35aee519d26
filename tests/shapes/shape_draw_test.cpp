#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>

#include "ktl/core/transform.h"
#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "ktl/shapes/label_info.h"
#include "ktl/shapes/screen_path.h"
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
    const ktl::PixelMap far(1e300, extent, 2147483647, -2147483647 - 1);
    EXPECT_EQ(far.X(1.0), 2147483647);
    EXPECT_EQ(far.Y(2.0), -2147483647 - 1);
}

TEST_F(ShapeDrawTest, APointIsAPixelADiscOrAPicture) {
    CShape_Point point;
    point.SetPoint(20, 80);
    CLegend_Point legend;
    Paint(legend, 1);
    Canvas pixel(100, 100);
    point.Draw(&pixel.graphics, &legend, kRatio, kView, 2, 3, 0);
    EXPECT_EQ(pixel.At(22, 23), kRed);
    EXPECT_EQ(pixel.CountPainted(), 1);

    Paint(legend, 9);
    Canvas disc(100, 100);
    point.Draw(&disc.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(disc.At(20, 20), kRed);
    EXPECT_EQ(disc.At(16, 20), kBlue);
    EXPECT_EQ(disc.At(25, 20), kBlue);
    EXPECT_EQ(disc.At(15, 20), kWhite);
    EXPECT_EQ(disc.At(26, 20), kWhite);

    // The state changes nothing, and a legend of another kind serves as well.
    point.State = true;
    CLegend_Polygon other;
    Paint(other, 9);
    Canvas same(100, 100);
    point.Draw(&same.graphics, &other, kRatio, kView, 0, 0, 0);
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
    Canvas canvas(100, 100);
    point.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(canvas.CountPainted(), 28);
    EXPECT_EQ(canvas.At(47, 48), kRed);
    EXPECT_EQ(canvas.At(53, 51), kRed);
    legend.UseShapeSymbol();
    Canvas disc(100, 100);
    point.Draw(&disc.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_NE(disc.CountPainted(), 28);
}

TEST_F(ShapeDrawTest, AnAreaIsFilledAndOutlinedThreeWide) {
    CShape_Polygon area = Area("20 20, 60 20, 60 60, 20 60");
    CLegend_Polygon legend;
    Paint(legend, 1);
    Canvas canvas(100, 100);
    area.Draw(&canvas.graphics, &legend, kRatio, kView, 5, 0, 0);
    EXPECT_EQ(canvas.At(40, 60), kRed);
    for (const int x : {24, 25, 26, 64, 65, 66}) EXPECT_EQ(canvas.At(x, 60), kBlue) << x;
    for (const int x : {23, 67}) EXPECT_EQ(canvas.At(x, 60), kWhite) << x;
    EXPECT_EQ(canvas.CountPainted(), 43 * 43);
    area.State = true;
    area.Draw(&canvas.graphics, &legend, kRatio, kView, 5, 0, 0);
    EXPECT_EQ(canvas.At(40, 60), 0xFFFF7F7FU);
}

TEST_F(ShapeDrawTest, DegenerateShapesDrawAsTheSurfaceDoes) {
    CLegend_Polygon areaLegend;
    CLegend_Polyline lineLegend;
    Paint(areaLegend, 1);
    Paint(lineLegend, 1);
    for (const char *text : {"", "5 5", "5 5, 5 5", "5 5, 5.2 5.2, 5.1 5", "5 5, 30 5"}) {
        CShape_Polygon area = Area(text);
        CShape_Polyline line = Line(text);
        Canvas canvas(40, 100);
        Canvas expected(40, 100);
        area.Draw(&canvas.graphics, &areaLegend, kRatio, kView, 0, 0, 0);
        line.Draw(&canvas.graphics, &lineLegend, kRatio, kView, 0, 0, 0);
        std::vector<Gdiplus::Point> pixels;
        for (const CPointD &p : Points(text)) pixels.push_back(World2Client(kView, kRatio, p));
        const Gdiplus::Pen back(Gdiplus::Color(kBlue), 3.0F);
        const std::unique_ptr<Gdiplus::Pen> fore(lineLegend.GetForePen(0));
        expected.graphics.DrawPolygon(&back, pixels.data(), static_cast<int>(pixels.size()));
        expected.graphics.DrawLines(fore.get(), pixels.data(), std::min(2, static_cast<int>(pixels.size())));
        EXPECT_EQ(canvas.Pixels(), expected.Pixels()) << text;
        area.Draw(nullptr, &areaLegend, kRatio, kView, 0, 0, 0);
        line.Draw(&canvas.graphics, nullptr, kRatio, kView, 0, 0, 0);
    }
}

std::string KeptOf(const CShape_Polyline &line, const Gdiplus::Graphics &graphics) {
    ktl::ScreenPath path(ktl::ViewBox::For(graphics, nullptr));
    path.AddLine(const_cast<CShape_Polyline &>(line).GetPointArray(), ktl::PixelMap(kRatio, kView));
    std::string text;
    for (int i = 0; i < path.Count(); ++i) {
        text += std::to_string(path.Data()[i].X) + " " + std::to_string(100 - path.Data()[i].Y) + ",";
    }
    return text;
}

TEST_F(ShapeDrawTest, ALineKeepsItsFirstTwoVerticesAndThoseTwoPixelsApart) {
    struct Case {
        const char *line;
        const char *kept;
    };
    const Case cases[] = {
        {"5 5, 5 5", "5 5,5 5,"},
        {"5 5, 6 5, 7 5, 8 5, 9 5", "5 5,6 5,8 5,"},
        {"5 5, 20 5, 21 6, 21 7", "5 5,20 5,21 7,"},
        {"5 5, 20 5, 18 5, 20 5", "5 5,20 5,18 5,20 5,"},
        {"5 5, 20 5, 21 4", "5 5,20 5,"},
        {"5 5", "5 5,"},
        {"", ""},
    };
    Canvas canvas(100, 100);
    for (const Case &c : cases) EXPECT_EQ(KeptOf(Line(c.line), canvas.graphics), c.kept) << c.line;
    CShape_Polyline dense;
    for (int i = 0; i < 1000; ++i) dense.AddPoint(CPointD(5 + i * 0.0005, 5));
    EXPECT_EQ(KeptOf(dense, canvas.graphics), "5 5,5 5,");
}

TEST_F(ShapeDrawTest, LineStylesDrawACasingUnderTheCore) {
    CShape_Polyline line = Line("10 50, 90 50");
    for (const int style : {0, 1, 2, 3, 4, 5}) {
        SCOPED_TRACE(style);
        CLegend_Polyline legend;
        Paint(legend, 5);
        legend.SetLineStyle(style);
        Canvas canvas(100, 100);
        line.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
        const bool isCased = style >= 2 && style <= 4;
        EXPECT_EQ(canvas.At(50, 47), isCased ? kBlue : kWhite);
        EXPECT_EQ(canvas.At(12, 50), style == 3 ? kWhite : kRed);
    }
    CLegend_Polyline legend;
    Paint(legend, 5);
    Canvas casing(100, 100);
    line.DrawEx(1, &casing.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(casing.At(50, 50), kBlue);
}

TEST_F(ShapeDrawTest, AClosedLineDrawsItsLastEdge) {
    CShape_Polyline line = Line("20 20, 60 20, 60 60, 20 60");
    CLegend_Polyline legend;
    Paint(legend, 1);
    Canvas open(100, 100);
    line.Draw(&open.graphics, &legend, kRatio, kView, 0, 0, 0);
    line.SetClosed(true);
    Canvas closed(100, 100);
    line.Draw(&closed.graphics, &legend, kRatio, kView, 0, 0, 0);
    EXPECT_EQ(open.At(20, 60), kWhite);
    EXPECT_EQ(closed.At(20, 60), kRed);
    EXPECT_EQ(closed.At(40, 60), kWhite);
}

TEST_F(ShapeDrawTest, ADragIsMadePermanentOnceAPass) {
    struct Case {
        int style;
        int commit;
        double x;
        double y;
    };
    Canvas canvas(20, 20);
    for (const Case &c : {Case{1, 0, 0, 0}, Case{1, 1, 5, -3}, Case{1, -7, 5, -3}, Case{2, 1, 10, -6},
                          Case{3, 1, 10, -6}, Case{4, 2, 10, -6}, Case{5, 1, 5, -3}}) {
        CLegend_Polyline legend;
        legend.SetLineStyle(c.style);
        CShape_Polyline line = Line("0 0, 1 1");
        line.Draw(&canvas.graphics, &legend, 2.0, kView, 10, 6, c.commit);
        EXPECT_EQ(line.GetFirstPoint().x, c.x) << c.style;
        EXPECT_EQ(line.GetMinY(), c.y) << c.style;
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
    EXPECT_EQ(canvas.At(26, 20), kWhite);
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

TEST_F(ShapeDrawTest, AnAreaLooksAsIfEveryVertexWereHandedOver) {
    std::mt19937 random(4711);
    for (const Look &look : kLooks) {
        for (int round = 0; round < 40; ++round) {
            CLegend_Polygon legend;
            Paint(legend, look.size);
            legend.SetAlpha(look.alpha);
            CShape_Polygon area;
            std::vector<Gdiplus::Point> pixels;
            for (const CPointD &p : RandomWalk(random, 60)) {
                area.AddPoint(p);
                pixels.push_back(World2Client(kView, kRatio, p));
            }
            Canvas canvas(100, 100);
            Canvas plain(100, 100);
            canvas.graphics.SetSmoothingMode(look.smoothing);
            plain.graphics.SetSmoothingMode(look.smoothing);
            area.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
            const std::unique_ptr<Gdiplus::Brush> brush(legend.GetForeBrush(0));
            const std::unique_ptr<Gdiplus::Pen> pen(legend.GetBackPen(0));
            plain.graphics.FillPolygon(brush.get(), pixels.data(), static_cast<int>(pixels.size()));
            plain.graphics.DrawPolygon(pen.get(), pixels.data(), static_cast<int>(pixels.size()));
            ASSERT_EQ(canvas.Pixels(), plain.Pixels()) << look.smoothing << ' ' << look.size << " round " << round;
        }
    }
}

/// The vertices that the line's filter keeps, taken plainly.
std::vector<Gdiplus::Point> Filtered(const std::vector<CPointD> &walk) {
    std::vector<Gdiplus::Point> kept;
    for (const CPointD &p : walk) {
        const Gdiplus::Point pixel = World2Client(kView, kRatio, p);
        if (kept.size() >= 2 && std::abs(pixel.X - kept.back().X) < 2 && std::abs(pixel.Y - kept.back().Y) < 2)
            continue;
        kept.push_back(pixel);
    }
    return kept;
}

TEST_F(ShapeDrawTest, ALineLooksAsIfEveryKeptVertexWereHandedOver) {
    std::mt19937 random(815);
    for (const Look &look : kLooks) {
        for (int round = 0; round < 40; ++round) {
            CLegend_Polyline legend;
            Paint(legend, look.size);
            legend.SetAlpha(look.alpha);
            legend.SetLineStyle(round % 4 == 0 ? 4 : 1);
            legend.SetDashStyle(Gdiplus::DashStyleDash);
            const std::vector<CPointD> walk = RandomWalk(random, 60);
            CShape_Polyline line;
            for (const CPointD &p : walk) line.AddPoint(p);
            line.SetClosed(round % 3 == 0);
            Canvas canvas(100, 100);
            Canvas plain(100, 100);
            canvas.graphics.SetSmoothingMode(look.smoothing);
            plain.graphics.SetSmoothingMode(look.smoothing);
            line.DrawEx(0, &canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
            const std::unique_ptr<Gdiplus::Pen> pen(legend.GetForePen(0));
            const std::vector<Gdiplus::Point> pixels = Filtered(walk);
            if (line.IsClosed()) {
                plain.graphics.DrawPolygon(pen.get(), pixels.data(), static_cast<int>(pixels.size()));
            } else {
                plain.graphics.DrawLines(pen.get(), pixels.data(), static_cast<int>(pixels.size()));
            }
            ASSERT_EQ(canvas.Pixels(), plain.Pixels()) << look.smoothing << ' ' << look.size << " round " << round;
        }
    }
}

TEST_F(ShapeDrawTest, AShapeThatATransformBringsIntoSightIsDrawn) {
    CLegend_Polygon legend;
    Paint(legend, 1);
    CShape_Polygon area = Area("-180 20, -140 20, -140 60, -180 60");
    Canvas canvas(100, 100);
    area.Draw(&canvas.graphics, &legend, kRatio, kView, 0, 0, 0);
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
        EXPECT_EQ(handle->width, 16);
        EXPECT_EQ(handle->height, 16);
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
    struct Case {
        int length;
        int count;
        int space;
    };
    const CShape_Polyline line;
    for (const Case &c : {Case{80, 1, 40}, Case{10, 9, -1}, Case{1000, 3, 80}, Case{20, 9, 2}, Case{19, 9, -1},
                          Case{0, 0, -1}, Case{161, 1, 80}, Case{159, 1, 78}}) {
        for (const int size : {0, 12, 64}) EXPECT_EQ(line.GetTextSpace(c.length, c.count, size), c.space) << c.length;
    }
}

TEST_F(ShapeDrawTest, ALineCarriesAsManyCopiesAsFit) {
    struct Case {
        const char *line;
        const char *text;
        const char *anchors;
        const char *letters;
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
