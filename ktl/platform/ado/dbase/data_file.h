#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ktl/platform/filesystem.h"
#include "ktl/platform/string.h"

namespace ktl::ado::dbase {

/// An open file of a table, through the file system in use. Faults are thrown as Error with the file's name.
class DataFile {
  public:
    /// Closed.
    DataFile() = default;
    DataFile(const DataFile &) = delete;
    DataFile &operator=(const DataFile &) = delete;
    ~DataFile() { Close(); }

    /// Opens for reading and writing, or only for reading where that is all that is allowed. Throws Error.
    void Open(const std::string &systemPath);
    /// Makes a new file, which must not be there yet.
    void Create(const std::string &systemPath);
    void Close();
    bool IsOpen() const { return m_file >= 0; }
    bool IsWritable() const { return m_writable; }
    const std::string &GetPath() const { return m_path; }

    /// The bytes read: fewer than asked for at the end of the file.
    std::size_t Read(std::uint64_t offset, char *buffer, std::size_t count) const;
    /// All or an Error.
    void Write(std::uint64_t offset, std::string_view bytes);
    void Flush();
    FileInfo Stat() const;
    /// Waits a short time for others; false when they keep the file. A file system without locks grants all.
    bool Lock(FileLock lock);
    void Unlock() noexcept;

  private:
    [[noreturn]] void Throw(const char *what, int error) const;

    FileSystem *m_files = nullptr;
    FileSystem::File m_file = -1;
    bool m_writable = false;
    std::string m_path;
};

/// Throws the Error of a failed file operation; `systemPath` is UTF-8.
[[noreturn]] void ThrowFileError(const char *what, const std::string &systemPath, int error);

}  // namespace ktl::ado::dbase
