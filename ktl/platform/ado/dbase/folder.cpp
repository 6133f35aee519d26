#include "ktl/platform/ado/dbase/folder.h"

#include <algorithm>
#include <cerrno>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/dbase/beside.h"
#include "ktl/platform/ado/dbase/schema_change.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/statement_connection.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::dbase {

namespace {

constexpr std::string_view kExtension = ".dbf";
/// How often a table that is replaced again and again is opened anew.
constexpr int kOpenTries = 10;

bool EndsWithExtension(std::string_view name) {
    return name.size() > kExtension.size() && EqualNames(name.substr(name.size() - kExtension.size()), kExtension);
}

CString BareName(const CString &name) {
    const std::string_view text = name.View();
    return EndsWithExtension(text) ? CString(text.substr(0, text.size() - kExtension.size())) : name;
}

/// Ends a statement that was begun on a table.
class StatementEnd {
  public:
    explicit StatementEnd(Table &table) : m_table(table) {}
    StatementEnd(const StatementEnd &) = delete;
    StatementEnd &operator=(const StatementEnd &) = delete;
    ~StatementEnd() { m_table.EndStatement(); }

  private:
    Table &m_table;
};

/// Takes a table's file for itself, if there is one, whatever its content.
class FileHold {
  public:
    explicit FileHold(const std::string &path) {
        FileInfo info;
        if (FileSystem::Current().Stat(path, info) != 0) return;
        m_file.Open(path);
        if (!m_file.Lock(FileLock::Exclusive)) {
            throw Error("Table \"" + TableNameOf(path) + "\" is in use by another.", error_number::kFileInUse);
        }
    }
    bool Exists() const { return m_file.IsOpen(); }

  private:
    DataFile m_file;
};

}  // namespace

Folder::Folder(const CString &path) : m_folder(SystemPath(path)) {
    while (m_folder.size() > 1 && m_folder.back() == '/') m_folder.pop_back();
    if (m_folder.empty()) m_folder = ".";
    FileInfo info;
    int error = FileSystem::Current().Stat(m_folder, info);
    if (error == 0 && !info.isFolder) {
        const std::size_t slash = m_folder.rfind('/');
        m_folder = slash == std::string::npos ? "." : m_folder.substr(0, std::max<std::size_t>(slash, 1));
    } else if (error != 0) {
        m_folder = ExistingPath(m_folder);
        error = FileSystem::Current().Stat(m_folder, info);
    }
    if (error != 0) ThrowFileError("opened", m_folder, error);
}

std::string Folder::PathOf(const CString &name) const {
    const std::string bare = ToUtf8(BareName(name));
    if (bare.empty() || bare.find_first_of(std::string("/\\\0", 3)) != std::string::npos) {
        throw Error("\"" + name + "\" is no name of a table.", error_number::kFileNotFound);
    }
    return ExistingPath(m_folder + "/" + bare + std::string(kExtension));
}

std::shared_ptr<Table> Folder::Open(const CString &name, sql::Access access) {
    const std::string key = FoldedName(BareName(name).View());
    if (m_fresh.key == key) m_fresh = {};
    for (int i = 0; i < kOpenTries; ++i) {
        auto found = m_tables.find(key);
        if (found == m_tables.end()) found = m_tables.emplace(key, std::make_shared<Table>(PathOf(name))).first;
        const std::shared_ptr<Table> table = found->second;
        try {
            if (table->Begin(access)) return table;
        } catch (...) {
            if (!table->IsExclusive()) m_tables.erase(key);
            throw;
        }
        m_tables.erase(key);
    }
    throw Error("Table \"" + name + "\" is being replaced by another.", error_number::kInUseByAnother);
}

std::shared_ptr<sql::Table> Folder::OpenTable(const CString &name, sql::Access access) {
    return Open(name, access);
}

