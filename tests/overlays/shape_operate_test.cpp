#include "ktl/overlays/shape_operate.h"

#include <limits>

#include "ktl/overlays/shape_operate_cursor.h"
#include "ktl/overlays/shape_operate_snap.h"
#include "ktl/shapes/shape_point.h"
#include "tests/shapes/canvas.h"

namespace {

const CExtent kView(0, 0, 64, 64);

class Overlay : public ktl_test::DrawingTest {};

/// What an overlay leaves on a white surface.
class Drawn : public ktl_test::Canvas {
  public:
    explicit Drawn(CShape &shape, int offsetX = 0, int offsetY = 0) : Canvas(64, 64) {
        shape.Draw(&graphics, nullptr, 1.0, kView, offsetX, offsetY, 1);
    }
};

TEST_F(Overlay, SnapSquareStandsAroundThePointWhileSnapping) {
    CShape_Operate_Snap snap;
    snap.SetPoint(POINTD(20, 64 - 30));
    EXPECT_EQ(Drawn(snap).CountPainted(), 0);
    snap.SetSnap(1);
    const Drawn canvas(snap);
    for (const CPoint &p : {CPoint(14, 30), CPoint(20, 24), CPoint(25, 35)}) EXPECT_EQ(canvas.At(p.x, p.y), 0xFFFF0000);
    EXPECT_EQ(canvas.CountPainted(), 14 * 14 - 10 * 10);
    snap.SetColor(RGB(0, 128, 255));
    const Drawn moved(snap, 10, -5);
    EXPECT_EQ(moved.At(24, 25), 0xFF0080FF);
    EXPECT_EQ(moved.At(30, 19), 0xFF0080FF);
    EXPECT_EQ(snap.GetPoint().x, 20.0);  // the commit flag moves no overlay
}

TEST_F(Overlay, SnapToCatchesAVertexOrClears) {
    CShape_Operate_Snap snap;
    CShape_Point shape;
    shape.SetPoint(10, 20);
    EXPECT_EQ(snap.SnapTo(&shape, POINTD(11, 19), 1.5), 1);
    EXPECT_TRUE(snap.IsShown() && snap.GetPoint().x == 10.0 && snap.GetExtent().top == 20.0);
    EXPECT_EQ(snap.SnapTo(&shape, POINTD(12, 19), 1.5), 0);
    EXPECT_FALSE(snap.IsShown());
    EXPECT_EQ(snap.SnapTo(nullptr, POINTD(11, 19), 1.5), 0);
}

TEST_F(Overlay, CursorIsACross) {
    CShape_Operate_Cursor cursor;
    cursor.SetPoint(POINTD(30, 34));
    cursor.Show(1);
    const Drawn canvas(cursor);
    for (const int end : {21, 39}) EXPECT_TRUE(canvas.At(end, 30) == 0xFF000000 && canvas.At(30, end) == 0xFF000000);
    EXPECT_EQ(canvas.At(22, 22), ktl_test::kWhite);
}

TEST_F(Overlay, WildPlacesDoNoHarm) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const POINTD places[] = {POINTD(std::numeric_limits<double>::quiet_NaN(), 1), POINTD(kInfinity, -kInfinity),
                             POINTD(-2147483648.0, 2147483647.0)};
    CShape_Operate_Snap snap;
    CShape_Operate_Cursor cursor;
    for (CShape_Operate *overlay : {static_cast<CShape_Operate *>(&snap), static_cast<CShape_Operate *>(&cursor)}) {
        overlay->Show(1);
        for (const POINTD &place : places) {
            overlay->SetPoint(place);
            const Drawn canvas(*overlay, 1, -1);
        }
        overlay->Draw(nullptr, nullptr, 1.0, kView, 0, 0, 0);
    }
}

TEST_F(Overlay, KindTellsTheToolAndNothingIsCopiedOut) {
    CShape_Operate zoom(SHAPE_OPERATE_ZOOMIN);
    EXPECT_EQ(zoom.GetShapeType(), 65);
    EXPECT_EQ(zoom.Clone(), nullptr);
}

}  // namespace
