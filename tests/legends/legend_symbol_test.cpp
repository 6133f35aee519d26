#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "ktl/imaging/bitmap_tools.h"
#include "ktl/legends/legend_image.h"
#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "ktl/shapes/shape_symbol.h"
#include "tests/shapes/canvas.h"

namespace {

using ktl_test::Bytes;
using ktl_test::Load;
using ktl_test::Store;

/// Ends a sample's handle.
struct EndHandle {
    void operator()(HBITMAP handle) const { DeleteObject(handle); }
};
using Sample = std::unique_ptr<HBITMAP__, EndHandle>;

/// A point legend that can be given a symbol made of shapes.
class SymbolLegend : public CLegend_Point {
  public:
    void GiveShapeSymbol() { ShapeSymbolObject.reset(new CShape_Symbol); }
};

class LegendSymbolTest : public ktl_test::DrawingTest {
  protected:
    LegendSymbolTest() {
        std::string folder = (std::filesystem::temp_directory_path() / "legendXXXXXX").string();
        m_folder = mkdtemp(folder.data());
    }
    ~LegendSymbolTest() override { std::filesystem::remove_all(m_folder); }

    CString PathOf(const char *name) const { return CString(m_folder.string() + "\\" + name); }
    CString MakePicture(const char *name, int width, int height) const {
        Gdiplus::Bitmap bitmap(width, height, Gdiplus::PixelFormat32bppARGB);
        Gdiplus::Graphics graphics(&bitmap);
        graphics.Clear(Gdiplus::Color(0, 128, 255));
        EXPECT_EQ(SaveBitmapToPng(&bitmap, PathOf(name)), 1);
        return PathOf(name);
    }
    CString MakeFile(const char *name) const {
        std::ofstream(m_folder / name) << "x";
        return PathOf(name);
    }

