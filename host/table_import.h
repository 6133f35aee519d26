#pragma once

#include <string>
#include <vector>

#include "host/progress.h"
#include "host/table_rows.h"

class CTable_Local_dbf;

namespace ktl::host {

/// What became of the rows and texts.
struct TableReport {
    long long rows = 0;
    /// Characters that GBK lacks, transliterated or replaced.
    long long replacedCharacters = 0;
    /// Empty numbers that became 0.
    long long emptyNumbers = 0;
    /// What a person should know, a line each: columns with another name or type.
    std::vector<std::string> notes;
};

/// Makes the table anew with the columns of another behind ID and ShapeID; the rows, numbered from 0, wait in its
/// buffer. (Of another layer's table its own two and the rows marked as deleted are left out.) Names are cut to 10
/// bytes of GBK between characters and made unique. Numbers keep 10 decimals; a column with one that is too large,
/// infinite or would become 0 comes as text, and so do dates. Bytes are left out. Throws `Error` for what can't be
/// read, and when the table can't be made.
TableReport ImportTable(const TableSource &source, CTable_Local_dbf &table, const ProgressCallback &progress = {});

/// The same straight into a .dbf file and, for long texts, an .fpt file beside it: no row waits in memory, texts of any
/// length and line ends come whole, and an empty number or truth value stays empty. The files take their places when
/// all is done; without `overwrite` one that is there is an error.
TableReport ImportToFile(const TableSource &source, const std::string &target, bool overwrite,
                         const ProgressCallback &progress = {});

}  // namespace ktl::host
