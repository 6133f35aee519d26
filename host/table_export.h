#pragma once

#include <string>

#include "host/progress.h"
#include "host/table_import.h"
#include "host/table_rows.h"

class CXTable;

namespace ktl::host {

/// Where an export goes: a file in the format that its name's ending tells.
struct ExportTarget {
    std::string path;
    /// Without it a file that is there is an error; with it the whole dataset of that name is replaced.
    bool overwrite = false;
};

/// Writes the user's columns of all rows that are not deleted, stored ones first: to a .dbf file through the library's
/// own engine, with memos and texts in GBK, to any other as features without geometry through OGR. The dataset is made
/// beside its place and moved there when it is whole: a failure leaves what was there. Columns that the format has no
/// type for are left out or come as text, and the notes say so. Throws `Error`, and `Interrupted`.
TableReport ExportTable(CXTable &table, const ExportTarget &target, const ProgressCallback &progress = {});

/// The same of whatever `ReadTable` reads. Of a layer's table, whose first columns are ID and ShapeID, these two and
/// the rows that are marked as deleted by an ID of -1 are left out.
TableReport ExportRows(const TableSource &source, const ExportTarget &target, const ProgressCallback &progress = {});

}  // namespace ktl::host
