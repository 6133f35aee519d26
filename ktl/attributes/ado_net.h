#pragma once

#include "ktl/attributes/ado.h"

/// A database on a SQL Server.
class KTL_API CAdo_Net : public CAdo {
  public:
    /// Where `Connection` connects to. With `integrated` other than 0 the system's own user counts.
    void InitAdo(CString server, CString user, CString password, CString database, int integrated);

    CString GetServerName() const { return strServerName; }
    CString GetUserNameA() const { return strUserName; }
    CString GetPassword() const { return strPassword; }

    /// Connects anew; 1 on success, a failure is logged. A name that is not empty replaces the database's.
    int Connection(CString database);
    /// 1 when the server has that database. The connection stands on "master" afterwards, which also becomes the
    /// stored name: meant so.
    int IsExistDatabase(CString database);

  protected:
    CString strServerName;
    CString strDatabase;
    CString strUserName;
    CString strPassword;
    int bIntegratedSecurity = 0;

  private:
    CString Settings() const;
};
