#pragma once

#include <memory>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/gdiplus/types.h"

namespace Gdiplus {

/// Draws on a bitmap. Coordinates are pixels, x to the right and y down, unless a transform is set.
///
/// A new object draws without antialiasing: whole pixels by one fill rule. A pixel belongs to an area when its centre
/// lies inside; a centre on a left or top edge counts, on a right or bottom edge not. The centre of pixel (i, j) lies
/// at (i, j) unless `SetPixelOffsetMode` moves it.
///
/// One drawing call blends each pixel once, also where the line of a pen with alpha crosses itself.
///
/// Every call answers a status. A null or unusable brush, pen, path, image or font gives `InvalidParameter`.
/// The bitmap's pixels stay valid as long as the object lives, whichever of the two is deleted first. One thread at a
/// time.
///
///     Graphics graphics(&bitmap);
///     graphics.Clear(Color(255, 255, 255));
///     graphics.FillPolygon(&brush, points, count);
///     graphics.DrawPolygon(&pen, points, count);
class KTL_API Graphics {
  public:
    /// Draws on `image`, which is borrowed for this call. Indexed and 16-bit grey or ARGB1555 images give the status
    /// `OutOfMemory`, a null or unusable one `InvalidParameter`.
    explicit Graphics(Image *image);
    ~Graphics();
    Graphics(const Graphics &) = delete;
    Graphics &operator=(const Graphics &) = delete;
    /// A new object that the caller owns.
    static Graphics *FromImage(Image *image);

    /// The status of the last call that failed; asking resets it to `Ok`.
    Status GetLastStatus() const;
    /// Makes what has been drawn visible to other users of the pixels.
    void Flush(FlushIntention intention = FlushIntentionFlush);
    REAL GetDpiX() const;
    REAL GetDpiY() const;

    /// Drawing state. An unknown value gives `InvalidParameter`. What the getters answer for the default and quality
    /// names is the mode they stand for.
    Status SetSmoothingMode(SmoothingMode mode);
    SmoothingMode GetSmoothingMode() const;
    Status SetPixelOffsetMode(PixelOffsetMode mode);
    PixelOffsetMode GetPixelOffsetMode() const;
    Status SetInterpolationMode(InterpolationMode mode);
    InterpolationMode GetInterpolationMode() const;
    Status SetCompositingMode(CompositingMode mode);
    CompositingMode GetCompositingMode() const;
    Status SetCompositingQuality(CompositingQuality quality);
    CompositingQuality GetCompositingQuality() const;
    Status SetTextRenderingHint(TextRenderingHint hint);
    TextRenderingHint GetTextRenderingHint() const;
    Status SetTextContrast(UINT contrast);
    UINT GetTextContrast() const;
    /// Where hatch patterns begin, in pixels.
    Status SetRenderingOrigin(INT x, INT y);
    Status GetRenderingOrigin(INT *x, INT *y) const;

    /// The transform from world units to pixels; the identity at first. Prepended steps apply before those there are.
    Status ResetTransform();
    Status TranslateTransform(REAL dx, REAL dy, MatrixOrder order = MatrixOrderPrepend);
    Status ScaleTransform(REAL sx, REAL sy, MatrixOrder order = MatrixOrderPrepend);
    /// Degrees, clockwise.
    Status RotateTransform(REAL angle, MatrixOrder order = MatrixOrderPrepend);

    /// Limits drawing to a rectangle in world units. Modes other than replace and intersect: `NotImplemented`; so is
    /// a clip under a rotated transform.
    Status SetClip(const Rect &rect, CombineMode mode = CombineModeReplace);
    Status SetClip(const RectF &rect, CombineMode mode = CombineModeReplace);
    Status IntersectClip(const Rect &rect);
    Status IntersectClip(const RectF &rect);
    Status ResetClip();
    /// The clip cut to the bitmap, in pixels.
    Status GetVisibleClipBounds(Rect *rect) const;
    /// True when coordinates are pixels of a bitmap and figures follow the one fill rule: no transform, no
    /// antialiasing, no moved centres. What of a figure lies outside of the clip then has no part in what shows inside.
    bool DrawsWholePixels() const;

    /// Writes the colour with its alpha over the whole clip, without blending.
    Status Clear(const Color &color);

