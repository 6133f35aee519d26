#include "ktl/platform/ado/dbase/data_file.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::dbase {

namespace {

/// How often and how long a lock that others hold is asked for again: half a second in all.
constexpr int kLockTries = 250;
constexpr auto kLockPause = std::chrono::milliseconds(2);

bool IsTaken(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EACCES;
}

}  // namespace

void ThrowFileError(const char *what, const std::string &systemPath, int error) {
    const bool missing = error == ENOENT || error == ENOTDIR;
    const CString text =
        CString("File ") + FromUtf8(systemPath) + " cannot be " + what + ": " + std::strerror(error) + ".";
    throw Error(text, missing ? error_number::kFileNotFound : error_number::kFileAccess);
}

void DataFile::Throw(const char *what, int error) const {
    ThrowFileError(what, m_path, error);
}

void DataFile::Open(const std::string &systemPath) {
    Close();
    m_files = &FileSystem::Current();
    m_path = systemPath;
    m_writable = true;
    int error = m_files->Open(systemPath, kOpenRead | kOpenWrite, m_file);
    if (error == EACCES || error == EROFS || error == EPERM) {
        m_writable = false;
        error = m_files->Open(systemPath, kOpenRead, m_file);
    }
    if (error != 0) {
        m_file = -1;
        Throw("opened", error);
    }
}

void DataFile::Create(const std::string &systemPath) {
    Close();
    m_files = &FileSystem::Current();
    m_path = systemPath;
    m_writable = true;
    if (const int error = m_files->Open(systemPath, kOpenRead | kOpenWrite | kOpenCreate | kOpenNew, m_file)) {
        m_file = -1;
        Throw("made", error);
    }
}

void DataFile::Close() {
    if (m_file >= 0) m_files->Close(m_file);
    m_file = -1;
}

std::size_t DataFile::Read(std::uint64_t offset, char *buffer, std::size_t count) const {
    std::size_t total = 0;
    while (total < count) {
        std::size_t done = 0;
        if (const int error = m_files->ReadAt(m_file, offset + total, buffer + total, count - total, done)) {
            Throw("read", error);
        }
        if (done == 0) break;
        total += done;
    }
    return total;
}

void DataFile::Write(std::uint64_t offset, std::string_view bytes) {
    std::size_t done = 0;
    const int error = m_files->WriteAt(m_file, offset, bytes.data(), bytes.size(), done);
    if (error != 0 || done < bytes.size()) Throw("written", error != 0 ? error : ENOSPC);
}

void DataFile::Flush() {
    if (const int error = m_files->Flush(m_file)) Throw("written", error);
}

FileInfo DataFile::Stat() const {
    FileInfo info;
    if (const int error = m_files->Stat(m_file, info)) Throw("examined", error);
    return info;
}

bool DataFile::Lock(FileLock lock) {
    for (int i = 0; i < kLockTries; ++i) {
        if (!IsTaken(m_files->Lock(m_file, lock))) return true;
        std::this_thread::sleep_for(kLockPause);
    }
    return false;
}

void DataFile::Unlock() noexcept {
    m_files->Lock(m_file, FileLock::None);
}

}  // namespace ktl::ado::dbase
