#pragma once

#include <utility>
#include <vector>

#include "ktl/platform/string.h"

namespace ktl::ado {

/// The settings of a connection string: `name=value` pairs with `;` between them. Names are found without regard to
/// case; blanks around names and values are dropped; a value in single or double quotes keeps what it encloses, with
/// the quote doubled for itself. Of repeated names the last counts.
class KTL_API ConnectionString {
  public:
    explicit ConnectionString(const CString &text);

    /// Empty when absent.
    CString Get(const char *name) const;
    bool Has(const char *name) const;
    void Set(const char *name, const CString &value);

  private:
    std::vector<std::pair<CString, CString>> m_settings;
};

}  // namespace ktl::ado
