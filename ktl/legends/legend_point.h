#pragma once

#include <memory>

#include "ktl/legends/legend.h"
#include "ktl/legends/symbol_hooks.h"
#include "ktl/platform/string.h"

/// Symbology of points: a disc of the legend's size, or a picture from a file, or a symbol made of shapes.
class KTL_API CLegend_Point : public CLegend {
  public:
    /// Size 5, a shape symbol by its flag, no symbol object.
    CLegend_Point();
    ~CLegend_Point() override;

    /// The larger side of the picture while one is in use, else the plain size.
    int GetSize() override;
    HBITMAP__ *GetIcon() override;
    CLegend *Clone() override;
    HBITMAP__ *GetOverView() override;
    int Compare(CLegend *other) override;
    void Copy(CLegend *other) override;
    int UnionLegendValue(CLegend *other) override;
    /// The reader takes the flag of a shape symbol and not the symbol, so that a stream written with one is out of step
    /// behind it. This is meant.
    int Serialize(CArchive &archive, int version) override;

    /// Takes the symbol from a file: a picture (.gif, .png) is loaded, a symbol file (.sbl) only sets the flag, any
    /// other file only gives its name. A path without a file clears both symbols and the name.
    void SetSymbolFilePath(CString path);

    /// The legend keeps owning both; null when there is none.
    Gdiplus::Bitmap *GetBitmapSymbol() const { return BitmapSymbol.get(); }
    CShape_Symbol *GetShapeSymbol() const { return ShapeSymbolObject.get(); }
    bool IsShapeSymbol() const { return ShapeSymbol; }
    /// The symbol file's name without its folder; empty without a symbol.
    CString GetSymbolName() const { return SymbolName; }

  protected:
    bool ShapeSymbol = true;
    CString SymbolName;
    std::unique_ptr<Gdiplus::Bitmap> BitmapSymbol;
    ktl::SymbolPtr ShapeSymbolObject;

  private:
    bool UsesBitmap() const { return !ShapeSymbol && BitmapSymbol; }
    HBITMAP__ *DrawSample(int side, float left, float diameter);
    void StoreSymbols(CArchive &archive, int version);
    void LoadSymbols(CArchive &archive);
};
