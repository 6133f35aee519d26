#pragma once

#include <string>

#include "ktl/platform/string.h"

namespace ktl::host {

/// True when nothing of a UTF-8 text is lost on its way into GBK.
bool IsGbk(const std::string &utf8);

/// A name in GBK for a file or folder that is there, whatever its own name is: for the time of this object.
class GbkPath {
  public:
    /// UTF-8. Throws `Error` for one that can't be opened.
    explicit GbkPath(const std::string &path);
    GbkPath(const GbkPath &) = delete;
    GbkPath &operator=(const GbkPath &) = delete;
    ~GbkPath();

    const CString &Name() const { return m_name; }

  private:
    CString m_name;
    int m_file = -1;
};

}  // namespace ktl::host
