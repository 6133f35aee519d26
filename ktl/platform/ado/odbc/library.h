#pragma once

#include "ktl/platform/types.h"

/// \file
/// ODBC's functions and constants; only the sources of this folder see them. Two of its integer names have other
/// widths than the platform's and step aside.

#define WCHAR OdbcWchar
#define ULONG OdbcUlong
#include <sql.h>
#include <sqlext.h>
#undef WCHAR
#undef ULONG
#undef BOOL
