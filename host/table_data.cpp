#include "host/table_data.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/error.h"
#include "host/gbk_path.h"
#include "host/ogr_table.h"
#include "host/text_number.h"
#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;
using ado::DataType;

std::string Ending(const std::string &path) {
    return LowerAscii(fs::path(path).extension().string());
}

bool IsAccessFile(const std::string &path) {
    return Ending(path) == ".mdb" || Ending(path) == ".accdb";
}

// A text that must survive its way into GBK.
CString Gbk(const std::string &text, const char *what) {
    if (!IsGbk(text)) throw Error(std::string(what) + " holds characters that the tables' encoding (GBK) lacks");
    return FromUtf8(text);
}

// An open store, and the name that it was opened by.
struct Store {
    std::shared_ptr<GbkPath> path;
    ado::ConnectionRef connection;
};

Store OpenFiles(const char *provider, const std::string &file) {
    auto path = std::make_shared<GbkPath>(file);
    const CString text = CString("Provider=") + provider + ";Data Source=\"" + path->Name() + "\"";
    return {path, ado::Connection::Open(text)};
}

Store OpenStore(const std::string &store) {
    if (LowerAscii(store).find("provider=") != std::string::npos) {
        return {nullptr, ado::Connection::Open(Gbk(store, "the connection string"))};
    }
    std::error_code ignored;
    if (fs::is_directory(store, ignored)) return OpenFiles("VFPOLEDB.1", store);
    if (!fs::exists(store, ignored)) throw Error("cannot read '" + store + "': no such file or directory");
    if (Ending(store) == ".dbf") return OpenFiles("VFPOLEDB.1", fs::absolute(store).parent_path());
    if (IsAccessFile(store)) return OpenFiles("Microsoft.Jet.OLEDB.4.0", store);
    throw Error("'" + store + "' is no folder, no .mdb file and no connection string with a Provider");
}

template <class Action>
auto TellFaults(Action action) {
    try {
        return action();
    } catch (const ado::Error &error) {
        throw Error(ToUtf8(error.GetDescription()));
    }
}

/// Those of the widest whole number that tables make, a sign among them.
constexpr int kMostWholeDigits = 20;

// A decimal number is whole when its column has no decimals.
TableColumn DecimalColumn(const ado::Column &column) {
    const bool isWhole = column.scale == 0 && column.precision > 0 && column.precision <= kMostWholeDigits;
    const int width = column.precision > 0 ? column.precision : column.definedSize;
    return {{}, isWhole ? ColumnType::kInteger : ColumnType::kNumber, width, column.scale, column.precision > 9};
}

TableColumn Shape(const ado::Column &column) {
    switch (column.type) {
        case DataType::SmallInt:
        case DataType::Integer:
        case DataType::TinyInt:
        case DataType::UnsignedTinyInt:
        case DataType::UnsignedSmallInt:
            return {{}, ColumnType::kInteger, column.definedSize, 0, false};
        case DataType::UnsignedInt:
        case DataType::BigInt:
        case DataType::UnsignedBigInt:
            return {{}, ColumnType::kInteger, column.definedSize, 0, true};
        case DataType::Single:
        case DataType::Double:
        case DataType::Currency:
            return {{}, ColumnType::kNumber, column.definedSize, 0, false};
        case DataType::Decimal:
        case DataType::Numeric:
        case DataType::VarNumeric:
            return DecimalColumn(column);
        case DataType::Boolean:
            return {{}, ColumnType::kYesNo, 0, 0, false};
        case DataType::DBDate:
            return {{}, ColumnType::kDate, 0, 0, false};
        case DataType::DBTime:
            return {{}, ColumnType::kTime, 0, 0, false};
        case DataType::Date:
        case DataType::DBTimeStamp:
            return {{}, ColumnType::kDateTime, 0, 0, false};
        case DataType::LongVarChar:
        case DataType::LongVarWChar:
            return {{}, ColumnType::kMemo, 0, 0, false};
        case DataType::Binary:
        case DataType::VarBinary:
        case DataType::LongVarBinary:
            return {{}, ColumnType::kBytes, 0, 0, false};
        default:
            return {{}, ColumnType::kText, column.definedSize, 0, false};
    }
}

