#pragma once

#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/odbc/handle.h"

namespace ktl::ado::odbc {

/// An open connection of the driver, closed at the end of its life, and what holds for every statement on it.
class Link {
  public:
    /// `connectSeconds` counts where the settings name no `Connect Timeout`. Throws Error: the driver is missing, the
    /// server does not answer, or it refuses the login.
    Link(const ConnectionString &settings, int connectSeconds);
    Link(const Link &) = delete;
    Link &operator=(const Link &) = delete;
    ~Link();

    const Handle &Connection() const { return m_connection; }
    /// How long a statement may take; 0 without a limit.
    int CommandSeconds() const { return m_commandSeconds; }

  private:
    struct Environment : Handle {
        Environment();
    };

    Environment m_environment;
    Handle m_connection;
    int m_commandSeconds;
};

}  // namespace ktl::ado::odbc
