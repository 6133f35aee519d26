#include "ktl/overlays/shape_operate.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "ktl/overlays/shape_operate_cursor.h"
#include "ktl/overlays/shape_operate_snap.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/shape_point.h"

namespace {

constexpr int kSide = 64;
const CExtent kView(0, 0, 64, 64);

class Overlay : public testing::Test {
  protected:
    void SetUp() override {
        const Gdiplus::GdiplusStartupInput input;
        ASSERT_EQ(Gdiplus::GdiplusStartup(&m_token, &input, nullptr), Gdiplus::Ok);
    }
    void TearDown() override { Gdiplus::GdiplusShutdown(m_token); }

  private:
    ULONG_PTR m_token = 0;
};

/// What an overlay leaves on an empty bitmap.
class Canvas {
  public:
    Canvas() : m_bitmap(kSide, kSide), m_graphics(&m_bitmap) {}

    void Draw(CShape &shape, int offsetX = 0, int offsetY = 0) {
        shape.Draw(&m_graphics, nullptr, 1.0, kView, offsetX, offsetY, 1);
    }
    Gdiplus::ARGB At(int x, int y) const {
        Gdiplus::Color color(0);
        EXPECT_EQ(m_bitmap.GetPixel(x, y, &color), Gdiplus::Ok);
        return color.GetValue();
    }
    int Count() const {
        int count = 0;
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) count += At(x, y) != 0;
        }
        return count;
    }

  private:
    Gdiplus::Bitmap m_bitmap;
    Gdiplus::Graphics m_graphics;
};

TEST_F(Overlay, SnapSquareStandsAroundThePointWhileSnapping) {
    CShape_Operate_Snap snap;
    snap.SetPoint(POINTD(20, 64 - 30));
    Canvas hidden;
    hidden.Draw(snap);
    EXPECT_EQ(hidden.Count(), 0);

    snap.SetSnap(1);
    Canvas canvas;
    canvas.Draw(snap);
    EXPECT_EQ(canvas.At(14, 30), 0xFFFF0000);
    EXPECT_EQ(canvas.At(20, 24), 0xFFFF0000);
    EXPECT_EQ(canvas.At(25, 35), 0xFFFF0000);
    EXPECT_EQ(canvas.At(20, 30), 0U);
    EXPECT_EQ(canvas.Count(), 14 * 14 - 10 * 10);

    snap.SetColor(RGB(0, 128, 255));
    Canvas moved;
    moved.Draw(snap, 10, -5);
    EXPECT_EQ(moved.At(24, 25), 0xFF0080FF);
    EXPECT_EQ(moved.At(14, 30), 0U);
    EXPECT_EQ(snap.GetPoint().x, 20.0);  // the commit flag moves no overlay
}

TEST_F(Overlay, SnapToCatchesAVertexOrClears) {
    CShape_Operate_Snap snap;
    CShape_Point shape;
    shape.SetPoint(10, 20);
    EXPECT_EQ(snap.SnapTo(&shape, POINTD(11, 19), 1.5), 1);
    EXPECT_TRUE(snap.IsShown());
    EXPECT_EQ(snap.GetPoint().x, 10.0);
    EXPECT_EQ(snap.GetExtent().top, 20.0);
    EXPECT_EQ(snap.SnapTo(&shape, POINTD(13, 19), 1.5), 0);
    EXPECT_FALSE(snap.IsShown());
    EXPECT_EQ(snap.SnapTo(nullptr, POINTD(11, 19), 1.5), 0);
}

TEST_F(Overlay, CursorIsACross) {
    CShape_Operate_Cursor cursor;
    cursor.SetPoint(POINTD(30, 34));
    cursor.Show(1);
    Canvas canvas;
    canvas.Draw(cursor);
    EXPECT_EQ(canvas.At(21, 30), 0xFF000000);
    EXPECT_EQ(canvas.At(39, 30), 0xFF000000);
    EXPECT_EQ(canvas.At(30, 21), 0xFF000000);
    EXPECT_EQ(canvas.At(30, 39), 0xFF000000);
    EXPECT_EQ(canvas.At(22, 22), 0U);
}

TEST_F(Overlay, WildPlacesDoNoHarm) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const POINTD places[] = {POINTD(std::numeric_limits<double>::quiet_NaN(), 1), POINTD(kInfinity, -kInfinity),
                             POINTD(-1e300, 1e300), POINTD(-2147483648.0, 2147483647.0)};
    CShape_Operate_Snap snap;
    CShape_Operate_Cursor cursor;
    for (CShape_Operate *overlay : {static_cast<CShape_Operate *>(&snap), static_cast<CShape_Operate *>(&cursor)}) {
        overlay->Show(1);
        for (const POINTD &place : places) {
            Canvas canvas;
            overlay->SetPoint(place);
            canvas.Draw(*overlay, 1, -1);
            overlay->Draw(nullptr, nullptr, 1.0, kView, 0, 0, 0);
        }
    }
}

TEST_F(Overlay, KindTellsTheToolAndNothingIsCopiedOut) {
    CShape_Operate zoom(SHAPE_OPERATE_ZOOMIN);
    EXPECT_EQ(zoom.GetShapeType(), 65);
    EXPECT_EQ(CShape_Operate_Snap().GetShapeType(), SHAPE_NULL);
    EXPECT_EQ(zoom.Clone(), nullptr);
    EXPECT_STREQ(zoom.GetRuntimeClass()->m_lpszClassName, "CShape");
}

}  // namespace
