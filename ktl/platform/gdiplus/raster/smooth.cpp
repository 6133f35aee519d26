#include "ktl/platform/gdiplus/raster/smooth.h"

#include <algorithm>
#include <cmath>

#include "ktl/platform/gdiplus/raster/crisp.h"
#include "ktl/platform/gdiplus/raster/dash.h"

namespace ktl::raster {

namespace {

/// Cairo's arithmetic ends between 2^15 and 2^23 pixels: what reaches far beyond the target is cut before.
Box NearBox(const Gdiplus::Graphics::State &state, double reach) {
    const int room = 4096 + static_cast<int>(reach);
    const Box &b = state.bounds;
    return {b.left - room, b.top - room, b.right + room, b.bottom + room};
}

bool Holds(const Box &box, PointD p) {
    return p.x > box.left && p.x < box.right && p.y > box.top && p.y < box.bottom;
}

bool Holds(const Box &box, const PathGeometry &geometry, const Affine &map) {
    for (std::size_t i = 0; i < geometry.PointCount(); ++i) {
        if (!Holds(box, map.Apply(geometry.PointAt(i)))) return false;
    }
    return true;
}

void AddFigure(cairo_t *cairo, const PathGeometry &geometry, const PathGeometry::Figure &figure) {
    cairo_new_sub_path(cairo);
    for (std::size_t i = figure.first; i < figure.first + figure.count; ++i) {
        const PointD p = geometry.PointAt(i);
        if (geometry.IsWhole() || geometry.Kinds()[i] != PathGeometry::Kind::Curve) {
            cairo_line_to(cairo, p.x, p.y);
            continue;
        }
        const PointD q = geometry.PointAt(i + 1);
        const PointD end = geometry.PointAt(i + 2);
        cairo_curve_to(cairo, p.x, p.y, q.x, q.y, end.x, end.y);
        i += 2;
    }
    if (figure.closed) cairo_close_path(cairo);
}

/// Cuts a ring to the inner side of one side of the box: keep where sign * coordinate >= sign * bound.
std::vector<PointD> CutRing(const std::vector<PointD> &ring, bool alongX, double sign, double bound) {
    const auto depth = [=](PointD p) { return sign * ((alongX ? p.x : p.y) - bound); };
    std::vector<PointD> result;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const PointD a = ring[i];
        const PointD b = ring[i + 1 == ring.size() ? 0 : i + 1];
        const double da = depth(a);
        const double db = depth(b);
        if (da >= 0) result.push_back(a);
        if ((da >= 0) != (db >= 0)) result.push_back(a + (b - a) * (da / (da - db)));
    }
    return result;
}

void AddFarRing(cairo_t *cairo, const Box &box, const PointD *points, std::size_t count) {
    std::vector<PointD> ring(points, points + count);
    ring = CutRing(ring, true, 1, box.left);
    ring = CutRing(ring, true, -1, box.right);
    ring = CutRing(ring, false, 1, box.top);
    ring = CutRing(ring, false, -1, box.bottom);
    cairo_new_sub_path(cairo);
    for (const PointD p : ring) cairo_line_to(cairo, p.x, p.y);
    cairo_close_path(cairo);
}

/// A ring begins at a corner out of sight: the one it begins with is not joined.
void AddFarLine(cairo_t *cairo, const Box &box, const PointD *points, std::size_t count, bool closed) {
    std::size_t first = 0;
    while (closed && first < count && Holds(box, points[first])) ++first;
    const bool isHeld = closed && first == count;
    bool joins = false;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < count; ++i) {
        const PointD a = points[(first + i) % count];
        const PointD b = points[(first + i + 1) % count];
        const SegmentPart part = PartNearBox(a, b, box, 0);
        if (part.to > part.from) {
            const PointD from = a + (b - a) * part.from;
            const PointD to = a + (b - a) * part.to;
            if (!joins || part.from > 0) cairo_move_to(cairo, from.x, from.y);
            cairo_line_to(cairo, to.x, to.y);
        }
        joins = part.to > part.from && part.to == 1;
    }
    if (isHeld && joins) cairo_close_path(cairo);
}

/// The dashes of a line as lines of their own, counted from where it begins.
void AddFarDashes(cairo_t *cairo, const Box &box, const PointD *points, std::size_t count, bool closed,
                  const DashPattern &dashes, std::vector<PointD> &scratch) {
    if (count == 0) return;
    CutIntoDashes(
        dashes, points, count, closed, box, 0, scratch,
        [&](const PointD *dash, std::size_t dashCount, bool, bool) { AddFarLine(cairo, box, dash, dashCount, false); });
}

