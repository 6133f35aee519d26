#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "ktl/platform/date_time.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/export.h"
#include "ktl/platform/geometry.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

class CFile;

/// Why a stream operation failed.
class KTL_API CArchiveException : public CException {
  public:
    enum Cause {
        none,
        genericException,
        readOnly,
        endOfFile,
        writeOnly,
        badIndex,
        badClass,
        badSchema,
        bufferFull,
    };

    explicit CArchiveException(int cause = none, const char *fileName = nullptr);

    /// A `Cause`.
    int m_cause;
    CString m_strFileName;
};

/// A one-way binary stream over a `CFile`, through a buffer. Numbers are little-endian and unpadded: 1 byte for bool
/// and the char types, 2 for short and wchar_t, 4 for int, long and float, 8 for double and long long. A read past the
/// end throws CArchiveException endOfFile; the wrong direction throws readOnly or writeOnly; the file's failures pass
/// as CFileException. The file is borrowed; its own position means nothing until `Flush` or `Close`.
///
///     CArchive ar(&file, CArchive::store);
///     ar << count << name << width;
///     ar.Close();
class KTL_API CArchive {
  public:
    enum Mode : UINT { store = 0, load = 1, bNoFlushOnDelete = 2, bNoByteSwap = 4 };

    /// The buffer has `size` bytes, 128 at least; `unused` stands for the platform's buffer argument.
    CArchive(CFile *file, UINT mode, int size = 4096, void *unused = nullptr);
    CArchive(const CArchive &) = delete;
    CArchive &operator=(const CArchive &) = delete;
    /// As `Close`, unless bNoFlushOnDelete. Throws what `Close` throws, but not while another exception is on its way.
    ~CArchive() noexcept(false);

    bool IsLoading() const { return m_isLoading; }
    bool IsStoring() const { return !m_isLoading; }
    /// Null after `Close`.
    CFile *GetFile() const { return m_file; }

    /// Writes what is buffered; or, when loading, seeks the file back to what was not read yet.
    void Flush();
    /// Flushes and lets go of the file, which stays open.
    void Close();
    /// Drops what is buffered and lets go of the file. Never throws.
    void Abort();

    /// Bytes read: less than `count` only at the end.
    UINT Read(void *buffer, UINT count);
    void Write(const void *buffer, UINT count);
    /// Adds neither a terminator nor a newline.
    void WriteString(const char *text);
    /// The next line without its newline and a carriage return before it; FALSE only at the end with nothing read.
    BOOL ReadString(CString &line);
    /// As `fgets`: at most size - 1 bytes, the newline kept; null at the end.
    char *ReadString(char *buffer, UINT size);

    CArchive &operator<<(bool value) { return Put(static_cast<BYTE>(value ? 1 : 0)); }
    CArchive &operator<<(char value) { return Put(value); }
    CArchive &operator<<(signed char value) { return Put(value); }
    CArchive &operator<<(BYTE value) { return Put(value); }
    CArchive &operator<<(short value) { return Put(value); }
    CArchive &operator<<(WORD value) { return Put(value); }
    CArchive &operator<<(wchar_t value) { return Put(static_cast<WORD>(value)); }
    CArchive &operator<<(int value) { return Put(value); }
    CArchive &operator<<(UINT value) { return Put(value); }
    CArchive &operator<<(long value) { return Put(static_cast<LONG>(value)); }
    CArchive &operator<<(unsigned long value) { return Put(static_cast<DWORD>(value)); }
    CArchive &operator<<(LONGLONG value) { return Put(value); }
    CArchive &operator<<(ULONGLONG value) { return Put(value); }
    CArchive &operator<<(float value) { return Put(value); }
    CArchive &operator<<(double value) { return Put(value); }
    CArchive &operator<<(CTime value) { return Put(value.GetTime()); }
    CArchive &operator<<(const CPoint &value) { return *this << value.x << value.y; }
    CArchive &operator<<(const CSize &value) { return *this << value.cx << value.cy; }
    CArchive &operator<<(const CRect &value) { return *this << value.left << value.top << value.right << value.bottom; }
    /// A length prefix of 1, 3, 7 or 15 bytes, then the text's bytes.
    CArchive &operator<<(const CString &text);
    /// A pointer is no value of a stream; without this it would go as a bool.
    CArchive &operator<<(const void *) = delete;

