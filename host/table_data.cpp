#include "host/table_data.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "host/error.h"
#include "host/table_transfer.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;
using ado::DataType;

std::string Lower(std::string text) {
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string Ending(const std::string &path) {
    return Lower(fs::path(path).extension().string());
}

// A text that must survive its way into GBK.
CString Gbk(const std::string &text, const char *what) {
    int replaced = 0;
    const CString gbk = FromUtf8(text, &replaced);
    if (replaced > 0) throw Error(std::string(what) + " holds characters that the tables' encoding (GBK) lacks");
    return gbk;
}

CString ConnectionTo(const std::string &store) {
    if (Lower(store).find("provider=") != std::string::npos) return Gbk(store, "the connection string");
    std::error_code ignored;
    if (fs::is_directory(store, ignored)) {
        return "Provider=VFPOLEDB.1;Data Source=\"" + PlatformPath(fs::absolute(store).string()) + "\"";
    }
    if (!fs::exists(store, ignored)) throw Error("cannot read '" + store + "': no such file or directory");
    if (Ending(store) != ".mdb") {
        throw Error("'" + store + "' is no folder, no .mdb file and no connection string with a Provider");
    }
    return "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\"" + PlatformPath(fs::absolute(store).string()) + "\"";
}

template <class Action>
auto TellFaults(Action action) {
    try {
        return action();
    } catch (const ado::Error &error) {
        throw Error(ToUtf8(error.GetDescription()));
    }
}

struct TypeWords {
    const char *type;
    bool isNumber;
    bool hasWidth;
};

TypeWords WordsFor(DataType type) {
    switch (type) {
        case DataType::SmallInt:
        case DataType::Integer:
        case DataType::TinyInt:
        case DataType::UnsignedTinyInt:
        case DataType::UnsignedSmallInt:
        case DataType::UnsignedInt:
        case DataType::BigInt:
        case DataType::UnsignedBigInt:
            return {"integer", true, true};
        case DataType::Single:
        case DataType::Double:
        case DataType::Currency:
        case DataType::Decimal:
        case DataType::Numeric:
        case DataType::VarNumeric:
            return {"number", true, true};
        case DataType::Boolean:
            return {"yes/no", false, false};
        case DataType::Date:
        case DataType::DBDate:
        case DataType::DBTime:
        case DataType::DBTimeStamp:
            return {"date", false, false};
        case DataType::LongVarChar:
        case DataType::LongVarWChar:
            return {"memo", false, false};
        case DataType::Binary:
        case DataType::VarBinary:
        case DataType::LongVarBinary:
            return {"bytes", false, false};
        default:
            return {"text", false, true};
    }
}

TableColumn Describe(const ado::Column &column) {
    const TypeWords words = WordsFor(column.type);
    const int width = column.precision > 0 ? column.precision : column.definedSize;
    return {ToUtf8(column.name), words.type, words.hasWidth ? width : 0, words.isNumber};
}

TypeWords WordsFor(ENUM_DATA type) {
    switch (type) {
        case DATA_INT:
        case DATA_BIGINT:
            return {"integer", true, true};
        case DATA_NUMERIC:
            return {"number", true, true};
        case DATA_BOOL:
            return {"yes/no", true, false};
        case DATA_DATETIME:
            return {"date", false, false};
        case DATA_MEMO:
            return {"memo", false, false};
        default:
            return {"text", false, true};
    }
}

std::optional<std::string> CellText(const ado::Value &cell) {
    if (cell.IsNull()) return {};
    if (cell.GetKind() == ado::Value::Kind::Bytes) return "(" + std::to_string(cell.Bytes().size()) + " bytes)";
    return ToUtf8(cell.ToText().TrimRight());
}

using Row = std::vector<std::optional<std::string>>;

// Takes the rows that hold the word, the first of them in full.
class Collector {
  public:
    Collector(TableData &data, const std::string &word, long long most) : m_data(data), m_word(word), m_most(most) {}

    void Take(Row &&row) {
        const auto holds = [&](const auto &cell) { return cell && cell->find(m_word) != std::string::npos; };
        if (!m_word.empty() && !std::any_of(row.begin(), row.end(), holds)) return;
        if (m_data.count++ < m_most) m_data.rows.push_back(std::move(row));
    }
    // Whether the rows still to come change nothing but their number, which `total` tells.
    bool IsFull() const { return m_word.empty() && m_data.count >= m_most; }

  private:
    TableData &m_data;
    const std::string &m_word;
    long long m_most;
};

void Collect(ado::Recordset &rows, const std::string &word, long long most, TableData &data) {
    for (const ado::Column &column : rows.GetColumns()) data.columns.push_back(Describe(column));
    Collector collector(data, word, most);
    for (; !rows.IsEOF() && !collector.IsFull(); rows.MoveNext()) {
        Row row;
        for (int i = 0; i < rows.GetColumnCount(); ++i) row.push_back(CellText(rows.GetCell(i)));
        collector.Take(std::move(row));
    }
    if (word.empty()) data.count = rows.GetRecordCount();
}

CString FirstTable(ado::Connection &connection) {
    const ado::RecordsetRef tables = connection.OpenSchema(ado::Connection::kSchemaTables);
    while (!tables->IsEOF() && tables->GetCell("TABLE_TYPE").Text() != "TABLE") tables->MoveNext();
    if (tables->IsEOF()) throw Error("no tables in it");
    return tables->GetCell("TABLE_NAME").ToText();
}

// An empty name takes the first table.
TableData ReadStored(const std::string &store, const CString &name, const std::string &word, long long most) {
    return TellFaults([&] {
        const ado::ConnectionRef connection = ado::Connection::Open(ConnectionTo(store));
        const CString table = name.IsEmpty() ? FirstTable(*connection) : name;
        const ado::RecordsetRef rows = connection->OpenRecordset("Select * From [" + table + "]", false);
        TableData data;
        Collect(*rows, word, most, data);
        return data;
    });
}

// A folder for a table that is only looked at.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "ktl-table-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw Error("cannot make a folder in the temporary one");
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    CString Path() const { return PlatformPath(m_path.string()); }

  private:
    fs::path m_path;
};

