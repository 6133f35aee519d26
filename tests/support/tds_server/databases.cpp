#include "tests/support/tds_server/databases.h"

#include <sqlite3.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <optional>

namespace ktl::test::tds {
namespace {

struct FinalizeStatement {
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

/// A message of SQLite with the server's number and words for it. The name that the message holds, between `before`
/// and `after`, takes the place of "%".
struct ErrorWords {
    const char *before;
    const char *after;
    int number;
    int severity;
    const char *message;
};
constexpr ErrorWords kErrors[] = {
    {"no such table: ", "", 208, 16, "Invalid object name '%'."},
    {"unknown database ", "", 208, 16, "Invalid object name '%'."},
    {"no such column: ", "", 207, 16, "Invalid column name '%'."},
    {" has no column named ", "", 207, 16, "Invalid column name '%'."},
    {"near \"", "\": syntax error", 102, 15, "Incorrect syntax near '%'."},
    {"incomplete input", "", 102, 15, "Incorrect syntax near the end of the statement%."},
    {"unrecognized token: \"", "\"", 102, 15, "Incorrect syntax near '%'."},
    {"no such function: ", "", 195, 15, "'%' is not a recognized built-in function name."},
    {"UNIQUE constraint failed: ", "", 2627, 14,
     "Violation of UNIQUE KEY constraint on '%'. Cannot insert duplicate key."},
    {"NOT NULL constraint failed: ", "", 515, 16, "Cannot insert the value NULL into column '%'."},
    {"CHECK constraint failed: 245", "", 245, 16, "Conversion failed when converting the value to data type int%."},
    {"CHECK constraint failed: 8114", "", 8114, 16, "Error converting data type nvarchar to numeric%."},
    {"CHECK constraint failed: 241", "", 241, 16, "Conversion failed when converting date from character string%."},
    {"CHECK constraint failed: 8152", "", 8152, 16, "String or binary data would be truncated%."},
    {"table \"", "\" already exists", 2714, 16, "There is already an object named '%' in the database."},
    {" values for ", " columns", 110, 15, "The number of values doesn't match the INSERT statement's % columns."},
    {" values were supplied", "", 213, 16, "Column name or number of supplied values does not match%."},
};
constexpr int kOtherError = 50000;

SqlError ErrorOf(const std::string &message) {
    for (const ErrorWords &words : kErrors) {
        const std::size_t found = message.find(words.before);
        if (found == std::string::npos) continue;
        const std::size_t start = found + std::string_view(words.before).size();
        const std::size_t end = *words.after ? message.find(words.after, start) : message.size();
        if (end == std::string::npos) continue;
        std::string text = words.message;
        text.replace(text.find('%'), 1, message, start, end - start);
        return SqlError(words.number, text, words.severity);
    }
    return SqlError(kOtherError, message);
}

void IsDateTime(sqlite3_context *context, int, sqlite3_value **arguments) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(arguments[0]));
    sqlite3_result_int(context, text && ParseDateTime(text).has_value());
}

/// The order of texts on the server: neither the case of letters nor blanks at the end count.
int CompareTexts(void *, int sizeA, const void *a, int sizeB, const void *b) {
    const auto bare = [](const void *text, int size) {
        const std::string_view all(static_cast<const char *>(text), static_cast<std::size_t>(size));
        return all.substr(0, all.find_last_not_of(' ') + 1);
    };
    const std::string_view first = bare(a, sizeA);
    const std::string_view second = bare(b, sizeB);
    const int order = strncasecmp(first.data(), second.data(), std::min(first.size(), second.size()));
    return order != 0 ? order : static_cast<int>(first.size()) - static_cast<int>(second.size());
}

int CompareDates(void *, int sizeA, const void *a, int sizeB, const void *b) {
    const auto time = [](const void *text, int size) {
        return ParseDateTime({static_cast<const char *>(text), static_cast<std::size_t>(size)}).value_or(0);
    };
    const long long first = time(a, sizeA);
    const long long second = time(b, sizeB);
    return first < second ? -1 : first > second ? 1 : 0;
}

void Bind(sqlite3_stmt *statement, const Parameters &parameters) {
    for (const auto &[name, value] : parameters) {
        const int index = sqlite3_bind_parameter_index(statement, name.c_str());
        if (index == 0) continue;
        if (const auto *integer = std::get_if<long long>(&value)) {
            sqlite3_bind_int64(statement, index, *integer);
        } else if (const auto *real = std::get_if<double>(&value)) {
            sqlite3_bind_double(statement, index, *real);
        } else if (const auto *text = std::get_if<std::string>(&value)) {
            sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        } else if (const auto *blob = std::get_if<Blob>(&value)) {
            // An empty block needs a place, too: without one it would be null.
            sqlite3_bind_blob64(statement, index, blob->bytes.c_str(), blob->bytes.size(), SQLITE_TRANSIENT);
        }
    }
}

Cell CellAt(sqlite3_stmt *statement, int column) {
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return static_cast<long long>(sqlite3_column_int64(statement, column));
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, column);
        case SQLITE_TEXT:
            return std::string(reinterpret_cast<const char *>(sqlite3_column_text(statement, column)), size);
        case SQLITE_BLOB:
            return Blob{size ? std::string(static_cast<const char *>(sqlite3_column_blob(statement, column)), size)
                             : std::string()};
        default:
            return {};
    }
}

