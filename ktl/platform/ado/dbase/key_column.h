#pragma once

#include <cstdint>
#include <optional>

#include "ktl/platform/ado/dbase/header.h"
#include "ktl/platform/ado/dbase/layout.h"
#include "ktl/platform/ado/dbase/row_index.h"

namespace ktl::ado::dbase {

/// A column whose rows are found through an index: ID or ShapeID where it is a whole number.
struct KeyColumn {
    /// Its position, or -1 when the table has no such column.
    int column = -1;
    const Field *field = nullptr;
    /// Made when it is first asked for.
    std::optional<RowIndex> index;
    /// Of the running statement.
    std::uint32_t changes = 0;

    std::int32_t ValueIn(const char *record) const {
        return static_cast<std::int32_t>(LoadLittle32(record + field->offset));
    }
    /// Takes over a changed value. A statement that changes very many drops the index instead of mending it.
    void NoteChange(sql::RowNumber row, std::int32_t before, std::int32_t after) {
        constexpr std::uint32_t kManyChanges = 1000;
        if (!index) return;
        if (++changes > kManyChanges) {
            index.reset();
        } else {
            index->Change(row, before, after);
        }
    }
};

}  // namespace ktl::ado::dbase
