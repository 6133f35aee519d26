#pragma once

#include "ktl/platform/ado/dbase/code_page.h"
#include "ktl/platform/ado/dbase/header.h"
#include "ktl/platform/ado/dbase/memo_file.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::dbase {

/// Who can get at the memo file of a table when a cell needs it.
class MemoSource {
  public:
    virtual ~MemoSource() = default;
    /// Null when there is no memo file.
    virtual MemoFile *FindMemo() = 0;
    /// For writing: a source may make a file that is missing.
    virtual MemoFile *NeedMemo() { return FindMemo(); }
};

/// Reads and writes whole cells of records in memory: text through the table's code page, memos through their file.
/// Borrows what it is made with.
class RecordCodec {
  public:
    RecordCodec(const Header &header, const CodePage &codePage, MemoSource &memos)
        : m_header(header), m_codePage(codePage), m_memos(memos) {}

    /// Texts come without padding; a memo that cannot be found reads as null.
    void Read(const Field &field, const char *record, Value &value) const;
    /// The value is null or of the field's class. Text that is too long is cut between characters. Memo text goes to
    /// its file at once. Throws Error: a null that is not allowed, a number that does not fit (with `lossy` it becomes
    /// asterisks).
    void Write(const Field &field, const Value &value, bool lossy, char *record) const;

  private:
    void ReadMemo(const Field &field, const char *record, Value &value) const;
    void WriteMemo(const Field &field, const Value &value, char *record) const;

    const Header &m_header;
    const CodePage &m_codePage;
    MemoSource &m_memos;
};

}  // namespace ktl::ado::dbase
