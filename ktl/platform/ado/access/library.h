#pragma once

// GLib's header has templates, and libmdb's includes it where everything has C linkage.
#include <glib.h>

#include <mdbtools.h>

#include <map>

#include "ktl/platform/ado/access/database.h"

namespace ktl::ado::access {

/// libmdb's handle under a name that public headers can declare.
struct LibraryHandle {
    MdbHandle *mdb;
    /// What its table definitions point to, by the page of the definition.
    std::map<std::uint32_t, MdbCatalogEntry> entries;
};

/// The offset of a row in its page without the flags in the upper bits.
constexpr int kOffsetMask = 0x1FFF;
/// A deleted row, or one that moved and is met at its new place.
constexpr int kGoneFlag = 0x4000;

}  // namespace ktl::ado::access
