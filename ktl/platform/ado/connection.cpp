#include "ktl/platform/ado/connection.h"

#include <map>
#include <mutex>

#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/static_recordset.h"

namespace ktl::ado {

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, ProviderFactory, std::less<>> factories;
};

Registry &TheRegistry() {
    static Registry registry;
    return registry;
}

std::string Key(CString provider) {
    return provider.MakeLower().GetString();
}

ProviderFactory FindFactory(const CString &provider) {
    Registry &registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.factories.find(Key(provider));
    return found == registry.factories.end() ? nullptr : found->second;
}

}  // namespace

ProviderRegistration::ProviderRegistration(const char *provider, ProviderFactory factory) {
    Registry &registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.factories[Key(provider)] = factory;
}

ConnectionRef Connection::Open(const CString &connectionString, const CString &user, const CString &password) {
    ConnectionString settings(connectionString);
    if (!user.IsEmpty() && !settings.Has("User ID")) settings.Set("User ID", user);
    if (!password.IsEmpty() && !settings.Has("Password")) settings.Set("Password", password);
    const CString provider = settings.Get("Provider");
    const ProviderFactory factory = FindFactory(provider);
    if (!factory) {
        throw Error("Provider \"" + provider + "\" cannot be found.", error_number::kNoProvider);
    }
    return factory(settings);
}

void Connection::ReadPages(const CString &statement, const std::function<bool(const RecordsetRef &)> &use) {
    use(OpenRecordset(statement, false));
}

std::shared_ptr<void> Connection::HoldTable(const CString &) {
    return nullptr;
}

RecordsetRef MakeTableSchema(const std::vector<TableEntry> &tables) {
    static constexpr const char *kNames[] = {"TABLE_CATALOG", "TABLE_SCHEMA", "TABLE_NAME", "TABLE_TYPE"};
    std::vector<Column> columns;
    for (const char *name : kNames) columns.push_back({name, DataType::VarWChar, 128, 0, 0, true});
    auto rows = std::make_shared<StaticRecordset>(std::move(columns));
    for (const TableEntry &table : tables) {
        rows->AddRow({Value(), Value(), Value::FromText(table.name.View()), Value::FromText(table.type.View())});
    }
    return rows;
}

}  // namespace ktl::ado
