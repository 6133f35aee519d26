#include "ktl/platform/ado/access/file.h"

#include <algorithm>
#include <iterator>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/statement_connection.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::access {

namespace {

constexpr long long kTableType = 1;
constexpr long long kTypeMask = 0x7F;
constexpr long long kPageMask = 0xFFFFFF;
/// Hidden and system tables.
constexpr long long kSystemFlags = 0x80000002;

long long WholeNumber(Table &table, int column) {
    Value value;
    table.ReadCell(column, value);
    return value.ToInteger().value_or(0);
}

/// libmdb's own reader of the catalogue also reads each object's properties, and a damaged one holds it for ever.
void ReadCatalogue(const std::shared_ptr<Database> &database) {
    Table catalogue(database, kCatalogueName);
    int columns[4] = {};
    constexpr const char *kNames[] = {"Id", "Name", "Type", "Flags"};
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        const auto &all = catalogue.GetColumns();
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const Column &column) { return EqualNames(column.name.View(), kNames[i]); });
        if (found == all.end()) ThrowDamaged("its list of tables lacks a column");
        columns[i] = static_cast<int>(found - all.begin());
    }
    const Quiet quiet;
    while (catalogue.Next()) {
        if ((WholeNumber(catalogue, columns[2]) & kTypeMask) != kTableType) continue;
        const auto page = static_cast<std::uint32_t>(WholeNumber(catalogue, columns[0]) & kPageMask);
        Value name;
        catalogue.ReadCell(columns[1], name);
        if (name.GetKind() != Value::Kind::Text) ThrowDamaged("its list of tables holds one without a name");
        database->AddTable(CString(name.Text()), page, (WholeNumber(catalogue, columns[3]) & kSystemFlags) != 0);
    }
}

}  // namespace

File::File(const CString &path) : m_path(ExistingPath(SystemPath(path))) {
    Refresh();
}

void File::Refresh() {
    if (m_database && m_database->IsCurrent()) return;
    Close();
    auto database = std::make_shared<Database>(m_path);
    ReadCatalogue(database);
    m_database = std::move(database);
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
