#pragma once

#include <string>

#include "ktl/platform/export.h"

namespace ktl::ado::dbase {

/// The path with another extension.
KTL_API std::string WithExtension(const std::string &systemPath, const char *extension);
/// The existing file of that extension beside a table, without regard to case; empty when there is none.
KTL_API std::string FindBeside(const std::string &systemPath, const char *extension);

}  // namespace ktl::ado::dbase
