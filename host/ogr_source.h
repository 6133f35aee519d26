#pragma once

#include <string>
#include <vector>

#include "host/map_area.h"
#include "host/progress.h"

namespace ktl::host {

/// What to read: anything that OGR opens.
struct SourceOptions {
    std::string path;   ///< UTF-8; a file, a directory, or another name that an OGR driver takes
    std::string layer;  ///< one layer by name; empty for all
    std::string where;  ///< an attribute filter in OGR's SQL; empty for all features
};

/// What became of the features of a source. A feature counts once, as skipped only where nothing of it is left.
struct ReadReport {
    long long features = 0;          ///< read, whatever became of them
    long long withoutGeometry = 0;   ///< skipped: no geometry, or an empty one
    long long unsupported = 0;       ///< skipped: a geometry kind that is no point, line or area
    long long notFinite = 0;         ///< skipped: a coordinate that is not a number or infinite
    long long notReprojected = 0;    ///< skipped: the coordinate system can't be turned into degrees there
    long long outside = 0;           ///< skipped: beyond what the map's projection takes
    long long clipped = 0;           ///< drawn, but for a part beyond what the map's projection takes
    std::vector<std::string> notes;  ///< what a person should know, a line each

    long long Skipped() const { return withoutGeometry + unsupported + notFinite + notReprojected + outside; }
    void Add(const ReadReport &other);
};

/// Takes the pieces of the features in the source's order. Coordinates are degrees within the map's area.
class GeometrySink {
  public:
    virtual ~GeometrySink() = default;
    virtual void AddPoint(LonLat point) = 0;
    /// Two points at least.
    virtual void AddLine(Path &&line) = 0;
    /// Closed rings under the even-odd rule, one at least. More than one: an area with holes.
    virtual void AddArea(std::vector<Path> &&rings) = 0;
};

/// Reads a source from end to end and hands its geometry to the sink, taken apart into points, lines and areas, turned
/// into degrees on WGS 84 where a layer says that it is something else (a layer that says nothing is in degrees), and
/// cut to the area. Throws `Error` for what can't be opened or read to its end, a missing layer or a filter that
/// doesn't parse.
ReadReport ReadSource(const SourceOptions &options, const MapArea &area, GeometrySink &sink,
                      const ProgressCallback &progress = {});

}  // namespace ktl::host
