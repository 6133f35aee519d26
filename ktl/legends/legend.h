#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

class CArchive;

/// The kind of a legend. The numbers stand in documents.
enum ENUM_LEGEND : int {
    LEGEND_NONE = 0,
    LEGEND_POINT = 1,
    LEGEND_POLYLINE = 2,
    LEGEND_POLYGON = 3,
    LEGEND_TEXT = 4,
    LEGEND_IMAGE = 6,
};

/// The symbology that a shape is drawn with: two colours, opacity, a size, and the pens and brushes made from them. A
/// layer shares equal legends among its shapes; a by-layer flag says that the value follows the layer's default.
///
///     auto pen = std::unique_ptr<Gdiplus::Pen>(legend.GetForePen(0));
class KTL_API CLegend {
  public:
    /// A random fore colour, black as back colour, opaque, size 1, nothing by layer.
    CLegend();
    CLegend(const CLegend &) = delete;
    CLegend &operator=(const CLegend &) = delete;
    virtual ~CLegend();

    /// Line width or symbol size in pixels.
    virtual int GetSize();
    /// A sample for layer lists as a new bitmap handle that the caller owns; null for a kind without one.
    virtual HBITMAP__ *GetIcon();
    /// A new legend of the same class with the same values, owned by the caller; null for a kind that has none.
    virtual CLegend *Clone();
    /// Null: no kind has a symbol image.
    virtual Gdiplus::Bitmap *GetSymbolImage();
    /// A larger sample than `GetIcon`, on the same terms.
    virtual HBITMAP__ *GetOverView();

    /// New pens and brushes; the caller owns them. State 0 is the normal look, any other the hover look. Null when
    /// there is no memory.
    virtual Gdiplus::Pen *GetForePen(int state);
    virtual Gdiplus::Pen *GetBackPen(int state);
    virtual Gdiplus::Brush *GetForeBrush(int state);
    virtual Gdiplus::Brush *GetBackBrush(int state);

    /// 1 when all values but `LegendID` agree, else 0; 0 for null.
    virtual int Compare(CLegend *other);
    /// Takes over all values. The size comes from the other's `GetSize`.
    virtual void Copy(CLegend *other);
    /// Keeps what both have in common: a number that differs becomes -1, a flag that differs becomes true. Always 0.
    virtual int UnionLegendValue(CLegend *other);

    /// Writes or reads by `Serialize200` below version 201 and by `Serialize201` from there on. Always 1.
    virtual int Serialize(CArchive &archive, int version);
    virtual int Serialize200(CArchive &archive, int version);
    virtual int Serialize201(CArchive &archive, int version);

    /// The plain values. After `UnionLegendValue` a -1 says that the legends differ.
    const COLORREF &GetForeColor() const { return ForeColor; }
    const COLORREF &GetBackColor() const { return BackColor; }
    const ENUM_LEGEND &GetType() const { return Type; }
    short GetAlpha() const { return Alpha; }
    bool ForeColorIsByLayer() const { return m_foreColorByLayer; }
    bool BackColorIsByLayer() const { return m_backColorByLayer; }
    bool SizeIsByLayer() const { return m_sizeByLayer; }
    bool AlphaIsByLayer() const { return m_alphaByLayer; }

    void SetForeColor(COLORREF color) { ForeColor = color; }
    void SetBackColor(COLORREF color) { BackColor = color; }
    /// Held within 1 to 64.
    void SetSize(short size);
    /// Held within 0 to 255.
    void SetAlpha(short alpha);
    void ForeColorByLayer(bool byLayer) { m_foreColorByLayer = byLayer; }
    void BackColorByLayer(bool byLayer) { m_backColorByLayer = byLayer; }
    void SizeByLayer(bool byLayer) { m_sizeByLayer = byLayer; }
    void AlphaByLayer(bool byLayer) { m_alphaByLayer = byLayer; }

    /// The colours with the low byte of the opacity as alpha.
    Gdiplus::Color GetForeColorA() const;
    Gdiplus::Color GetBackColorA() const;

    /// A colour moved toward white or black by the share `ratio`, each channel cut to an integer. Outside
    /// 0 < ratio <= 1 the colour is 0. The forms ending in A add the opacity.
    COLORREF GetLightenForeColor(double ratio) const;
    COLORREF GetDarkenForeColor(double ratio) const;
    COLORREF GetLightenBackColor(double ratio) const;
    COLORREF GetDarkenBackColor(double ratio) const;
    Gdiplus::Color GetLightenForeColorA(double ratio) const;
    Gdiplus::Color GetDarkenForeColorA(double ratio) const;
    Gdiplus::Color GetLightenBackColorA(double ratio) const;
    Gdiplus::Color GetDarkenBackColorA(double ratio) const;

    /// The look of a highlighted shape: lightened colours, and the size plus twice the ratio.
    COLORREF GetHoverForeColor(double ratio) const;
    COLORREF GetHoverBackColor(double ratio) const;
    Gdiplus::Color GetHoverForeColorA(double ratio) const;
    Gdiplus::Color GetHoverBackColorA(double ratio) const;
    short GetHoverSize(double ratio) const;

  protected:
    COLORREF ForeColor;
    bool m_foreColorByLayer = false;
    COLORREF BackColor = 0;
    bool m_backColorByLayer = false;
    short Alpha = 255;
    bool m_alphaByLayer = false;
    short Size = 1;
    bool m_sizeByLayer = false;

  public:
    /// Position in the owner's pool; -1 while unassigned.
    short LegendID = -1;

  protected:
    ENUM_LEGEND Type = LEGEND_NONE;
};