// A server's columns may lack a name, or share one.
std::vector<TableColumn> Describe(const std::vector<ado::Column> &given) {
    std::vector<TableColumn> columns;
    for (const ado::Column &column : given) {
        std::string name = ToUtf8(column.name);
        if (name.empty()) name = "column" + std::to_string(columns.size() + 1);
        const std::string wanted = name;
        const auto isTaken = [&](const TableColumn &other) { return other.name == name; };
        for (int i = 2; std::any_of(columns.begin(), columns.end(), isTaken); ++i) {
            name = wanted + "_" + std::to_string(i);
        }
        columns.push_back(Shape(column));
        columns.back().name = name;
    }
    return columns;
}

// Midnight and the zero date are left out, as the platform does when it turns a date into text.
std::string DateText(ado::DateTime time, ColumnType type) {
    const ado::CivilTime civil = ado::ToCivil(time);
    char date[32];
    char clock[32];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", civil.year, civil.month, civil.day);
    std::snprintf(clock, sizeof clock, "%02d:%02d:%02d", civil.hour, civil.minute, civil.second);
    const bool isMidnight = civil.hour == 0 && civil.minute == 0 && civil.second == 0;
    if (type == ColumnType::kDate || (isMidnight && type == ColumnType::kDateTime)) return date;
    return type == ColumnType::kTime || time.day == 0 ? clock : std::string(date) + " " + clock;
}

void Fill(TableCell &cell, const ado::Value &value, ColumnType type) {
    using Kind = ado::Value::Kind;
    switch (value.GetKind()) {
        case Kind::Null:
            cell = {};
            return;
        case Kind::Integer:
            cell = {CellKind::kNumber, std::to_string(value.Integer())};
            return;
        case Kind::Double:
            cell = {CellKind::kNumber, NumberText(value.Double())};
            return;
        case Kind::Decimal:
            cell = {CellKind::kNumber, ado::DecimalToText(value.AsDecimal())};
            return;
        case Kind::Bool:
            cell = {CellKind::kYesNo, value.Bool() ? "true" : "false"};
            return;
        case Kind::DateTime:
            cell = {CellKind::kText, DateText(value.Time(), type)};
            return;
        case Kind::Bytes:
            cell = {CellKind::kBytes, std::string(value.Bytes())};
            return;
        case Kind::Text:
            cell = {CellKind::kText, ToUtf8(value.Text())};
            return;
    }
}

// Hands the pages of a statement to a sink. A statement that gives no rows gives one closed page.
class PageWalk {
  public:
    explicit PageWalk(TableSink &sink) : m_sink(sink) {}

    bool Take(const ado::RecordsetRef &page) {
        if (!page->IsOpen()) return false;
        if (!m_gaveRows) Begin(page->GetColumns());
        for (; !page->IsEOF(); page->MoveNext()) {
            for (std::size_t i = 0; i < m_row.size(); ++i) {
                Fill(m_row[i], page->GetCell(static_cast<int>(i)), m_columns[i].type);
            }
            if (!m_sink.TakeRow(m_row)) return false;
        }
        return true;
    }
    bool GaveRows() const { return m_gaveRows; }

  private:
    void Begin(const std::vector<ado::Column> &columns) {
        m_gaveRows = true;
        m_columns = Describe(columns);
        m_row.resize(m_columns.size());
        m_sink.TakeColumns(m_columns);
    }

    TableSink &m_sink;
    std::vector<TableColumn> m_columns;
    TableRow m_row;
    bool m_gaveRows = false;
};

bool Send(ado::Connection &connection, const CString &statement, TableSink &sink) {
    PageWalk walk(sink);
    connection.ReadPages(statement, [&](const ado::RecordsetRef &page) { return walk.Take(page); });
    return walk.GaveRows();
}

std::vector<std::string> TablesOf(ado::Connection &connection) {
    std::vector<std::string> names;
    for (const auto rows = connection.OpenSchema(ado::Connection::kSchemaTables); !rows->IsEOF(); rows->MoveNext()) {
        if (rows->GetCell("TABLE_TYPE").Text() == "TABLE") names.push_back(ToUtf8(rows->GetCell("TABLE_NAME").Text()));
    }
    return names;
}

struct StoredTable {
    Store store;
    CString name;
    std::vector<std::string> tables;
};

