#pragma once

#include <string>
#include <vector>

class CTable_Local_dbf;
class CXTable;

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

/// Which layer of what OGR opens; an empty layer name takes the first.
struct TableSource {
    std::string path;
    std::string layer;
};

/// Makes the table anew with the attributes of a layer behind ID and ShapeID; the rows, numbered from 0, wait in its
/// buffer. Names are cut to 10 bytes of GBK between characters and made unique. Numbers keep 10 decimals; a column with
/// one that is too large, infinite or would become 0 comes as text, and so do dates. Throws `Error` for what can't be
/// read, and when the table can't be made.
TableReport ImportTable(const TableSource &source, CTable_Local_dbf &table);

/// Writes the user's columns of all rows that are not deleted, stored ones first, to a new file in the format that the
/// name's ending tells, as features without geometry. Throws `Error`; a file that is there already is left alone, and
/// one that could not be finished is removed.
TableReport ExportTable(CXTable &table, const std::string &path);

}  // namespace ktl::host
