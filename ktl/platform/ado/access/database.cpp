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
    if (!::mdb_read_catalog(mdb, MDB_TABLE)) {
        ::mdb_close(mdb);
        ThrowDamaged("its list of tables cannot be read");
    }
    m_handle = new LibraryHandle{mdb};
}

Database::~Database() {
    const Quiet quiet;
    ::mdb_close(m_handle->mdb);
    delete m_handle;
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
    const GPtrArray *catalog = m_handle->mdb->catalog;
    for (guint i = 0; i < catalog->len; ++i) {
        auto *entry = static_cast<MdbCatalogEntry *>(catalog->pdata[i]);
        if (::mdb_is_user_table(entry)) names.push_back(FromUtf8(entry->object_name));
    }
    return names;
}

S_MdbTableDef *Database::ReadTable(const CString &name) const {
    const Quiet quiet;
    const GPtrArray *catalog = m_handle->mdb->catalog;
    for (guint i = 0; i < catalog->len; ++i) {
        auto *entry = static_cast<MdbCatalogEntry *>(catalog->pdata[i]);
        if (entry->object_type != MDB_TABLE || !EqualNames(FromUtf8(entry->object_name).View(), name.View())) continue;
        MdbTableDef *table = ::mdb_read_table(entry);
        if (!table) ThrowDamaged("the definition of table \"" + name + "\" cannot be read");
        if (!::mdb_read_columns(table) || table->columns->len != table->num_cols || table->num_cols > MDB_MAX_COLS) {
            ::mdb_free_tabledef(table);
            ThrowDamaged("the columns of table \"" + name + "\" cannot be read");
        }
        return table;
    }
    return nullptr;
}

}  // namespace ktl::ado::access
