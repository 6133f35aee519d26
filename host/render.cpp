#include "host/render.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "host/error.h"
#include "host/image_format.h"
#include "host/render_window.h"
#include "host/side_files.h"
#include "host/staged_files.h"
#include "ktl/imaging/bitmap_tools.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/webmap/map_type.h"

namespace ktl::host {

namespace {

constexpr int kOrdinaryMap = 0;
constexpr int kDegreeMap = 101;
constexpr int kFirstLevel = 1;
constexpr int kLastLevel = 22;

void CheckSize(int width, int height) {
    if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide) {
        throw Error("bad size " + std::to_string(width) + "x" + std::to_string(height) + ": each side is 1 to " +
                    std::to_string(kLongestSide) + " pixels");
    }
    if (static_cast<long long>(width) * height > kLargestArea) {
        throw Error("bad size " + std::to_string(width) + "x" + std::to_string(height) + ": more than " +
                    std::to_string(kLargestArea / 1'000'000) + " megapixels");
    }
}

void CheckExtent(const CExtent &extent) {
    for (const double value : {extent.left, extent.bottom, extent.right, extent.top}) {
        if (!std::isfinite(value)) throw Error("bad extent: every value must be a finite number of degrees");
    }
    if (extent.left >= extent.right) throw Error("bad extent: west must be less than east");
    if (extent.bottom >= extent.top) throw Error("bad extent: south must be less than north");
    if (extent.left < -180.0 || extent.right > 180.0) throw Error("bad extent: longitudes run from -180 to 180");
    if (extent.bottom < -90.0 || extent.top > 90.0) throw Error("bad extent: latitudes run from -90 to 90");
}

void CheckCenter(LonLat center, const MapArea &area) {
    if (!std::isfinite(center.l) || !std::isfinite(center.b)) {
        throw Error("bad centre: longitude and latitude must be finite numbers");
    }
    if (!area.Contains(center)) throw Error("bad centre: it lies outside the map");
}

void CheckLevel(int level) {
    if (level < kFirstLevel || level > kLastLevel) {
        throw Error("bad level " + std::to_string(level) + ": levels run from 1 to 22");
    }
}

void CheckOutput(const std::string &output) {
    if (output.empty()) throw Error("no output file given");
    if (!FormatOf(output)) {
        throw Error("cannot tell the format of '" + output + "': its extension must be one of " + KnownExtensions());
    }
    std::error_code error;
    if (std::filesystem::is_directory(output, error)) throw Error("cannot write '" + output + "': it is a directory");
    const auto folder = std::filesystem::path(output).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
        throw Error("cannot write '" + output + "': no directory '" + folder.string() + "'");
    }
}

struct Map {
    WorldUnits units;
    ENUM_MAP_TYPE type;
};

Map MapOf(const RenderOptions &options) {
    const int number = options.mapType.value_or(options.degrees ? kDegreeMap : kOrdinaryMap);
    const auto type = static_cast<ENUM_MAP_TYPE>(number);
    return {IsWGS(type) != 0 ? WorldUnits::kDegrees : WorldUnits::kNormalised, type};
}

using Layers = std::vector<std::unique_ptr<ShapeSet>>;

Layers ReadLayers(const RenderOptions &options, WorldUnits units, ReadReport &report,
                  const ProgressCallback &progress) {
    Layers layers;
    for (const StyledSource &source : options.sources) {
        layers.push_back(std::make_unique<ShapeSet>(source.style, units));
        report.Add(ReadSource(source.source, AreaOf(units), *layers.back(), progress));
        layers.back()->BuildIndex();
    }
    return layers;
}

CExtent FullExtent(const Layers &layers) {
    CExtent full;
    bool found = false;
    for (const auto &layer : layers) {
        if (layer->IsEmpty()) continue;
        full = found ? full + layer->GetExtent() : layer->GetExtent();
        found = true;
    }
    if (!found) throw Error("nothing to show: the sources hold no shape that the map can take");
    return full;
}

