#pragma once

#include "ktl/legends/legend.h"
#include "ktl/platform/string.h"

/// Symbology of labels: a font's name and style, its size in pixels, the text's colour and its halo's.
class KTL_API CLegend_Text : public CLegend {
  public:
    /// Size 12, bold, in "宋体".
    CLegend_Text();

    CLegend *Clone() override;
    int Compare(CLegend *other) override;
    void Copy(CLegend *other) override;
    int UnionLegendValue(CLegend *other) override;
    /// The font stands in streams above version 206 only.
    int Serialize(CArchive &archive, int version) override;

    /// The font's family and style; after `UnionLegendValue` a flag that differs is true, a name that differs empty.
    CString GetFontName() const { return FontName; }
    void SetFontName(CString name) { FontName = name; }
    bool IsBold() const { return Bold; }
    void SetBold(bool bold) { Bold = bold; }
    bool IsItalic() const { return Italic; }
    void SetItalic(bool italic) { Italic = italic; }
    bool IsUnderline() const { return Underline; }
    void SetUnderline(bool underline) { Underline = underline; }
    bool IsStrikeout() const { return Strikeout; }
    void SetStrikeout(bool strikeout) { Strikeout = strikeout; }

  protected:
    CString FontName;
    bool Bold = true;
    bool Italic = false;
    bool Underline = false;
    bool Strikeout = false;
};
