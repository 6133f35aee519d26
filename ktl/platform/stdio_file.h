#pragma once

#include <string>
#include <string_view>

#include "ktl/platform/export.h"
#include "ktl/platform/file.h"

/// A buffered file of lines. Without typeBinary it is text: writing turns LF into CR LF, reading turns CR LF into LF
/// and ends at the byte 1A. Positions count the file's bytes.
class KTL_API CStdioFile : public CFile {
  public:
    CStdioFile() = default;
    /// Opens; throws CFileException.
    CStdioFile(const char *fileName, UINT openFlags);
    /// Writes what is buffered and closes, without throwing.
    ~CStdioFile() override;

    BOOL Open(const char *fileName, UINT openFlags, CFileException *error = nullptr) override;
    void Close() override;
    void Abort() override;
    UINT Read(void *buffer, UINT count) override;
    void Write(const void *buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetPosition() const override;
    ULONGLONG GetLength() const override;
    void SetLength(ULONGLONG length) override;
    /// Hands the buffered bytes to the system.
    void Flush() override;

    /// Adds no newline.
    virtual void WriteString(const char *text);
    /// The next line without its newline; FALSE only at the end with nothing read.
    virtual BOOL ReadString(CString &line);
    /// As `fgets`: at most size - 1 bytes, the newline kept; null at the end.
    virtual char *ReadString(char *buffer, UINT size);

  private:
    /// Bytes of one line, good until the next read, and whether they end with the line's newline (not among them).
    struct Piece {
        std::string_view bytes;
        bool endsLine = false;
    };

    bool FillReadBuffer();
    bool NextPiece(std::size_t limit, Piece &piece);
    void LeaveReading();
    void WritePending();

    /// Raw bytes read ahead, from m_next on; the file's own position is behind them.
    std::string m_ahead;
    std::size_t m_next = 0;
    /// Raw bytes not yet written.
    std::string m_pending;
    bool m_isText = true;
    bool m_atMark = false;
};
