#pragma once

#include <string>
#include <vector>

#include "ktl/platform/date_time.h"
#include "ktl/platform/export.h"
#include "ktl/platform/filesystem.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// Looks for files and folders by name; '*' and '?' in the last part. Matching ignores case, the order is alphabetical,
/// "." and ".." come first in a folder other than the root. A name that GBK cannot express is listed with '?' in the
/// places concerned and does not open by that name.
///
///     CFileFind find;
///     BOOL more = find.FindFile(folder + "\\*.dbf");
///     while (more) {
///         more = find.FindNextFile();
///         Use(find.GetFilePath());
///     }
class KTL_API CFileFind : public CObject {
  public:
    /// FALSE when nothing matches; the last error is then 2, or 3 for a missing folder. Null means "*.*". A path that
    /// ends in a separator finds nothing.
    virtual BOOL FindFile(const char *name = nullptr, DWORD unused = 0);
    /// Goes to the next entry, which is good also when the answer is FALSE: then it is the last.
    virtual BOOL FindNextFile();
    void Close();

    /// Of the entry that `FindNextFile` went to; empty or 0 before the first call.
    virtual CString GetFileName() const;
    virtual CString GetFileTitle() const;
    virtual CString GetFilePath() const;
    /// The folder searched, ending in '\'.
    virtual CString GetRoot() const { return m_root; }
    ULONGLONG GetLength() const;
    BOOL IsDirectory() const;
    /// "." or "..".
    virtual BOOL IsDots() const;
    BOOL IsHidden() const;
    BOOL IsReadOnly() const;
    /// FALSE before the first entry.
    BOOL GetLastWriteTime(CTime &time) const;

  private:
    const std::string *Name() const;
    ktl::FileInfo Info() const;

    CString m_root;
    std::string m_systemRoot;
    std::vector<std::string> m_names;
    /// The entry gone to; -1 before the first.
    int m_index = -1;
};
