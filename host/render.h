#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/ogr_source.h"
#include "host/style.h"
#include "ktl/core/extent.h"

namespace ktl::host {

struct StyledSource {
    SourceOptions source;
    Style style;
};

/// What to draw and how. Extents are west, south, east and north in degrees.
struct RenderOptions {
    std::vector<StyledSource> sources;  ///< later ones over earlier ones
    std::string output;                 ///< UTF-8; its extension chooses the format
    int width = 1024;
    int height = 768;
    std::optional<CExtent> extent;  ///< shown whole; without it and without a centre the extent of all shapes
    std::optional<LonLat> center;   ///< shown at exactly `level`
    int level = 0;
    bool degrees = false;
    std::optional<int> mapType;  ///< the map type's number; without it an ordinary map of the chosen pyramid
    COLORREF background = RGB(255, 255, 255);
    bool smooth = false;
    bool georeference = false;
};

struct RenderResult {
    int level = 0;
    double ratio = 0.0;    ///< pixels per world unit
    bool degrees = false;  ///< the map's world units
    CExtent shown;         ///< in degrees
    CExtent projected;     ///< the same in Web Mercator metres, as the world file has it; of a degree map all 0
    long long shapesDrawn = 0;
    ReadReport read;                 ///< of all sources together
    std::vector<std::string> notes;  ///< what a person should know about the picture, a line each
    std::vector<std::string> files;  ///< written, the picture first
};

/// The sides that a picture can have, and the area that its back buffers can hold.
constexpr int kLongestSide = 10000;
constexpr long long kLargestArea = 50'000'000;

/// Throws `Error` for options that ask for no possible picture, before anything is read or written.
void CheckOptions(const RenderOptions &options);

/// Reads, draws and writes. Throws `Error` or `Interrupted` and leaves nothing behind then. The runtime must be up.
RenderResult Render(const RenderOptions &options, const ProgressCallback &progress = {});

}  // namespace ktl::host
