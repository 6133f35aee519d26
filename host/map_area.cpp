#include "host/map_area.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ktl::host {

namespace {

constexpr double kHalfTurn = 180.0;
constexpr double kTurn = 360.0;
constexpr double kLongitudeReach = 540.0;

struct Box {
    double west;
    double south;
    double east;
    double north;

    bool Contains(const Box &b) const {
        return west <= b.west && south <= b.south && east >= b.east && north >= b.north;
    }
    bool Meets(const Box &b) const { return west <= b.east && south <= b.north && east >= b.west && north >= b.south; }
};

Box BoundsOf(const Path &path) {
    Box box = {path.front().l, path.front().b, path.front().l, path.front().b};
    for (const LonLat &p : path) {
        box.west = std::min(box.west, p.l);
        box.east = std::max(box.east, p.l);
        box.south = std::min(box.south, p.b);
        box.north = std::max(box.north, p.b);
    }
    return box;
}

bool HasDateLineJump(const Path &path) {
    for (std::size_t i = 1; i < path.size(); ++i) {
        if (std::abs(path[i].l - path[i - 1].l) > kDateLineJump) return true;
    }
    return false;
}

// The path with each jump over the date line taken as the short way: longitudes run on beyond 180.
Path Unwrapped(const Path &path) {
    Path result = path;
    double turns = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        const double step = path[i].l - path[i - 1].l;
        if (step > kDateLineJump) turns -= kTurn;
        if (step < -kDateLineJump) turns += kTurn;
        result[i].l += turns;
    }
    return result;
}

// A ring that goes once round a pole ends a turn away from its start; by way of the pole it encloses what it should.
void CloseByPole(Path &ring) {
    double sum = 0.0;
    for (const LonLat &p : ring) sum += p.b;
    const double pole = sum < 0.0 ? -90.0 : 90.0;
    const LonLat first = ring.front();
    ring.push_back({ring.back().l, pole});
    ring.push_back({first.l, pole});
    ring.push_back(first);
}

// What a ring or line means on the unrolled globe. Falls back to the flat reading for a shape whose long segments are
// no crossings: one that has no width without them, or winds more than once.
Path Unrolled(const Path &path, bool ring) {
    Path result = Unwrapped(path);
    const Box bounds = BoundsOf(result);
    if (bounds.east <= bounds.west) return path;
    if (!ring) return result;
    const double winding = result.back().l - result.front().l;
    if (std::abs(winding) < 1.0) return result;
    if (std::abs(std::abs(winding) - kTurn) > 1.0) return path;
    CloseByPole(result);
    return result;
}

struct Strip {
    Box box;
    double shift;
};

// The copies of the area, side by side on the unrolled globe, that the bounds meet.
std::vector<Strip> StripsOf(const Box &bounds, const MapArea &area, bool flat) {
    const double first = flat ? 0.0 : std::floor((bounds.west + kHalfTurn) / kTurn);
    const double last = flat ? 0.0 : std::max(first, std::ceil((bounds.east + kHalfTurn) / kTurn) - 1.0);
    std::vector<Strip> strips;
    for (double k = first; k <= last; k += 1.0) {
        const double shift = k * kTurn;
        strips.push_back({{shift - kHalfTurn, area.south, shift + kHalfTurn, area.north}, shift});
    }
    return strips;
}

bool BeyondReach(const Box &bounds) {
    return bounds.west < -kLongitudeReach || bounds.east > kLongitudeReach;
}

// Narrows t0..t1, the part of a segment that is kept, by one side of a box (Liang and Barsky).
bool NarrowBySide(double direction, double distance, double &t0, double &t1) {
    if (direction == 0.0) return distance >= 0.0;
    const double t = distance / direction;
    if (direction < 0.0) {
        t0 = std::max(t0, t);
    } else {
        t1 = std::min(t1, t);
    }
    return t0 <= t1;
}

bool ClipSegment(const Box &box, LonLat a, LonLat b, double &t0, double &t1) {
    const double dl = b.l - a.l;
    const double db = b.b - a.b;
    t0 = 0.0;
    t1 = 1.0;
    return NarrowBySide(-dl, a.l - box.west, t0, t1) && NarrowBySide(dl, box.east - a.l, t0, t1) &&
           NarrowBySide(-db, a.b - box.south, t0, t1) && NarrowBySide(db, box.north - a.b, t0, t1);
}

LonLat Between(LonLat a, LonLat b, double t) {
    if (t <= 0.0) return a;
    if (t >= 1.0) return b;
    return {a.l + (b.l - a.l) * t, a.b + (b.b - a.b) * t};
}

void FlushPiece(Path &piece, std::vector<Path> &out) {
    const bool isDot = std::all_of(piece.begin(), piece.end(), [&](const LonLat &p) { return p == piece.front(); });
    if (!isDot) out.push_back(piece);
    piece.clear();
}

