#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ktl::ado::dbase {

/// The encoding of a table's texts. GBK, the system's own, is passed through as it is; so is an unknown one.
class CodePage {
  public:
    /// GBK.
    CodePage();
    ~CodePage();
    CodePage(CodePage &&) noexcept;
    CodePage &operator=(CodePage &&) noexcept;

    /// For the mark in a table's header; 0x57 ("ANSI") and unknown ones are GBK.
    static CodePage FromMark(std::uint8_t mark);
    /// For the text of a .cpg file, as "UTF-8", "936", "ANSI 1252" or "ISO 88591".
    static CodePage FromName(std::string_view name);

    bool IsGbk() const { return !m_converters; }
    /// Never fails: what GBK lacks becomes a plain form or '?'.
    std::string ToGbk(std::string_view text) const;
    /// Never fails: what the code page lacks becomes '?'. At most `size` bytes, cut between characters.
    std::string FromGbk(std::string_view gbk, std::size_t size) const;

  private:
    class Converters;
    static CodePage FromSystemName(const std::string &name);

    std::unique_ptr<Converters> m_converters;
};

}  // namespace ktl::ado::dbase
