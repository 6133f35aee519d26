#include "host/user_rows.h"

#include "host/table_data.h"
#include "host/text_number.h"

namespace ktl::host {

void UserRows::TakeColumns(const std::vector<TableColumn> &columns) {
    const auto is = [&](std::size_t i, const char *name) {
        return columns[i].type == ColumnType::kInteger && LowerAscii(columns[i].name) == name;
    };
    if (columns.size() > 2 && is(0, "id") && is(1, "shapeid")) m_skipped = 2;
    m_sink.TakeColumns({columns.begin() + m_skipped, columns.end()});
}

bool UserRows::TakeRow(const TableRow &row) {
    if (m_skipped == 0) return m_sink.TakeRow(row);
    if (row[0].text == "-1") return true;
    m_row.assign(row.begin() + m_skipped, row.end());
    return m_sink.TakeRow(m_row);
}

RowSupply UserRowsOf(const TableSource &source) {
    return {DescribeTable(source).rows, [source](TableSink &sink) {
                UserRows rows(sink);
                ReadTable(source, rows);
            }};
}

}  // namespace ktl::host
