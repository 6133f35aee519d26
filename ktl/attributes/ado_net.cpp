#include "ktl/attributes/ado_net.h"

#include "ktl/attributes/ado_guard.h"

void CAdo_Net::InitAdo(CString server, CString user, CString password, CString database, int integrated) {
    strServerName = server;
    strUserName = user;
    strPassword = password;
    strDatabase = database;
    bIntegratedSecurity = integrated;
}

CString CAdo_Net::Settings() const {
    CString text;
    if (bIntegratedSecurity != 0) {
        text = "Provider=SQLOLEDB.1;Persist Security Info=False;Integrated Security=SSPI;";
    } else {
        text = "Provider=SQLOLEDB.1;Persist Security Info=True;User ID=" + strUserName + ";Password='" + strPassword +
               "';";
    }
    // "Conect" is spelled so.
    return text + "Conect Lifetime=0;" + "Data Source=" + strServerName + ";Initial Catalog=" + strDatabase;
}

int CAdo_Net::Connection(CString database) {
    DisConnection();
    if (!database.IsEmpty()) strDatabase = database;
    return ktl::GuardStore(CString(), 0, [&] {
        SetConnection(ktl::ado::Connection::Open(Settings()));
        return 1;
    });
}

int CAdo_Net::IsExistDatabase(CString database) {
    if (Connection("master") == 0) return 0;
    CString sql;
    sql.Format("Select [name] From [sysdatabases] Where [name] = '%s'", database.GetString());
    const ktl::ado::RecordsetRef rows = GetRecordset(sql, 1, 0);
    if (rows) rows->Close();
    Connection(CString());
    return rows ? 1 : 0;
}
