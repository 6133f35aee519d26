#pragma once

#include <memory>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/odbc/link.h"
#include "ktl/platform/export.h"

namespace ktl::ado::odbc {

/// A connection to a server through its ODBC driver. Statements go to the server as they are, from GBK to UTF-8; a
/// recordset is read to its end when it is opened, so that several may be open and none holds the connection. Its rows
/// can be written while the connection is open.
class KTL_API Server final : public Connection {
  public:
    /// Throws Error: the driver is missing, the server does not answer, or it refuses the login.
    explicit Server(const ConnectionString &settings);

    long long Execute(const CString &statement) override;
    RecordsetRef OpenRecordset(const CString &statement, bool clientCursor) override;
    RecordsetRef OpenSchema(int schema) override;
    void Close() override;
    bool IsOpen() const override { return m_link != nullptr; }

  private:
    const Link &RequireOpen() const;

    std::shared_ptr<Link> m_link;
};

}  // namespace ktl::ado::odbc
