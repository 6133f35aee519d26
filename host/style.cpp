#include "host/style.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "host/error.h"
#include "host/text_number.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/gdiplus/gdiplus.h"

namespace ktl::host {

namespace {

constexpr short kInvisible = 0;
constexpr int kLineRail = 3;
constexpr int kLineDashed = 4;
constexpr short kLastHatch = 52;

struct NamedLineStyle {
    std::string_view name;
    int lineStyle;
    int dashStyle;
};
constexpr NamedLineStyle kLineStyles[] = {
    {"solid", 1, 0},
    {"cased", 2, 0},
    {"rail", kLineRail, 0},
    {"dash", kLineDashed, Gdiplus::DashStyleDash},
    {"dot", kLineDashed, Gdiplus::DashStyleDot},
    {"dashdot", kLineDashed, Gdiplus::DashStyleDashDot},
    {"dashdotdot", kLineDashed, Gdiplus::DashStyleDashDotDot},
};

Gdiplus::Color WithAlpha(COLORREF color, short alpha) {
    return {static_cast<BYTE>(alpha), GetRValue(color), GetGValue(color), GetBValue(color)};
}

void SetUpPoint(CLegend_Point &legend, const Style &style) {
    legend.SetForeColor(style.point.value_or(0));
    legend.SetBackColor(style.pointLine.value_or(style.point.value_or(0)));
    legend.SetSize(style.pointSize);
    legend.SetAlpha(style.point ? style.alpha : kInvisible);
    if (style.symbol.empty()) return;
    const CString path = FromUtf8(style.symbol);
    if (ToUtf8(path) == style.symbol) legend.SetSymbolFilePath(path);
    if (legend.GetBitmapSymbol() != nullptr && legend.GetBitmapSymbol()->GetLastStatus() == Gdiplus::Ok) return;
    std::error_code ignored;
    const bool exists = std::filesystem::exists(style.symbol, ignored);
    throw Error("cannot read the symbol '" + style.symbol +
                (exists ? "': not a .png or .gif picture that can be read" : "': no such file or directory"));
}

// A rail is white inside whatever its colour: only its casing can show that colour.
COLORREF DefaultCasing(const Style &style) {
    return style.lineStyle == kLineRail ? style.line.value_or(0) : RGB(0xFF, 0xFF, 0xFF);
}

void SetUpLine(CLegend_Polyline &legend, const Style &style) {
    legend.SetForeColor(style.line.value_or(0));
    legend.SetBackColor(style.casing.value_or(DefaultCasing(style)));
    legend.SetSize(style.lineWidth);
    legend.SetAlpha(style.line ? style.alpha : kInvisible);
    legend.SetLineStyle(style.lineStyle);
    legend.SetDashStyle(style.dashStyle);
    CArray<float, float> pattern;
    for (const float dash : style.dashes) pattern.Add(dash);
    legend.SetDashPattern(pattern);
}

}  // namespace

const std::vector<std::string_view> &HatchNames() {
    static const std::vector<std::string_view> names = {
        "Horizontal",
        "Vertical",
        "ForwardDiagonal",
        "BackwardDiagonal",
        "Cross",
        "DiagonalCross",
        "05Percent",
        "10Percent",
        "20Percent",
        "25Percent",
        "30Percent",
        "40Percent",
        "50Percent",
        "60Percent",
        "70Percent",
        "75Percent",
        "80Percent",
        "90Percent",
        "LightDownwardDiagonal",
        "LightUpwardDiagonal",
        "DarkDownwardDiagonal",
        "DarkUpwardDiagonal",
        "WideDownwardDiagonal",
        "WideUpwardDiagonal",
        "LightVertical",
        "LightHorizontal",
        "NarrowVertical",
        "NarrowHorizontal",
        "DarkVertical",
        "DarkHorizontal",
        "DashedDownwardDiagonal",
        "DashedUpwardDiagonal",
        "DashedHorizontal",
        "DashedVertical",
        "SmallConfetti",
        "LargeConfetti",
        "ZigZag",
        "Wave",
        "DiagonalBrick",
        "HorizontalBrick",
        "Weave",
        "Plaid",
        "Divot",
        "DottedGrid",
        "DottedDiamond",
        "Shingle",
        "Trellis",
        "Sphere",
        "SmallGrid",
        "SmallCheckerBoard",
        "LargeCheckerBoard",
        "OutlinedDiamond",
        "SolidDiamond",
    };
    return names;
}

std::optional<short> ParseHatch(std::string_view text) {
    if (const auto number = ParseNumber<short>(text)) {
        return *number >= 0 && *number <= kLastHatch ? number : std::nullopt;
    }
    const std::string wanted = LowerAscii(text);
    const auto &names = HatchNames();
    const auto found =
        std::find_if(names.begin(), names.end(), [&](std::string_view name) { return LowerAscii(name) == wanted; });
    if (found == names.end()) return std::nullopt;
    return static_cast<short>(found - names.begin());
}

bool SetLineStyleByName(Style &style, std::string_view name) {
    const auto *found = std::find_if(std::begin(kLineStyles), std::end(kLineStyles),
                                     [&](const NamedLineStyle &named) { return named.name == LowerAscii(name); });
    if (found == std::end(kLineStyles)) return false;
    style.lineStyle = found->lineStyle;
    style.dashStyle = found->dashStyle;
    return true;
}

AreaLegend::AreaLegend(const Style &style, bool filled, bool outlined)
    : m_filled(filled && style.fill), m_line(outlined ? style.line : std::nullopt) {
    SetForeColor(style.fill.value_or(0));
    SetBackColor(style.hatchBack);
    SetSize(style.lineWidth);
    SetAlpha(style.alpha);
    SetHatchStyle(style.hatch);
}

// A transparent pen or brush stands for none: shapes expect an object.
Gdiplus::Pen *AreaLegend::GetBackPen(int /*state*/) {
    const Gdiplus::Color color = m_line ? WithAlpha(*m_line, GetAlpha()) : Gdiplus::Color(0, 0, 0, 0);
    return new Gdiplus::Pen(color, static_cast<Gdiplus::REAL>(Size));
}

Gdiplus::Brush *AreaLegend::GetForeBrush(int state) {
    if (m_filled) return CLegend_Polygon::GetForeBrush(state);
    return new Gdiplus::SolidBrush(Gdiplus::Color(0, 0, 0, 0));
}

StyleLegends::StyleLegends(const Style &style)
    : area(style, true, true), fillOnly(style, true, false), outlineOnly(style, false, true) {
    SetUpPoint(point, style);
    SetUpLine(line, style);
}

}  // namespace ktl::host
