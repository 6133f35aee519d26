#include "ktl/platform/mem_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

CMemFile::CMemFile(const BYTE *content, UINT size, UINT growBytes) {
    Attach(content, size, growBytes);
}

void CMemFile::Attach(const BYTE *content, UINT size, UINT growBytes) {
    m_content.assign(content, content + (content ? size : 0));
    m_growBytes = growBytes;
    m_position = 0;
}

std::vector<BYTE> CMemFile::Detach() {
    m_position = 0;
    return std::exchange(m_content, {});
}

BOOL CMemFile::Open(const char *, UINT, CFileException *) {
    return TRUE;
}

UINT CMemFile::Read(void *buffer, UINT count) {
    if (m_position >= m_content.size()) return 0;
    const std::size_t part = std::min<std::size_t>(count, m_content.size() - m_position);
    if (part > 0) std::memcpy(buffer, m_content.data() + m_position, part);
    m_position += part;
    return static_cast<UINT>(part);
}

void CMemFile::Write(const void *buffer, UINT count) {
    if (count == 0) return;
    if (m_position + count > m_content.size()) Grow(m_position + count);
    std::memcpy(m_content.data() + m_position, buffer, count);
    m_position += count;
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from) {
    const std::size_t base = from == current ? m_position : from == end ? m_content.size() : 0;
    LONGLONG position = 0;
    if (__builtin_add_overflow(static_cast<LONGLONG>(base), offset, &position) || position < 0) {
        throw CFileException(CFileException::badSeek);
    }
    m_position = static_cast<std::size_t>(position);
    return m_position;
}

void CMemFile::SetLength(ULONGLONG length) {
    Grow(static_cast<std::size_t>(length));
    m_position = m_content.size();
}

void CMemFile::Grow(std::size_t size) {
    try {
        const std::size_t step = std::max<std::size_t>(m_growBytes, m_content.capacity());
        if (size > m_content.capacity()) m_content.reserve(std::max(size, m_content.capacity() + step));
        m_content.resize(size);
    } catch (const std::exception &) {
        throw CFileException(CFileException::diskFull);
    }
}
