#include "host/ogr_open.h"

#include <ogrsf_frmts.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "host/error.h"

namespace ktl::host {

namespace {

std::string WhyNotOpened(const std::string &path, const GdalMessages &messages) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) return "no such file or directory";
    if (access(path.c_str(), R_OK) != 0 && errno != ENOENT) return std::strerror(errno);
    if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(path, error) == 0 && !error) {
        return "the file is empty";
    }
    if (std::filesystem::is_directory(status)) return "no map data that can be read in this directory";
    return messages.Failed() ? messages.Failure() : "no map file of a known format";
}

}  // namespace

GDALDatasetUniquePtr OpenOgr(const std::string &path, GdalMessages &messages) {
    GDALAllRegister();
    messages.Forget();
    GDALDatasetUniquePtr dataset(
        GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
    if (!dataset) throw Error("cannot read '" + path + "': " + WhyNotOpened(path, messages));
    messages.Forget();
    return dataset;
}

std::string LayerNames(GDALDataset &dataset) {
    std::string names;
    for (OGRLayer *layer : dataset.GetLayers()) names += (names.empty() ? "" : ", ") + std::string(layer->GetName());
    return names.empty() ? "no layers" : names;
}

OGRLayer &FindLayer(GDALDataset &dataset, const std::string &path, const std::string &name) {
    OGRLayer *layer = name.empty() ? dataset.GetLayer(0) : dataset.GetLayerByName(name.c_str());
    if (layer != nullptr) return *layer;
    if (name.empty()) throw Error("no layers in '" + path + "'");
    throw Error("no layer '" + name + "' in '" + path + "', which has " + LayerNames(dataset));
}

}  // namespace ktl::host
