#pragma once

#include <map>
#include <mutex>

#include "ktl/platform/filesystem.h"
#include "ktl/platform/types.h"

namespace ktl {

/// The files that this process holds open through `CFile`, with what each wants and what it leaves to others: the
/// system itself has no such rule. Thread-safe.
class ShareTable {
  public:
    static ShareTable &Instance();

    /// Notes an open file with the access and share flags of `CFile::OpenMode`; false when another one forbids it, or
    /// it forbids another one.
    bool Enter(FileSystem::File file, const FileInfo &info, UINT flags);
    void Leave(FileSystem::File file);
    bool IsOpen(const FileInfo &info);

  private:
    struct Entry {
        std::uint64_t device;
        std::uint64_t inode;
        bool reads;
        bool writes;
        bool deniesRead;
        bool deniesWrite;

        /// False when the file system cannot tell files apart.
        bool IsKnown() const { return device != 0 || inode != 0; }
        bool IsSameFile(const Entry &other) const { return device == other.device && inode == other.inode; }
        bool Denies(const Entry &other) const { return (deniesRead && other.reads) || (deniesWrite && other.writes); }
    };
    static Entry MakeEntry(const FileInfo &info, UINT flags);

    std::mutex m_mutex;
    std::map<FileSystem::File, Entry> m_entries;
};

}  // namespace ktl