    CArchive &operator>>(bool &value) {
        value = Get<BYTE>() != 0;
        return *this;
    }
    CArchive &operator>>(char &value) { return GetInto(value); }
    CArchive &operator>>(signed char &value) { return GetInto(value); }
    CArchive &operator>>(BYTE &value) { return GetInto(value); }
    CArchive &operator>>(short &value) { return GetInto(value); }
    CArchive &operator>>(WORD &value) { return GetInto(value); }
    CArchive &operator>>(wchar_t &value) {
        value = static_cast<wchar_t>(Get<WORD>());
        return *this;
    }
    CArchive &operator>>(int &value) { return GetInto(value); }
    CArchive &operator>>(UINT &value) { return GetInto(value); }
    CArchive &operator>>(long &value) {
        value = Get<LONG>();
        return *this;
    }
    CArchive &operator>>(unsigned long &value) {
        value = Get<DWORD>();
        return *this;
    }
    CArchive &operator>>(LONGLONG &value) { return GetInto(value); }
    CArchive &operator>>(ULONGLONG &value) { return GetInto(value); }
    CArchive &operator>>(float &value) { return GetInto(value); }
    CArchive &operator>>(double &value) { return GetInto(value); }
    CArchive &operator>>(CTime &value) {
        value = CTime(Get<LONGLONG>());
        return *this;
    }
    CArchive &operator>>(CPoint &value) { return *this >> value.x >> value.y; }
    CArchive &operator>>(CSize &value) { return *this >> value.cx >> value.cy; }
    CArchive &operator>>(CRect &value) { return *this >> value.left >> value.top >> value.right >> value.bottom; }
    /// Reads 8-bit and 16-bit text; the latter becomes GBK. On an exception `text` is as it was.
    CArchive &operator>>(CString &text);

    /// The file's path, for messages.
    CString m_strFileName;

  private:
    template <class T>
    static void SwapOnBigEndian(T &value) {
        if constexpr (std::endian::native == std::endian::big) {
            auto *bytes = reinterpret_cast<BYTE *>(&value);
            for (std::size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
        }
    }

    // While loading the room ends where the buffer begins, and so does what is left while storing: the wrong direction
    // always takes the slow way, which knows what to throw.
    template <class T>
    CArchive &Put(T value) {
        if (m_roomEnd - m_next < static_cast<std::ptrdiff_t>(sizeof(T))) [[unlikely]]
            MakeRoom();
        SwapOnBigEndian(value);
        std::memcpy(m_next, &value, sizeof(T));
        m_next += sizeof(T);
        return *this;
    }
    template <class T>
    T Get() {
        if (m_leftEnd - m_next < static_cast<std::ptrdiff_t>(sizeof(T))) [[unlikely]]
            Refill(sizeof(T));
        T value;
        std::memcpy(&value, m_next, sizeof(T));
        m_next += sizeof(T);
        SwapOnBigEndian(value);
        return value;
    }
    template <class T>
    CArchive &GetInto(T &value) {
        value = Get<T>();
        return *this;
    }

    void MakeRoom();
    void Refill(std::size_t needed);
    std::size_t FillBuffer();
    void RequireStoring() const;
    void RequireLoading() const;
    void Detach();
    std::string ReadBytes(ULONGLONG count);
    ULONGLONG ReadLength(bool &isWide);

    CFile *m_file;
    bool m_isLoading;
    bool m_flushOnDelete;
    int m_exceptionsAtStart;
    std::vector<BYTE> m_buffer;
    BYTE *m_next;
    BYTE *m_roomEnd;
    BYTE *m_leftEnd;
};
