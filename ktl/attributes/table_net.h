#pragma once

#include "ktl/attributes/xtable.h"

class CAdo_Net;

/// A table on a SQL Server: reads its columns and writes buffered rows. It exists only while the program runs.
class KTL_API CTable_Net : public CXTable {
  public:
    CTable_Net();
    ~CTable_Net() override;

    /// Takes the connection (borrowed) and the table's name, and reads the columns.
    void InitTable(CAdo_Net *ado, CString table);
    /// Reads the columns from the server anew, of the database "map".
    CFields *GetTableFields() override;
    /// Sends every buffered row, whether the server takes it or not, and empties the buffer. Values go in quotes, as
    /// they stand. The list of columns holds the system's, the list of values doesn't: meant so.
    void UpdatePropertyToDB();

  protected:
    CAdo_Net *pAdo = nullptr;
};
