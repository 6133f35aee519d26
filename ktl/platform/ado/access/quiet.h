#pragma once

#include "ktl/platform/export.h"

namespace ktl::ado::access {

/// While one lives, what its thread prints to the C library's standard streams is dropped: libmdb reports the oddities
/// of a file there. Other threads keep their output. May be nested; ends on the thread that began it.
class KTL_API Quiet {
  public:
    Quiet();
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;
    ~Quiet();
};

}  // namespace ktl::ado::access
