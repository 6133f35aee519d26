#pragma once

#include <gdal_priv.h>

#include <string>
#include <vector>

#include "host/gdal_messages.h"

namespace ktl::host {

/// A dataset to read from. Throws `Error` that says why it cannot be.
GDALDatasetUniquePtr OpenOgr(const std::string &path, GdalMessages &messages);

/// Those that are not the format's own.
std::vector<OGRLayer *> PublicLayers(GDALDataset &dataset);

/// The layer of that name, the first one for an empty name. Throws `Error`.
OGRLayer &FindLayer(GDALDataset &dataset, const std::string &path, const std::string &name);

}  // namespace ktl::host
