#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/progress.h"
#include "host/table_import.h"
#include "ktl/attributes/field.h"
#include "ktl/platform/string.h"

namespace ktl::host {

/// What the table is for: a layer's keeps to the types that a layer's table can be saved with, so that dates are texts.
enum class TablePurpose { kLayer, kFile };

/// A column on its way into a table.
struct PlannedColumn {
    /// In the source.
    std::size_t index = 0;
    CString name;
    ENUM_DATA type = DATA_CHAR;
    /// Of a text; bytes of GBK.
    int width = 1;
    /// Of a date: without a time of day.
    bool isDay = false;
};

/// How columns come into a table, found by a walk over all rows, and what there is to tell of it.
struct ImportPlan {
    std::vector<PlannedColumn> columns;
    TableReport report;
};

/// Throws `Error`, among others for more columns than a table takes.
ImportPlan PlanImport(const RowSupply &rows, TablePurpose purpose, const ProgressCallback &progress);

/// The text that a cell becomes; empty for no value. Counts characters that had to be replaced.
CString ImportedText(const TableCell &cell, const PlannedColumn &column, TableReport &report);

/// Hands each row on, with progress.
void ImportRows(const RowSupply &rows, const ProgressCallback &progress,
                const std::function<void(const TableRow &)> &use);

}  // namespace ktl::host
