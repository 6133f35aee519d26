#pragma once

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/export.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"

/// One connection to a store of tables: statements go out, cells come back as texts. Faults of the store end in the
/// error log under code 2 and in a plain answer; nothing throws, save where a class says so. Used from one thread.
///
///     CAdo_Local_dbf ado;
///     ado.ConnDB(folder);
///     for (auto rows = ado.GetRecordset("Select * From w001", 1, 0); rows && !rows->IsEOF(); rows->MoveNext())
///         names.Add(ado.GetItemValue(rows, "name"));
class KTL_API CAdo : public CObject {
  public:
    /// Not connected.
    CAdo() = default;
    CAdo(const CAdo &) = delete;
    CAdo &operator=(const CAdo &) = delete;
    ~CAdo() override = default;

    /// What a store knows to do; 1 on success. The base class does nothing and succeeds.
    virtual int CreateDB(CString name, CString path);
    virtual int ConnDB(CString path);
    virtual int CreateTable(CString table);
    /// The base class counts nothing: 0.
    virtual int GetRecordCount(CString table);

    /// Sends a statement that gives no rows; 1 on success. An empty one gives 0, one of more than 8192 bytes is logged
    /// (100098) and not sent.
    int ExecuteSql(CString sql);
    /// The rows of a statement of any length, from the first on. Empty when it fails, and, with `nullIfEmpty` 1, when
    /// there are no rows. `clientCursor` other than 0 holds the rows on this side.
    ktl::ado::RecordsetRef GetRecordset(CString sql, int nullIfEmpty, int clientCursor);

    /// The current row's cell as text, blanks at its right end trimmed; empty for a null cell and for a byte block.
    CString GetItemValue(const ktl::ado::RecordsetRef &rows, CString field);
    CString GetItemValue(const ktl::ado::RecordsetRef &rows, int field);

    /// 1 when the statement gives a row.
    int IsExist(CString sql);
    /// 1 when there is a table of that name, whatever its case.
    int IsExistTable(CString table);

    /// Writes a byte block into the first row of a statement, or into a row that is open, which the caller updates.
    /// Nothing for a null pointer or a size of 0. The last argument has no effect.
    void AddBLOBValue(CString sql, CString field, unsigned char *bytes, long size, int flag);
    void AddBLOBValue(const ktl::ado::RecordsetRef &rows, CString field, unsigned char *bytes, long size, int flag);
    /// A byte block of `size` bytes that the caller owns (delete[]). Null when the cell holds none: of a text `size` is
    /// told nevertheless.
    unsigned char *GetBLOBValue(const ktl::ado::RecordsetRef &rows, CString field, long &size);

    /// Closes an open connection.
    void DisConnection();
    /// Empty when not connected.
    const ktl::ado::ConnectionRef &GetConnection() const { return m_connection; }

  protected:
    /// Takes over an open connection.
    void SetConnection(ktl::ado::ConnectionRef connection);

    /// 1 while connected.
    int bConnected = 0;

  private:
    ktl::ado::ConnectionRef m_connection;
};
