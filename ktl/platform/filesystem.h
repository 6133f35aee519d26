#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ktl/platform/export.h"

/// \file
/// The one way to the files. Everything above (CFile, CFileFind, profiles, tables) goes through
/// `FileSystem::Current()`, so that a test or a host can put another one in its place.

namespace ktl {

/// What is known of a file or folder. Times are seconds since 1970 UTC.
struct FileInfo {
    bool isFolder = false;
    /// True when no one may write it.
    bool isReadOnly = false;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t accessed = 0;
    std::int64_t changed = 0;
    /// Together they tell whether two names are one file; both 0 when the file system cannot say.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// The permission bits, for a file that takes another's place.
    unsigned mode = 0;
    /// The part of `modified` below a second, in nanoseconds.
    std::uint32_t modifiedFraction = 0;
    /// The same of `changed`.
    std::uint32_t changedFraction = 0;
    /// The names that the file has; 0 when it was removed or replaced while open.
    std::uint64_t links = 1;
};

/// A lock on an open file, against other openings of it in this process or another.
enum class FileLock { None, Shared, Exclusive };

/// How a file is opened; at least one of read and write.
enum OpenFlags : unsigned {
    kOpenRead = 1,
    kOpenWrite = 2,
    /// Makes the file when it is missing.
    kOpenCreate = 4,
    /// Empties the file.
    kOpenTruncate = 8,
    /// With kOpenCreate: fails with EEXIST when the file is there.
    kOpenNew = 16,
};

/// Files by their system names (UTF-8, '/'). Every operation answers 0 or an `errno` value and throws nothing. The base
/// class is the machine's file system; a test derives from it and overrides what shall go wrong. Thread-safe.
class KTL_API FileSystem {
  public:
    /// An open file; -1 is none.
    using File = int;

    FileSystem() = default;
    FileSystem(const FileSystem &) = delete;
    FileSystem &operator=(const FileSystem &) = delete;
    virtual ~FileSystem() = default;

    /// Opens a file, never a folder (EISDIR), with flags of `OpenFlags`.
    virtual int Open(const std::string &path, unsigned flags, File &file);
    /// The file is closed even when an error is returned.
    virtual int Close(File file);

    /// Reads or writes at `offset`, apart from any position; `*done` may be less than `count` at the end of the file
    /// (or on a full disk) without an error. A write past the end fills the gap with zeros.
    virtual int ReadAt(File file, std::uint64_t offset, void *buffer, std::size_t count, std::size_t &done);
    virtual int WriteAt(File file, std::uint64_t offset, const void *buffer, std::size_t count, std::size_t &done);
    /// Cuts or extends.
    virtual int Truncate(File file, std::uint64_t length);
    /// Returns when the content is on the disk.
    virtual int Flush(File file);
    virtual int Stat(File file, FileInfo &info);
    /// Sets this opening's lock, or takes it away. Advisory; never waits: EAGAIN when another opening's lock stands
    /// against it. Goes with the file's closing.
    virtual int Lock(File file, FileLock lock);

    virtual int Stat(const std::string &path, FileInfo &info);
    /// A file already at `to` is replaced in one step.
    virtual int Rename(const std::string &from, const std::string &to);
    /// Removes a file.
    virtual int Remove(const std::string &path);
    /// The names in a folder without "." and "..", in no order.
    virtual int List(const std::string &folder, std::vector<std::string> &names);
    /// The name that links lead to; the name itself when it cannot be told.
    virtual std::string RealPath(const std::string &path);
    virtual int MakeFolder(const std::string &path);
    /// Removes an empty folder.
    virtual int RemoveFolder(const std::string &path);
    /// Sets both times, in seconds since 1970.
    virtual int SetTimes(const std::string &path, std::int64_t accessed, std::int64_t modified);
    virtual int SetMode(const std::string &path, unsigned mode);

    /// The file system in use.
    static FileSystem &Current();
    /// The machine's own.
    static FileSystem &System();
    /// Puts `other` (borrowed; null for the machine's own) in use and returns what was in use. Open files must be
    /// closed before.
    static FileSystem *Replace(FileSystem *other);
};

/// Reads a whole file through the current file system; 0 or an `errno` value.
KTL_API int ReadWholeFile(const std::string &systemPath, std::string &content);
/// Replaces a file's content in one step: written beside it, flushed, renamed. On an error (an `errno` value) the old
/// file is as it was and nothing is left beside it. An existing file's permissions are kept.
KTL_API int ReplaceWholeFile(const std::string &systemPath, std::string_view content);
/// Puts the complete file `temporary` in the place of `target`, in one step. An `errno` value when the target is a
/// folder, read-only or open in this process.
KTL_API int PutInPlace(const std::string &temporary, const std::string &target);
/// A name beside `systemPath` that no file has at the moment.
KTL_API std::string TemporaryNameFor(const std::string &systemPath);

/// The name from the root on; a relative one lies in the process's current folder.
KTL_API std::string AbsolutePath(const std::string &systemPath);

/// The name itself when there is such a file or folder; otherwise the name in the same folder that differs only by
/// case; otherwise the name itself.
KTL_API std::string ExistingPath(const std::string &systemPath);

}  // namespace ktl
