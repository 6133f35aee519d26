#include "ktl/legends/legend_polyline.h"

#include <memory>

#include "ktl/legends/sample.h"
#include "ktl/platform/archive.h"

namespace {

constexpr int kDashedWhiteCore = 3;
constexpr int kDashedCore = 4;
constexpr float kWhiteCoreDashes[] = {6.0F, 6.0F};
constexpr Gdiplus::ARGB kWhite = 0xFFFFFFFF;

void RoundOff(Gdiplus::Pen &pen) {
    pen.SetLineJoin(Gdiplus::LineJoinRound);
    pen.SetStartCap(Gdiplus::LineCapRound);
    pen.SetEndCap(Gdiplus::LineCapRound);
}

bool SameEntries(const CArray<float, float> &a, const CArray<float, float> &b) {
    if (a.GetSize() != b.GetSize()) return false;
    for (int i = 0; i < a.GetSize(); ++i) {
        if (a[i] != b[i]) return false;
    }
    return true;
}

}  // namespace

CLegend_Polyline::CLegend_Polyline() {
    Type = LEGEND_POLYLINE;
}

HBITMAP__ *CLegend_Polyline::GetIcon() {
    return DrawSample(100, 16, 8);
}
HBITMAP__ *CLegend_Polyline::GetOverView() {
    return DrawSample(256, Size + 2, Size / 2 + 1);
}

HBITMAP__ *CLegend_Polyline::DrawSample(int width, int height, int y) {
    return ktl::MakeSample(width, height, [&](Gdiplus::Graphics &graphics) {
        const std::unique_ptr<Gdiplus::Pen> casing(GetBackPen(0));
        const std::unique_ptr<Gdiplus::Pen> core(GetForePen(0));
        graphics.DrawLine(casing.get(), 0, y, width, y);
        graphics.DrawLine(core.get(), 0, y, width, y);
    });
}

CLegend *CLegend_Polyline::Clone() {
    auto copy = std::make_unique<CLegend_Polyline>();
    copy->Copy(this);
    return copy.release();
}

Gdiplus::Pen *CLegend_Polyline::GetForePen(int state) {
    Gdiplus::Pen *pen = CLegend::GetForePen(state);
    if (!pen) return nullptr;
    if (LineStyle == kDashedWhiteCore) {
        pen->SetDashPattern(kWhiteCoreDashes, 2);
        pen->SetDashStyle(Gdiplus::DashStyleCustom);
        pen->SetColor(Gdiplus::Color(kWhite));
    } else if (LineStyle == kDashedCore) {
        pen->SetDashStyle(static_cast<Gdiplus::DashStyle>(DashStyle));
        if (DashStyle == Gdiplus::DashStyleCustom) pen->SetDashPattern(DashPattern.GetData(), DashPattern.GetSize());
    }
    RoundOff(*pen);
    return pen;
}

Gdiplus::Pen *CLegend_Polyline::GetBackPen(int state) {
    Gdiplus::Pen *pen = CLegend::GetBackPen(state);
    if (pen) RoundOff(*pen);
    return pen;
}

int CLegend_Polyline::Compare(CLegend *other) {
    if (!CLegend::Compare(other)) return 0;
    const auto *line = dynamic_cast<const CLegend_Polyline *>(other);
    return line && LineStyle == line->LineStyle && DashStyle == line->DashStyle &&
           SameEntries(DashPattern, line->DashPattern);
}

void CLegend_Polyline::Copy(CLegend *other) {
    CLegend::Copy(other);
    const auto *line = dynamic_cast<const CLegend_Polyline *>(other);
    if (!line) return;
    LineStyle = line->LineStyle;
    DashStyle = line->DashStyle;
    SetDashPattern(line->DashPattern);
}

int CLegend_Polyline::UnionLegendValue(CLegend *other) {
    CLegend::UnionLegendValue(other);
    if (const auto *line = dynamic_cast<const CLegend_Polyline *>(other)) {
        if (LineStyle != line->LineStyle) LineStyle = 0;
        if (DashStyle != line->DashStyle) DashStyle = -1;
    }
    return 0;
}

int CLegend_Polyline::Serialize(CArchive &archive, int version) {
    return CLegend::Serialize(archive, version);
}

int CLegend_Polyline::Serialize200(CArchive &archive, int version) {
    CLegend::Serialize200(archive, version);
    SerializeDashes(archive);
    return 1;
}

int CLegend_Polyline::Serialize201(CArchive &archive, int version) {
    CLegend::Serialize201(archive, version);
    if (archive.IsStoring()) {
        archive << LineStyle;
    } else {
        archive >> LineStyle;
    }
    SerializeDashes(archive);
    return 1;
}

void CLegend_Polyline::SerializeDashes(CArchive &archive) {
    if (archive.IsStoring()) {
        archive << DashStyle << DashPattern.GetSize();
        for (const float entry : DashPattern) archive << entry;
        return;
    }
    int count = 0;
    archive >> DashStyle >> count;
    DashPattern.RemoveAll();
    for (int i = 0; i < count; ++i) {
        float entry = 0.0F;
        archive >> entry;
        DashPattern.Add(entry);
    }
}

void CLegend_Polyline::SetDashPattern(const CArray<float, float> &pattern) {
    if (&pattern != &DashPattern) DashPattern.Copy(pattern);
}
