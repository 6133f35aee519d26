#include "ktl/attributes/ado_local.h"

#include "ktl/platform/parse.h"

double CAdo_Local::GetMaxValue(CString table, CString field) {
    CString sql;
    sql.Format("Select Max(%s) From [%s]", field.GetString(), table.GetString());
    return Extreme(sql);
}

double CAdo_Local::GetMinValue(CString table, CString field) {
    CString sql;
    sql.Format("Select Min(%s) From [%s]", field.GetString(), table.GetString());
    return Extreme(sql);
}

double CAdo_Local::Extreme(const CString &sql) {
    const ktl::ado::RecordsetRef rows = GetRecordset(sql, 1, 0);
    if (!rows) return -1.0;
    const double value = ktl::ParseDouble(GetItemValue(rows, 0).View());
    rows->Close();
    return value;
}

int CAdo_Local::GetRecordCount(CString table, CString where) {
    CString sql;
    if (where.IsEmpty()) {
        sql.Format("Select Count(0) From [%s]", table.GetString());
    } else {
        sql.Format("Select Count(0) From [%s] Where %s", table.GetString(), where.GetString());
    }
    const ktl::ado::RecordsetRef rows = GetRecordset(sql, 1, 0);
    if (!rows) return 0;
    const int count = ktl::ParseInt(GetItemValue(rows, 0).View());
    rows->Close();
    return count;
}
