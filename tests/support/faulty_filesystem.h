#pragma once

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "ktl/platform/filesystem.h"

namespace ktl::test {

/// The machine's file system that goes wrong on demand. It is in use while it lives.
///
///     FaultyFileSystem files;
///     files.FailAfter(3, ENOSPC);   // the fourth changing call and every later one fail
///     SaveDocument();
class FaultyFileSystem : public FileSystem {
  public:
    FaultyFileSystem() : m_before(Replace(this)) {}
    ~FaultyFileSystem() override { Replace(m_before); }

    /// Changing calls (opening for writing, writing, cutting, flushing, renaming, removing, making folders) fail with
    /// `error` once `calls` of them have passed.
    void FailAfter(int calls, int error) {
        m_left = calls;
        m_error = error;
    }
    /// The process ends at once, as if killed, with this exit code instead of failing.
    void ExitAfter(int calls, int exitCode) {
        m_left = calls;
        m_exitCode = exitCode;
    }
    /// Only so many bytes can still be written: what is more is cut short without an error, as on a full disk.
    void LimitWrites(std::uint64_t bytes) { m_roomLeft = bytes; }
    /// Reads fail with `error` after so many calls.
    void FailReadsAfter(int calls, int error) {
        m_readsLeft = calls;
        m_readError = error;
    }
    /// At most so many bytes come from one read.
    void ShortReads(std::size_t bytes) { m_readPiece = bytes; }
    /// Changing calls seen so far.
    int Calls() const { return m_calls; }

    int Open(const std::string &path, unsigned flags, File &file) override {
        const int error = (flags & kOpenWrite) != 0 ? Change() : 0;
        return error != 0 ? error : FileSystem::Open(path, flags, file);
    }
    int ReadAt(File file, std::uint64_t offset, void *buffer, std::size_t count, std::size_t &done) override {
        done = 0;
        if (m_readsLeft >= 0 && m_readsLeft-- == 0) {
            m_readsLeft = 0;
            return m_readError;
        }
        return FileSystem::ReadAt(file, offset, buffer, std::min(count, m_readPiece), done);
    }
    int WriteAt(File file, std::uint64_t offset, const void *buffer, std::size_t count, std::size_t &done) override {
        done = 0;
        if (const int error = Change()) return error;
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_roomLeft));
        m_roomLeft -= part;
        return FileSystem::WriteAt(file, offset, buffer, part, done);
    }
    int Truncate(File file, std::uint64_t length) override {
        const int error = Change();
        return error != 0 ? error : FileSystem::Truncate(file, length);
    }
    int Flush(File file) override {
        const int error = Change();
        return error != 0 ? error : FileSystem::Flush(file);
    }
    int Rename(const std::string &from, const std::string &to) override {
        const int error = Change();
        return error != 0 ? error : FileSystem::Rename(from, to);
    }
    int Remove(const std::string &path) override {
        const int error = Change();
        return error != 0 ? error : FileSystem::Remove(path);
    }
    int MakeFolder(const std::string &path) override {
        const int error = Change();
        return error != 0 ? error : FileSystem::MakeFolder(path);
    }

  private:
    int Change() {
        ++m_calls;
        if (m_left < 0 || m_left-- > 0) return 0;
        m_left = 0;
        if (m_exitCode >= 0) ::_exit(m_exitCode);
        return m_error;
    }

    FileSystem *m_before;
    int m_calls = 0;
    int m_left = -1;
    int m_error = EIO;
    int m_exitCode = -1;
    std::uint64_t m_roomLeft = ~std::uint64_t{0};
    int m_readsLeft = -1;
    int m_readError = EIO;
    std::size_t m_readPiece = ~std::size_t{0};
};

}  // namespace ktl::test
