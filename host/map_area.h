#pragma once

#include <vector>

namespace ktl::host {

/// Longitude and latitude in degrees.
struct LonLat {
    double l = 0.0;
    double b = 0.0;

    friend bool operator==(const LonLat &, const LonLat &) = default;
};
using Path = std::vector<LonLat>;

/// The part of the world that a map can show: all longitudes from -180 to 180, and the latitudes that its projection
/// reaches.
struct MapArea {
    double south = -90.0;
    double north = 90.0;

    bool Contains(LonLat p) const;
};

/// The square of the normalised map ends where its y reaches 0.5.
constexpr double kMercatorReach = 85.0511287798066;
constexpr MapArea kNormalisedArea = {-kMercatorReach, kMercatorReach};
constexpr MapArea kDegreeArea = {-90.0, 90.0};

enum class Cut {
    kWhole,    ///< nothing was lost
    kClipped,  ///< a part lay outside
    kOutside,  ///< all of it lay outside; nothing is handed out
};

/// Each of these appends to `out` what of the geometry lies in the area. Longitudes from -540 to 540 are taken round
/// the globe into -180 to 180; a segment of nearly 360 degrees (more than `kDateLineJump`) is a short one that crosses
/// the date line. What crosses it is split there, which counts as no loss.

constexpr double kDateLineJump = 350.0;

Cut CutPoint(LonLat point, const MapArea &area, Path &out);
/// Pieces have two points at least.
Cut CutLine(const Path &line, const MapArea &area, std::vector<Path> &out);
/// Pieces are closed rings (the first point repeated). Those of one ring don't overlap, and what lies inside them by
/// the even-odd rule is what lay inside the ring. A ring round a pole is closed by way of that pole. Where a ring was
/// cut its pieces follow the area's edge.
Cut CutRing(const Path &ring, const MapArea &area, std::vector<Path> &out);

}  // namespace ktl::host