std::vector<TableEntry> Folder::ListTables() {
    std::vector<std::string> names;
    if (const int error = FileSystem::Current().List(m_folder, names)) ThrowFileError("listed", m_folder, error);
    std::erase_if(names, [](const std::string &name) { return !EndsWithExtension(name); });
    std::sort(names.begin(), names.end());
    std::vector<TableEntry> tables;
    for (const std::string &name : names) {
        tables.push_back({FromUtf8(name.substr(0, name.size() - kExtension.size())), "TABLE"});
    }
    return tables;
}

void Folder::CreateTable(const CString &name, const std::vector<sql::ColumnDefinition> &columns) {
    const std::string key = FoldedName(BareName(name).View());
    const std::string path = PathOf(name);
    if (IsFresh(key, path, columns)) {
        throw Error("Table \"" + name + "\" is in use: it has just been made.", error_number::kFileInUse);
    }
    CloseTable(name);
    {
        const FileHold hold(path);
        MakeTable(path, columns);
    }
    m_fresh = {key, columns, {}};
    FileSystem::Current().Stat(path, m_fresh.file);
}

bool Folder::IsFresh(const std::string &key, const std::string &path,
                     const std::vector<sql::ColumnDefinition> &columns) const {
    const auto same = [](const sql::ColumnDefinition &a, const sql::ColumnDefinition &b) {
        return a.name == b.name && a.type == b.type && a.width == b.width && a.decimals == b.decimals;
    };
    if (m_fresh.key != key ||
        !std::equal(columns.begin(), columns.end(), m_fresh.columns.begin(), m_fresh.columns.end(), same)) {
        return false;
    }
    FileInfo info;
    return FileSystem::Current().Stat(path, info) == 0 && info.inode == m_fresh.file.inode &&
           info.changed == m_fresh.file.changed && info.changedFraction == m_fresh.file.changedFraction;
}

void Folder::DropTable(const CString &name) {
    const std::string path = PathOf(name);
    CloseTable(name);
    const FileHold hold(path);
    if (!hold.Exists()) ThrowFileError("removed", path, ENOENT);
    std::vector<std::string> besides;
    for (const char *extension : {".fpt", ".dbt", ".cdx", ".cpg"}) besides.push_back(FindBeside(path, extension));
    if (const int error = FileSystem::Current().Remove(path)) ThrowFileError("removed", path, error);
    for (const std::string &beside : besides) {
        if (!beside.empty()) FileSystem::Current().Remove(beside);
    }
}

void Folder::AlterTable(const sql::AlterTableStatement &change) {
    {
        const std::shared_ptr<Table> table = Open(change.table.text, sql::Access::Write);
        const StatementEnd end(*table);
        ChangeTable(*table, change);
    }
    CloseTable(change.table.text);
}

void Folder::PackTable(const CString &name) {
    {
        const std::shared_ptr<Table> table = Open(name, sql::Access::Write);
        const StatementEnd end(*table);
        dbase::PackTable(*table);
    }
    CloseTable(name);
}

void Folder::UseTable(const CString &name, bool exclusive) {
    const std::shared_ptr<Table> table = Open(name, sql::Access::Read);
    const StatementEnd end(*table);
    if (exclusive && !table->MakeExclusive()) {
        throw Error("Table \"" + name + "\" is in use by another.", error_number::kInUseByAnother);
    }
}

std::shared_ptr<void> Folder::HoldTable(const CString &name) {
    const std::shared_ptr<Table> table = Open(name, sql::Access::Write);
    const StatementEnd end(*table);
    return table->Hold();
}

void Folder::CloseTable(const CString &name) {
    m_fresh = {};
    m_tables.erase(FoldedName(BareName(name).View()));
}

namespace {

ConnectionRef OpenFolder(const ConnectionString &settings) {
    return std::make_shared<sql::StatementConnection>(std::make_shared<Folder>(settings.Get("Data Source")));
}

const ProviderRegistration kRegistration("VFPOLEDB.1", OpenFolder);

}  // namespace

}  // namespace ktl::ado::dbase

/// Keeps this object file, and with it the registration, in programs that link the static archive.
extern "C" const int ktl_ado_register_dbase = 1;
