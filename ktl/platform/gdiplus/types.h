#pragma once

#include <cstdint>

#include "ktl/platform/types.h"

/// \file
/// The plain values of drawing: numbers, points, rectangles, colours and enumerations, with the platform's documented
/// values. Enumerations have a fixed width so that an unknown value can be handed in and answered by a status.

namespace Gdiplus {

using REAL = float;
using INT = int;
using UINT16 = std::uint16_t;
using UINT32 = std::uint32_t;
/// A colour as 0xAARRGGBB, not premultiplied.
using ARGB = std::uint32_t;
using PixelFormat = int;

/// What every call answers.
enum Status : int {
    Ok = 0,
    GenericError = 1,
    InvalidParameter = 2,
    OutOfMemory = 3,
    ObjectBusy = 4,
    InsufficientBuffer = 5,
    NotImplemented = 6,
    Win32Error = 7,
    WrongState = 8,
    Aborted = 9,
    FileNotFound = 10,
    ValueOverflow = 11,
    AccessDenied = 12,
    UnknownImageFormat = 13,
    FontFamilyNotFound = 14,
    FontStyleNotFound = 15,
    NotTrueTypeFont = 16,
    UnsupportedGdiplusVersion = 17,
    GdiplusNotInitialized = 18,
    PropertyNotFound = 19,
    PropertyNotSupported = 20,
    ProfileNotFound = 21,
};

/// 2, 4 and 5 draw antialiased; the others draw whole pixels.
enum SmoothingMode : int {
    SmoothingModeInvalid = -1,
    SmoothingModeDefault = 0,
    SmoothingModeHighSpeed = 1,
    SmoothingModeHighQuality = 2,
    SmoothingModeNone = 3,
    SmoothingModeAntiAlias8x4 = 4,
    SmoothingModeAntiAlias = SmoothingModeAntiAlias8x4,
    SmoothingModeAntiAlias8x8 = 5,
};

/// 0, 1 and 3: the centre of pixel (i, j) lies at (i, j); 2 and 4: at (i + 0.5, j + 0.5).
enum PixelOffsetMode : int {
    PixelOffsetModeInvalid = -1,
    PixelOffsetModeDefault = 0,
    PixelOffsetModeHighSpeed = 1,
    PixelOffsetModeHighQuality = 2,
    PixelOffsetModeNone = 3,
    PixelOffsetModeHalf = 4,
};

/// How images are enlarged and reduced.
enum InterpolationMode : int {
    InterpolationModeInvalid = -1,
    InterpolationModeDefault = 0,
    InterpolationModeLowQuality = 1,
    InterpolationModeHighQuality = 2,
    InterpolationModeBilinear = 3,
    InterpolationModeBicubic = 4,
    InterpolationModeNearestNeighbor = 5,
    InterpolationModeHighQualityBilinear = 6,
    InterpolationModeHighQualityBicubic = 7,
};

enum CompositingMode : int { CompositingModeSourceOver = 0, CompositingModeSourceCopy = 1 };

enum CompositingQuality : int {
    CompositingQualityInvalid = -1,
    CompositingQualityDefault = 0,
    CompositingQualityHighSpeed = 1,
    CompositingQualityHighQuality = 2,
    CompositingQualityGammaCorrected = 3,
    CompositingQualityAssumeLinear = 4,
};

enum TextRenderingHint : int {
    TextRenderingHintSystemDefault = 0,
    TextRenderingHintSingleBitPerPixelGridFit = 1,
    TextRenderingHintSingleBitPerPixel = 2,
    TextRenderingHintAntiAliasGridFit = 3,
    TextRenderingHintAntiAlias = 4,
    TextRenderingHintClearTypeGridFit = 5,
};

enum Unit : int {
    UnitWorld = 0,
    UnitDisplay = 1,
    UnitPixel = 2,
    UnitPoint = 3,
    UnitInch = 4,
    UnitDocument = 5,
    UnitMillimeter = 6,
};

enum MatrixOrder : int { MatrixOrderPrepend = 0, MatrixOrderAppend = 1 };

enum CombineMode : int {
    CombineModeReplace = 0,
    CombineModeIntersect = 1,
    CombineModeUnion = 2,
    CombineModeXor = 3,
    CombineModeExclude = 4,
    CombineModeComplement = 5,
};

enum FlushIntention : int { FlushIntentionFlush = 0, FlushIntentionSync = 1 };

/// Alternate is the even-odd rule, winding the non-zero rule.
enum FillMode : int { FillModeAlternate = 0, FillModeWinding = 1 };

enum BrushType : int {
    BrushTypeSolidColor = 0,
    BrushTypeHatchFill = 1,
    BrushTypeTextureFill = 2,
    BrushTypePathGradient = 3,
    BrushTypeLinearGradient = 4,
};

enum PenType : int {
    PenTypeSolidColor = BrushTypeSolidColor,
    PenTypeHatchFill = BrushTypeHatchFill,
    PenTypeTextureFill = BrushTypeTextureFill,
    PenTypePathGradient = BrushTypePathGradient,
    PenTypeLinearGradient = BrushTypeLinearGradient,
    PenTypeUnknown = -1,
};

enum LineJoin : int { LineJoinMiter = 0, LineJoinBevel = 1, LineJoinRound = 2, LineJoinMiterClipped = 3 };

enum LineCap : int {
    LineCapFlat = 0,
    LineCapSquare = 1,
    LineCapRound = 2,
    LineCapTriangle = 3,
    LineCapNoAnchor = 0x10,
    LineCapSquareAnchor = 0x11,
    LineCapRoundAnchor = 0x12,
    LineCapDiamondAnchor = 0x13,
    LineCapArrowAnchor = 0x14,
    LineCapAnchorMask = 0xF0,
    LineCapCustom = 0xFF,
};

enum DashCap : int { DashCapFlat = 0, DashCapRound = 2, DashCapTriangle = 3 };

enum DashStyle : int {
    DashStyleSolid = 0,
    DashStyleDash = 1,
    DashStyleDot = 2,
    DashStyleDashDot = 3,
    DashStyleDashDotDot = 4,
    DashStyleCustom = 5,
};

/// Inset has an effect on closed figures only: the whole line lies inside.
enum PenAlignment : int { PenAlignmentCenter = 0, PenAlignmentInset = 1 };

enum HatchStyle : int {
    HatchStyleHorizontal = 0,
    HatchStyleVertical = 1,
    HatchStyleForwardDiagonal = 2,
    HatchStyleBackwardDiagonal = 3,
    HatchStyleCross = 4,
    HatchStyleDiagonalCross = 5,
    HatchStyle05Percent = 6,
    HatchStyle10Percent = 7,
    HatchStyle20Percent = 8,
    HatchStyle25Percent = 9,
    HatchStyle30Percent = 10,
    HatchStyle40Percent = 11,
    HatchStyle50Percent = 12,
    HatchStyle60Percent = 13,
    HatchStyle70Percent = 14,
    HatchStyle75Percent = 15,
    HatchStyle80Percent = 16,
    HatchStyle90Percent = 17,
    HatchStyleLightDownwardDiagonal = 18,
    HatchStyleLightUpwardDiagonal = 19,
    HatchStyleDarkDownwardDiagonal = 20,
    HatchStyleDarkUpwardDiagonal = 21,
    HatchStyleWideDownwardDiagonal = 22,
    HatchStyleWideUpwardDiagonal = 23,
    HatchStyleLightVertical = 24,
    HatchStyleLightHorizontal = 25,
    HatchStyleNarrowVertical = 26,
    HatchStyleNarrowHorizontal = 27,
    HatchStyleDarkVertical = 28,
    HatchStyleDarkHorizontal = 29,
    HatchStyleDashedDownwardDiagonal = 30,
    HatchStyleDashedUpwardDiagonal = 31,
    HatchStyleDashedHorizontal = 32,
    HatchStyleDashedVertical = 33,
    HatchStyleSmallConfetti = 34,
    HatchStyleLargeConfetti = 35,
    HatchStyleZigZag = 36,
    HatchStyleWave = 37,
    HatchStyleDiagonalBrick = 38,
    HatchStyleHorizontalBrick = 39,
    HatchStyleWeave = 40,
    HatchStylePlaid = 41,
    HatchStyleDivot = 42,
    HatchStyleDottedGrid = 43,
    HatchStyleDottedDiamond = 44,
    HatchStyleShingle = 45,
    HatchStyleTrellis = 46,
    HatchStyleSphere = 47,
    HatchStyleSmallGrid = 48,
    HatchStyleSmallCheckerBoard = 49,
    HatchStyleLargeCheckerBoard = 50,
    HatchStyleOutlinedDiamond = 51,
    HatchStyleSolidDiamond = 52,
    HatchStyleLargeGrid = HatchStyleCross,
    HatchStyleMin = HatchStyleHorizontal,
    HatchStyleMax = HatchStyleSolidDiamond,
};

enum WrapMode : int {
    WrapModeTile = 0,
    WrapModeTileFlipX = 1,
    WrapModeTileFlipY = 2,
    WrapModeTileFlipXY = 3,
    WrapModeClamp = 4,
};

enum ColorAdjustType : int {
    ColorAdjustTypeDefault = 0,
    ColorAdjustTypeBitmap = 1,
    ColorAdjustTypeBrush = 2,
    ColorAdjustTypePen = 3,
    ColorAdjustTypeText = 4,
    ColorAdjustTypeCount = 5,
    ColorAdjustTypeAny = 6,
};

enum StringAlignment : int { StringAlignmentNear = 0, StringAlignmentCenter = 1, StringAlignmentFar = 2 };

enum StringTrimming : int {
    StringTrimmingNone = 0,
    StringTrimmingCharacter = 1,
    StringTrimmingWord = 2,
    StringTrimmingEllipsisCharacter = 3,
    StringTrimmingEllipsisWord = 4,
    StringTrimmingEllipsisPath = 5,
};

enum StringFormatFlags : int {
    StringFormatFlagsDirectionRightToLeft = 0x1,
    StringFormatFlagsDirectionVertical = 0x2,
    StringFormatFlagsNoFitBlackBox = 0x4,
    StringFormatFlagsDisplayFormatControl = 0x20,
    StringFormatFlagsNoFontFallback = 0x400,
    StringFormatFlagsMeasureTrailingSpaces = 0x800,
    StringFormatFlagsNoWrap = 0x1000,
    StringFormatFlagsLineLimit = 0x2000,
    StringFormatFlagsNoClip = 0x4000,
};

enum FontStyle : int {
    FontStyleRegular = 0,
    FontStyleBold = 1,
    FontStyleItalic = 2,
    FontStyleBoldItalic = 3,
    FontStyleUnderline = 4,
    FontStyleStrikeout = 8,
};

/// Values of `PixelFormat`: an index, the bits a pixel << 8, and the flags.
constexpr PixelFormat PixelFormatIndexed = 0x00010000;
constexpr PixelFormat PixelFormatGDI = 0x00020000;
constexpr PixelFormat PixelFormatAlpha = 0x00040000;
constexpr PixelFormat PixelFormatPAlpha = 0x00080000;
constexpr PixelFormat PixelFormatExtended = 0x00100000;
constexpr PixelFormat PixelFormatCanonical = 0x00200000;
constexpr PixelFormat PixelFormatUndefined = 0;
constexpr PixelFormat PixelFormatDontCare = 0;
constexpr PixelFormat PixelFormat1bppIndexed = 0x00030101;
constexpr PixelFormat PixelFormat4bppIndexed = 0x00030402;
constexpr PixelFormat PixelFormat8bppIndexed = 0x00030803;
constexpr PixelFormat PixelFormat16bppGrayScale = 0x00101004;
constexpr PixelFormat PixelFormat16bppRGB555 = 0x00021005;
constexpr PixelFormat PixelFormat16bppRGB565 = 0x00021006;
constexpr PixelFormat PixelFormat16bppARGB1555 = 0x00061007;
constexpr PixelFormat PixelFormat24bppRGB = 0x00021808;
constexpr PixelFormat PixelFormat32bppRGB = 0x00022009;
constexpr PixelFormat PixelFormat32bppARGB = 0x0026200A;
constexpr PixelFormat PixelFormat32bppPARGB = 0x000E200B;
constexpr PixelFormat PixelFormat48bppRGB = 0x0010300C;
constexpr PixelFormat PixelFormat64bppARGB = 0x0034400D;
constexpr PixelFormat PixelFormat64bppPARGB = 0x001C400E;

constexpr UINT GetPixelFormatSize(PixelFormat format) {
    return static_cast<UINT>(format >> 8) & 0xFFU;
}
constexpr BOOL IsIndexedPixelFormat(PixelFormat format) {
    return (format & PixelFormatIndexed) != 0;
}
constexpr BOOL IsAlphaPixelFormat(PixelFormat format) {
    return (format & PixelFormatAlpha) != 0;
}
constexpr BOOL IsExtendedPixelFormat(PixelFormat format) {
    return (format & PixelFormatExtended) != 0;
}
constexpr BOOL IsCanonicalPixelFormat(PixelFormat format) {
    return (format & PixelFormatCanonical) != 0;
}

/// A width and a height in whole units.
class Size {
  public:
    INT Width = 0;
    INT Height = 0;