Row RowOf(const CRecord &record, int firstColumn) {
    Row row;
    for (int i = firstColumn; i < record.GetValueCount(); ++i) row.emplace_back(ToUtf8(record.GetValueAt(i)));
    return row;
}

TableData ReadLayer(const TableSource &source, const std::string &word, long long most) {
    constexpr int kSystemColumns = 2;
    const TemporaryFolder folder;
    CTable_Local_dbf table(folder.Path(), "layer");
    const TableReport report = ImportTable(source, table);
    TableData data;
    for (int i = kSystemColumns; i < table.GetFieldCount(); ++i) {
        const CField &field = *table.GetFieldAt(i);
        const TypeWords words = WordsFor(field.eType);
        data.columns.push_back({ToUtf8(field.strName), words.type, words.hasWidth ? field.nLength : 0, words.isNumber});
    }
    Collector collector(data, word, most);
    for (int i = 0; i < table.GetNewRecordCount() && !collector.IsFull(); ++i) {
        collector.Take(RowOf(*table.GetNewRecordAt(i), kSystemColumns));
    }
    if (word.empty()) data.count = report.rows;
    data.notes = report.notes;
    if (report.replacedCharacters > 0) {
        data.notes.push_back(std::to_string(report.replacedCharacters) + " characters that GBK lacks were replaced");
    }
    if (report.emptyNumbers > 0) data.notes.push_back(std::to_string(report.emptyNumbers) + " empty numbers are 0");
    return data;
}

bool GivesRows(const std::string &statement) {
    const std::size_t first = statement.find_first_not_of(" \t\r\n(");
    return first != std::string::npos && Lower(statement.substr(first, 6)) == "select";
}

}  // namespace

TableData ReadTable(const std::string &path, const std::string &layer, const std::string &word, long long most) {
    std::error_code ignored;
    if (!fs::exists(path, ignored)) throw Error("cannot read '" + path + "': no such file or directory");
    if (Ending(path) == ".dbf" && layer.empty()) {
        const CString name = Gbk(fs::path(path).stem().string(), "the file's name");
        return ReadStored(fs::absolute(path).parent_path().string(), name, word, most);
    }
    if (Ending(path) == ".mdb") return ReadStored(path, Gbk(layer, "the table's name"), word, most);
    return ReadLayer({path, layer}, word, most);
}

TableData RunStatement(const std::string &store, const std::string &statement) {
    const CString sql = Gbk(statement, "the statement");
    return TellFaults([&] {
        const ado::ConnectionRef connection = ado::Connection::Open(ConnectionTo(store));
        TableData data;
        if (GivesRows(statement)) {
            const ado::RecordsetRef rows = connection->OpenRecordset(sql, false);
            Collect(*rows, {}, kAllRows, data);
        } else {
            data.count = connection->Execute(sql);
        }
        return data;
    });
}

}  // namespace ktl::host