/// An expression without an alias has no name.
std::string ColumnName(const char *name, bool expression) {
    const std::string text = name ? name : "";
    const auto isName = [](unsigned char c) { return std::isalnum(c) || c == '_' || c >= 0x80; };
    if (expression && (!std::all_of(text.begin(), text.end(), isName) || std::isdigit(text[0]))) return {};
    return text;
}

/// Columns with their declared types; those of expressions are told by the first row.
std::vector<ResultColumn> ColumnsOf(sqlite3_stmt *statement, const std::vector<std::vector<Cell>> &rows) {
    std::vector<ResultColumn> columns;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const char *declared = sqlite3_column_decltype(statement, i);
        const char *table = sqlite3_column_table_name(statement, i);
        const std::optional<SqlType> type = declared ? ParseType(declared) : std::nullopt;
        columns.push_back({ColumnName(sqlite3_column_name(statement, i), !table),
                           type ? *type : TypeOfValue(rows.empty() ? Cell() : rows[0][static_cast<std::size_t>(i)]),
                           true, table ? table : ""});
    }
    return columns;
}

DescribedColumn DescribeColumn(sqlite3 *sqlite, sqlite3_stmt *statement, int position) {
    const auto text = [](const char *name) { return std::string(name ? name : ""); };
    DescribedColumn column;
    column.name = text(sqlite3_column_name(statement, position));
    column.database = text(sqlite3_column_database_name(statement, position));
    column.table = text(sqlite3_column_table_name(statement, position));
    column.column = text(sqlite3_column_origin_name(statement, position));
    int isKey = 0;
    if (!column.table.empty()) {
        sqlite3_table_column_metadata(sqlite, column.database.c_str(), column.table.c_str(), column.column.c_str(),
                                      nullptr, nullptr, nullptr, &isKey, nullptr);
    }
    column.key = isKey != 0;
    return column;
}

Parameters ParametersOf(const DescribedColumn &column, long long ordinal) {
    const auto orNull = [](const std::string &text) { return text.empty() ? Cell() : Cell(text); };
    return {{"@o", ordinal},
            {"@n", column.name},
            {"@h", static_cast<long long>(column.hidden)},
            {"@k", static_cast<long long>(column.key)},
            {"@d", orNull(column.database)},
            {"@s", column.table.empty() ? Cell() : Cell(std::string("dbo"))},
            {"@t", orNull(column.table)},
            {"@c", orNull(column.column)}};
}

}  // namespace

