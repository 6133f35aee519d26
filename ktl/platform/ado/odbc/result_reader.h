#pragma once

#include "ktl/platform/ado/odbc/handle.h"
#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/export.h"

namespace ktl::ado::odbc {

/// All rows of the result that a statement's handle stands on; a closed recordset when it has no columns. Throws Error
/// with the driver's diagnostics.
KTL_API RecordsetRef ReadResult(const Handle &statement);

}  // namespace ktl::ado::odbc
