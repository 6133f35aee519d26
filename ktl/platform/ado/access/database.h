#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ktl/platform/export.h"
#include "ktl/platform/filesystem.h"
#include "ktl/platform/string.h"

/// libmdb's own types; only the sources of this folder see its header.
struct S_MdbTableDef;

namespace ktl::ado::access {

struct LibraryHandle;

/// An Access file that is open for reading. Calls into libmdb go through it or happen while a `Quiet` lives.
class KTL_API Database {
  public:
    /// Throws Error when there is no such file, when it is no Access file, or when it is cut off.
    explicit Database(const std::string &systemPath);
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    ~Database();

    /// False once the file was changed or replaced.
    bool IsCurrent() const;
    std::uint64_t GetFileSize() const { return m_info.size; }

    /// The user's tables in the order of the catalogue.
    std::vector<CString> ListTables() const;
    /// Tells of a table whose definition begins on that page; until then only the catalogue itself is known.
    void AddTable(const CString &name, std::uint32_t page, bool system);
    /// The definition with its columns, to be freed by the caller; null when there is no table of that name. Throws
    /// Error when it is damaged.
    S_MdbTableDef *ReadTable(const CString &name) const;
    LibraryHandle &GetHandle() const { return *m_handle; }

  private:
    struct Entry {
        CString name;
        std::uint32_t page;
        bool system;
    };
    void CheckFile();
    S_MdbTableDef *ReadDefinition(const Entry &entry) const;

    std::string m_path;
    FileInfo m_info;
    std::unique_ptr<LibraryHandle> m_handle;
    std::vector<Entry> m_entries;
};

/// The name of the table that lists all tables.
inline constexpr const char *kCatalogueName = "MSysObjects";

/// Throws the Error for a file whose content contradicts itself; `what` names the place.
[[noreturn]] KTL_API void ThrowDamaged(const CString &what);

}  // namespace ktl::ado::access
