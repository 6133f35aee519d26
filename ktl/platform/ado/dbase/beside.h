#pragma once

#include <string>

#include "ktl/platform/string.h"

namespace ktl::ado::dbase {

/// The path with another extension.
std::string WithExtension(const std::string &systemPath, const char *extension);
/// The existing file of that extension beside a table, without regard to case; empty when there is none.
std::string FindBeside(const std::string &systemPath, const char *extension);
/// The name of the table in a file: without folder and extension, in GBK.
CString TableNameOf(const std::string &systemPath);

}  // namespace ktl::ado::dbase
