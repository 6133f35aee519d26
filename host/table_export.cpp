#include "host/table_export.h"

#include <memory>

#include "host/dbf_writer.h"
#include "host/error.h"
#include "host/ogr_table_writer.h"
#include "host/user_rows.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/xtable.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

constexpr long long kRowsBetweenReports = 1000;

// Writes rows with progress.
class Exporter : public TableSink {
  public:
    Exporter(OgrTableWriter &writer, long long total, const ProgressCallback &progress)
        : m_writer(writer), m_where{"exporting", 0, total}, m_progress(progress) {}

    void TakeColumns(const std::vector<TableColumn> &columns) override {
        Report();
        m_writer.MakeColumns(columns);
    }
    bool TakeRow(const TableRow &row) override {
        m_writer.Write(row);
        if (++m_where.done % kRowsBetweenReports == 0) Report();
        return true;
    }

  private:
    void Report() {
        if (m_progress && !m_progress(m_where)) throw Interrupted();
    }

    OgrTableWriter &m_writer;
    Progress m_where;
    const ProgressCallback &m_progress;
};

TableReport Export(const RowSupply &rows, const ExportTarget &target, const ProgressCallback &progress) {
    if (IsDbf(target.path)) return WriteDbf(rows, TablePurpose::kFile, target.path, target.overwrite, progress);
    OgrTableWriter writer(target.path, target.overwrite);
    Exporter exporter(writer, rows.count, progress);
    rows.walk(exporter);
    return writer.Finish();
}

TableColumn ColumnFor(const CField &field) {
    const std::string name = ToUtf8(field.strName);
    switch (field.eType) {
        case DATA_INT:
            return {name, ColumnType::kInteger, 4, 0, false};
        case DATA_BOOL:
            return {name, ColumnType::kYesNo, 0, 0, false};
        case DATA_BIGINT:
            return {name, ColumnType::kInteger, 20, 0, true};
        case DATA_NUMERIC:
            return {name, ColumnType::kNumber, 20, 10, false};
        case DATA_DATETIME:
            return {name, ColumnType::kDateTime, 0, 0, false};
        case DATA_CHAR:
            return {name, ColumnType::kText, field.nLength, 0, false};
        case DATA_MEMO:
            return {name, ColumnType::kMemo, 0, 0, false};
        default:
            return {name, ColumnType::kBytes, 0, 0, false};
    }
}

// A value as tables hand it out. An integer column holds a truth value as 0, 1 or -1.
TableCell CellFor(const CString &text, ColumnType type) {
    if (text.IsEmpty() && type != ColumnType::kText && type != ColumnType::kMemo) return {};
    if (type == ColumnType::kYesNo) return {CellKind::kYesNo, text == "0" ? "false" : "true"};
    return {IsNumber(type) ? CellKind::kNumber : CellKind::kText, ToUtf8(text)};
}

// The rows of a table that is reached through its own operations only.
class TableWalk {
  public:
    TableWalk(CXTable &table, TableSink &sink) : m_table(table), m_sink(sink) {}

    void Run() {
        CFields *fields = m_table.GetTableFields();
        if (fields == nullptr) throw Error("the table has no columns");
        for (int i = 0; i < fields->GetFieldCount(); ++i) {
            const CField &field = *fields->GetFieldAt(i);
            if (field.bSystem != 0) continue;
            m_columns.push_back(ColumnFor(field));
            m_places.push_back({field.strName, i});
        }
        m_sink.TakeColumns(m_columns);
        WriteStored();
        WriteBuffered();
    }

  private:
    struct Place {
        CString name;
        int position;
    };

    void WriteStored() {
        const ado::RecordsetRef rows =
            m_table.GetRecordset("Select * From [" + m_table.GetTableName() + "] Where ID <> -1");
        for (; rows && !rows->IsEOF(); rows->MoveNext()) {
            Write([&](const Place &place) { return m_table.GetItemValue(rows, place.name); });
        }
    }
    void WriteBuffered() {
        for (int i = 0; i < m_table.GetNewRecordCount(); ++i) {
            const CRecord &record = *m_table.GetNewRecordAt(i);
            if (record.bDeleted != 0) continue;
            Write([&](const Place &place) { return record.GetValueAt(place.position); });
        }
    }
    template <class Value>
    void Write(Value value) {
        TableRow row;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const ColumnType type = m_columns[i].type;
            row.push_back(type == ColumnType::kBytes ? TableCell() : CellFor(value(m_places[i]), type));
        }
        m_sink.TakeRow(row);
    }

    CXTable &m_table;
    TableSink &m_sink;
    std::vector<TableColumn> m_columns;
    std::vector<Place> m_places;
};

}  // namespace

TableReport ExportTable(CXTable &table, const ExportTarget &target, const ProgressCallback &progress) {
    return Export({table.GetRecordCount(0), [&](TableSink &sink) { TableWalk(table, sink).Run(); }}, target, progress);
}

TableReport ExportRows(const TableSource &source, const ExportTarget &target, const ProgressCallback &progress) {
    return Export(UserRowsOf(source), target, progress);
}

}  // namespace ktl::host