    /// Lines. 0 or 1 point gives `InvalidParameter`. A solid one-pixel line has a pixel for each step of its longer
    /// axis, both ends included.
    Status DrawLine(const Pen *pen, INT x1, INT y1, INT x2, INT y2);
    Status DrawLine(const Pen *pen, REAL x1, REAL y1, REAL x2, REAL y2);
    Status DrawLine(const Pen *pen, const Point &a, const Point &b);
    Status DrawLine(const Pen *pen, const PointF &a, const PointF &b);
    Status DrawLines(const Pen *pen, const Point *points, INT count);
    Status DrawLines(const Pen *pen, const PointF *points, INT count);
    Status DrawBezier(const Pen *pen, INT x1, INT y1, INT x2, INT y2, INT x3, INT y3, INT x4, INT y4);
    Status DrawBezier(const Pen *pen, REAL x1, REAL y1, REAL x2, REAL y2, REAL x3, REAL y3, REAL x4, REAL y4);
    Status DrawBezier(const Pen *pen, const Point &a, const Point &b, const Point &c, const Point &d);
    Status DrawBezier(const Pen *pen, const PointF &a, const PointF &b, const PointF &c, const PointF &d);
    /// 4 points and 3 more for each further curve.
    Status DrawBeziers(const Pen *pen, const Point *points, INT count);
    Status DrawBeziers(const Pen *pen, const PointF *points, INT count);
    /// Angles in degrees from +x, clockwise; a sweep beyond a full turn is a full turn.
    Status DrawArc(const Pen *pen, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle);
    Status DrawArc(const Pen *pen, REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle);
    Status DrawArc(const Pen *pen, const Rect &rect, REAL startAngle, REAL sweepAngle);
    Status DrawArc(const Pen *pen, const RectF &rect, REAL startAngle, REAL sweepAngle);

    /// Outlines of closed figures. A rectangle or ellipse of negative size answers `Ok` and draws nothing; a pie
    /// without a positive size gives `InvalidParameter`.
    Status DrawRectangle(const Pen *pen, INT x, INT y, INT width, INT height);
    Status DrawRectangle(const Pen *pen, REAL x, REAL y, REAL width, REAL height);
    Status DrawRectangle(const Pen *pen, const Rect &rect);
    Status DrawRectangle(const Pen *pen, const RectF &rect);
    Status DrawRectangles(const Pen *pen, const Rect *rects, INT count);
    Status DrawRectangles(const Pen *pen, const RectF *rects, INT count);
    Status DrawEllipse(const Pen *pen, INT x, INT y, INT width, INT height);
    Status DrawEllipse(const Pen *pen, REAL x, REAL y, REAL width, REAL height);
    Status DrawEllipse(const Pen *pen, const Rect &rect);
    Status DrawEllipse(const Pen *pen, const RectF &rect);
    Status DrawPie(const Pen *pen, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle);
    Status DrawPie(const Pen *pen, REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle);
    Status DrawPie(const Pen *pen, const Rect &rect, REAL startAngle, REAL sweepAngle);
    Status DrawPie(const Pen *pen, const RectF &rect, REAL startAngle, REAL sweepAngle);
    Status DrawPolygon(const Pen *pen, const Point *points, INT count);
    Status DrawPolygon(const Pen *pen, const PointF *points, INT count);
    /// Open figures stay open.
    Status DrawPath(const Pen *pen, const GraphicsPath *path);

    /// Areas. A polygon of 1 or 2 points answers `Ok`; of none, `InvalidParameter`.
    Status FillRectangle(const Brush *brush, INT x, INT y, INT width, INT height);
    Status FillRectangle(const Brush *brush, REAL x, REAL y, REAL width, REAL height);
    Status FillRectangle(const Brush *brush, const Rect &rect);
    Status FillRectangle(const Brush *brush, const RectF &rect);
    Status FillRectangles(const Brush *brush, const Rect *rects, INT count);
    Status FillRectangles(const Brush *brush, const RectF *rects, INT count);
    Status FillEllipse(const Brush *brush, INT x, INT y, INT width, INT height);
    Status FillEllipse(const Brush *brush, REAL x, REAL y, REAL width, REAL height);
    Status FillEllipse(const Brush *brush, const Rect &rect);
    Status FillEllipse(const Brush *brush, const RectF &rect);
    Status FillPie(const Brush *brush, INT x, INT y, INT width, INT height, REAL startAngle, REAL sweepAngle);
    Status FillPie(const Brush *brush, REAL x, REAL y, REAL width, REAL height, REAL startAngle, REAL sweepAngle);
    Status FillPie(const Brush *brush, const Rect &rect, REAL startAngle, REAL sweepAngle);
    Status FillPie(const Brush *brush, const RectF &rect, REAL startAngle, REAL sweepAngle);
    Status FillPolygon(const Brush *brush, const Point *points, INT count, FillMode fillMode = FillModeAlternate);
    Status FillPolygon(const Brush *brush, const PointF *points, INT count, FillMode fillMode = FillModeAlternate);
    /// Open figures are closed by a straight line.
    Status FillPath(const Brush *brush, const GraphicsPath *path);

