#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ktl/platform/ado/access/table.h"
#include "ktl/platform/ado/sql/table.h"
#include "ktl/platform/export.h"

namespace ktl::ado::access {

/// The tables of one Access file as a store that can only be read. A file that others changed is read anew by the next
/// statement.
class KTL_API File final : public sql::Store {
  public:
    /// `path` is a GBK path. Throws Error when it cannot be opened.
    explicit File(const CString &path);

    std::shared_ptr<sql::Table> OpenTable(const CString &name, sql::Access access) override;
    std::vector<TableEntry> ListTables() override;
    void Close() override;
    void CloseTable(const CString &name) override;

  private:
    /// Opens the file, or opens it again when it was changed.
    void Refresh();

    std::string m_path;
    std::shared_ptr<Database> m_database;
    /// By name in lower case.
    std::map<std::string, std::shared_ptr<Table>, std::less<>> m_tables;
};

}  // namespace ktl::ado::access
