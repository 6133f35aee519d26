#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"

namespace Gdiplus {

/// What areas, and through a pen lines, are painted with. A light value: its colours and no surface.
///
/// Made before the first start of drawing, or after the last stop, a brush has the status `GdiplusNotInitialized` and
/// every call that is handed it answers `InvalidParameter`.
class KTL_API Brush {
  public:
    virtual ~Brush() = default;
    Brush &operator=(const Brush &) = delete;

    /// A copy that the caller owns.
    virtual Brush *Clone() const = 0;
    BrushType GetType() const { return m_type; }
    /// The status of the last call that failed; asking resets it to `Ok`.
    Status GetLastStatus() const;
    /// False when the brush could not be made.
    bool IsUsable() const { return m_usable; }

  protected:
    explicit Brush(BrushType type);
    Brush(const Brush &) = default;
    Status SetStatus(Status status) const;
    /// Marks the brush as not made, for the reason `status`.
    void Refuse(Status status);

  private:
    BrushType m_type;
    bool m_usable = true;
    mutable Status m_lastStatus = Ok;
};

/// One colour everywhere.
class KTL_API SolidBrush : public Brush {
  public:
    explicit SolidBrush(const Color &color);
    SolidBrush(const SolidBrush &) = default;

    SolidBrush *Clone() const override;
    Status GetColor(Color *color) const;
    Status SetColor(const Color &color);
    Color ColorValue() const { return m_color; }

  private:
    Color m_color;
};

/// An 8 by 8 pattern of two colours, fixed to the pixels of the target whatever the transform and the smoothing mode;
/// `Graphics::SetRenderingOrigin` moves it. A style outside 0..52 gives the status `InvalidParameter`.
class KTL_API HatchBrush : public Brush {
  public:
    HatchBrush(HatchStyle style, const Color &foreColor, const Color &backColor = Color());
    HatchBrush(const HatchBrush &) = default;

    HatchBrush *Clone() const override;
    HatchStyle GetHatchStyle() const { return m_style; }
    Status GetForegroundColor(Color *color) const;
    Status GetBackgroundColor(Color *color) const;
    Color ForegroundValue() const { return m_fore; }
    Color BackgroundValue() const { return m_back; }

  private:
    HatchStyle m_style;
    Color m_fore;
    Color m_back;
};

}  // namespace Gdiplus
