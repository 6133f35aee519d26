#pragma once

#include <mdbtools.h>

#include "ktl/platform/ado/access/database.h"

namespace ktl::ado::access {

/// libmdb's handle under a name that public headers can declare.
struct LibraryHandle {
    MdbHandle *mdb;
};

/// The offset of a row in its page without the flags in the upper bits.
constexpr int kOffsetMask = 0x1FFF;
/// A deleted row, or one that moved and is met at its new place.
constexpr int kGoneFlag = 0x4000;

}  // namespace ktl::ado::access
