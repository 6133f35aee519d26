#include "ktl/platform/stdio_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr UINT kBufferSize = 1 << 14;
// Ends a text, whatever follows it.
constexpr char kTextEnd = '\x1A';

}  // namespace

CStdioFile::CStdioFile(const char *fileName, UINT openFlags) {
    CFileException error;
    if (!CStdioFile::Open(fileName, openFlags, &error)) throw error;
}

CStdioFile::~CStdioFile() {
    try {
        CStdioFile::Close();
    } catch (const CException &) {
        CStdioFile::Abort();
    }
}

BOOL CStdioFile::Open(const char *fileName, UINT openFlags, CFileException *error) {
    if (!CFile::Open(fileName, openFlags, error)) return FALSE;
    m_isText = (openFlags & typeBinary) == 0;
    m_atMark = false;
    m_ahead.clear();
    m_next = 0;
    m_pending.clear();
    return TRUE;
}

void CStdioFile::Close() {
    if (!IsOpen()) return;
    WritePending();
    CFile::Close();
}

void CStdioFile::Abort() {
    m_pending.clear();
    CFile::Abort();
}

UINT CStdioFile::Read(void *buffer, UINT count) {
    WritePending();
    auto *out = static_cast<char *>(buffer);
    UINT done = 0;
    Piece piece;
    while (done < count && NextPiece(count - done, piece)) {
        done += static_cast<UINT>(piece.bytes.copy(out + done, piece.bytes.size()));
        if (piece.endsLine) out[done++] = '\n';
    }
    return done;
}

void CStdioFile::Write(const void *buffer, UINT count) {
    LeaveReading();
    const std::string_view bytes(static_cast<const char *>(buffer), buffer ? count : 0);
    for (std::size_t from = 0; from < bytes.size();) {
        const std::size_t newline = m_isText ? bytes.find('\n', from) : std::string_view::npos;
        m_pending += bytes.substr(from, newline - from);
        if (newline == std::string_view::npos) break;
        m_pending += "\r\n";
        from = newline + 1;
    }
    if (m_pending.size() >= kBufferSize) WritePending();
}

ULONGLONG CStdioFile::Seek(LONGLONG offset, UINT from) {
    WritePending();
    LeaveReading();
    return CFile::Seek(offset, from);
}

ULONGLONG CStdioFile::GetPosition() const {
    return CFile::GetPosition() - (m_ahead.size() - m_next) + m_pending.size();
}

ULONGLONG CStdioFile::GetLength() const {
    return std::max(CFile::GetLength(), m_pending.empty() ? 0 : GetPosition());
}

void CStdioFile::SetLength(ULONGLONG length) {
    WritePending();
    LeaveReading();
    CFile::SetLength(length);
}

void CStdioFile::Flush() {
    WritePending();
}

void CStdioFile::WriteString(const char *text) {
    if (text) Write(text, static_cast<UINT>(std::strlen(text)));
}

BOOL CStdioFile::ReadString(CString &line) {
    WritePending();
    line.Empty();
    bool readAny = false;
    for (Piece piece; !piece.endsLine && NextPiece(std::string_view::npos, piece); readAny = true) {
        line.Append(piece.bytes.data(), static_cast<int>(piece.bytes.size()));
    }
    return readAny ? TRUE : FALSE;
}

char *CStdioFile::ReadString(char *buffer, UINT size) {
    WritePending();
    if (!buffer || size == 0) return nullptr;
    UINT length = 0;
    Piece piece;
    while (!piece.endsLine && length + 1 < size && NextPiece(size - 1 - length, piece)) {
        length += static_cast<UINT>(piece.bytes.copy(buffer + length, piece.bytes.size()));
        if (piece.endsLine) buffer[length++] = '\n';
    }
    buffer[length] = '\0';
    return length > 0 ? buffer : nullptr;
}

// Keeps what was not taken yet, so that a pair at the buffer's end comes together.
bool CStdioFile::FillReadBuffer() {
    m_ahead.erase(0, m_next);
    m_next = 0;
    const std::size_t kept = m_ahead.size();
    m_ahead.resize(kept + kBufferSize);
    UINT read = 0;
    try {
        read = CFile::Read(m_ahead.data() + kept, kBufferSize);
    } catch (...) {
        m_ahead.resize(kept);
        throw;
    }
    m_ahead.resize(kept + read);
    return read > 0;
}

// The next bytes of a line as they are read, at most `limit` of them with the newline; false at the end.
bool CStdioFile::NextPiece(std::size_t limit, Piece &piece) {
    if (m_atMark || (m_next == m_ahead.size() && !FillReadBuffer())) return false;
    // A carriage return alone at the buffer's end waits for what follows it.
    if (m_isText && m_next + 1 == m_ahead.size() && m_ahead[m_next] == '\r') FillReadBuffer();
    const std::string_view ahead = std::string_view(m_ahead).substr(m_next);
    const std::size_t newline = ahead.find('\n');
    piece.bytes = ahead.substr(0, std::min(newline, limit));
    if (m_isText && piece.bytes.find(kTextEnd) != std::string_view::npos) {
        piece = {piece.bytes.substr(0, piece.bytes.find(kTextEnd)), false};
        m_next += piece.bytes.size();
        m_atMark = true;
        return !piece.bytes.empty();
    }
    const bool isBeforeNewline = piece.bytes.size() == newline;
    const bool isAtEnd = piece.bytes.size() == ahead.size() && piece.bytes.size() > 1;
    if (m_isText && piece.bytes.ends_with('\r') && (isBeforeNewline || isAtEnd)) piece.bytes.remove_suffix(1);
    piece.endsLine = isBeforeNewline && piece.bytes.size() < limit;
    m_next += piece.endsLine ? newline + 1 : piece.bytes.size();
    return true;
}

// Brings the file's position back to where the reader is.
void CStdioFile::LeaveReading() {
    m_atMark = false;
    const auto unread = static_cast<LONGLONG>(m_ahead.size() - m_next);
    m_ahead.clear();
    m_next = 0;
    if (unread > 0) CFile::Seek(-unread, current);
}

void CStdioFile::WritePending() {
    if (m_pending.empty()) return;
    const std::string bytes = std::exchange(m_pending, {});
    CFile::Write(bytes.data(), static_cast<UINT>(bytes.size()));
}
