#include "ktl/platform/archive.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>

#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"

namespace {

constexpr int kSmallestBuffer = 128;
// Text of unknown length comes in pieces, so that a damaged length costs no more memory than the stream has bytes.
constexpr std::size_t kTextPiece = 1 << 16;

// A text's length prefix: one byte, or this mark and a word, or both marks and a double word, and so on.
constexpr BYTE kLongMark = 0xFF;
constexpr WORD kWideMark = 0xFFFE;
constexpr WORD kLongerMark = 0xFFFF;
constexpr DWORD kLongestMark = 0xFFFFFFFF;

const char *CauseText(int cause) {
    static constexpr const char *kTexts[] = {
        "No error occurred.",
        "An unknown error occurred while accessing an archive.",
        "An attempt was made to write to a reading archive.",
        "An attempt was made to read past the end of an archive.",
        "An attempt was made to read from a writing archive.",
        "The archive's format is not valid.",
        "The archive holds an object of a wrong type.",
        "The archive was made by another version of the program.",
        "The archive's buffer is full.",
    };
    return kTexts[cause >= 0 && cause < static_cast<int>(std::size(kTexts)) ? cause : 1];
}

std::u16string FromLittleEndian(const std::string &bytes) {
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char16_t>(static_cast<BYTE>(bytes[2 * i]) | static_cast<BYTE>(bytes[2 * i + 1]) << 8);
    }
    return text;
}

}  // namespace

CArchiveException::CArchiveException(int cause, const char *fileName)
    : CException(CauseText(cause)), m_cause(cause), m_strFileName(fileName) {}

CArchive::CArchive(CFile *file, UINT mode, int size, void *)
    : m_strFileName(file ? file->GetFilePath() : CString()),
      m_file(file),
      m_isLoading((mode & load) != 0),
      m_flushOnDelete((mode & bNoFlushOnDelete) == 0),
      m_exceptionsAtStart(std::uncaught_exceptions()),
      m_buffer(static_cast<std::size_t>(std::max(size, kSmallestBuffer))),
      m_next(m_buffer.data()),
      m_roomEnd(m_isLoading || !file ? m_next : m_next + m_buffer.size()),
      m_leftEnd(m_next) {}

CArchive::~CArchive() noexcept(false) {
    if (!m_file || !m_flushOnDelete) return;
    try {
        Close();
    } catch (...) {
        m_file = nullptr;
        if (std::uncaught_exceptions() == m_exceptionsAtStart) throw;
    }
}

void CArchive::Flush() {
    if (!m_file) throw CArchiveException(CArchiveException::genericException, m_strFileName);
    if (m_isLoading) {
        const auto unread = static_cast<LONGLONG>(m_leftEnd - m_next);
        if (unread > 0) m_file->Seek(-unread, CFile::current);
        m_next = m_leftEnd = m_buffer.data();
    } else if (const auto waiting = static_cast<UINT>(m_next - m_buffer.data())) {
        // Empty before the write: after a failure the same bytes must not go out again.
        m_next = m_buffer.data();
        m_file->Write(m_buffer.data(), waiting);
    }
}

void CArchive::Close() {
    if (!m_file) return;
    Flush();
    Detach();
}

void CArchive::Abort() {
    Detach();
}

void CArchive::Detach() {
    m_file = nullptr;
    m_next = m_roomEnd = m_leftEnd = m_buffer.data();
}

UINT CArchive::Read(void *buffer, UINT count) {
    RequireLoading();
    auto *out = static_cast<BYTE *>(buffer);
    UINT left = count;
    while (left > 0) {
        const auto inBuffer = static_cast<UINT>(m_leftEnd - m_next);
        if (inBuffer == 0 && left >= m_buffer.size()) {
            left -= m_file->Read(out, left);
            break;
        }
        if (inBuffer == 0 && FillBuffer() == 0) break;
        const UINT part = std::min(left, static_cast<UINT>(m_leftEnd - m_next));
        std::memcpy(out, m_next, part);
        m_next += part;
        out += part;
        left -= part;
    }
    return count - left;
}

void CArchive::Write(const void *buffer, UINT count) {
    if (count == 0) return;
    RequireStoring();
    if (count > static_cast<std::size_t>(m_roomEnd - m_next)) Flush();
    if (count >= m_buffer.size()) {
        m_file->Write(buffer, count);
        return;
    }
    std::memcpy(m_next, buffer, count);
    m_next += count;
}

void CArchive::WriteString(const char *text) {
    if (text) Write(text, static_cast<UINT>(std::strlen(text)));
}