void ClipLineToStrip(const Path &line, const Strip &strip, std::vector<Path> &out) {
    Path piece;
    for (std::size_t i = 1; i < line.size(); ++i) {
        double t0 = 0.0;
        double t1 = 1.0;
        if (!ClipSegment(strip.box, line[i - 1], line[i], t0, t1)) {
            FlushPiece(piece, out);
            continue;
        }
        LonLat from = Between(line[i - 1], line[i], t0);
        LonLat to = Between(line[i - 1], line[i], t1);
        from.l -= strip.shift;
        to.l -= strip.shift;
        if (t0 > 0.0) FlushPiece(piece, out);
        if (piece.empty()) piece.push_back(from);
        piece.push_back(to);
        if (t1 < 1.0) FlushPiece(piece, out);
    }
    FlushPiece(piece, out);
}

// One side of a box as a half-plane: sign * (coordinate - limit) <= 0 is kept (Sutherland and Hodgman).
struct HalfPlane {
    double LonLat::*axis;
    double limit;
    double sign;

    double Beyond(const LonLat &p) const { return sign * (p.*axis - limit); }
};

Path ClipRingBySide(const Path &ring, const HalfPlane &side) {
    Path result;
    result.reserve(ring.size() + 8);
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const LonLat &from = ring[i == 0 ? ring.size() - 1 : i - 1];
        const LonLat &to = ring[i];
        const double beyondFrom = side.Beyond(from);
        const double beyondTo = side.Beyond(to);
        if ((beyondFrom > 0.0) != (beyondTo > 0.0)) {
            LonLat crossing = Between(from, to, beyondFrom / (beyondFrom - beyondTo));
            crossing.*side.axis = side.limit;
            result.push_back(crossing);
        }
        if (beyondTo <= 0.0) result.push_back(to);
    }
    return result;
}

bool HasArea(const Path &ring) {
    if (ring.size() < 3) return false;
    const Box bounds = BoundsOf(ring);
    return bounds.east > bounds.west && bounds.north > bounds.south;
}

void ClipRingToStrip(const Path &closedRing, const Strip &strip, std::vector<Path> &out) {
    Path ring(closedRing.begin(), closedRing.end() - 1);
    const HalfPlane sides[] = {
        {&LonLat::l, strip.box.west, -1.0},
        {&LonLat::l, strip.box.east, 1.0},
        {&LonLat::b, strip.box.south, -1.0},
        {&LonLat::b, strip.box.north, 1.0},
    };
    for (const HalfPlane &side : sides) ring = ClipRingBySide(ring, side);
    if (!HasArea(ring)) return;
    for (LonLat &p : ring) p.l -= strip.shift;
    ring.push_back(ring.front());
    out.push_back(std::move(ring));
}

void CloseRing(Path &ring) {
    if (!(ring.front() == ring.back())) ring.push_back(ring.front());
}

using ClipToStrip = void (&)(const Path &, const Strip &, std::vector<Path> &);

Cut CutPath(Path path, bool isRing, const MapArea &area, std::vector<Path> &out, ClipToStrip clipToStrip) {
    const bool flat = BeyondReach(BoundsOf(path));
    if (!flat && HasDateLineJump(path)) path = Unrolled(path, isRing);
    const Box bounds = BoundsOf(path);
    if (Box{-kHalfTurn, area.south, kHalfTurn, area.north}.Contains(bounds)) {
        out.push_back(std::move(path));
        return Cut::kWhole;
    }
    const std::size_t before = out.size();
    for (const Strip &strip : StripsOf(bounds, area, flat)) {
        if (strip.box.Meets(bounds)) clipToStrip(path, strip, out);
    }
    if (out.size() == before) return Cut::kOutside;
    const bool lost = bounds.south < area.south || bounds.north > area.north || flat;
    return lost ? Cut::kClipped : Cut::kWhole;
}

}  // namespace

bool MapArea::Contains(LonLat p) const {
    return p.l >= -kHalfTurn && p.l <= kHalfTurn && p.b >= south && p.b <= north;
}

Cut CutPoint(LonLat point, const MapArea &area, Path &out) {
    if (std::abs(point.l) > kLongitudeReach) return Cut::kOutside;
    if (point.l > kHalfTurn) point.l -= kTurn;
    if (point.l < -kHalfTurn) point.l += kTurn;
    if (!area.Contains(point)) return Cut::kOutside;
    out.push_back(point);
    return Cut::kWhole;
}

Cut CutLine(const Path &line, const MapArea &area, std::vector<Path> &out) {
    if (line.size() < 2) return Cut::kOutside;
    return CutPath(line, false, area, out, ClipLineToStrip);
}

Cut CutRing(const Path &ring, const MapArea &area, std::vector<Path> &out) {
    if (ring.size() < 3) return Cut::kOutside;
    Path closed = ring;
    CloseRing(closed);
    return CutPath(std::move(closed), true, area, out, ClipRingToStrip);
}

}  // namespace ktl::host
