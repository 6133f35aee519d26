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

std::vector<OGRLayer *> PublicLayers(GDALDataset &dataset) {
    std::vector<OGRLayer *> layers;
    for (int i = 0; i < dataset.GetLayerCount(); ++i) {
        if (!dataset.IsLayerPrivate(i)) layers.push_back(dataset.GetLayer(i));
    }
    return layers;
}

OGRLayer &FindLayer(GDALDataset &dataset, const std::string &path, const std::string &name) {
    const std::vector<OGRLayer *> layers = PublicLayers(dataset);
    OGRLayer *layer = !name.empty() ? dataset.GetLayerByName(name.c_str()) : layers.empty() ? nullptr : layers.front();
    if (layer != nullptr) return *layer;
    if (layers.empty()) throw Error("no layers in '" + path + "'");
    std::string names;
    for (OGRLayer *each : layers) names += (names.empty() ? "" : ", ") + std::string(each->GetName());
    throw Error("no layer '" + name + "' in '" + path + "', which has " + names);
}

}  // namespace ktl::host
