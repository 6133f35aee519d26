#include "host/table_import.h"

#include <memory>

#include "host/dbf_writer.h"
#include "host/error.h"
#include "host/import_plan.h"
#include "host/user_rows.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"

namespace ktl::host {

namespace {

/// What a layer's table stores of a memo, and of a row in one statement; it drops the rest when it is saved.
constexpr int kMemoBytes = 8000;
constexpr int kStatementBytes = 8192;

CField MakeField(const CString &name, ENUM_DATA type, int length) {
    CField field(-1, name, type, 0);
    field.nLength = length;
    return field;
}

std::unique_ptr<CFields> FieldsOf(const ImportPlan &plan) {
    constexpr int kNumberWidth = 20;
    auto fields = std::make_unique<CFields>();
    for (const char *name : {"ID", "ShapeID"}) {
        CField field = MakeField(name, DATA_INT, 4);
        field.bReadOnly = field.bSystem = 1;
        fields->AddField(field);
    }
    for (const PlannedColumn &column : plan.columns) {
        const bool isNumber = column.type == DATA_NUMERIC || column.type == DATA_BIGINT;
        const int length = column.type == DATA_CHAR ? column.width : isNumber ? kNumberWidth : 4;
        fields->AddField(MakeField(column.name, column.type, length));
    }
    return fields;
}

bool IsText(const PlannedColumn &column) {
    return column.type == DATA_CHAR || column.type == DATA_MEMO;
}

// Puts rows into a table's buffer.
class BufferFiller {
  public:
    BufferFiller(ImportPlan &plan, CXTable &table) : m_plan(plan), m_report(plan.report), m_table(table) {
        for (const PlannedColumn &column : plan.columns) m_nameBytes += column.name.GetLength() + 1;
    }

    void Take(const TableRow &row) {
        auto record = std::make_unique<CRecord>(static_cast<int>(m_report.rows));
        CString number;
        number.Format("%d", record->nShapeID);
        record->AddValue(number);
        record->AddValue(number);
        int bytes = m_nameBytes;
        for (const PlannedColumn &column : m_plan.columns) {
            CString text = ImportedText(row[column.index], column, m_report);
            if (text.IsEmpty() && !IsText(column)) {
                text = "0";
                ++m_report.emptyNumbers;
            }
            m_lostMemos += column.type == DATA_MEMO && text.GetLength() > kMemoBytes ? 1 : 0;
            if (column.type != DATA_MEMO) bytes += text.GetLength() + 3;
            record->AddValue(text);
        }
        m_lostRows += bytes > kStatementBytes - 64 ? 1 : 0;
        m_table.AddNewRecord(record.release());
        ++m_report.rows;
    }
    void TellLosses() {
        Tell(m_lostMemos, " texts of more than 8000 bytes will not be saved");
        Tell(m_lostRows, " rows may be too long to be saved with their values");
    }

  private:
    void Tell(long long count, const char *what) {
        if (count > 0) m_report.notes.push_back(std::to_string(count) + what);
    }

    const ImportPlan &m_plan;
    TableReport &m_report;
    CXTable &m_table;
    int m_nameBytes = 0;
    long long m_lostMemos = 0;
    long long m_lostRows = 0;
};

}  // namespace

TableReport ImportTable(const TableSource &source, CTable_Local_dbf &table, const ProgressCallback &progress) {
    const RowSupply rows = UserRowsOf(source);
    ImportPlan plan = PlanImport(rows, TablePurpose::kLayer, progress);
    const std::unique_ptr<CFields> fields = FieldsOf(plan);
    if (table.CreateNewLayerTable(fields.get()) == 0) throw Error("cannot make the table (see the error log)");
    BufferFiller filler(plan, table);
    ImportRows(rows, progress, [&](const TableRow &row) { filler.Take(row); });
    filler.TellLosses();
    return plan.report;
}

TableReport ImportToFile(const TableSource &source, const std::string &target, bool overwrite,
                         const ProgressCallback &progress) {
    if (!IsDbf(target)) throw Error("'" + target + "' does not end in .dbf");
    return WriteDbf(UserRowsOf(source), TablePurpose::kLayer, target, overwrite, progress);
}

}  // namespace ktl::host