Databases::Databases() {
    if (sqlite3_open(":memory:", &m_sqlite) != SQLITE_OK) throw std::runtime_error("SQLite doesn't start");
    // A name in double quotes that no column has is an error, not a text.
    sqlite3_db_config(m_sqlite, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(m_sqlite, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_create_function(m_sqlite, "is_datetime", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, IsDateTime,
                            nullptr, nullptr);
    sqlite3_create_collation(m_sqlite, kCollation, SQLITE_UTF8, nullptr, CompareTexts);
    sqlite3_create_collation(m_sqlite, kDateCollation, SQLITE_UTF8, nullptr, CompareDates);
    Run("Attach ':memory:' As master");
    Run(std::string("Create Table master.sysdatabases (name nvarchar(128) Collate ") + kCollation + ", dbid smallint)");
    Run(std::string("Create Table master.") + kDescription +
        " (column_ordinal int, name nvarchar(128), is_hidden bit, is_part_of_unique_key bit,"
        " source_database nvarchar(128), source_schema nvarchar(128), source_table nvarchar(128),"
        " source_column nvarchar(128), error_number int, error_message nvarchar(4000))");
    m_names.emplace_back("master");
    Run("Insert Into master.sysdatabases Values ('master',1)");
}

Databases::~Databases() {
    sqlite3_close(m_sqlite);
}

void Databases::Add(const std::string &name) {
    if (Has(name)) throw SqlError(1801, "Database '" + name + "' already exists. Choose a different database name.");
    Run("Attach ':memory:' As @name", {{"@name", name}});
    m_names.push_back(name);
    Run("Insert Into master.sysdatabases Values (@name,@id)",
        {{"@name", name}, {"@id", static_cast<long long>(m_names.size())}});
}

bool Databases::Has(const std::string &name) const {
    return std::any_of(m_names.begin(), m_names.end(),
                       [&](const std::string &known) { return strcasecmp(known.c_str(), name.c_str()) == 0; });
}

Result Databases::Run(const std::string &sql, const Parameters &parameters) {
    sqlite3_stmt *raw = nullptr;
    const int prepared = sqlite3_prepare_v2(m_sqlite, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    const StatementHandle statement(raw);
    if (prepared != SQLITE_OK) throw ErrorOf(sqlite3_errmsg(m_sqlite));
    Bind(raw, parameters);
    Result result;
    const auto before = sqlite3_total_changes64(m_sqlite);
    int step = sqlite3_step(raw);
    for (; step == SQLITE_ROW; step = sqlite3_step(raw)) {
        std::vector<Cell> &row = result.rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(raw); ++i) row.push_back(CellAt(raw, i));
    }
    if (step != SQLITE_DONE) throw ErrorOf(sqlite3_errmsg(m_sqlite));
    result.columns = ColumnsOf(raw, result.rows);
    static constexpr const char *kCounted[] = {"insert", "update", "delete"};
    if (std::any_of(std::begin(kCounted), std::end(kCounted),
                    [&](const char *word) { return strncasecmp(sql.c_str(), word, 6) == 0; })) {
        result.changes = sqlite3_total_changes64(m_sqlite) - before;
    }
    return result;
}

/// The primary key's columns of a shown column's table that no column shows.
void Databases::AddHiddenKeys(const DescribedColumn &of, std::vector<DescribedColumn> &columns) {
    if (of.table.empty()) return;
    const Result keys = Run("Select name From pragma_table_info(@table,@database) Where pk>0",
                            {{"@table", of.table}, {"@database", of.database}});
    for (const std::vector<Cell> &row : keys.rows) {
        const auto &name = std::get<std::string>(row[0]);
        const bool known = std::any_of(columns.begin(), columns.end(), [&](const DescribedColumn &column) {
            return column.database == of.database && column.table == of.table && column.column == name;
        });
        if (!known) columns.push_back({name, true, true, of.database, of.table, name});
    }
}

void Databases::Describe(const std::string &sql) {
    const std::string table = std::string("master.") + kDescription;
    Run("Delete From " + table);
    sqlite3_stmt *raw = nullptr;
    const int prepared = sqlite3_prepare_v2(m_sqlite, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    const StatementHandle statement(raw);
    if (prepared != SQLITE_OK) {
        const SqlError error = ErrorOf(sqlite3_errmsg(m_sqlite));
        Run("Insert Into " + table + " (column_ordinal,is_hidden,error_number,error_message) Values (0,0,@n,@m)",
            {{"@n", static_cast<long long>(error.number)}, {"@m", std::string(error.what())}});
        return;
    }
    std::vector<DescribedColumn> columns;
    for (int i = 0; i < sqlite3_column_count(raw); ++i) columns.push_back(DescribeColumn(m_sqlite, raw, i));
    for (std::size_t i = 0, shown = columns.size(); i < shown; ++i) {
        AddHiddenKeys(DescribedColumn(columns[i]), columns);
    }
    long long ordinal = 0;
    for (const DescribedColumn &column : columns) {
        Run("Insert Into " + table + " Values (@o,@n,@h,@k,@d,@s,@t,@c,Null,Null)", ParametersOf(column, ++ordinal));
    }
}

bool Databases::InTransaction() const {
    return sqlite3_get_autocommit(m_sqlite) == 0;
}

std::string Databases::TableList(const std::string &database) {
    std::string schema;
    for (const char c : database) schema.append(c == '"' ? 2 : 1, c);
    return "Select '" + database +
           "' As TABLE_CATALOG,'dbo' As TABLE_SCHEMA,name As TABLE_NAME,"
           "'BASE TABLE' As TABLE_TYPE From \"" +
           schema + "\".sqlite_master Where type='table'";
}

}  // namespace ktl::test::tds
