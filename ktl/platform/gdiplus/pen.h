#pragma once

#include <memory>
#include <vector>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/types.h"

namespace Gdiplus {

/// What lines are drawn with. A new pen is solid, centred on the line, with mitred corners (limit 10) and flat ends.
/// Widths below 1.5 pixels draw lines of one pixel. A light value: making one allocates the object alone.
///
/// Made before the first start of drawing, or after the last stop, a pen has the status `GdiplusNotInitialized` and
/// every call that is handed it answers `InvalidParameter`.
class KTL_API Pen {
  public:
    explicit Pen(const Color &color, REAL width = 1.0F);
    /// Copies the brush; null gives the status `InvalidParameter`.
    explicit Pen(const Brush *brush, REAL width = 1.0F);
    ~Pen();
    Pen &operator=(const Pen &) = delete;

    /// A copy that the caller owns.
    Pen *Clone() const;

    /// Width in world units; 0 is one pixel whatever the transform.
    Status SetWidth(REAL width);
    REAL GetWidth() const { return m_width; }
    Status SetColor(const Color &color);
    /// `InvalidParameter` for a null pointer or a pen with a brush of several colours.
    Status GetColor(Color *color) const;
    Status SetBrush(const Brush *brush);
    /// A copy that the caller owns.
    Brush *GetBrush() const;
    PenType GetPenType() const;
    Status SetAlignment(PenAlignment alignment);
    PenAlignment GetAlignment() const { return m_alignment; }

    /// Corners and ends.
    Status SetLineJoin(LineJoin join);
    LineJoin GetLineJoin() const { return m_join; }
    /// Past this ratio of the corner's length to the width a mitred corner is cut off; below 1 is taken as 1.
    Status SetMiterLimit(REAL limit);
    REAL GetMiterLimit() const { return m_miterLimit; }
    Status SetStartCap(LineCap cap);
    LineCap GetStartCap() const { return m_startCap; }
    Status SetEndCap(LineCap cap);
    LineCap GetEndCap() const { return m_endCap; }
    Status SetLineCap(LineCap start, LineCap end, DashCap dash);
    Status SetDashCap(DashCap cap);
    DashCap GetDashCap() const { return m_dashCap; }

    /// Dashes. Lengths and offset are in pen widths.
    ///
    /// A built-in style drops a custom pattern; `DashStyleCustom` keeps the one there is (a pen without one draws
    /// solid). An unknown style answers `Ok` and changes nothing.
    Status SetDashStyle(DashStyle style);
    DashStyle GetDashStyle() const { return m_dashStyle; }
    /// Makes the style custom. `InvalidParameter` when the count or any entry is 0 or negative.
    Status SetDashPattern(const REAL *pattern, INT count);
    /// 0 for a solid pen; the built-in styles have 2, 2, 4 and 6 entries.
    INT GetDashPatternCount() const;
    /// `InvalidParameter` for a null pointer or a count below 1 or above `GetDashPatternCount`.
    Status GetDashPattern(REAL *pattern, INT count) const;
    Status SetDashOffset(REAL offset);
    REAL GetDashOffset() const { return m_dashOffset; }

    /// The status of the last call that failed; asking resets it to `Ok`.
    Status GetLastStatus() const;
    /// False when the pen could not be made.
    bool IsUsable() const { return m_usable; }
    /// The brush lines are painted with, null for a pen of one colour.
    const Brush *PatternBrush() const { return m_brush.get(); }
    /// The colour of a pen without a brush.
    Color ColorValue() const { return m_color; }

  private:
    Pen(const Pen &other);
    Status SetStatus(Status status) const;

    Color m_color;
    std::unique_ptr<Brush> m_brush;
    REAL m_width = 1.0F;
    REAL m_miterLimit = 10.0F;
    REAL m_dashOffset = 0.0F;
    LineJoin m_join = LineJoinMiter;
    LineCap m_startCap = LineCapFlat;
    LineCap m_endCap = LineCapFlat;
    DashCap m_dashCap = DashCapFlat;
    DashStyle m_dashStyle = DashStyleSolid;
    PenAlignment m_alignment = PenAlignmentCenter;
    std::vector<REAL> m_dashPattern;
    bool m_usable = true;
    mutable Status m_lastStatus = Ok;
};

}  // namespace Gdiplus
