#include "ktl/platform/gdiplus/vector_page.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/gdiplus/canvas.h"

namespace {

using namespace Gdiplus;
using ktl::VectorPage;

std::string DrawnOn(VectorPage::Kind kind) {
    VectorPage page(kind, 200, 100);
    Graphics &g = *page.GetGraphics();
    const SolidBrush brush(Color(255, 0, 0));
    const Pen pen(Color(0, 0, 255), 3);
    const Point triangle[] = {{10, 10}, {90, 10}, {50, 80}};
    EXPECT_EQ(g.Clear(Color(255, 255, 255)), Ok);
    EXPECT_EQ(g.FillPolygon(&brush, triangle, 3), Ok);
    EXPECT_EQ(g.DrawPolygon(&pen, triangle, 3), Ok);
    const std::vector<BYTE> file = page.Finish();
    EXPECT_EQ(page.GetGraphics(), nullptr);
    EXPECT_TRUE(page.Finish().empty());
    return {file.begin(), file.end()};
}

TEST(VectorPage, AnSvgHoldsTheFiguresAsPaths) {
    const ktl::test::DrawingStart started;
    const std::string svg = DrawnOn(VectorPage::Kind::Svg);
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    EXPECT_NE(svg.find("width=\"150"), std::string::npos) << "pixels are 3/4 point";
    EXPECT_NE(svg.find("<path"), std::string::npos);
    EXPECT_EQ(svg.find("<image"), std::string::npos);
    // The stroke keeps its width of 3 pixels.
    EXPECT_NE(svg.find("stroke-width"), std::string::npos);
    EXPECT_NE(svg.find("</svg>"), std::string::npos);
}

TEST(VectorPage, APdfIsWhole) {
    const ktl::test::DrawingStart started;
    const std::string pdf = DrawnOn(VectorPage::Kind::Pdf);
    EXPECT_EQ(pdf.rfind("%PDF-", 0), 0U);
    EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
    EXPECT_NE(pdf.find("[ 0 0 150 75 ]"), std::string::npos) << "the page's size in points";
}

TEST(VectorPage, ThereIsNoneWithoutDrawing) {
    VectorPage page(VectorPage::Kind::Svg, 10, 10);
    EXPECT_EQ(page.GetGraphics(), nullptr);
    EXPECT_TRUE(page.Finish().empty());
    const ktl::test::DrawingStart started;
    EXPECT_EQ(VectorPage(VectorPage::Kind::Svg, 0, 10).GetGraphics(), nullptr);
}

}  // namespace
