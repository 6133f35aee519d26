#include "ktl/legends/legend.h"

#include <algorithm>
#include <new>

#include "ktl/core/utility.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/numeric.h"

namespace {

constexpr short kMinSize = 1;
constexpr short kMaxSize = 64;
constexpr short kMaxAlpha = 255;
/// What a highlighted shape's colours and lines are changed by.
constexpr double kHoverColorRatio = 0.5;
constexpr double kHoverSizeRatio = 1.0;
constexpr float kCasingWidth = 2.0F;

/// Each channel of the colour through `change`; 0 for a ratio outside its range.
template <class Change>
COLORREF ChangeChannels(COLORREF color, double ratio, Change change) {
    if (!(ratio > 0.0 && ratio <= 1.0)) return 0;
    const auto channel = [&](BYTE value) { return static_cast<unsigned>(change(static_cast<double>(value), ratio)); };
    return RGB(channel(GetRValue(color)), channel(GetGValue(color)), channel(GetBValue(color)));
}

COLORREF Lighten(COLORREF color, double ratio) {
    return ChangeChannels(color, ratio, [](double c, double r) { return (255.0 - c) * r + c; });
}

COLORREF Darken(COLORREF color, double ratio) {
    return ChangeChannels(color, ratio, [](double c, double r) { return c - c * r; });
}

Gdiplus::Color WithAlpha(COLORREF color, short alpha) {
    return Gdiplus::Color(static_cast<BYTE>(alpha), GetRValue(color), GetGValue(color), GetBValue(color));
}

}  // namespace

CLegend::CLegend() : ForeColor(static_cast<COLORREF>(KtlGetRandomColor())) {}
CLegend::~CLegend() = default;

int CLegend::GetSize() {
    return Size;
}
HBITMAP__ *CLegend::GetIcon() {
    return nullptr;
}
CLegend *CLegend::Clone() {
    return nullptr;
}
Gdiplus::Bitmap *CLegend::GetSymbolImage() {
    return nullptr;
}
HBITMAP__ *CLegend::GetOverView() {
    return nullptr;
}

Gdiplus::Pen *CLegend::GetForePen(int state) {
    if (state == 0) return new (std::nothrow) Gdiplus::Pen(GetForeColorA(), static_cast<float>(Size));
    return new (std::nothrow)
        Gdiplus::Pen(GetHoverForeColorA(kHoverColorRatio), static_cast<float>(GetHoverSize(kHoverSizeRatio)));
}

Gdiplus::Pen *CLegend::GetBackPen(int state) {
    if (state == 0) return new (std::nothrow) Gdiplus::Pen(GetBackColorA(), static_cast<float>(Size) + kCasingWidth);
    return new (std::nothrow)
        Gdiplus::Pen(GetHoverBackColorA(kHoverColorRatio), static_cast<float>(GetHoverSize(kHoverSizeRatio)));
}

Gdiplus::Brush *CLegend::GetForeBrush(int state) {
    return new (std::nothrow) Gdiplus::SolidBrush(state == 0 ? GetForeColorA() : GetHoverForeColorA(kHoverColorRatio));
}

Gdiplus::Brush *CLegend::GetBackBrush(int state) {
    return new (std::nothrow) Gdiplus::SolidBrush(state == 0 ? GetBackColorA() : GetHoverBackColorA(kHoverColorRatio));
}

int CLegend::Compare(CLegend *other) {
    return other && ForeColor == other->ForeColor && m_foreColorByLayer == other->m_foreColorByLayer &&
           BackColor == other->BackColor && m_backColorByLayer == other->m_backColorByLayer && Size == other->Size &&
           m_sizeByLayer == other->m_sizeByLayer && Alpha == other->Alpha && m_alphaByLayer == other->m_alphaByLayer &&
           Type == other->Type;
}

void CLegend::Copy(CLegend *other) {
    if (!other) return;
    Type = other->Type;
    LegendID = other->LegendID;
    Size = static_cast<short>(other->GetSize());
    ForeColor = other->ForeColor;
    m_foreColorByLayer = other->m_foreColorByLayer;
    BackColor = other->BackColor;
    m_backColorByLayer = other->m_backColorByLayer;
    Alpha = other->Alpha;
    m_alphaByLayer = other->m_alphaByLayer;
    m_sizeByLayer = other->m_sizeByLayer;
}

