#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ktl/platform/ado/odbc/command.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado::odbc {

/// Writes single cells of a statement's rows back to the table that they come from. A row is found by the key of its
/// table; a key that the statement does not show is read by sending it again, where the row must stand at its place
/// and look the same. In a table without a key it is found by all its shown short cells, which must be those of a
/// single row. One row is written, or none.
class RowWriter {
  public:
    RowWriter(std::weak_ptr<Link> link, const CString &statement);

    /// Stores a cell of the row that `rows` stands on, the `row`th that the statement gave. Throws Error: the link is
    /// closed, the column is no text or bytes of a table, the row is gone or not to be told from others.
    void Store(StaticRecordset &rows, int row, int column, const Value &value);

  private:
    /// Where the server finds a column of the statement. Names are GBK in brackets.
    struct Source {
        /// With its database and schema as far as they are known; empty for an expression.
        std::string table;
        std::string column;
        bool isKey = false;
    };
    /// What a row had when the statement was sent again for its hidden key.
    struct HiddenKey {
        std::vector<Value> keys;
        std::vector<Value> shown;
    };
    struct Condition;

    static Source SourceAt(Recordset &description);
    void Describe(const Link &link);
    const Source &SourceOf(const StaticRecordset &rows, int column) const;
    bool IsCompared(const StaticRecordset &rows, std::size_t column) const;
    std::vector<const Source *> HiddenKeysOf(const std::string &table) const;
    void ReadHiddenKeys(const Link &link, const StaticRecordset &rows, const std::string &table);

    void AddHiddenKey(StaticRecordset &rows, int row, const std::string &table, Condition &where) const;
    void AddShownCells(StaticRecordset &rows, const std::string &table, bool keysOnly, Condition &where) const;
    Condition ConditionOf(const Link &link, StaticRecordset &rows, int row, const std::string &table);

    std::weak_ptr<Link> m_link;
    std::string m_statement;
    std::vector<Source> m_shown;
    std::vector<Source> m_hidden;
    std::string m_hiddenTable;
    std::vector<HiddenKey> m_hiddenKeys;
};

}  // namespace ktl::ado::odbc
