#pragma once

#include <memory>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/gdiplus/string_format.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

class CArchive;

/// A text with the font, the layout and the two colours it is drawn in: the brush of the letters and that of their
/// halo. Measuring and drawing use the same layout, so that a box from `GetRectF` is the one that `Draw` fills.
///
///     CXString text(name);
///     text.SetFontSize(12);
///     Gdiplus::RectF box;
///     text.GetRectF(graphics, box);
///
/// The font and brushes are made when they are first needed, so that a text may be made before drawing is started.
class KTL_API CXString {
  public:
    /// Empty, in 宋体 of 12 pixels, black with a white halo, centred.
    CXString();
    explicit CXString(CString text);
    CXString(const CXString &other);
    CXString &operator=(const CXString &other);
    virtual ~CXString();

    void SetText(CString text);
    CString GetText() const;

    /// A family that isn't installed is drawn in the generic one, but keeps its name.
    void SetFontName(CString name);
    CString GetFontName() const;
    /// Sizes in pixels that `SetFontSize` takes at most.
    static constexpr double kMaxFontSize = 4096.0;
    /// The em in pixels; sizes below 1 are taken as 1.
    void SetFontSize(double size);
    double GetFontSize() const;
    /// A sum of `Gdiplus::FontStyle` bits.
    void SetFontStyle(int style);
    int GetFontStyle() const;
    /// How lines stand to one another and to the point of `Draw`.
    void SetAlignment(Gdiplus::StringAlignment alignment);
    Gdiplus::StringAlignment GetAlignment() const;

    /// Colours of the letters and of the halo; COLORREFs with an alpha of 0 (no halo) to 255.
    void SetTextColor(COLORREF color, int alpha = 255);
    COLORREF GetTextColor() const;
    void SetHaloColor(COLORREF color, int alpha = 255);
    COLORREF GetHaloColor() const;

    /// Rebuilds the font, the format and the brushes from the settings.
    void Update();

    /// The box of the text in pixels, measured at (0, 0): X and Y tell where its corner lies relative to the point it
    /// is drawn at. All 0 for an empty text or without a graphics.
    void GetRectF(Gdiplus::Graphics *graphics, Gdiplus::RectF &rect) const;

    /// Draws the text at a point with its halo, one pixel left, right, below and above. Nothing without a graphics.
    virtual void Draw(Gdiplus::Graphics *graphics, CPoint point);

    /// Version 200 runs `Serialize200` and 201 and above `Serialize201`; both give 1. Any other version gives 0.
    virtual int Serialize(CArchive &archive, int version);
    /// The text, font name, size, style, alignment, colours and their alphas, in both directions.
    virtual int Serialize200(CArchive &archive);
    /// Empty: from this version on the owner keeps what it needs.
    virtual int Serialize201(CArchive &archive);

  protected:
    /// What the text is drawn with, for derived classes. They belong to the text and last until it changes. Null when
    /// drawing isn't started.
    const Gdiplus::Font *GetFont() const;
    const Gdiplus::StringFormat *GetStringFormat() const;
    const Gdiplus::Brush *GetTextBrush() const;
    const Gdiplus::Brush *GetHaloBrush() const;

  private:
    struct Tools;
    const Tools *Need() const;

    CString m_text;
    CString m_fontName;
    double m_fontSize = 12.0;
    int m_fontStyle = 0;
    Gdiplus::StringAlignment m_alignment;
    COLORREF m_textColor = RGB(0, 0, 0);
    COLORREF m_haloColor = RGB(255, 255, 255);
    int m_textAlpha = 255;
    int m_haloAlpha = 255;
    mutable std::unique_ptr<Tools> m_tools;
};
