#include "apps/cli/report.h"

#include <cstdio>

#include "apps/cli/json.h"

namespace ktl::cli {

namespace {

using host::ReadReport;

struct Reason {
    long long ReadReport::*count;
    const char *text;
    const char *key;
};
constexpr Reason kSkipReasons[] = {
    {&ReadReport::withoutGeometry, "without geometry", "withoutGeometry"},
    {&ReadReport::unsupported, "of an unsupported kind", "unsupportedKind"},
    {&ReadReport::notFinite, "with coordinates that are no finite numbers", "notFinite"},
    {&ReadReport::notReprojected, "that could not be turned into degrees", "notReprojected"},
    {&ReadReport::outside, "outside the map", "outsideMap"},
};

std::string Format(const char *format, auto... values) {
    char line[512];
    std::snprintf(line, sizeof line, format, values...);
    return line;
}

std::string Four(const CExtent &extent) {
    return Format("%.10g, %.10g, %.10g, %.10g", extent.left, extent.bottom, extent.right, extent.top);
}

std::string FeatureLine(const ReadReport &read) {
    std::string line = Format("features: %lld read", read.features);
    std::string reasons;
    for (const Reason &reason : kSkipReasons) {
        if (read.*reason.count == 0) continue;
        reasons += (reasons.empty() ? "" : ", ") + Format("%lld %s", read.*reason.count, reason.text);
    }
    if (!reasons.empty()) line += Format(", %lld skipped (", read.Skipped()) + reasons + ")";
    if (read.clipped > 0) line += Format(", %lld clipped at the map's edge", read.clipped);
    return line + "\n";
}

std::string JoinedFiles(const host::RenderResult &result) {
    std::string names;
    for (const std::string &file : result.files) names += (names.empty() ? "" : ", ") + file;
    return names;
}

void AddExtent(JsonWriter &json, std::string_view name, const CExtent &extent, const char *const (&keys)[4]) {
    json.BeginObject(name);
    json.Real(keys[0], extent.left).Real(keys[1], extent.bottom).Real(keys[2], extent.right).Real(keys[3], extent.top);
    json.End();
}

void AddFeatures(JsonWriter &json, const ReadReport &read) {
    json.BeginObject("features").Number("read", read.features).Number("clipped", read.clipped);
    json.BeginObject("skipped");
    for (const Reason &reason : kSkipReasons) json.Number(reason.key, read.*reason.count);
    json.End().End();
}

void AddTexts(JsonWriter &json, std::string_view name, const std::vector<std::string> &texts) {
    json.BeginArray(name);
    for (const std::string &text : texts) json.Text({}, text);
    json.End();
}

}  // namespace

std::string ReportText(const host::RenderOptions &options, const host::RenderResult &result) {
    std::string text = "wrote " + JoinedFiles(result) + "\n";
    text += Format("picture: %d x %d pixels, level %d, ratio %.10g, %lld shapes drawn\n", options.width, options.height,
                   result.level, result.ratio, result.shapesDrawn);
    text += "extent: " + Four(result.shown) + " (west, south, east, north in degrees)\n";
    if (!result.degrees) text += "projected: " + Four(result.projected) + " (Web Mercator metres)\n";
    text += FeatureLine(result.read);
    for (const std::string &note : result.notes) text += "note: " + note + "\n";
    return text;
}

std::string ReportJson(const host::RenderOptions &options, const host::RenderResult &result) {
    JsonWriter json;
    json.BeginObject();
    AddTexts(json, "files", result.files);
    json.Number("width", options.width).Number("height", options.height);
    json.Text("map", result.degrees ? "degrees" : "normalised");
    json.Number("level", result.level).Real("ratio", result.ratio);
    AddExtent(json, "extent", result.shown, {"west", "south", "east", "north"});
    if (!result.degrees) AddExtent(json, "projectedExtent", result.projected, {"left", "bottom", "right", "top"});
    json.Number("shapesDrawn", result.shapesDrawn);
    AddFeatures(json, result.read);
    AddTexts(json, "notes", result.notes);
    return json.End().Result();
}

}  // namespace ktl::cli
