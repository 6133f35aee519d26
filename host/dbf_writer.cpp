#include "host/dbf_writer.h"

#include <filesystem>
#include <memory>

#include "host/error.h"
#include "host/gbk_path.h"
#include "host/staged_files.h"
#include "host/text_number.h"
#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;

// An empty value has its own form in each. Whole numbers are digits, which more programs read than binary ones. In a
// layer's table they are as wide as any other number, since its rows are walked by hand as if they were.
CString Definition(const PlannedColumn &column, TablePurpose purpose) {
    switch (column.type) {
        case DATA_INT:
            return purpose == TablePurpose::kLayer ? "bigint" : "numeric(11,0)";
        case DATA_BIGINT:
            return "bigint";
        case DATA_BOOL:
            return "logical";
        case DATA_NUMERIC:
            return "numeric(20,10)";
        case DATA_DATETIME:
            return column.isDay ? "date" : "datetime";
        case DATA_MEMO:
            return "memo";
        default: {
            CString type;
            type.Format("Char(%d)", column.width);
            return type;
        }
    }
}

// Writes rows straight into a table of a folder.
class FileFiller {
  public:
    static constexpr const char *kName = "imported";

    FileFiller(ImportPlan &plan, TablePurpose purpose, const std::string &target, const CString &folder)
        : m_target(target),
          m_plan(plan),
          m_purpose(purpose),
          m_report(plan.report),
          m_connection(ado::Connection::Open("Provider=VFPOLEDB.1;Data Source=\"" + folder + "\"")) {
        CString columns = purpose == TablePurpose::kLayer ? "[ID] int,[ShapeID] int," : "";
        for (const PlannedColumn &column : plan.columns)
            columns += "[" + column.name + "] " + Definition(column, purpose) + ",";
        Execute(CString("Create Table ") + kName + " (" + columns.TrimRight(',') + ")");
        m_hold = m_connection->HoldTable(kName);
    }

    void Take(const TableRow &row) {
        m_sql = "Insert Into " + std::string(kName) + " Values (";
        const std::string number = std::to_string(m_report.rows);
        if (m_purpose == TablePurpose::kLayer) m_sql += number + "," + number + ",";
        for (const PlannedColumn &column : m_plan.columns) {
            AppendLiteral(column, ImportedText(row[column.index], column, m_report));
            m_sql += ',';
        }
        m_sql.back() = ')';
        Execute(CString(m_sql));
        ++m_report.rows;
    }
    void Close() {
        m_hold.reset();
        m_connection->Close();
    }

  private:
    void Execute(const CString &sql) {
        try {
            m_connection->Execute(sql);
        } catch (const ado::Error &error) {
            throw Error("cannot write '" + m_target + "': " + ToUtf8(error.GetDescription()));
        }
    }
    void AppendLiteral(const PlannedColumn &column, const CString &text) {
        const bool isText = column.type == DATA_CHAR || column.type == DATA_MEMO;
        if (text.IsEmpty() && !isText) {
            m_sql += "Null";
        } else if (column.type == DATA_DATETIME) {
            m_sql += "{^" + std::string(text.View()) + "}";
        } else if (!isText) {
            m_sql += text.View();
        } else {
            m_sql += '\'';
            for (const char c : text.View()) m_sql.append(c == '\'' ? 2 : 1, c);
            m_sql += '\'';
        }
    }

    const std::string &m_target;
    const ImportPlan &m_plan;
    TablePurpose m_purpose;
    TableReport &m_report;
    ado::ConnectionRef m_connection;
    /// The table is this run's alone, and each row's statement cheaper.
    std::shared_ptr<void> m_hold;
    std::string m_sql;
};

// The engine's table under the name that the target is to have.
void Rename(const StagedFiles &files) {
    const fs::path made = fs::path(files.Folder()) / FileFiller::kName;
    fs::rename(made.string() + ".dbf", files.Path());
    const std::string memo = made.string() + ".fpt";
    if (fs::exists(memo)) fs::rename(memo, fs::path(files.Path()).replace_extension(".fpt"));
}

}  // namespace

bool IsDbf(const std::string &path) {
    return LowerAscii(fs::path(path).extension().string()) == ".dbf";
}

TableReport WriteDbf(const RowSupply &rows, TablePurpose purpose, const std::string &target, bool overwrite,
                     const ProgressCallback &progress) {
    StagedFiles files(target, overwrite);
    const GbkPath folder(files.Folder());
    ImportPlan plan = PlanImport(rows, purpose, progress);
    if (purpose == TablePurpose::kFile && plan.columns.empty()) throw Error("no columns to write to '" + target + "'");
    FileFiller filler(plan, purpose, target, folder.Name());
    ImportRows(rows, progress, [&](const TableRow &row) { filler.Take(row); });
    filler.Close();
    Rename(files);
    files.Commit();
    return plan.report;
}

}  // namespace ktl::host
