#include "ktl/platform/file.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "ktl/platform/encoding.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/share_table.h"

using ktl::FileInfo;
using ktl::FileSystem;
using ktl::ShareTable;

namespace {

constexpr UINT kAccessMask = 0x3;
constexpr unsigned kWriteBits = 0222;
constexpr unsigned kOwnerWriteBit = 0200;

// What a CFileException's cause is called, its platform error and its text.
struct CauseFacts {
    int cause;
    const char *text;
};
constexpr CauseFacts kCauses[] = {
    {CFileException::none, "No error occurred."},
    {CFileException::genericException, "An unknown error occurred while accessing %s."},
    {CFileException::fileNotFound, "%s was not found."},
    {CFileException::badPath, "%s contains an invalid path."},
    {CFileException::tooManyOpenFiles, "%s could not be opened because there are too many open files."},
    {CFileException::accessDenied, "Access to %s was denied."},
    {CFileException::invalidFile, "An invalid file handle was associated with %s."},
    {CFileException::removeCurrentDir, "%s could not be removed because it is the current directory."},
    {CFileException::directoryFull, "%s could not be created because the directory is full."},
    {CFileException::badSeek, "Seek failed on %s."},
    {CFileException::hardIO, "A hardware I/O error was reported while accessing %s."},
    {CFileException::sharingViolation, "A sharing violation occurred while accessing %s."},
    {CFileException::lockViolation, "A locking violation occurred while accessing %s."},
    {CFileException::diskFull, "Disk full while accessing %s."},
    {CFileException::endOfFile, "An attempt was made to access %s past its end."},
};

std::string CauseText(int cause, const char *fileName) {
    std::string text = kCauses[cause >= 0 && cause < static_cast<int>(std::size(kCauses)) ? cause : 1].text;
    const std::string name = fileName && *fileName ? ktl::ToUtf8(fileName) : "an unnamed file";
    if (const std::size_t place = text.find("%s"); place != std::string::npos) text.replace(place, 2, name);
    return text;
}

struct ErrorCause {
    DWORD error;
    int cause;
};
constexpr ErrorCause kErrorCauses[] = {
    {ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
    {ERROR_PATH_NOT_FOUND, CFileException::badPath},
    {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
    {ERROR_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_ALREADY_EXISTS, CFileException::accessDenied},
    {ERROR_INVALID_HANDLE, CFileException::invalidFile},
    {ERROR_SEEK, CFileException::badSeek},
    {ERROR_NEGATIVE_SEEK, CFileException::badSeek},
    {ERROR_IO_DEVICE, CFileException::hardIO},
    {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
    {ERROR_LOCK_VIOLATION, CFileException::lockViolation},
    {ERROR_DISK_FULL, CFileException::diskFull},
};

CFileException FromPlatformError(DWORD error, const CString &fileName) {
    SetLastError(error);
    int cause = CFileException::genericException;
    for (const ErrorCause &entry : kErrorCauses) {
        if (entry.error == error) cause = entry.cause;
    }
    return CFileException(cause, static_cast<LONG>(error), fileName);
}

unsigned SystemOpenFlags(UINT flags) {
    const UINT access = flags & kAccessMask;
    unsigned system = access == CFile::modeRead    ? ktl::kOpenRead
                      : access == CFile::modeWrite ? ktl::kOpenWrite
                                                   : ktl::kOpenRead | ktl::kOpenWrite;
    if ((flags & CFile::modeCreate) != 0) system |= ktl::kOpenCreate;
    return system;
}

// Emptying waits until the file is known to be free of others.
int EmptyFile(FileSystem &files, FileSystem::File file, const std::string &path, UINT flags) {
    if ((flags & CFile::modeCreate) == 0 || (flags & CFile::modeNoTruncate) != 0) return 0;
    if ((flags & kAccessMask) != CFile::modeRead) return files.Truncate(file, 0);
    FileSystem::File writer = -1;
    if (const int error = files.Open(path, ktl::kOpenWrite | ktl::kOpenTruncate, writer)) return error;
    return files.Close(writer);
}

int OpenShared(const std::string &path, UINT flags, FileSystem::File &file) {
    FileSystem &files = FileSystem::Current();
    if (const int error = files.Open(path, SystemOpenFlags(flags), file)) return error;
    FileInfo info;
    int error = files.Stat(file, info);
    if (error == 0 && !ShareTable::Instance().Enter(file, info, flags)) error = EBUSY;
    if (error == 0 && (error = EmptyFile(files, file, path, flags)) != 0) ShareTable::Instance().Leave(file);
    if (error != 0) {
        files.Close(file);
        file = -1;
    }
    return error;
}

std::size_t NamePosition(const CString &path) {
    return static_cast<std::size_t>(std::max(path.ReverseFind('\\'), path.ReverseFind('/')) + 1);
}

CString TitleOf(const CString &name) {
    const int dot = name.ReverseFind('.');
    return dot > 0 ? name.Left(dot) : name;
}

void FillStatus(CFileStatus &status, const FileInfo &info, const std::string &systemPath) {
    status.m_ctime = CTime(info.changed);
    status.m_mtime = CTime(info.modified);
    status.m_atime = CTime(info.accessed);
    status.m_size = info.isFolder ? 0 : info.size;
    status.m_szFullName = ktl::PlatformPath(ktl::AbsolutePath(systemPath));
    const std::size_t slash = systemPath.rfind('/') + 1;
    unsigned attribute = CFile::normal;
    if (info.isReadOnly) attribute |= CFile::readOnly;
    if (slash < systemPath.size() && systemPath[slash] == '.') attribute |= CFile::hidden;
    if (info.isFolder) attribute |= CFile::directory;
    status.m_attribute = static_cast<BYTE>(attribute);
}

// Throws unless a file can be removed or renamed: it is there, is a file, may be written and is not open.
FileInfo RequireFreeFile(const std::string &path, const CString &name) {
    FileInfo info;
    if (const int error = FileSystem::Current().Stat(path, info)) {
        throw FromPlatformError(ktl::PlatformError(error, path), name);
    }
    if (info.isFolder) throw CFileException::FromSystemError(EACCES, name);
    if (ShareTable::Instance().IsOpen(info)) throw CFileException::FromSystemError(EBUSY, name);
    return info;
}

}  // namespace

CFileException::CFileException(int cause, LONG osError, const char *fileName)
    : CException(CauseText(cause, fileName)), m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

CFileException CFileException::FromSystemError(int systemError, const CString &fileName) {
    return FromPlatformError(ktl::PlatformError(systemError, ktl::SystemPath(fileName)), fileName);
}

CFile::CFile(const char *fileName, UINT openFlags) {
    CFileException error;
    if (!CFile::Open(fileName, openFlags, &error)) throw error;
}

CFile::~CFile() {
    CFile::Abort();
}

const CRuntimeClass *CFile::GetThisClass() {
    static const CRuntimeClass record = {"CFile", sizeof(CFile), 0xFFFF, nullptr, CObject::GetThisClass()};
    return &record;
}

const CRuntimeClass *CFile::GetRuntimeClass() const {
    return GetThisClass();
}

BOOL CFile::Open(const char *fileName, UINT openFlags, CFileException *error) {
    Close();
    const CString name(fileName);
    std::string path = ktl::SystemPath(name);
    if ((openFlags & modeCreate) == 0) path = ktl::ExistingPath(path);
    if (const int systemError = OpenShared(path, openFlags, m_file)) {
        const CFileException failure = CFileException::FromSystemError(systemError, name);
        if (error) *error = failure;
        return FALSE;
    }
    m_strFileName = ktl::PlatformPath(ktl::AbsolutePath(path));
    m_position = 0;
    m_access = openFlags & kAccessMask;
    return TRUE;
}

void CFile::Close() {
    if (!IsOpen()) return;
    const FileSystem::File file = std::exchange(m_file, -1);
    ShareTable::Instance().Leave(file);
    const int error = FileSystem::Current().Close(file);
    const CString name = std::exchange(m_strFileName, CString());
    if (error != 0) throw CFileException::FromSystemError(error, name);
}

void CFile::Abort() {
    if (!IsOpen()) return;
    const FileSystem::File file = std::exchange(m_file, -1);
    ShareTable::Instance().Leave(file);
    FileSystem::Current().Close(file);
    m_strFileName.Empty();
}

UINT CFile::Read(void *buffer, UINT count) {
    RequireOpen();
    if (m_access == modeWrite) Throw(EACCES);
    std::size_t done = 0;
    const int error = FileSystem::Current().ReadAt(m_file, m_position, buffer, count, done);
    m_position += done;
    if (error != 0) Throw(error);
    return static_cast<UINT>(done);
}

void CFile::Write(const void *buffer, UINT count) {
    if (count == 0) return;
    RequireOpen();
    if (m_access == modeRead) Throw(EACCES);
    std::size_t done = 0;
    const int error = FileSystem::Current().WriteAt(m_file, m_position, buffer, count, done);
    m_position += done;
    if (error != 0) Throw(error);
    if (done < count) Throw(ENOSPC);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
    RequireOpen();
    const LONGLONG base = from == current ? static_cast<LONGLONG>(m_position)
                          : from == end   ? static_cast<LONGLONG>(GetLength())
                                          : 0;
    LONGLONG position = 0;
    if (__builtin_add_overflow(base, offset, &position) || position < 0) {
        throw FromPlatformError(ERROR_NEGATIVE_SEEK, m_strFileName);
    }
    m_position = static_cast<ULONGLONG>(position);
    return m_position;
}

ULONGLONG CFile::GetPosition() const {
    RequireOpen();
    return m_position;
}

ULONGLONG CFile::GetLength() const {
    RequireOpen();
    FileInfo info;
    if (const int error = FileSystem::Current().Stat(m_file, info)) Throw(error);
    return info.size;
}

void CFile::SetLength(ULONGLONG length) {
    RequireOpen();
    if (m_access == modeRead) Throw(EACCES);
    if (const int error = FileSystem::Current().Truncate(m_file, length)) Throw(error);
    m_position = length;
}

void CFile::Flush() {
    if (!IsOpen() || m_access == modeRead) return;
    if (const int error = FileSystem::Current().Flush(m_file)) Throw(error);
}

CString CFile::GetFileName() const {
    return m_strFileName.Mid(static_cast<int>(NamePosition(m_strFileName)));
}

CString CFile::GetFileTitle() const {
    return TitleOf(GetFileName());
}

CString CFile::GetFilePath() const {
    return m_strFileName;
}

BOOL CFile::GetStatus(CFileStatus &status) const {
    FileInfo info;
    if (!IsOpen() || FileSystem::Current().Stat(m_file, info) != 0) return FALSE;
    FillStatus(status, info, ktl::SystemPath(m_strFileName));
    return TRUE;
}

BOOL CFile::GetStatus(const char *fileName, CFileStatus &status) {
    const std::string path = ktl::ExistingPath(ktl::SystemPath(fileName));
    FileInfo info;
    if (const int error = FileSystem::Current().Stat(path, info)) {
        SetLastError(ktl::PlatformError(error, path));
        return FALSE;
    }
    FillStatus(status, info, path);
    return TRUE;
}

void CFile::SetStatus(const char *fileName, const CFileStatus &status) {
    const CString name(fileName);
    const std::string path = ktl::ExistingPath(ktl::SystemPath(name));
    FileSystem &files = FileSystem::Current();
    FileInfo info;
    int error = files.Stat(path, info);
    const LONGLONG modified = status.m_mtime.GetTime();
    const LONGLONG accessed = status.m_atime.GetTime();
    if (error == 0 && (modified != 0 || accessed != 0)) {
        error =
            files.SetTimes(path, accessed != 0 ? accessed : info.accessed, modified != 0 ? modified : info.modified);
    }
    const bool wantsReadOnly = (status.m_attribute & readOnly) != 0;
    if (error == 0 && wantsReadOnly != info.isReadOnly) {
        error = files.SetMode(path, wantsReadOnly ? info.mode & ~kWriteBits : info.mode | kOwnerWriteBit);
    }
    if (error != 0) throw CFileException::FromSystemError(error, name);
}

void CFile::Remove(const char *fileName) {
    const CString name(fileName);
    const std::string path = ktl::ExistingPath(ktl::SystemPath(name));
    if (RequireFreeFile(path, name).isReadOnly) throw CFileException::FromSystemError(EACCES, name);
    if (const int error = FileSystem::Current().Remove(path)) throw CFileException::FromSystemError(error, name);
}

void CFile::Rename(const char *oldName, const char *newName) {
    const CString name(oldName);
    const std::string from = ktl::ExistingPath(ktl::SystemPath(name));
    const std::string to = ktl::SystemPath(newName);
    const FileInfo info = RequireFreeFile(from, name);
    FileInfo other;
    const bool exists = FileSystem::Current().Stat(to, other) == 0;
    // A new name for the very same file is a change of case, or no change.
    const bool isSame =
        exists && (info.device != 0 || info.inode != 0) && other.device == info.device && other.inode == info.inode;
    if (exists && !isSame) throw CFileException::FromSystemError(EACCES, name);
    const int error = FileSystem::Current().Rename(from, to);
    if (error != 0) throw FromPlatformError(ktl::PlatformError(error, to), name);
}

void CFile::RequireOpen() const {
    if (!IsOpen()) Throw(EBADF);
}

void CFile::Throw(int systemError) const {
    throw FromPlatformError(ktl::PlatformError(systemError), m_strFileName);
}

namespace ktl {

ReplacementFile::ReplacementFile(const CString &target)
    : m_target(FileSystem::Current().RealPath(ExistingPath(SystemPath(target)))),
      m_temporary(TemporaryNameFor(m_target)) {
    CFileException error;
    if (!Open(PlatformPath(m_temporary), modeCreate | modeReadWrite, &error)) {
        throw CFileException(error.m_cause, error.m_lOsError, target);
    }
    FileInfo old;
    FileSystem &files = FileSystem::Current();
    if (files.Stat(m_target, old) == 0) files.SetMode(m_temporary, old.mode);
    // Messages name the file that the caller knows.
    SetFilePath(target);
}

ReplacementFile::~ReplacementFile() {
    CFile::Abort();
    if (!m_temporary.empty()) FileSystem::Current().Remove(m_temporary);
}

void ReplacementFile::Commit() {
    const CString name = m_strFileName;
    Flush();
    Close();
    if (const int error = PutInPlace(m_temporary, m_target)) throw CFileException::FromSystemError(error, name);
    m_temporary.clear();
}

}  // namespace ktl
