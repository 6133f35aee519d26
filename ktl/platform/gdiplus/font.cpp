#include "ktl/platform/gdiplus/font.h"

#include <algorithm>
#include <cwchar>
#include <limits>

#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/startup.h"
#include "ktl/platform/gdiplus/typeface.h"

namespace Gdiplus {

using ktl::raster::DrawingStarted;
using ktl::raster::FindTypeface;
using ktl::raster::Typeface;

namespace {

constexpr REAL kScreenDpi = 96.0F;

WORD DesignValue(const std::shared_ptr<const Typeface> &face, int Typeface::*value) {
    if (!face) return 0;
    return static_cast<WORD>(std::clamp<int>((*face).*value, 0, std::numeric_limits<WORD>::max()));
}

/// Pixels that one unit of a font's size takes; 0 for what is no unit of a font.
REAL PixelsPerUnit(Unit unit, REAL dpi) {
    switch (unit) {
        case UnitWorld:
        case UnitPixel:
            return 1.0F;
        case UnitPoint:
            return dpi / 72.0F;
        case UnitInch:
            return dpi;
        case UnitDocument:
            return dpi / 300.0F;
        case UnitMillimeter:
            return dpi / 25.4F;
        default:
            return 0.0F;
    }
}

}  // namespace

FontFamily::FontFamily() : m_unusable(true) {}

FontFamily::FontFamily(const WCHAR *name, const FontCollection *) {
    if (!DrawingStarted()) {
        m_lastStatus = GdiplusNotInitialized;
    } else if (!name) {
        m_lastStatus = InvalidParameter;
    } else {
        m_face = FindTypeface(name);
        m_lastStatus = m_face ? Ok : FontFamilyNotFound;
    }
    m_unusable = !m_face;
}

FontFamily::FontFamily(std::shared_ptr<const Typeface> face) : m_face(std::move(face)) {}

const FontFamily *FontFamily::GenericSansSerif() {
    static const FontFamily family(FindTypeface(ktl::raster::kGenericSansSerif));
    return &family;
}

const FontFamily *FontFamily::GenericSerif() {
    static const FontFamily family(FindTypeface(ktl::raster::kGenericSerif));
    return &family;
}

const FontFamily *FontFamily::GenericMonospace() {
    static const FontFamily family(FindTypeface(ktl::raster::kGenericMonospace));
    return &family;
}

FontFamily *FontFamily::Clone() const {
    return DrawingStarted() && m_face ? new FontFamily(m_face) : nullptr;
}

Status FontFamily::GetFamilyName(WCHAR name[LF_FACESIZE], WORD) const {
    if (!name || !m_face) return SetResult(InvalidParameter);
    std::wcsncpy(name, m_face->name.c_str(), LF_FACESIZE - 1);
    name[LF_FACESIZE - 1] = L'\0';
    return Ok;
}

BOOL FontFamily::IsAvailable() const {
    return m_face != nullptr;
}

BOOL FontFamily::IsStyleAvailable(INT) const {
    return m_face != nullptr;
}

WORD FontFamily::GetEmHeight(INT) const {
    return DesignValue(m_face, &Typeface::emHeight);
}

WORD FontFamily::GetCellAscent(INT) const {
    return DesignValue(m_face, &Typeface::ascent);
}

WORD FontFamily::GetCellDescent(INT) const {
    return DesignValue(m_face, &Typeface::descent);
}

WORD FontFamily::GetLineSpacing(INT) const {
    return DesignValue(m_face, &Typeface::lineSpacing);
}

Status FontFamily::GetLastStatus() const {
    const Status status = m_lastStatus;
    if (!m_unusable) m_lastStatus = Ok;
    return status;
}

Status FontFamily::SetResult(Status status) const {
    if (!m_unusable) m_lastStatus = status;
    return status;
}

Font::Font(const FontFamily *family, REAL emSize, INT style, Unit unit)
    : m_face(family ? family->Face() : nullptr), m_emSize(emSize), m_style(style), m_unit(unit) {
    Check();
}

Font::Font(const WCHAR *familyName, REAL emSize, INT style, Unit unit, const FontCollection *)
    : m_face(familyName ? FindTypeface(familyName) : nullptr), m_emSize(emSize), m_style(style), m_unit(unit) {
    if (!m_face) m_face = FontFamily::GenericSansSerif()->Face();
    Check();
}

/// Keeps the reason why the font can't be used, if there is one.
void Font::Check() {
    if (!DrawingStarted()) {
        m_loadStatus = GdiplusNotInitialized;
    } else if (!m_face || !(m_emSize > 0) || m_emSize > std::numeric_limits<REAL>::max() ||
               PixelsPerUnit(m_unit, kScreenDpi) == 0) {
        m_loadStatus = InvalidParameter;
    }
    if (m_loadStatus != Ok) m_face.reset();
}

Font *Font::Clone() const {
    return DrawingStarted() && m_face ? new Font(*this) : nullptr;
}

REAL Font::GetSize() const {
    return m_emSize;
}

INT Font::GetStyle() const {
    return m_style;
}

Unit Font::GetUnit() const {
    return m_unit;
}

REAL Font::GetHeight(const Graphics *graphics) const {
    return GetHeight(graphics ? graphics->GetDpiY() : kScreenDpi);
}

REAL Font::GetHeight(REAL dpi) const {
    return m_face ? static_cast<REAL>(m_face->LineSpacing(SizeInPixels(dpi))) : 0;
}

REAL Font::SizeInPixels(REAL dpi) const {
    return m_emSize * PixelsPerUnit(m_unit, dpi);
}

Status Font::GetFamily(FontFamily *family) const {
    if (!family || !m_face) return SetResult(InvalidParameter);
    *family = FontFamily(m_face);
    return Ok;
}

BOOL Font::IsAvailable() const {
    return m_face != nullptr;
}

Status Font::GetLastStatus() const {
    if (m_loadStatus != Ok) return m_loadStatus;
    const Status status = m_lastStatus;
    m_lastStatus = Ok;
    return status;
}

Status Font::SetResult(Status status) const {
    return m_lastStatus = status;
}

}  // namespace Gdiplus
