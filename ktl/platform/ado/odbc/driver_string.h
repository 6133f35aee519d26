#pragma once

#include <string>

#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/export.h"

namespace ktl::ado::odbc {

/// The driver that `Driver` of the settings names, else FreeTDS.
KTL_API std::string DriverName(const ConnectionString &settings);

/// What the driver is told, in UTF-8, for the settings `Data Source` (or `Server`), `Initial Catalog`, `User ID`,
/// `Password` and `Integrated Security`. The server's name may carry a port ("host,1433") or an instance
/// ("host\name"); "(local)" and "." are this machine.
KTL_API std::string DriverString(const ConnectionString &settings);

}  // namespace ktl::ado::odbc
