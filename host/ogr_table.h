#pragma once

#include "host/table_rows.h"

namespace ktl::host {

/// As `DescribeTable` and `ReadTable`, for what OGR opens. Lists come as text in JSON's form.
TableInfo DescribeOgrTable(const TableSource &source);
void ReadOgrTable(const TableSource &source, TableSink &sink);

}  // namespace ktl::host
