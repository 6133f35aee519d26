#include "ktl/platform/ado/dbase/row_window.h"

namespace ktl::ado::dbase {

namespace {

std::uint64_t OffsetOf(const Header &header, sql::RowNumber row) {
    return header.headerLength + static_cast<std::uint64_t>(row) * header.recordLength;
}

}  // namespace

void RowWindow::Load(const DataFile &file, const Header &header, sql::RowNumber first, std::uint32_t rows) {
    const std::size_t wanted = static_cast<std::size_t>(rows) * header.recordLength;
    if (m_bytes.size() < wanted) m_bytes.resize(wanted);
    m_recordLength = header.recordLength;
    m_first = first;
    m_rows = 0;
    m_rows = static_cast<std::uint32_t>(file.Read(OffsetOf(header, first), m_bytes.data(), wanted) / m_recordLength);
}

void RowWindow::MarkDirty(const char *at, std::size_t size) {
    const auto from = static_cast<std::size_t>(at - m_bytes.data());
    m_dirtyBegin = m_dirtyEnd == 0 ? from : std::min(m_dirtyBegin, from);
    m_dirtyEnd = std::max(m_dirtyEnd, from + size);
}

void RowWindow::WriteBack(DataFile &file, const Header &header) {
    if (!IsDirty()) return;
    const std::string_view changed = std::string_view(m_bytes).substr(m_dirtyBegin, m_dirtyEnd - m_dirtyBegin);
    file.Write(OffsetOf(header, m_first) + m_dirtyBegin, changed);
    m_dirtyBegin = m_dirtyEnd = 0;
}

void RowWindow::Drop() {
    m_rows = 0;
    m_dirtyBegin = m_dirtyEnd = 0;
}

}  // namespace ktl::ado::dbase
