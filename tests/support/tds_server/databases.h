#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/tds_server/sql_type.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ktl::test::tds {

/// A statement's fault, with the number that the server gives it.
struct SqlError : std::runtime_error {
    SqlError(int errorNumber, const std::string &message, int errorSeverity = 16)
        : std::runtime_error(message), number(errorNumber), severity(errorSeverity) {}

    int number;
    int severity;
};

struct ResultColumn {
    std::string name;
    SqlType type;
    bool nullable = true;
    /// The table that the column comes from; empty for an expression.
    std::string table;
};

/// What a statement gave; without columns when it gives no rows.
struct Result {
    std::vector<ResultColumn> columns;
    std::vector<std::vector<Cell>> rows;
    /// Rows that it touched, or -1 where that has no meaning.
    long long changes = -1;

    bool HasRows() const { return !columns.empty(); }
};

/// One row of a description.
struct DescribedColumn {
    std::string name;
    bool hidden = false;
    bool key = false;
    std::string database;
    std::string table;
    std::string column;
};

using Parameters = std::vector<std::pair<std::string, Cell>>;

/// The server's databases, all in one SQLite connection in memory: a database is an attached one, a column's declared
/// type is SQLite's declaration of it. Used by one thread. "master" is there from the beginning and lists the
/// databases in its table sysdatabases; what was described last stands in its table `kDescription`.
class Databases {
  public:
    Databases();
    Databases(const Databases &) = delete;
    Databases &operator=(const Databases &) = delete;
    ~Databases();

    void Add(const std::string &name);
    /// Without regard to case.
    bool Has(const std::string &name) const;

    /// Runs a statement in SQLite's language. Throws SqlError.
    Result Run(const std::string &sql, const Parameters &parameters = {});

    /// The function of the server that tells where a statement's columns come from.
    static constexpr const char *kDescription = "dm_exec_describe_first_result_set";
    /// Fills the table of that name in "master" for a statement in SQLite's language. A key of its tables that it does
    /// not show is told as hidden; a fault is told in a single row.
    void Describe(const std::string &sql);

    /// SQLite's names for the order of the server's texts and of its dates, which are texts in SQLite.
    static constexpr const char *kCollation = "Server";
    static constexpr const char *kDateCollation = "ServerDate";

    /// One transaction at a time: SQLite's connection serves all sessions.
    void Begin() { Run("Begin"); }
    void Commit() { Run("Commit"); }
    void Rollback() { Run("Rollback"); }
    bool InTransaction() const;

    /// The select that lists a database's tables as INFORMATION_SCHEMA.TABLES does.
    static std::string TableList(const std::string &database);

  private:
    void AddHiddenKeys(const DescribedColumn &of, std::vector<DescribedColumn> &columns);

    sqlite3 *m_sqlite = nullptr;
    std::vector<std::string> m_names;
};

}  // namespace ktl::test::tds
