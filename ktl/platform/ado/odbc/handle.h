#pragma once

#include "ktl/platform/export.h"

namespace ktl::ado::odbc {

enum class HandleKind : short { Environment = 1, Connection = 2, Statement = 3 };

/// One ODBC handle, freed at the end of its life.
class KTL_API Handle {
  public:
    /// `parent` is null for an environment. Throws Error.
    Handle(HandleKind kind, void *parent);
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle();

    void *Get() const { return m_handle; }
    /// Throws Error with the diagnostics for a return code that tells of a failure; "no data" is none.
    void Check(short returnCode) const;
    /// Throws Error with the handle's diagnostics: their texts without the names of driver and server, and the number
    /// of the first that has one.
    [[noreturn]] void ThrowDiagnostics() const;

  private:
    HandleKind m_kind;
    void *m_handle = nullptr;
};

}  // namespace ktl::ado::odbc