std::string Joined(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

// A table of a store of several; the first one for an empty name.
StoredTable FindTable(const TableSource &source) {
    StoredTable table{OpenStore(source.path), {}, {}};
    table.tables = TablesOf(*table.store.connection);
    if (table.tables.empty()) throw Error("no tables in '" + source.path + "'");
    const std::string wanted = source.layer.empty() ? table.tables.front() : source.layer;
    const auto isWanted = [&](const std::string &name) { return LowerAscii(name) == LowerAscii(wanted); };
    if (std::none_of(table.tables.begin(), table.tables.end(), isWanted)) {
        throw Error("no table '" + wanted + "' in '" + source.path + "', which has " + Joined(table.tables));
    }
    table.name = Gbk(wanted, "the table's name");
    return table;
}

bool HoldsTables(const std::string &folder) {
    std::error_code ignored;
    for (const auto &entry : fs::directory_iterator(folder, ignored)) {
        if (Ending(entry.path().string()) == ".dbf") return true;
    }
    return false;
}

void RequireReadable(const std::string &path) {
    if (access(path.c_str(), R_OK) != 0) throw Error("cannot read '" + path + "': " + std::strerror(errno));
}

// Empty for what OGR reads.
std::optional<StoredTable> FindStored(const TableSource &source) {
    if (IsAccessFile(source.path)) {
        RequireReadable(source.path);
        return FindTable(source);
    }
    if (HoldsTables(source.path)) return FindTable(source);
    if (Ending(source.path) != ".dbf") return {};
    RequireReadable(source.path);
    const std::string name = fs::path(source.path).stem().string();
    if (!source.layer.empty() && source.layer != name) {
        throw Error("no table '" + source.layer + "' in '" + source.path + "', which has " + name);
    }
    if (name.find(']') != std::string::npos) throw Error("a table's name cannot hold ']': '" + name + "'");
    return StoredTable{OpenStore(source.path), Gbk(name, "the table's name"), {name}};
}

// Takes the columns alone.
class ColumnTaker : public TableSink {
  public:
    void TakeColumns(const std::vector<TableColumn> &given) override { columns = given; }
    bool TakeRow(const TableRow &) override { return false; }

    std::vector<TableColumn> columns;
};

TableInfo DescribeStored(const StoredTable &table) {
    TableInfo info{ToUtf8(table.name), table.tables, {}, 0};
    ColumnTaker taker;
    Send(*table.store.connection, "Select Top 1 * From [" + table.name + "]", taker);
    info.columns = taker.columns;
    const auto count = table.store.connection->OpenRecordset("Select Count(*) From [" + table.name + "]", false);
    info.rows = count->GetCell(0).ToInteger().value_or(0);
    return info;
}

// Words that begin a statement which may give rows; of any other the number of changed rows counts.
bool MayGiveRows(const std::string &statement) {
    static constexpr const char *kWords[] = {"select", "sele", "selec", "with", "exec", "execute", "values"};
    const std::size_t first = statement.find_first_not_of(" \t\r\n(;");
    if (first == std::string::npos) return false;
    const std::string word = LowerAscii(statement.substr(first, statement.find_first_of(" \t\r\n(*", first) - first));
    return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

}  // namespace

TableInfo DescribeTable(const TableSource &source) {
    return TellFaults([&] {
        const auto stored = FindStored(source);
        return stored ? DescribeStored(*stored) : DescribeOgrTable(source);
    });
}

void ReadTable(const TableSource &source, TableSink &sink) {
    TellFaults([&] {
        const auto stored = FindStored(source);
        if (!stored) return ReadOgrTable(source, sink);
        Send(*stored->store.connection, "Select * From [" + stored->name + "]", sink);
    });
}

StatementResult RunStatement(const std::string &store, const std::string &statement, TableSink &sink) {
    const CString sql = Gbk(statement, "the statement");
    return TellFaults([&] {
        const Store opened = OpenStore(store);
        if (!MayGiveRows(statement)) return StatementResult{false, opened.connection->Execute(sql)};
        return StatementResult{Send(*opened.connection, sql, sink), 0};
    });
}

bool MayChangeFiles(const std::string &store, const std::string &statement) {
    return LowerAscii(store).find("sqloledb") == std::string::npos && !MayGiveRows(statement);
}

}  // namespace ktl::host
