#include "ktl/platform/ado/access/file.h"

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/statement_connection.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::access {

File::File(const CString &path) : m_path(ExistingPath(SystemPath(path))) {
    Refresh();
}

void File::Refresh() {
    if (m_database && m_database->IsCurrent()) return;
    Close();
    m_database = std::make_shared<Database>(m_path);
}

std::shared_ptr<sql::Table> File::OpenTable(const CString &name, sql::Access access) {
    if (access == sql::Access::Write) {
        throw Error("The tables of an Access file can only be read.", error_number::kReadOnly);
    }
    Refresh();
    const std::string key = FoldedName(name.View());
    auto found = m_tables.find(key);
    if (found == m_tables.end()) found = m_tables.emplace(key, std::make_shared<Table>(m_database, name)).first;
    found->second->Begin();
    return found->second;
}

std::vector<TableEntry> File::ListTables() {
    Refresh();
    std::vector<TableEntry> tables;
    for (const CString &name : m_database->ListTables()) tables.push_back({name, "TABLE"});
    return tables;
}

void File::Close() {
    m_tables.clear();
    m_database.reset();
}

void File::CloseTable(const CString &name) {
    m_tables.erase(FoldedName(name.View()));
}

namespace {

ConnectionRef OpenFile(const ConnectionString &settings) {
    return std::make_shared<sql::StatementConnection>(std::make_shared<File>(settings.Get("Data Source")));
}

const ProviderRegistration kRegistration("Microsoft.Jet.OLEDB.4.0", OpenFile);

}  // namespace

}  // namespace ktl::ado::access

/// Keeps this object file, and with it the registration, in programs that link the static archive.
extern "C" const int ktl_ado_register_access = 1;
