#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "ktl/platform/ado/dbase/data_file.h"
#include "ktl/platform/ado/dbase/header.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::dbase {

/// A block of a table's rows in memory, and what of it is to be written back.
class RowWindow {
  public:
    bool Holds(sql::RowNumber row) const { return row >= m_first && row - m_first < m_rows; }
    /// A record that the window holds.
    char *RecordOf(sql::RowNumber row) {
        return m_bytes.data() + static_cast<std::size_t>(row - m_first) * m_recordLength;
    }
    /// The row behind the last one.
    sql::RowNumber GetEnd() const { return m_first + m_rows; }
    std::uint32_t GetRowCount() const { return m_rows; }

    /// Reads up to `rows` rows; at the end of the file there are fewer. Nothing may be left to write back.
    void Load(const DataFile &file, const Header &header, sql::RowNumber first, std::uint32_t rows);
    /// Notes a changed part of a record.
    void MarkDirty(const char *at, std::size_t size);
    bool IsDirty() const { return m_dirtyEnd != 0; }
    void WriteBack(DataFile &file, const Header &header);
    /// Forgets the rows and their changes.
    void Drop();

  private:
    std::string m_bytes;
    sql::RowNumber m_first = 0;
    std::uint32_t m_rows = 0;
    std::uint32_t m_recordLength = 0;
    std::size_t m_dirtyBegin = 0;
    std::size_t m_dirtyEnd = 0;
};

}  // namespace ktl::ado::dbase