/// Makes the geometry Cairo's path, for lines that reach so many pixels beyond their points, or with 0 for an area. The
/// matrix is the identity afterwards. True when the path consists of the dashes, so that Cairo has none to cut.
bool SetPath(CairoScope &scope, Gdiplus::Graphics::State &state, const PathGeometry &geometry, double reach,
             const DashPattern &dashes = {}) {
    cairo_t *const cairo = scope.Get();
    const Box box = NearBox(state, reach);
    if (Holds(box, geometry, state.CairoMap())) {
        scope.UseWorldUnits();
        for (const PathGeometry::Figure &figure : geometry.Figures()) AddFigure(cairo, geometry, figure);
        cairo_identity_matrix(cairo);
        return false;
    }
    Chains &chains = state.scratch.chains;
    chains.Flatten(geometry, state.CairoMap());
    for (const PathGeometry::Figure &figure : chains.figures) {
        const PointD *const points = chains.points.data() + figure.first;
        if (reach == 0) {
            AddFarRing(cairo, box, points, figure.count);
        } else if (dashes.IsSolid()) {
            AddFarLine(cairo, box, points, figure.count, figure.closed);
        } else {
            AddFarDashes(cairo, box, points, figure.count, figure.closed, dashes, state.scratch.dash);
        }
    }
    return !dashes.IsSolid();
}

cairo_antialias_t AntialiasOf(const Gdiplus::Graphics::State &state) {
    return state.smoothing == Gdiplus::SmoothingModeNone ? CAIRO_ANTIALIAS_NONE : CAIRO_ANTIALIAS_GRAY;
}

cairo_line_join_t JoinOf(Gdiplus::LineJoin join) {
    switch (join) {
        case Gdiplus::LineJoinBevel:
            return CAIRO_LINE_JOIN_BEVEL;
        case Gdiplus::LineJoinRound:
            return CAIRO_LINE_JOIN_ROUND;
        default:
            return CAIRO_LINE_JOIN_MITER;
    }
}

cairo_line_cap_t CapOf(int cap) {
    switch (cap) {
        case Gdiplus::LineCapFlat:
        case Gdiplus::LineCapNoAnchor:
        case Gdiplus::LineCapCustom:
            return CAIRO_LINE_CAP_BUTT;
        case Gdiplus::LineCapSquare:
            return CAIRO_LINE_CAP_SQUARE;
        default:
            return CAIRO_LINE_CAP_ROUND;
    }
}

/// Cairo has one cap for both ends and for dashes: a dashed line takes that of the dashes, a solid one that of its
/// start unless it is flat.
void SetPen(cairo_t *cairo, const Gdiplus::Pen &pen, double width, const DashPattern &dashes, bool areCut) {
    cairo_set_line_width(cairo, width);
    cairo_set_line_join(cairo, JoinOf(pen.GetLineJoin()));
    cairo_set_miter_limit(cairo, pen.GetMiterLimit());
    if (dashes.IsSolid()) {
        const bool startIsFlat = CapOf(pen.GetStartCap()) == CAIRO_LINE_CAP_BUTT;
        cairo_set_line_cap(cairo, CapOf(startIsFlat ? pen.GetEndCap() : pen.GetStartCap()));
        return;
    }
    cairo_set_line_cap(cairo, CapOf(pen.GetDashCap()));
    if (areCut) return;
    const std::vector<double> lengths = dashes.Lengths();
    cairo_set_dash(cairo, lengths.data(), static_cast<int>(lengths.size()), dashes.Offset());
}

bool AllClosed(const PathGeometry &geometry) {
    return std::all_of(geometry.Figures().begin(), geometry.Figures().end(),
                       [](const PathGeometry::Figure &figure) { return figure.closed; });
}

}  // namespace

void FillSmooth(Gdiplus::Graphics::State &state, const Gdiplus::Brush &brush, const PathGeometry &geometry,
                Gdiplus::FillMode mode) {
    CairoScope scope(state);
    scope.SetSource(brush);
    SetPath(scope, state, geometry, 0);
    cairo_set_antialias(scope.Get(), AntialiasOf(state));
    cairo_set_fill_rule(scope.Get(),
                        mode == Gdiplus::FillModeWinding ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(scope.Get());
}

void StrokeSmooth(Gdiplus::Graphics::State &state, const Gdiplus::Pen &pen, const PathGeometry &geometry) {
    CairoScope scope(state);
    if (pen.PatternBrush() != nullptr) {
        scope.SetSource(*pen.PatternBrush());
    } else {
        scope.SetSource(pen.ColorValue());
    }
    double width = DeviceWidth(state, pen);
    const DashPattern dashes = DashesOf(pen, width);
    if (pen.GetAlignment() == Gdiplus::PenAlignmentInset && AllClosed(geometry)) {
        SetPath(scope, state, geometry, 0);
        cairo_set_fill_rule(scope.Get(), CAIRO_FILL_RULE_EVEN_ODD);
        cairo_clip(scope.Get());
        width *= 2;
    }
    constexpr double kMostReach = 1 << 20;
    const double reach = std::min(kMostReach, width * std::max(1.0F, pen.GetMiterLimit()));
    const bool areCut = SetPath(scope, state, geometry, reach, dashes);
    SetPen(scope.Get(), pen, width, dashes, areCut);
    cairo_set_antialias(scope.Get(), AntialiasOf(state));
    cairo_stroke(scope.Get());
}

void ClearSmooth(Gdiplus::Graphics::State &state, Gdiplus::Color color) {
    CairoScope scope(state);
    scope.SetSource(color);
    cairo_set_operator(scope.Get(), CAIRO_OPERATOR_SOURCE);
    cairo_paint(scope.Get());
}

}  // namespace ktl::raster
