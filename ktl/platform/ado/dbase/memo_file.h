#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ktl/platform/ado/dbase/data_file.h"

namespace ktl::ado::dbase {

enum class MemoKind { Fpt, Dbase3, Dbase4 };

/// The memo file beside a table. Blocks are only ever appended, so that a pointer in a finished row always leads to
/// the whole text that it was made for.
class MemoFile {
  public:
    /// Throws Error.
    MemoFile(const std::string &systemPath, MemoKind kind);

    MemoKind GetKind() const { return m_kind; }
    bool IsWritable() const { return m_file.IsWritable(); }
    /// False when the file was removed or replaced.
    bool IsCurrent() const { return m_file.Stat().links > 0; }
    /// To be called before a statement's reads: others may have added to the file.
    void BeginStatement();
    /// The same for a statement that nobody else can have written before.
    void RenewBudget();

    /// The text or bytes of a block into `value`; a block that runs past the end gives what is there, and one outside
    /// the file nothing (false). Throws Error when a statement reads far more than the file holds, which only
    /// damaged pointers do.
    bool Read(std::uint32_t block, std::string &value);
    /// Writes a new block and gives its number.
    std::uint32_t Append(std::string_view value, bool text);
    /// Writes the header's free pointer behind what was appended.
    void FlushHeader();

    /// A new, empty .fpt file whose blocks up to `lostBlock` are never used.
    static void Create(const std::string &systemPath, std::uint32_t lostBlock = 0);

  private:
    bool ReadSized(std::uint64_t offset, std::uint64_t size, std::string &value);
    bool ReadDbase3(std::uint64_t offset, std::string &value);
    void Spend(std::uint64_t bytes);

    DataFile m_file;
    MemoKind m_kind;
    std::uint32_t m_blockSize = 1;
    std::uint64_t m_size = 0;
    std::uint64_t m_budget = 0;
    bool m_headerStale = false;
};

}  // namespace ktl::ado::dbase