    constexpr Size() = default;
    constexpr Size(INT width, INT height) : Width(width), Height(height) {}
    constexpr bool Empty() const { return Width == 0 && Height == 0; }
    constexpr bool Equals(const Size &other) const { return *this == other; }
    friend constexpr bool operator==(const Size &, const Size &) = default;
    constexpr Size operator+(const Size &o) const { return {Width + o.Width, Height + o.Height}; }
    constexpr Size operator-(const Size &o) const { return {Width - o.Width, Height - o.Height}; }
};

/// A width and a height.
class SizeF {
  public:
    REAL Width = 0;
    REAL Height = 0;

    constexpr SizeF() = default;
    constexpr SizeF(REAL width, REAL height) : Width(width), Height(height) {}
    constexpr bool Empty() const { return Width == 0 && Height == 0; }
    constexpr bool Equals(const SizeF &other) const { return *this == other; }
    friend constexpr bool operator==(const SizeF &, const SizeF &) = default;
    constexpr SizeF operator+(const SizeF &o) const { return {Width + o.Width, Height + o.Height}; }
    constexpr SizeF operator-(const SizeF &o) const { return {Width - o.Width, Height - o.Height}; }
};

/// A point in whole units; y grows downward.
class Point {
  public:
    INT X = 0;
    INT Y = 0;