BOOL CArchive::ReadString(CString &line) {
    RequireLoading();
    std::string text;
    bool readAny = false;
    while (m_next != m_leftEnd || FillBuffer() > 0) {
        readAny = true;
        const auto *end = static_cast<BYTE *>(std::memchr(m_next, '\n', static_cast<std::size_t>(m_leftEnd - m_next)));
        text.append(reinterpret_cast<char *>(m_next), static_cast<std::size_t>((end ? end : m_leftEnd) - m_next));
        m_next = end ? m_next + (end - m_next) + 1 : m_leftEnd;
        if (!end) continue;
        if (text.ends_with('\r')) text.pop_back();
        break;
    }
    line = CString(std::move(text));
    return readAny ? TRUE : FALSE;
}

char *CArchive::ReadString(char *buffer, UINT size) {
    RequireLoading();
    if (!buffer || size == 0) return nullptr;
    UINT length = 0;
    while (length + 1 < size && (m_next != m_leftEnd || FillBuffer() > 0)) {
        buffer[length] = static_cast<char>(*m_next++);
        if (buffer[length++] == '\n') break;
    }
    buffer[length] = '\0';
    return length > 0 ? buffer : nullptr;
}

CArchive &CArchive::operator<<(const CString &text) {
    const std::string_view bytes = text.View();
    const ULONGLONG length = bytes.size();
    if (length < kLongMark) {
        *this << static_cast<BYTE>(length);
    } else if (length < kWideMark) {
        *this << kLongMark << static_cast<WORD>(length);
    } else if (length < kLongestMark) {
        *this << kLongMark << kLongerMark << static_cast<DWORD>(length);
    } else {
        *this << kLongMark << kLongerMark << kLongestMark << length;
    }
    Write(bytes.data(), static_cast<UINT>(length));
    return *this;
}

CArchive &CArchive::operator>>(CString &text) {
    bool isWide = false;
    const ULONGLONG length = ReadLength(isWide);
    std::string bytes = ReadBytes(isWide ? length * 2 : length);
    text = isWide ? ktl::GbkFromUtf16(FromLittleEndian(bytes)) : CString(std::move(bytes));
    return *this;
}

ULONGLONG CArchive::ReadLength(bool &isWide) {
    BYTE byte = Get<BYTE>();
    if (byte != kLongMark) return byte;
    WORD word = Get<WORD>();
    if (word == kWideMark) {
        isWide = true;
        byte = Get<BYTE>();
        if (byte != kLongMark) return byte;
        word = Get<WORD>();
    }
    if (word != kLongerMark) return word;
    const DWORD doubleWord = Get<DWORD>();
    if (doubleWord != kLongestMark) return doubleWord;
    const ULONGLONG length = Get<ULONGLONG>();
    // No stream is that long; and twice the length shall not overflow.
    if (length > static_cast<ULONGLONG>(std::numeric_limits<LONGLONG>::max()) / 2) {
        throw CArchiveException(CArchiveException::endOfFile, m_strFileName);
    }
    return length;
}

std::string CArchive::ReadBytes(ULONGLONG count) {
    std::string bytes;
    while (bytes.size() < count) {
        const std::size_t size = bytes.size();
        const auto piece = static_cast<UINT>(std::min<ULONGLONG>(count - size, kTextPiece));
        bytes.resize(size + piece);
        if (Read(bytes.data() + size, piece) < piece) {
            throw CArchiveException(CArchiveException::endOfFile, m_strFileName);
        }
    }
    return bytes;
}

void CArchive::MakeRoom() {
    RequireStoring();
    Flush();
}

void CArchive::Refill(std::size_t needed) {
    RequireLoading();
    while (static_cast<std::size_t>(m_leftEnd - m_next) < needed) {
        if (FillBuffer() == 0) throw CArchiveException(CArchiveException::endOfFile, m_strFileName);
    }
}

std::size_t CArchive::FillBuffer() {
    const auto kept = static_cast<std::size_t>(m_leftEnd - m_next);
    std::memmove(m_buffer.data(), m_next, kept);
    m_next = m_buffer.data();
    m_leftEnd = m_next + kept;
    const UINT read = m_file->Read(m_leftEnd, static_cast<UINT>(m_buffer.size() - kept));
    m_leftEnd += read;
    return read;
}

void CArchive::RequireStoring() const {
    if (m_isLoading) throw CArchiveException(CArchiveException::readOnly, m_strFileName);
    if (!m_file) throw CArchiveException(CArchiveException::genericException, m_strFileName);
}

void CArchive::RequireLoading() const {
    if (!m_isLoading) throw CArchiveException(CArchiveException::writeOnly, m_strFileName);
    if (!m_file) throw CArchiveException(CArchiveException::genericException, m_strFileName);
}