    /// Images at their physical size: pixels times the target's resolution over the image's.
    Status DrawImage(Image *image, INT x, INT y);
    Status DrawImage(Image *image, REAL x, REAL y);
    Status DrawImage(Image *image, const Point &point);
    Status DrawImage(Image *image, const PointF &point);
    /// Images stretched to a box.
    Status DrawImage(Image *image, INT x, INT y, INT width, INT height);
    Status DrawImage(Image *image, REAL x, REAL y, REAL width, REAL height);
    Status DrawImage(Image *image, const Rect &rect);
    Status DrawImage(Image *image, const RectF &rect);
    /// The part (srcX, srcY, srcWidth, srcHeight) of the image stretched to a box. The unit is that of the source box:
    /// pixel, point, inch, document or millimeter; any other gives `InvalidParameter`. A size of 0 or less on either
    /// side answers `Ok`: a negative target side mirrors.
    Status DrawImage(Image *image, const Rect &dest, INT srcX, INT srcY, INT srcWidth, INT srcHeight, Unit srcUnit,
                     const ImageAttributes *attributes = nullptr);
    Status DrawImage(Image *image, const RectF &dest, REAL srcX, REAL srcY, REAL srcWidth, REAL srcHeight, Unit srcUnit,
                     const ImageAttributes *attributes = nullptr);
    /// A part at its own size.
    Status DrawImage(Image *image, INT x, INT y, INT srcX, INT srcY, INT srcWidth, INT srcHeight, Unit srcUnit);
    Status DrawImage(Image *image, REAL x, REAL y, REAL srcX, REAL srcY, REAL srcWidth, REAL srcHeight, Unit srcUnit);

    /// Text. `length` -1 reads up to the terminator. The layout box wraps and clips the text; at a point nothing
    /// wraps. In the copying compositing mode: `InvalidParameter`.
    Status DrawString(const WCHAR *text, INT length, const Font *font, const RectF &layout, const StringFormat *format,
                      const Brush *brush);
    Status DrawString(const WCHAR *text, INT length, const Font *font, const PointF &origin, const Brush *brush);
    Status DrawString(const WCHAR *text, INT length, const Font *font, const PointF &origin, const StringFormat *format,
                      const Brush *brush);
    /// The box that the text takes. The counts may be null.
    Status MeasureString(const WCHAR *text, INT length, const Font *font, const RectF &layout,
                         const StringFormat *format, RectF *box, INT *codepointsFitted = nullptr,
                         INT *linesFilled = nullptr) const;
    Status MeasureString(const WCHAR *text, INT length, const Font *font, const SizeF &layout,
                         const StringFormat *format, SizeF *size, INT *codepointsFitted = nullptr,
                         INT *linesFilled = nullptr) const;
    Status MeasureString(const WCHAR *text, INT length, const Font *font, const PointF &origin,
                         const StringFormat *format, RectF *box) const;
    Status MeasureString(const WCHAR *text, INT length, const Font *font, const RectF &layout, RectF *box) const;
    Status MeasureString(const WCHAR *text, INT length, const Font *font, const PointF &origin, RectF *box) const;

    /// The target and the drawing state, for the inside of the drawing layer.
    struct [[gnu::visibility("hidden")]] State;
    State *GetState() const { return m_state.get(); }
    /// Takes ownership; for surfaces that are no bitmap.
    explicit Graphics(std::unique_ptr<State> state);

  private:
    Status SetStatus(Status status) const;

    /// Null when the object could not be made.
    std::unique_ptr<State> m_state;
    mutable Status m_lastStatus = Ok;
};

}  // namespace Gdiplus
