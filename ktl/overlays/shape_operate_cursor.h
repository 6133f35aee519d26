#pragma once

#include "ktl/overlays/shape_operate.h"

/// The cross at the place that a tool has in mind, which need not be the pointer's.
class KTL_API CShape_Operate_Cursor : public CShape_Operate {
  public:
    /// Hidden and black.
    CShape_Operate_Cursor() = default;

  protected:
    void DrawMark(Gdiplus::Graphics &graphics, const Gdiplus::Pen &pen, int x, int y) override;
};
