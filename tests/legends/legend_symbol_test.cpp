#include <memory>

#include "ktl/imaging/bitmap_tools.h"
#include "ktl/legends/legend_image.h"
#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "ktl/shapes/shape_symbol.h"
#include "tests/shapes/canvas.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl_test::Bytes;
using ktl_test::Load;
using ktl_test::Store;

/// Ends a sample's handle.
struct EndHandle {
    void operator()(HBITMAP handle) const { DeleteObject(handle); }
};
using Sample = std::unique_ptr<HBITMAP__, EndHandle>;

struct Probe {
    int x, y;
    std::uint32_t color;
};

void ExpectSample(HBITMAP handle, int width, int height, const std::vector<Probe> &probes) {
    const Sample sample(handle);
    ASSERT_NE(handle, nullptr);
    EXPECT_TRUE(sample->width == width && sample->height == height) << sample->width << ' ' << sample->height;
    for (const Probe &p : probes) EXPECT_EQ(sample->At(p.x, p.y), p.color) << width << ' ' << p.x << ' ' << p.y;
}

/// A point legend that can be given a symbol made of shapes.
class SymbolLegend : public CLegend_Point {
  public:
    void GiveShapeSymbol() { ShapeSymbolObject.reset(new CShape_Symbol); }
};

class LegendSymbolTest : public ktl_test::DrawingTest {
  protected:
    CString MakePicture(int width, int height) const {
        Gdiplus::Bitmap bitmap(width, height, Gdiplus::PixelFormat32bppARGB);
        Gdiplus::Graphics(&bitmap).Clear(Gdiplus::Color(0, 128, 255));
        EXPECT_EQ(SaveBitmapToPng(&bitmap, m_folder.Name("flag.png")), 1);
        return m_folder.Name("flag.png");
    }
    CString MakeFile(const char *name) const {
        m_folder.Write(name, "x");
        return m_folder.Name(name);
    }

    ktl::test::ScratchFolder m_folder;
};

TEST_F(LegendSymbolTest, TheExtensionTellsWhatASymbolFileDoes) {
    MakePicture(20, 30);
    MakeFile("cross.SBL");
    MakeFile("note.txt");
    MakeFile("broken.gif");
    struct Case {
        const char *file;
        int isShapeSymbol, hasPicture, size;
    };
    CLegend_Point legend;
    legend.SetSize(9);
    for (const Case &c : {Case{"flag.png", 0, 1, 30},
                          {"cross.SBL", 1, 1, 9},
                          {"note.txt", 1, 1, 9},
                          {"broken.gif", 0, 0, 9},
                          {"flag.png", 0, 1, 30},
                          {"missing", 0, 0, 9}}) {
        legend.SetSymbolFilePath(m_folder.Name(c.file));
        EXPECT_TRUE(legend.IsShapeSymbol() == c.isShapeSymbol && legend.GetSize() == c.size) << c.file;
        EXPECT_EQ(legend.GetBitmapSymbol() != nullptr, c.hasPicture) << c.file;
        EXPECT_EQ(legend.GetSymbolName(), m_folder.Has(c.file) ? c.file : "") << c.file;
    }
}

TEST_F(LegendSymbolTest, APictureIsComparedByNameCopiedByPixelsAndTakenAsSize) {
    CLegend_Point legend;
    legend.SetSize(9);
    legend.SetSymbolFilePath(MakePicture(20, 30));
    const std::unique_ptr<CLegend> clone(legend.Clone());
    auto &copy = dynamic_cast<CLegend_Point &>(*clone);
    EXPECT_NE(copy.GetBitmapSymbol(), legend.GetBitmapSymbol());
    Gdiplus::Color color;
    copy.GetBitmapSymbol()->GetPixel(19, 29, &color);
    EXPECT_EQ(color.GetValue(), 0xFF0080FFU);
    // The copy's own size is the other's answer, which is the picture's.
    copy.SetSymbolFilePath(m_folder.Name("missing.png"));
    EXPECT_EQ(copy.GetSize(), 30);

    CLegend_Point other;
    other.CLegend::Copy(&legend);
    EXPECT_EQ(legend.Compare(&other), 0);
    CLegend_Point named;
    named.CLegend::Copy(&other);
    EXPECT_EQ(named.Compare(&other), 1);
    named.SetSymbolFilePath(MakeFile("note.txt"));
    EXPECT_EQ(named.Compare(&other), 0);
    legend.UnionLegendValue(&other);
    EXPECT_TRUE(legend.IsShapeSymbol());
    EXPECT_EQ(legend.GetSymbolName(), "");
}

TEST_F(LegendSymbolTest, APictureTravelsAsAPngFile) {
    CLegend_Point legend;
    legend.SetSymbolFilePath(MakePicture(6, 4));
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
    ExpectSample(legend.GetIcon(), 16, 16, {{8, 8, 0xFF00C800}, {0, 0, 0xFFFFFFFF}});
    ExpectSample(legend.GetOverView(), 10, 10, {{4, 4, 0xFF00C800}});
    const Sample disc(legend.GetIcon());
    const Sample large(legend.GetOverView());
    EXPECT_LT(disc->At(4, 8) & 0xFF, 0x80U);
    EXPECT_LT(large->At(0, 4) & 0xFF, 0x80U);

    legend.GiveShapeSymbol();
    ExpectSample(legend.GetIcon(), 16, 16, {{0, 0, 0xFFFF0000}, {15, 15, 0xFFFF0000}});
    legend.SetSymbolFilePath(MakePicture(20, 30));
    ExpectSample(legend.GetIcon(), 16, 16, {{8, 8, 0xFF0080FF}});
    ExpectSample(legend.GetOverView(), 31, 31, {{15, 15, 0xFF0080FF}});
}

TEST_F(LegendSymbolTest, LineAndAreaSamplesShowCasingAndFill) {
    CLegend_Polyline line;
    line.SetForeColor(RGB(255, 0, 0));
    line.SetBackColor(RGB(0, 0, 255));
    line.SetSize(4);
    ExpectSample(line.GetIcon(), 100, 16, {{50, 8, 0xFFFF0000}, {50, 1, 0xFFFFFFFF}});
    ExpectSample(line.GetOverView(), 256, 6, {{128, 3, 0xFFFF0000}});
    const Sample view(line.GetOverView());
    EXPECT_GT(view->At(128, 0) & 0xFF, 0xC0U);
    CLegend_Polygon area;
    area.SetForeColor(RGB(255, 0, 0));
    area.SetBackColor(RGB(0, 0, 255));
    ExpectSample(area.GetIcon(), 100, 16, {{50, 8, 0xFFFF0000}, {0, 8, 0xFF0000FF}});
    ExpectSample(area.GetOverView(), 256, 50, {{255, 49, 0xFF0000FF}});
    CLegend_Text text;
    CLegend_Image image;
    EXPECT_EQ(text.GetIcon(), nullptr);
    EXPECT_EQ(image.GetOverView(), nullptr);
}

}  // namespace
