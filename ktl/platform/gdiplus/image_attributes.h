#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"

namespace Gdiplus {

/// Settings of drawing an image. Colour adjustments can be switched off and on again for a category; as there are none
/// to set, that changes no pixel. The wrap mode tells what lies outside an image that is drawn with smoothing.
class KTL_API ImageAttributes {
  public:
    ImageAttributes();
    /// A new object, which the caller owns.
    ImageAttributes *Clone() const;

    /// Both answer InvalidParameter for a category that there is not.
    Status SetNoOp(ColorAdjustType type = ColorAdjustTypeDefault);
    Status ClearNoOp(ColorAdjustType type = ColorAdjustTypeDefault);
    /// The mode is kept; the colour for what lies outside under WrapModeClamp and `clamp` have no effect.
    Status SetWrapMode(WrapMode wrap, const Color &color = Color(), BOOL clamp = FALSE);
    WrapMode GetWrapMode() const { return m_wrapMode; }

    /// GdiplusNotInitialized for an object made before drawing was started.
    Status GetLastStatus() const;

  private:
    Status SetResult(Status status) const;

    unsigned m_noOp = 0;
    WrapMode m_wrapMode = WrapModeTile;
    bool m_usable = true;
    mutable Status m_lastStatus = Ok;
};

}  // namespace Gdiplus