  private:
    std::filesystem::path m_folder;
};

TEST_F(LegendSymbolTest, TheExtensionTellsWhatASymbolFileDoes) {
    CLegend_Point legend;
    legend.SetSize(9);
    legend.SetSymbolFilePath(MakePicture("flag.png", 20, 30));
    EXPECT_FALSE(legend.IsShapeSymbol());
    ASSERT_NE(legend.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(legend.GetSize(), 30);
    EXPECT_EQ(legend.GetSymbolName(), "flag.png");

    legend.SetSymbolFilePath(MakeFile("cross.SBL"));
    EXPECT_TRUE(legend.IsShapeSymbol());
    EXPECT_NE(legend.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(legend.GetSize(), 9);

    legend.SetSymbolFilePath(MakeFile("note.txt"));
    EXPECT_TRUE(legend.IsShapeSymbol());
    EXPECT_NE(legend.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(legend.GetSymbolName(), "note.txt");

    legend.SetSymbolFilePath(MakeFile("broken.gif"));
    EXPECT_FALSE(legend.IsShapeSymbol());
    EXPECT_EQ(legend.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(legend.GetSize(), 9);

    legend.SetSymbolFilePath(PathOf("missing.png"));
    EXPECT_EQ(legend.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(legend.GetSymbolName(), "");
}

TEST_F(LegendSymbolTest, APictureIsComparedByNameCopiedByPixelsAndTakenAsSize) {
    CLegend_Point legend;
    legend.SetSize(9);
    legend.SetSymbolFilePath(MakePicture("flag.png", 20, 30));
    const std::unique_ptr<CLegend> clone(legend.Clone());
    auto &copy = dynamic_cast<CLegend_Point &>(*clone);
    ASSERT_NE(copy.GetBitmapSymbol(), nullptr);
    EXPECT_NE(copy.GetBitmapSymbol(), legend.GetBitmapSymbol());
    Gdiplus::Color color;
    copy.GetBitmapSymbol()->GetPixel(19, 29, &color);
    EXPECT_EQ(color.GetValue(), 0xFF0080FFU);
    // The copy's own size is the other's answer, which is the picture's.
    copy.SetSymbolFilePath(PathOf("missing.png"));
    EXPECT_EQ(copy.GetSize(), 30);

    CLegend_Point other;
    other.CLegend::Copy(&legend);
    EXPECT_EQ(legend.Compare(&other), 0);
    legend.UnionLegendValue(&other);
    EXPECT_TRUE(legend.IsShapeSymbol());
    EXPECT_EQ(legend.GetSymbolName(), "");
}

TEST_F(LegendSymbolTest, APictureTravelsAsAPngFile) {
    CLegend_Point legend;
    legend.SetSymbolFilePath(MakePicture("flag.png", 6, 4));
    const Bytes bytes = Store(legend, 201);
    ASSERT_GT(bytes.size(), 18U + 9U + 8U);
    EXPECT_EQ(bytes[18], 0);
    EXPECT_EQ((Bytes{bytes[28], bytes[29], bytes[30]}), (Bytes{'P', 'N', 'G'}));
    CLegend_Point copy;
    EXPECT_EQ(Load(copy, bytes, 201), 0U);
    ASSERT_NE(copy.GetBitmapSymbol(), nullptr);
    EXPECT_EQ(copy.GetSize(), 6);
    EXPECT_EQ(copy.GetSymbolName(), "");
    ktl_test::ExpectEveryPrefixThrows(bytes, 201, std::make_unique<CLegend_Point>);

    Bytes damaged = bytes;
    damaged[28] = 'X';
    EXPECT_EQ(Load(copy, damaged, 201), 0U);
    EXPECT_EQ(copy.GetBitmapSymbol(), nullptr);
}

TEST_F(LegendSymbolTest, AShapeSymbolIsCopiedAndFlaggedInTheStreamButNotReadBack) {
    SymbolLegend legend;
    legend.GiveShapeSymbol();
    const std::unique_ptr<CLegend> clone(legend.Clone());
    EXPECT_NE(dynamic_cast<CLegend_Point &>(*clone).GetShapeSymbol(), nullptr);
    const Bytes bytes = Store(legend, 201);
    EXPECT_EQ(bytes[23], 1);
    CLegend_Point copy;
    EXPECT_EQ(Load(copy, bytes, 201), 0U);
    EXPECT_EQ(copy.GetShapeSymbol(), nullptr);
}

TEST_F(LegendSymbolTest, PointSamplesShowDiscPictureOrRed) {
    SymbolLegend legend;
    legend.SetForeColor(RGB(0, 200, 0));
    legend.SetBackColor(RGB(0, 0, 0));
    legend.SetSize(9);
    const Sample disc(legend.GetIcon());
    EXPECT_EQ(disc->width, 16);
    EXPECT_EQ(disc->height, 16);
    EXPECT_EQ(disc->At(8, 8), 0xFF00C800U);
    EXPECT_EQ(disc->At(0, 0), 0xFFFFFFFFU);
    EXPECT_LT(disc->At(4, 8) & 0xFF, 0x80U);
    const Sample large(legend.GetOverView());
    EXPECT_EQ(large->width, 10);
    EXPECT_EQ(large->At(4, 4), 0xFF00C800U);
    EXPECT_LT(large->At(0, 4) & 0xFF, 0x80U);

    legend.GiveShapeSymbol();
    const Sample red(legend.GetIcon());
    EXPECT_EQ(red->At(0, 0), 0xFFFF0000U);
    EXPECT_EQ(red->At(15, 15), 0xFFFF0000U);

    legend.SetSymbolFilePath(MakePicture("flag.png", 20, 30));
    const Sample picture(legend.GetIcon());
    EXPECT_EQ(picture->At(8, 8), 0xFF0080FFU);
    const Sample square(legend.GetOverView());
    EXPECT_EQ(square->width, 31);
    EXPECT_EQ(square->height, 31);
    EXPECT_EQ(square->At(15, 15), 0xFF0080FFU);
}

TEST_F(LegendSymbolTest, LineAndAreaSamplesShowCasingAndFill) {
    CLegend_Polyline line;
    line.SetForeColor(RGB(255, 0, 0));
    line.SetBackColor(RGB(0, 0, 255));
    line.SetSize(4);
    const Sample icon(line.GetIcon());
    EXPECT_EQ(icon->width, 100);
    EXPECT_EQ(icon->height, 16);
    EXPECT_EQ(icon->At(50, 8), 0xFFFF0000U);
    EXPECT_EQ(icon->At(50, 1), 0xFFFFFFFFU);
    const Sample view(line.GetOverView());
    EXPECT_EQ(view->width, 256);
    EXPECT_EQ(view->height, 6);
    EXPECT_EQ(view->At(128, 3), 0xFFFF0000U);
    EXPECT_GT(view->At(128, 0) & 0xFF, 0xC0U);

    CLegend_Polygon area;
    area.SetForeColor(RGB(255, 0, 0));
    area.SetBackColor(RGB(0, 0, 255));
    const Sample areaIcon(area.GetIcon());
    EXPECT_EQ(areaIcon->At(50, 8), 0xFFFF0000U);
    EXPECT_EQ(areaIcon->At(0, 8), 0xFF0000FFU);
    const Sample areaView(area.GetOverView());
    EXPECT_EQ(areaView->width, 256);
    EXPECT_EQ(areaView->height, 50);
    EXPECT_EQ(areaView->At(255, 49), 0xFF0000FFU);

    CLegend_Text text;
    CLegend_Image image;
    EXPECT_EQ(text.GetIcon(), nullptr);
    EXPECT_EQ(image.GetOverView(), nullptr);
}

}  // namespace