    constexpr Point() = default;
    constexpr Point(INT x, INT y) : X(x), Y(y) {}
    constexpr explicit Point(const Size &size) : X(size.Width), Y(size.Height) {}
    constexpr bool Equals(const Point &other) const { return *this == other; }
    friend constexpr bool operator==(const Point &, const Point &) = default;
    constexpr Point operator+(const Point &o) const { return {X + o.X, Y + o.Y}; }
    constexpr Point operator-(const Point &o) const { return {X - o.X, Y - o.Y}; }
};

/// A point; y grows downward.
class PointF {
  public:
    REAL X = 0;
    REAL Y = 0;

    constexpr PointF() = default;
    constexpr PointF(REAL x, REAL y) : X(x), Y(y) {}
    constexpr explicit PointF(const SizeF &size) : X(size.Width), Y(size.Height) {}
    constexpr bool Equals(const PointF &other) const { return *this == other; }
    friend constexpr bool operator==(const PointF &, const PointF &) = default;
    constexpr PointF operator+(const PointF &o) const { return {X + o.X, Y + o.Y}; }
    constexpr PointF operator-(const PointF &o) const { return {X - o.X, Y - o.Y}; }
};

namespace detail {

/// What `Rect` and `RectF` have in common: the box from (X, Y), `Width` by `Height`. Right and bottom are outside.
template <class Self, class Number, class PointType, class SizeType>
class RectBase {
  public:
    Number X = 0;
    Number Y = 0;
    Number Width = 0;
    Number Height = 0;

