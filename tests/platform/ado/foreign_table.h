#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace ktl::test {

/// Builds a .dbf file of any flavour, byte by byte.
///
///     ForeignTable(0x03).Column("NAME", 'C', 6).Row("abc   ").Save(folder, "t.dbf");
class ForeignTable {
  public:
    explicit ForeignTable(unsigned char version) : m_version(static_cast<char>(version)) {}

    ForeignTable &Column(const std::string &name, char type, unsigned width, unsigned decimals = 0,
                         unsigned flags = 0) {
        std::string entry(32, '\0');
        entry.replace(0, name.size(), name);
        entry[11] = type;
        entry[16] = static_cast<char>(width);
        entry[17] = static_cast<char>(width > 255 ? width >> 8 : decimals);
        entry[18] = static_cast<char>(flags);
        m_entries += entry;
        m_width += width;
        return *this;
    }
    ForeignTable &Entry(std::size_t column, std::size_t at, const std::string &bytes) {
        m_entries.replace(column * 32 + at, bytes.size(), bytes);
        return *this;
    }
    ForeignTable &Row(const std::string &cells, bool deleted = false) {
        m_rows += deleted ? '*' : ' ';
        m_rows += cells;
        ++m_count;
        return *this;
    }
    ForeignTable &CodePage(unsigned char mark) {
        m_codePage = static_cast<char>(mark);
        return *this;
    }
    ForeignTable &Terminator(char mark) {
        m_terminator = mark;
        return *this;
    }
    ForeignTable &EndMark(bool present) {
        m_endMark = present;
        return *this;
    }
    std::string Bytes() const {
        const bool backlink = m_version >= 0x30 && m_version <= 0x32;
        const std::size_t header = 32 + m_entries.size() + 1 + (backlink ? 263 : 0);
        std::string bytes(32, '\0');
        bytes[0] = m_version;
        for (std::size_t i = 0; i < 4; ++i) bytes[4 + i] = static_cast<char>(m_count >> (8 * i));
        for (std::size_t i = 0; i < 2; ++i) {
            bytes[8 + i] = static_cast<char>(header >> (8 * i));
            bytes[10 + i] = static_cast<char>(m_width >> (8 * i));
        }
        bytes[29] = m_codePage;
        bytes += m_entries;
        bytes += m_terminator;
        bytes.resize(header, '\0');
        bytes += m_rows;
        if (m_endMark) bytes += '\x1A';
        return bytes;
    }
    void Save(const ScratchFolder &folder, const std::string &name) const { folder.Write(name, Bytes()); }

  private:
    char m_version;
    char m_codePage = 0;
    char m_terminator = 0x0D;
    bool m_endMark = true;
    std::string m_entries;
    std::string m_rows;
    std::size_t m_width = 1;
    std::uint32_t m_count = 0;
};

}  // namespace ktl::test