int CLegend::UnionLegendValue(CLegend *other) {
    if (!other) return 0;
    if (Size != other->Size) Size = -1;
    if (ForeColor != other->ForeColor) ForeColor = static_cast<COLORREF>(-1);
    if (BackColor != other->BackColor) BackColor = static_cast<COLORREF>(-1);
    if (Alpha != other->Alpha) Alpha = -1;
    if (m_foreColorByLayer != other->m_foreColorByLayer) m_foreColorByLayer = true;
    if (m_backColorByLayer != other->m_backColorByLayer) m_backColorByLayer = true;
    if (m_sizeByLayer != other->m_sizeByLayer) m_sizeByLayer = true;
    if (m_alphaByLayer != other->m_alphaByLayer) m_alphaByLayer = true;
    return 0;
}

int CLegend::Serialize(CArchive &archive, int version) {
    if (version < 201) {
        Serialize200(archive, version);
    } else {
        Serialize201(archive, version);
    }
    return 1;
}

int CLegend::Serialize200(CArchive &archive, int /*version*/) {
    constexpr short kFiller = 255;
    if (archive.IsStoring()) {
        archive << static_cast<int>(Type) << LegendID << Size << ForeColor << Alpha << BackColor << kFiller;
    } else {
        int type = 0;
        short filler = 0;
        archive >> type >> LegendID >> Size >> ForeColor >> Alpha >> BackColor >> filler;
        Type = static_cast<ENUM_LEGEND>(type);
    }
    return 1;
}

int CLegend::Serialize201(CArchive &archive, int /*version*/) {
    if (archive.IsStoring()) {
        archive << LegendID << ForeColor << m_foreColorByLayer << BackColor << m_backColorByLayer << Size
                << m_sizeByLayer << Alpha << m_alphaByLayer;
    } else {
        archive >> LegendID >> ForeColor >> m_foreColorByLayer >> BackColor >> m_backColorByLayer >> Size >>
            m_sizeByLayer >> Alpha >> m_alphaByLayer;
    }
    return 1;
}

void CLegend::SetSize(short size) {
    Size = std::clamp(size, kMinSize, kMaxSize);
}
void CLegend::SetAlpha(short alpha) {
    Alpha = std::clamp(alpha, short{0}, kMaxAlpha);
}

Gdiplus::Color CLegend::GetForeColorA() const {
    return WithAlpha(ForeColor, Alpha);
}
Gdiplus::Color CLegend::GetBackColorA() const {
    return WithAlpha(BackColor, Alpha);
}

COLORREF CLegend::GetLightenForeColor(double ratio) const {
    return Lighten(ForeColor, ratio);
}
COLORREF CLegend::GetDarkenForeColor(double ratio) const {
    return Darken(ForeColor, ratio);
}
COLORREF CLegend::GetLightenBackColor(double ratio) const {
    return Lighten(BackColor, ratio);
}
COLORREF CLegend::GetDarkenBackColor(double ratio) const {
    return Darken(BackColor, ratio);
}
Gdiplus::Color CLegend::GetLightenForeColorA(double ratio) const {
    return WithAlpha(Lighten(ForeColor, ratio), Alpha);
}
Gdiplus::Color CLegend::GetDarkenForeColorA(double ratio) const {
    return WithAlpha(Darken(ForeColor, ratio), Alpha);
}
Gdiplus::Color CLegend::GetLightenBackColorA(double ratio) const {
    return WithAlpha(Lighten(BackColor, ratio), Alpha);
}
Gdiplus::Color CLegend::GetDarkenBackColorA(double ratio) const {
    return WithAlpha(Darken(BackColor, ratio), Alpha);
}

COLORREF CLegend::GetHoverForeColor(double ratio) const {
    return GetLightenForeColor(ratio);
}
COLORREF CLegend::GetHoverBackColor(double ratio) const {
    return GetLightenBackColor(ratio);
}
Gdiplus::Color CLegend::GetHoverForeColorA(double ratio) const {
    return GetLightenForeColorA(ratio);
}
Gdiplus::Color CLegend::GetHoverBackColorA(double ratio) const {
    return GetLightenBackColorA(ratio);
}
short CLegend::GetHoverSize(double ratio) const {
    return static_cast<short>(ktl::TruncateToInt(static_cast<double>(Size) + 2.0 * ratio));
}
