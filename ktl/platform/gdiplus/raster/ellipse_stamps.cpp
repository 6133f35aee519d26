#include "ktl/platform/gdiplus/raster/ellipse_stamps.h"

#include "ktl/platform/gdiplus/raster/curves.h"
#include "ktl/platform/gdiplus/raster/line_step.h"
#include "ktl/platform/gdiplus/raster/scan_fill.h"

namespace ktl::raster {

namespace {

void Make(EllipseStamps::Stamp &stamp) {
    std::vector<PointD> points;
    for (const Cubic &curve : EllipseCurves(0, 0, stamp.width, stamp.height).curves) Flatten(curve, points);
    std::vector<FixedPoint> fixed;
    for (const PointD &point : points) fixed.push_back(ToFixed(point));
    const Box box{-2, -2, stamp.width + 3, stamp.height + 3};

    ScanFill scan;
    FillArea(
        scan, box, Gdiplus::FillModeAlternate, [&](ScanFill &s) { s.AddRing(fixed.data(), fixed.size()); },
        [&](int y, int x0, int x1) {
            stamp.filled.push_back({y, x0, x1});
        });
    CoverageMask mask;
    mask.Begin(box);
    StepLines(MaskPut(mask), box, fixed.data(), fixed.size(), true);
    mask.ForEachRun([&](int y, int x0, int x1) { stamp.outline.push_back({y, x0, x1}); });
}

}  // namespace

const EllipseStamps::Stamp &EllipseStamps::For(int width, int height) {
    for (const Stamp &stamp : m_stamps) {
        if (stamp.width == width && stamp.height == height) return stamp;
    }
    Stamp made{width, height, {}, {}};
    Make(made);
    if (m_stamps.size() < kKept) return m_stamps.emplace_back(std::move(made));
    m_oldest = (m_oldest + 1) % kKept;
    return m_stamps[m_oldest] = std::move(made);
}

}  // namespace ktl::raster
