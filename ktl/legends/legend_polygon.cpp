#include "ktl/legends/legend_polygon.h"

#include <memory>
#include <new>

#include "ktl/legends/sample.h"
#include "ktl/platform/archive.h"

namespace {

constexpr short kSolidFill = -1;
constexpr double kHoverColorRatio = 0.5;

}  // namespace

CLegend_Polygon::CLegend_Polygon() {
    Type = LEGEND_POLYGON;
}

HBITMAP__ *CLegend_Polygon::GetIcon() {
    return DrawSample(100, 16);
}
HBITMAP__ *CLegend_Polygon::GetOverView() {
    return DrawSample(256, 50);
}

HBITMAP__ *CLegend_Polygon::DrawSample(int width, int height) {
    return ktl::MakeSample(width, height, [&](Gdiplus::Graphics &graphics) {
        const std::unique_ptr<Gdiplus::Brush> brush(GetForeBrush(0));
        const std::unique_ptr<Gdiplus::Pen> pen(GetBackPen(0));
        graphics.FillRectangle(brush.get(), 0, 0, width, height);
        graphics.DrawRectangle(pen.get(), 0, 0, width - 1, height - 1);
    });
}

CLegend *CLegend_Polygon::Clone() {
    auto copy = std::make_unique<CLegend_Polygon>();
    copy->Copy(this);
    return copy.release();
}

Gdiplus::Brush *CLegend_Polygon::GetForeBrush(int state) {
    if (HatchStyle == kSolidFill) return CLegend::GetForeBrush(state);
    const auto style = static_cast<Gdiplus::HatchStyle>(HatchStyle);
    if (state == 0) return new (std::nothrow) Gdiplus::HatchBrush(style, GetForeColorA(), GetBackColorA());
    return new (std::nothrow)
        Gdiplus::HatchBrush(style, GetHoverForeColorA(kHoverColorRatio), GetHoverBackColorA(kHoverColorRatio));
}

int CLegend_Polygon::Compare(CLegend *other) {
    if (!CLegend::Compare(other)) return 0;
    const auto *polygon = dynamic_cast<const CLegend_Polygon *>(other);
    return polygon && HatchStyle == polygon->HatchStyle;
}

void CLegend_Polygon::Copy(CLegend *other) {
    CLegend::Copy(other);
    if (const auto *polygon = dynamic_cast<const CLegend_Polygon *>(other)) HatchStyle = polygon->HatchStyle;
}

int CLegend_Polygon::UnionLegendValue(CLegend *other) {
    CLegend::UnionLegendValue(other);
    const auto *polygon = dynamic_cast<const CLegend_Polygon *>(other);
    if (polygon && HatchStyle != polygon->HatchStyle) HatchStyle = kSolidFill;
    return 0;
}

int CLegend_Polygon::Serialize(CArchive &archive, int version) {
    CLegend::Serialize(archive, version);
    if (archive.IsStoring()) {
        archive << HatchStyle;
    } else {
        archive >> HatchStyle;
    }
    return 1;
}