    constexpr RectBase() = default;
    constexpr RectBase(Number x, Number y, Number width, Number height) : X(x), Y(y), Width(width), Height(height) {}

    constexpr Number GetLeft() const { return X; }
    constexpr Number GetTop() const { return Y; }
    constexpr Number GetRight() const { return X + Width; }
    constexpr Number GetBottom() const { return Y + Height; }
    constexpr void GetLocation(PointType *point) const { *point = PointType(X, Y); }
    constexpr void GetSize(SizeType *size) const { *size = SizeType(Width, Height); }
    constexpr void GetBounds(Self *rect) const { *rect = Self(X, Y, Width, Height); }
    /// True when a side is 0 or negative.
    constexpr bool IsEmptyArea() const { return Width <= 0 || Height <= 0; }
    constexpr bool Contains(Number x, Number y) const { return x >= X && x < X + Width && y >= Y && y < Y + Height; }
    constexpr bool Contains(const PointType &point) const { return Contains(point.X, point.Y); }
    constexpr bool Contains(const Self &rect) const {
        return X <= rect.X && rect.GetRight() <= GetRight() && Y <= rect.Y && rect.GetBottom() <= GetBottom();
    }
    constexpr void Inflate(Number dx, Number dy) {
        X -= dx;
        Y -= dy;
        Width += 2 * dx;
        Height += 2 * dy;
    }
    constexpr void Offset(Number dx, Number dy) {
        X += dx;
        Y += dy;
    }
    constexpr void Offset(const PointType &point) { Offset(point.X, point.Y); }
    constexpr bool IntersectsWith(const Self &rect) const {
        return X < rect.GetRight() && Y < rect.GetBottom() && GetRight() > rect.X && GetBottom() > rect.Y;
    }
    /// Cuts this box to its common part with `rect`; false when that has no area.
    constexpr bool Intersect(const Self &rect) {
        const Number right = GetRight() < rect.GetRight() ? GetRight() : rect.GetRight();
        const Number bottom = GetBottom() < rect.GetBottom() ? GetBottom() : rect.GetBottom();
        X = X > rect.X ? X : rect.X;
        Y = Y > rect.Y ? Y : rect.Y;
        Width = right - X;
        Height = bottom - Y;
        return !IsEmptyArea();
    }
    /// The smallest box that holds both; false when that has no area.
    static constexpr bool Union(Self &result, const Self &a, const Self &b) {
        const Number right = a.GetRight() > b.GetRight() ? a.GetRight() : b.GetRight();
        const Number bottom = a.GetBottom() > b.GetBottom() ? a.GetBottom() : b.GetBottom();
        const Number left = a.X < b.X ? a.X : b.X;
        const Number top = a.Y < b.Y ? a.Y : b.Y;
        result = Self(left, top, right - left, bottom - top);
        return !result.IsEmptyArea();
    }
    constexpr bool Equals(const Self &rect) const {
        return X == rect.X && Y == rect.Y && Width == rect.Width && Height == rect.Height;
    }
};

}  // namespace detail

/// A box in whole units; see `detail::RectBase`.
class Rect : public detail::RectBase<Rect, INT, Point, Size> {
  public:
    using RectBase::RectBase;
    constexpr Rect() = default;
    constexpr Rect(const Point &location, const Size &size)
        : RectBase(location.X, location.Y, size.Width, size.Height) {}
};

/// A box of four single-precision numbers; see `detail::RectBase`.
class RectF : public detail::RectBase<RectF, REAL, PointF, SizeF> {
  public:
    using RectBase::RectBase;
    constexpr RectF() = default;
    constexpr RectF(const PointF &location, const SizeF &size)
        : RectBase(location.X, location.Y, size.Width, size.Height) {}
};

/// A colour with alpha, not premultiplied; opaque black by default.
class Color {
  public:
    enum : ARGB {
        Transparent = 0x00FFFFFF,
        Black = 0xFF000000,
        Blue = 0xFF0000FF,
        Brown = 0xFFA52A2A,
        Cyan = 0xFF00FFFF,
        DarkGray = 0xFFA9A9A9,
        Gray = 0xFF808080,
        Green = 0xFF008000,
        LightGray = 0xFFD3D3D3,
        Lime = 0xFF00FF00,
        Magenta = 0xFFFF00FF,
        Maroon = 0xFF800000,
        Navy = 0xFF000080,
        Olive = 0xFF808000,
        Orange = 0xFFFFA500,
        Pink = 0xFFFFC0CB,
        Purple = 0xFF800080,
        Red = 0xFFFF0000,
        Silver = 0xFFC0C0C0,
        Teal = 0xFF008080,
        White = 0xFFFFFFFF,
        Yellow = 0xFFFFFF00,
    };

