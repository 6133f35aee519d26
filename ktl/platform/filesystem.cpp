#include "ktl/platform/filesystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "ktl/platform/encoding.h"
#include "ktl/platform/share_table.h"

namespace ktl {
namespace {

int ErrorOf(int result) {
    return result == 0 ? 0 : errno;
}

// Repeats a call that a signal interrupts.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

FileInfo InfoOf(const struct stat &status) {
    FileInfo info;
    info.isFolder = S_ISDIR(status.st_mode);
    info.isReadOnly = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    info.size = static_cast<std::uint64_t>(status.st_size);
    info.modified = status.st_mtime;
    info.accessed = status.st_atime;
    info.changed = status.st_ctime;
    info.device = status.st_dev;
    info.inode = status.st_ino;
    info.mode = status.st_mode & 07777U;
    info.modifiedFraction = static_cast<std::uint32_t>(status.st_mtim.tv_nsec);
    info.changedFraction = static_cast<std::uint32_t>(status.st_ctim.tv_nsec);
    info.links = status.st_nlink;
    return info;
}

int SystemFlags(unsigned flags) {
    const bool reads = (flags & kOpenRead) != 0;
    const bool writes = (flags & kOpenWrite) != 0;
    int system = (reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY) | O_CLOEXEC;
    if ((flags & kOpenCreate) != 0) system |= O_CREAT;
    if ((flags & kOpenTruncate) != 0) system |= O_TRUNC;
    if ((flags & kOpenNew) != 0) system |= O_EXCL;
    return system;
}

// Transfers until `count` bytes are done or a call makes no progress.
template <class Transfer>
int TransferAll(std::size_t count, std::size_t &done, Transfer transfer) {
    done = 0;
    while (done < count) {
        const ssize_t part = Uninterrupted([&] { return transfer(done); });
        if (part < 0) return errno;
        if (part == 0) break;
        done += static_cast<std::size_t>(part);
    }
    return 0;
}

constexpr std::uint64_t kMaxOffset = 0x7FFFFFFFFFFFFFFF;

std::atomic<FileSystem *> g_current{nullptr};

std::pair<std::string, std::string> SplitPath(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return {"", path};
    return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

// Creates, fills, flushes and closes a new file.
int WriteNewFile(FileSystem &files, const std::string &path, std::string_view content, const unsigned *mode) {
    FileSystem::File file = -1;
    if (const int error = files.Open(path, kOpenWrite | kOpenCreate | kOpenNew, file)) return error;
    std::size_t done = 0;
    int error = mode ? files.SetMode(path, *mode) : 0;
    if (error == 0) error = files.WriteAt(file, 0, content.data(), content.size(), done);
    if (error == 0 && done < content.size()) error = ENOSPC;
    if (error == 0) error = files.Flush(file);
    const int closeError = files.Close(file);
    return error != 0 ? error : closeError;
}

}  // namespace

int FileSystem::Open(const std::string &path, unsigned flags, File &file) {
    constexpr mode_t kNewFileMode = 0666;
    file = Uninterrupted([&] { return ::open(path.c_str(), SystemFlags(flags), kNewFileMode); });
    if (file < 0) return errno;
    struct stat status = {};
    if (::fstat(file, &status) != 0 || S_ISDIR(status.st_mode)) {
        const int error = S_ISDIR(status.st_mode) ? EISDIR : errno;
        ::close(file);
        file = -1;
        return error;
    }
    return 0;
}

int FileSystem::Close(File file) {
    return ErrorOf(::close(file));
}

int FileSystem::ReadAt(File file, std::uint64_t offset, void *buffer, std::size_t count, std::size_t &done) {
    done = 0;
    if (offset > kMaxOffset - count) return EINVAL;
    return TransferAll(count, done, [&](std::size_t at) {
        return ::pread(file, static_cast<char *>(buffer) + at, count - at, static_cast<off_t>(offset + at));
    });
}

int FileSystem::WriteAt(File file, std::uint64_t offset, const void *buffer, std::size_t count, std::size_t &done) {
    done = 0;
    if (offset > kMaxOffset - count) return EFBIG;
    return TransferAll(count, done, [&](std::size_t at) {
        return ::pwrite(file, static_cast<const char *>(buffer) + at, count - at, static_cast<off_t>(offset + at));
    });
}

int FileSystem::Truncate(File file, std::uint64_t length) {
    if (length > kMaxOffset) return EFBIG;
    return ErrorOf(Uninterrupted([&] { return ::ftruncate(file, static_cast<off_t>(length)); }));
}

int FileSystem::Flush(File file) {
    const int error = ErrorOf(Uninterrupted([&] { return ::fdatasync(file); }));
    // A file that cannot be synchronised, such as a terminal's, has nothing to wait for.
    return error == EINVAL || error == ENOTSUP ? 0 : error;
}

int FileSystem::Stat(File file, FileInfo &info) {
    struct stat status = {};
    if (::fstat(file, &status) != 0) return errno;
    info = InfoOf(status);
    return 0;
}

int FileSystem::Lock(File file, FileLock lock) {
    const int operation = lock == FileLock::None ? LOCK_UN : lock == FileLock::Shared ? LOCK_SH : LOCK_EX;
    return ErrorOf(Uninterrupted([&] { return ::flock(file, operation | LOCK_NB); }));
}

int FileSystem::Stat(const std::string &path, FileInfo &info) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return errno;
    info = InfoOf(status);
    return 0;
}

int FileSystem::Rename(const std::string &from, const std::string &to) {
    return ErrorOf(::rename(from.c_str(), to.c_str()));
}

int FileSystem::Remove(const std::string &path) {
    return ErrorOf(::unlink(path.c_str()));
}

int FileSystem::List(const std::string &folder, std::vector<std::string> &names) {
    names.clear();
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(::opendir(folder.empty() ? "." : folder.c_str()), ::closedir);
    if (!stream) return errno;
    errno = 0;
    while (const dirent *entry = ::readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
    return errno;
}

std::string FileSystem::RealPath(const std::string &path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

int FileSystem::MakeFolder(const std::string &path) {
    constexpr mode_t kNewFolderMode = 0777;
    return ErrorOf(::mkdir(path.c_str(), kNewFolderMode));
}

int FileSystem::RemoveFolder(const std::string &path) {
    return ErrorOf(::rmdir(path.c_str()));
}

int FileSystem::SetTimes(const std::string &path, std::int64_t accessed, std::int64_t modified) {
    const timespec times[2] = {{accessed, 0}, {modified, 0}};
    return ErrorOf(::utimensat(AT_FDCWD, path.c_str(), times, 0));
}

int FileSystem::SetMode(const std::string &path, unsigned mode) {
    return ErrorOf(::chmod(path.c_str(), static_cast<mode_t>(mode)));
}

FileSystem &FileSystem::Current() {
    FileSystem *current = g_current.load(std::memory_order_acquire);
    return current ? *current : System();
}

FileSystem &FileSystem::System() {
    // Never destroyed: objects of static life may use it at the program's end.
    static FileSystem *const system = new FileSystem;
    return *system;
}

FileSystem *FileSystem::Replace(FileSystem *other) {
    FileSystem *before = g_current.exchange(other == &System() ? nullptr : other, std::memory_order_acq_rel);
    return before ? before : &System();
}

int ReadWholeFile(const std::string &systemPath, std::string &content) {
    FileSystem &files = FileSystem::Current();
    content.clear();
    FileSystem::File file = -1;
    if (const int error = files.Open(systemPath, kOpenRead, file)) return error;
    constexpr std::size_t kPiece = 1 << 16;
    int error = 0;
    for (;;) {
        const std::size_t size = content.size();
        content.resize(size + kPiece);
        std::size_t done = 0;
        error = files.ReadAt(file, size, content.data() + size, kPiece, done);
        content.resize(size + done);
        if (error != 0 || done == 0) break;
    }
    files.Close(file);
    return error;
}

std::string TemporaryNameFor(const std::string &systemPath) {
    static std::atomic<unsigned> counter{0};
    FileInfo info;
    for (;;) {
        std::string name = systemPath + "." + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".tmp";
        if (FileSystem::Current().Stat(name, info) != 0) return name;
    }
}

int PutInPlace(const std::string &temporary, const std::string &target) {
    FileSystem &files = FileSystem::Current();
    FileInfo old;
    if (files.Stat(target, old) == 0) {
        if (old.isFolder) return EISDIR;
        if (old.isReadOnly) return EACCES;
        if (ShareTable::Instance().IsOpen(old)) return EBUSY;
    }
    return files.Rename(temporary, target);
}

int ReplaceWholeFile(const std::string &systemPath, std::string_view content) {
    FileSystem &files = FileSystem::Current();
    const std::string target = files.RealPath(systemPath);
    FileInfo old;
    const bool exists = files.Stat(target, old) == 0;
    const std::string temporary = TemporaryNameFor(target);
    int error = WriteNewFile(files, temporary, content, exists ? &old.mode : nullptr);
    if (error == EEXIST) return error;
    if (error == 0) error = PutInPlace(temporary, target);
    if (error != 0) files.Remove(temporary);
    return error;
}

std::string AbsolutePath(const std::string &systemPath) {
    if (systemPath.starts_with('/')) return systemPath;
    const std::unique_ptr<char, decltype(&std::free)> folder(::getcwd(nullptr, 0), &std::free);
    if (!folder) return systemPath;
    const std::string root = folder.get();
    return root + (root.ends_with('/') ? "" : "/") + systemPath;
}

std::string ExistingPath(const std::string &systemPath) {
    FileSystem &files = FileSystem::Current();
    FileInfo info;
    const auto [folder, name] = SplitPath(systemPath);
    if (name.empty() || files.Stat(systemPath, info) != ENOENT) return systemPath;
    std::vector<std::string> names;
    if (files.List(folder, names) != 0) return systemPath;
    const CString wanted = FromUtf8(name);
    std::sort(names.begin(), names.end());
    for (const std::string &candidate : names) {
        if (FromUtf8(candidate).CompareNoCase(wanted) == 0) return folder + candidate;
    }
    return systemPath;
}

}  // namespace ktl
