#pragma once

#include "ktl/platform/date_time.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/export.h"
#include "ktl/platform/filesystem.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// Why a file operation failed.
class KTL_API CFileException : public CException {
  public:
    enum Cause {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile,
    };

    explicit CFileException(int cause = none, LONG osError = -1, const char *fileName = nullptr);

    /// The exception for an `errno` value at a file; it also becomes the thread's last error.
    static CFileException FromSystemError(int systemError, const CString &fileName);

    /// A `Cause`.
    int m_cause;
    /// The platform's error number, or -1.
    LONG m_lOsError;
    CString m_strFileName;
};

/// What is known of a file by its name.
struct KTL_API CFileStatus {
    CTime m_ctime;
    CTime m_mtime;
    CTime m_atime;
    ULONGLONG m_size = 0;
    /// Bits of `CFile::Attribute`.
    BYTE m_attribute = 0;
    /// Absolute.
    CString m_szFullName;
};

/// A file of bytes, unbuffered, with a position. Names are GBK with '\' or '/'. Failures throw `CFileException`, save
/// where an answer tells. A file opened without a share flag is exclusive among this process's files: a second open
/// fails. Not thread-safe.
///
///     CFile file;
///     if (!file.Open(path, CFile::modeRead | CFile::shareDenyWrite)) return;
///     file.Read(header, sizeof header);
class KTL_API CFile : public CObject {
  public:
    enum OpenMode : UINT {
        modeRead = 0x0,
        modeWrite = 0x1,
        modeReadWrite = 0x2,
        shareCompat = 0x0,
        shareExclusive = 0x10,
        shareDenyWrite = 0x20,
        shareDenyRead = 0x30,
        shareDenyNone = 0x40,
        modeNoInherit = 0x80,
        typeUnicode = 0x400,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
        osNoBuffer = 0x10000,
        osWriteThrough = 0x20000,
        osRandomAccess = 0x40000,
        osSequentialScan = 0x80000,
    };
    enum SeekPosition : UINT { begin, current, end };
    enum Attribute : BYTE {
        normal = 0x00,
        readOnly = 0x01,
        hidden = 0x02,
        volume = 0x08,
        directory = 0x10,
        archive = 0x20,
    };

    CFile() = default;
    /// Opens; throws CFileException.
    CFile(const char *fileName, UINT openFlags);
    CFile(const CFile &) = delete;
    CFile &operator=(const CFile &) = delete;
    /// Closes without throwing.
    ~CFile() override;

    static const CRuntimeClass *GetThisClass();
    const CRuntimeClass *GetRuntimeClass() const override;

    /// FALSE when the file did not open; `*error`, when given, tells why. Without modeCreate the file must exist, and
    /// its name may differ by case; modeCreate empties it unless modeNoTruncate. An open file is closed first.
    virtual BOOL Open(const char *fileName, UINT openFlags, CFileException *error = nullptr);
    /// Nothing on a closed file.
    virtual void Close();
    /// Closes without throwing.
    virtual void Abort();
    bool IsOpen() const { return m_file >= 0; }

    /// Bytes read: less than `count` only at the end, 0 there.
    virtual UINT Read(void *buffer, UINT count);
    virtual void Write(const void *buffer, UINT count);
    /// The new position. Past the end is allowed; before the start throws badSeek and the position stays.
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    virtual ULONGLONG GetPosition() const;
    virtual ULONGLONG GetLength() const;
    /// Cuts or extends, and leaves the position at the new end.
    virtual void SetLength(ULONGLONG length);
    /// Returns when the content is on the disk.
    virtual void Flush();

    /// The file's name with extension; without; and the full path. Empty when closed.
    virtual CString GetFileName() const;
    virtual CString GetFileTitle() const;
    virtual CString GetFilePath() const;
    virtual void SetFilePath(const char *path) { m_strFileName = path; }
    /// FALSE when closed.
    BOOL GetStatus(CFileStatus &status) const;

    /// FALSE when there is no such file or folder.
    static BOOL GetStatus(const char *fileName, CFileStatus &status);
    /// Sets the times that are not 0 and the read-only attribute; hidden and the others have no counterpart and are
    /// accepted. Throws CFileException.
    static void SetStatus(const char *fileName, const CFileStatus &status);
    /// Removes a file; throws for a folder, a read-only file and an open one.
    static void Remove(const char *fileName);
    /// Renames a file; throws when the new name exists or the file is open.
    static void Rename(const char *oldName, const char *newName);

  protected:
    CString m_strFileName;

  private:
    void RequireOpen() const;
    [[noreturn]] void Throw(int systemError) const;

    ktl::FileSystem::File m_file = -1;
    ULONGLONG m_position = 0;
    UINT m_access = modeRead;
};

namespace ktl {

/// A file that takes another's place when it is complete. Content goes to a temporary file beside the target; `Commit`
/// flushes it and renames it over the target; without `Commit` the target stays as it is.
///
///     ktl::ReplacementFile file(path);
///     CArchive archive(&file, CArchive::store);
///     ...
///     archive.Close();
///     file.Commit();
class KTL_API ReplacementFile : public CFile {
  public:
    /// Throws CFileException.
    explicit ReplacementFile(const CString &target);
    /// Without `Commit` the temporary file is removed.
    ~ReplacementFile() override;

    /// Flushes, closes and puts the file in the target's place. Throws CFileException, with the target as it was.
    void Commit();

  private:
    std::string m_target;
    std::string m_temporary;
};

}  // namespace ktl
