#pragma once

#include <memory>

#include "ktl/platform/ado/odbc/handle.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado::odbc {

/// All rows of the result that a statement's handle stands on; a closed recordset when it has no columns. Throws Error
/// with the driver's diagnostics.
std::shared_ptr<StaticRecordset> ReadResult(const Handle &statement);

}  // namespace ktl::ado::odbc
