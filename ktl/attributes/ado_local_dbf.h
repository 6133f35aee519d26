#pragma once

#include "ktl/attributes/ado_local.h"

class CFields;

/// A folder of dBASE tables.
class KTL_API CAdo_Local_dbf : public CAdo_Local {
  public:
    /// Connects to a folder; 1, or 0 when there is no such kind of store. Throws ktl::ado::Error when the folder cannot
    /// be opened; the path is kept all the same.
    int ConnDB(CString folder) override;
    /// Makes a table with the columns ID and ShapeID.
    int CreateTable(CString table) override;

    /// A new list of the table's columns, read from the head of its file: the caller owns it. It is empty when the file
    /// cannot be opened for reading and writing. Decimals are not read.
    CFields *GetTableFields(CString table);

  private:
    void ReadFieldInfo(CFields *fields, CString table);
};
