#include "ktl/overlays/shape_operate_cursor.h"

#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/numeric.h"

namespace {

constexpr int kArm = 10;

}  // namespace

void CShape_Operate_Cursor::DrawMark(Gdiplus::Graphics &graphics, const Gdiplus::Pen &pen, int x, int y) {
    graphics.DrawLine(&pen, ktl::AddClamped(x, -kArm), y, ktl::AddClamped(x, kArm), y);
    graphics.DrawLine(&pen, x, ktl::AddClamped(y, -kArm), x, ktl::AddClamped(y, kArm));
}
