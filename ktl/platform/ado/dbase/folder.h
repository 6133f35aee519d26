#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ktl/platform/ado/dbase/table.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::dbase {

/// A folder of .dbf files as a store. Tables stay open between statements.
class Folder final : public sql::Store {
  public:
    /// Throws Error when there is no such folder. `path` is a GBK path; of a file's path its folder is taken.
    explicit Folder(const CString &path);

    std::shared_ptr<sql::Table> OpenTable(const CString &name, sql::Access access) override;
    std::vector<TableEntry> ListTables() override;
    void Close() override { m_tables.clear(); }
    /// Replaces a table of that name. The very statement that just made the table fails when it is sent again before
    /// anything used the table: the provider still holds it then, and a caller relies on that.
    void CreateTable(const CString &name, const std::vector<sql::ColumnDefinition> &columns) override;
    void DropTable(const CString &name) override;
    void AlterTable(const sql::AlterTableStatement &change) override;
    void PackTable(const CString &name) override;
    void UseTable(const CString &name, bool exclusive) override;
    void CloseTable(const CString &name) override;
    std::shared_ptr<void> HoldTable(const CString &name) override;

  private:
    /// The table that `CreateTable` made last, while nothing has used it.
    struct Fresh {
        std::string key;
        std::vector<sql::ColumnDefinition> columns;
        FileInfo file;
    };

    std::shared_ptr<Table> Open(const CString &name, sql::Access access);
    bool IsFresh(const std::string &key, const std::string &path,
                 const std::vector<sql::ColumnDefinition> &columns) const;
    std::string PathOf(const CString &name) const;

    std::string m_folder;
    /// By name in lower case.
    std::map<std::string, std::shared_ptr<Table>, std::less<>> m_tables;
    Fresh m_fresh;
};

}  // namespace ktl::ado::dbase
