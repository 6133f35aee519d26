#pragma once

#include <string>

#include "host/import_plan.h"
#include "host/progress.h"
#include "host/table_rows.h"

namespace ktl::host {

bool IsDbf(const std::string &path);

/// Makes a .dbf file and, for long texts, an .fpt file beside it, through the library's own engine; for a layer with ID
/// and ShapeID in front, numbered from 0. The files take their places when all is done. Throws `Error`.
TableReport WriteDbf(const RowSupply &rows, TablePurpose purpose, const std::string &target, bool overwrite,
                     const ProgressCallback &progress);

}  // namespace ktl::host