CExtent WantedExtent(const RenderOptions &options, WorldUnits units, const Layers &layers, RenderResult &result) {
    if (!options.extent) return FullExtent(layers);
    const MapArea &area = AreaOf(units);
    CExtent wanted = *options.extent;
    if (wanted.bottom < area.south || wanted.top > area.north) {
        wanted.bottom = std::clamp(wanted.bottom, area.south, area.north);
        wanted.top = std::clamp(wanted.top, area.south, area.north);
        result.notes.push_back("the extent reaches beyond the map, which ends at latitude 85.0511");
    }
    if (wanted.bottom >= wanted.top) throw Error("bad extent: it lies outside the map");
    return WorldFromDegrees(wanted, units);
}

void ShowWanted(RenderWindow &window, const RenderOptions &options, WorldUnits units, const Layers &layers,
                RenderResult &result) {
    if (options.center) {
        window.ShowLevel(WorldFromDegrees(*options.center, units), options.level);
    } else {
        window.ShowExtent(WantedExtent(options, units, layers, result));
    }
}

std::string Encoded(Gdiplus::Bitmap &picture, const std::string &path) {
    unsigned int size = 0;
    const CString format(FormatOf(path).value().encoder);
    const std::unique_ptr<unsigned char, decltype(&std::free)> buffer(CreateBufferFromBitmap(&picture, size, format),
                                                                      &std::free);
    if (!buffer || size == 0) throw Error("cannot encode the picture for '" + path + "'");
    return {reinterpret_cast<const char *>(buffer.get()), size};
}

void WriteFiles(RenderWindow &window, const RenderOptions &options, const Map &map, RenderResult &result) {
    StagedFiles files(options.output, true);
    const auto add = [&](const std::string &path, std::string_view bytes) {
        files.Write(path, bytes);
        result.files.push_back(path);
    };
    add(options.output, Encoded(*window.GetPicture(), options.output));
    if (options.georeference) {
        const PlacedPicture picture = {options.output, options.width, options.height, window.GetCurDataExtent(),
                                       map.units,      map.type};
        for (const SideFile &side : MakeSideFiles(picture)) add(side.path, side.bytes);
    }
    files.Commit();
}

}  // namespace

void CheckOptions(const RenderOptions &options) {
    if (options.sources.empty()) throw Error("no source given");
    CheckSize(options.width, options.height);
    CheckOutput(options.output);
    if (options.extent && options.center) throw Error("an extent and a centre exclude each other");
    if (options.extent) CheckExtent(*options.extent);
    if (options.center) {
        CheckLevel(options.level);
        CheckCenter(*options.center, AreaOf(MapOf(options).units));
    }
}

RenderResult Render(const RenderOptions &options, const ProgressCallback &progress) {
    CheckOptions(options);
    const Map map = MapOf(options);
    RenderResult result;
    const Layers layers = ReadLayers(options, map.units, result.read, progress);
    result.notes = result.read.notes;
    RenderWindow window(map.units, map.type, options.background);
    for (const auto &layer : layers) window.AddShapes(*layer);
    window.SetSmooth(options.smooth);
    window.SetProgress(progress);
    window.SetPictureSize(options.width, options.height);
    if (window.GetPicture() == nullptr || window.GetPicture()->GetLastStatus() != Gdiplus::Ok) {
        throw Error("not enough memory for a picture of this size");
    }
    ShowWanted(window, options, map.units, layers, result);
    window.Paint();
    result.level = window.GetLevel();
    result.ratio = window.GetRatio();
    result.degrees = map.units == WorldUnits::kDegrees;
    result.shown = DegreesFromWorld(window.GetCurDataExtent(), map.units);
    if (!result.degrees) result.projected = MetresFromWorld(window.GetCurDataExtent());
    result.shapesDrawn = window.GetShapesDrawn();
    WriteFiles(window, options, map, result);
    return result;
}

}  // namespace ktl::host
