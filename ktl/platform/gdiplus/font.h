#pragma once

#include <memory>
#include <string>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

/// The characters of a family's name, the terminator with them.
constexpr int LF_FACESIZE = 32;

namespace ktl::raster {
struct Typeface;
}

namespace Gdiplus {

class Graphics;
class FontCollection;

/// A family of faces by its name. The families that maps are made with (宋体, Arial, Tahoma, ...) are always there
/// with their own design values, whatever face stands in for them; any other has to be installed, otherwise the status
/// is FontFamilyNotFound.
class KTL_API FontFamily {
  public:
    /// No family; to be filled by `Font::GetFamily`.
    FontFamily();
    /// Installed families only: there are no private collections, and `collection` is null.
    explicit FontFamily(const WCHAR *name, const FontCollection *collection = nullptr);
    /// The families that stand in for any other. They belong to the library.
    static const FontFamily *GenericSansSerif();
    static const FontFamily *GenericSerif();
    static const FontFamily *GenericMonospace();
    /// A copy, which the caller owns.
    FontFamily *Clone() const;

    /// Writes at most LF_FACESIZE characters with the terminator. There is one name for every language.
    Status GetFamilyName(WCHAR name[LF_FACESIZE], WORD language = 0) const;
    BOOL IsAvailable() const;
    /// Bold and italic are made where a family lacks them, so that every style of a family is there.
    BOOL IsStyleAvailable(INT style) const;

    /// Design values: heights above and below the baseline and from line to line, out of `GetEmHeight` for the em.
    WORD GetEmHeight(INT style) const;
    WORD GetCellAscent(INT style) const;
    WORD GetCellDescent(INT style) const;
    WORD GetLineSpacing(INT style) const;

    Status GetLastStatus() const;

    /// For the text classes: the face, null without a family.
    const std::shared_ptr<const ktl::raster::Typeface> &Face() const { return m_face; }

  private:
    friend class Font;
    explicit FontFamily(std::shared_ptr<const ktl::raster::Typeface> face);
    Status SetResult(Status status) const;

    std::shared_ptr<const ktl::raster::Typeface> m_face;
    mutable Status m_lastStatus = Ok;
    bool m_unusable = false;
};

/// A family at a size and in a style: a light value.
class KTL_API Font {
  public:
    /// InvalidParameter for a null or missing family, a size of 0 or less, or the unit Display.
    Font(const FontFamily *family, REAL emSize, INT style = FontStyleRegular, Unit unit = UnitPoint);
    /// A family that is missing is replaced by the generic sans serif one, and the status is then Ok.
    Font(const WCHAR *familyName, REAL emSize, INT style = FontStyleRegular, Unit unit = UnitPoint,
         const FontCollection *collection = nullptr);
    /// A copy, which the caller owns.
    Font *Clone() const;

    REAL GetSize() const;
    INT GetStyle() const;
    Unit GetUnit() const;
    /// Line spacing in pixels at the given dots per inch; with a Graphics at its resolution, and at 96 with null.
    REAL GetHeight(const Graphics *graphics) const;
    REAL GetHeight(REAL dpi) const;
    Status GetFamily(FontFamily *family) const;
    BOOL IsAvailable() const;
    Status GetLastStatus() const;

    /// The em in pixels at `dpi`; World and Pixel sizes are taken as they are.
    REAL SizeInPixels(REAL dpi) const;
    /// For the text classes: the face, null when the font can't be used.
    const std::shared_ptr<const ktl::raster::Typeface> &Face() const { return m_face; }

  private:
    Status SetResult(Status status) const;
    void Check();

    std::shared_ptr<const ktl::raster::Typeface> m_face;
    REAL m_emSize = 0;
    INT m_style = FontStyleRegular;
    Unit m_unit = UnitPoint;
    Status m_loadStatus = Ok;
    mutable Status m_lastStatus = Ok;
};

}  // namespace Gdiplus
