#pragma once

#include "ktl/attributes/field.h"
#include "ktl/platform/array.h"
#include "ktl/platform/export.h"
#include "ktl/platform/object.h"

/// The columns of a table, in order and held by value. A field pointer handed out is good until the list changes, and
/// stays the list's. Names compare without case.
class KTL_API CFields : public CObject {
  public:
    ~CFields() override = default;

    /// Appends the columns that every table starts with: ID, ShapeID, name, remark.
    void InitToDefault();
    int GetFieldCount() const { return m_fields.GetSize(); }
    /// Replaces the array's content by a copy of the fields.
    void GetFieldArray(CArray<CField, CField> &fields) const;
    /// Takes over a copy of another list; null leaves this one as it is.
    void Copy(CFields *source);

    /// Appends; 0 when the name exists already. A negative nID becomes the position; nSpare2 becomes 0.
    int AddField(CField field);
    /// 1 when a field has that name. The name "*" never exists, so it can be added more than once.
    int IsExist(CString name) const;

    /// Null, with a log entry, for an index at or past the end; a negative one throws CInvalidArgException.
    CField *GetFieldAt(int index);
    /// The first of that name, or null.
    CField *GetFieldByName(CString name);
    /// The field of that nID; the last field when there is none: meant so. Null only for an empty list.
    CField *GetFieldByID(int id);

    /// Overwrites the first field with the same nID, its name too; nSpare3 becomes 0. 0 when there is none.
    int UpdateField(CField field);
    /// Removes the first field of that name; 0 when there is none. The fields passed on the way keep a lower-case name
    /// from it: meant so.
    int DeleteFieldByName(CString name);
    /// A bad index throws CInvalidArgException.
    void RemoveFieldAt(int index) { m_fields.RemoveAt(index); }
    void RemoveAllFields() { m_fields.RemoveAll(); }

  private:
    CArray<CField, CField> m_fields;
};
