#pragma once

#include <string>

namespace ktl::ado::dbase {

/// The path with another extension.
std::string WithExtension(const std::string &systemPath, const char *extension);
/// The existing file of that extension beside a table, without regard to case; empty when there is none.
std::string FindBeside(const std::string &systemPath, const char *extension);

}  // namespace ktl::ado::dbase