    constexpr Color() = default;
    constexpr Color(BYTE r, BYTE g, BYTE b) : m_argb(MakeARGB(255, r, g, b)) {}
    constexpr Color(BYTE a, BYTE r, BYTE g, BYTE b) : m_argb(MakeARGB(a, r, g, b)) {}
    constexpr Color(ARGB argb) : m_argb(argb) {}

    constexpr BYTE GetAlpha() const { return static_cast<BYTE>(m_argb >> 24); }
    constexpr BYTE GetRed() const { return static_cast<BYTE>(m_argb >> 16); }
    constexpr BYTE GetGreen() const { return static_cast<BYTE>(m_argb >> 8); }
    constexpr BYTE GetBlue() const { return static_cast<BYTE>(m_argb); }
    constexpr BYTE GetA() const { return GetAlpha(); }
    constexpr BYTE GetR() const { return GetRed(); }
    constexpr BYTE GetG() const { return GetGreen(); }
    constexpr BYTE GetB() const { return GetBlue(); }
    constexpr ARGB GetValue() const { return m_argb; }
    constexpr void SetValue(ARGB argb) { m_argb = argb; }
    /// The result is opaque.
    constexpr void SetFromCOLORREF(COLORREF rgb) {
        m_argb = MakeARGB(255, GetRValue(rgb), GetGValue(rgb), GetBValue(rgb));
    }
    /// Drops alpha.
    constexpr COLORREF ToCOLORREF() const { return RGB(GetRed(), GetGreen(), GetBlue()); }
    static constexpr ARGB MakeARGB(BYTE a, BYTE r, BYTE g, BYTE b) {
        return static_cast<ARGB>(a) << 24 | static_cast<ARGB>(r) << 16 | static_cast<ARGB>(g) << 8 |
               static_cast<ARGB>(b);
    }
    friend constexpr bool operator==(const Color &, const Color &) = default;

  private:
    ARGB m_argb = Black;
};

}  // namespace Gdiplus
