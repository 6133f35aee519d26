#include "ktl/platform/ado/access/database.h"

#include <cstring>
#include <fstream>

#include "ktl/platform/ado/access/library.h"
#include "ktl/platform/ado/access/quiet.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::access {

namespace {

constexpr std::size_t kHeadSize = 32;
constexpr std::size_t kNamePosition = 4;
constexpr std::size_t kVersionPosition = 20;
constexpr std::string_view kJetName{"Standard Jet DB\0", 16};
constexpr std::string_view kAceName{"Standard ACE DB\0", 16};
constexpr std::uint64_t kJet3PageSize = 2048;
constexpr std::uint64_t kPageSize = 4096;
/// The first page and the catalogue's.
constexpr std::uint64_t kLeastPages = 3;
constexpr std::uint32_t kCataloguePage = 2;
/// A kind byte and a page number; libmdb takes them for granted.
constexpr std::size_t kLeastMapSize = 5;

[[noreturn]] void ThrowFile(const std::string &path, const char *what, int number) {
    throw Error("\"" + FromUtf8(path) + "\" " + what, number);
}

}  // namespace

void ThrowDamaged(const CString &what) {
    throw Error("The Access file is damaged: " + what + ".", error_number::kNotATable);
}

Database::Database(const std::string &systemPath) : m_path(systemPath) {
    CheckFile();
    const Quiet quiet;
    MdbHandle *mdb = ::mdb_open(m_path.c_str(), MDB_NOFLAGS);
    if (!mdb) ThrowFile(m_path, "cannot be read as an Access file.", error_number::kNotATable);
    m_handle = std::make_unique<LibraryHandle>();
    m_handle->mdb = mdb;
    AddTable(kCatalogueName, kCataloguePage, true);
}

Database::~Database() {
    const Quiet quiet;
    ::mdb_close(m_handle->mdb);
}

/// Files are written in whole pages: any other size is that of a cut-off one, of which libmdb would give what is left.
void Database::CheckFile() {
    const int error = FileSystem::Current().Stat(m_path, m_info);
    if (error != 0) ThrowFile(m_path, "cannot be found.", error_number::kFileNotFound);
    if (m_info.isFolder) ThrowFile(m_path, "is a folder, not an Access file.", error_number::kFileAccess);
    std::ifstream file(m_path, std::ios::binary);
    if (!file) ThrowFile(m_path, "cannot be opened.", error_number::kFileAccess);
    char head[kHeadSize] = {};
    file.read(head, sizeof head);
    const std::string_view name(head + kNamePosition, kJetName.size());
    if (file.gcount() < static_cast<std::streamsize>(kHeadSize) || head[0] != 0 ||
        (name != kJetName && name != kAceName)) {
        ThrowFile(m_path, "is not an Access file.", error_number::kNotATable);
    }
    const std::uint64_t page = head[kVersionPosition] == 0 ? kJet3PageSize : kPageSize;
    if (m_info.size < kLeastPages * page || m_info.size % page != 0) ThrowDamaged("it is cut off");
}

bool Database::IsCurrent() const {
    FileInfo now;
    return FileSystem::Current().Stat(m_path, now) == 0 && now.size == m_info.size && now.device == m_info.device &&
           now.inode == m_info.inode && now.changed == m_info.changed && now.changedFraction == m_info.changedFraction;
}

std::vector<CString> Database::ListTables() const {
    std::vector<CString> names;
    for (const Entry &entry : m_entries) {
        if (!entry.system) names.push_back(entry.name);
    }
    return names;
}

void Database::AddTable(const CString &name, std::uint32_t page, bool system) {
    m_entries.push_back({name, page, system});
}

S_MdbTableDef *Database::ReadTable(const CString &name) const {
    for (const Entry &entry : m_entries) {
        if (EqualNames(entry.name.View(), name.View())) return ReadDefinition(entry);
    }
    return nullptr;
}

S_MdbTableDef *Database::ReadDefinition(const Entry &entry) const {
    const Quiet quiet;
    MdbCatalogEntry &source = m_handle->entries[entry.page];
    source.mdb = m_handle->mdb;
    source.object_type = MDB_TABLE;
    source.table_pg = entry.page;
    MdbTableDef *table = ::mdb_read_table(&source);
    if (!table) ThrowDamaged("the definition of table \"" + entry.name + "\" cannot be read");
    if (!table->usage_map || table->map_sz < kLeastMapSize || table->num_cols > MDB_MAX_COLS ||
        !::mdb_read_columns(table) || table->columns->len != table->num_cols) {
        ::mdb_free_tabledef(table);
        ThrowDamaged("the columns or the map of table \"" + entry.name + "\" cannot be read");
    }
    return table;
}

}  // namespace ktl::ado::access
