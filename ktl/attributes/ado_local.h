#pragma once

#include "ktl/attributes/ado.h"

/// A connection to a store in the file system.
class KTL_API CAdo_Local : public CAdo {
  public:
    using CAdo::GetRecordCount;

    /// The path given to `ConnDB`, as it stands: a folder of dBASE tables, or an Access file.
    CString GetDBPath() const { return strDBPath; }
    /// The greatest and the least number in a column; 0 when there is none, -1 when the table cannot be asked.
    double GetMaxValue(CString table, CString field);
    double GetMinValue(CString table, CString field);
    /// The rows that meet a condition, or all for an empty one; 0 when the table cannot be asked.
    int GetRecordCount(CString table, CString where);

  protected:
    /// A folder or a file.
    CString strDBPath;

  private:
    double Extreme(const CString &sql);
};
