#pragma once

#include "ktl/platform/array.h"
#include "ktl/platform/export.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// One row: a text for each column, whatever its type.
class KTL_API CRecord : public CObject {
  public:
    explicit CRecord(int shapeID) : nShapeID(shapeID) {}
    ~CRecord() override = default;

    /// Behind the others.
    void AddValue(CString value) { arrValues.Add(value); }
    /// New values are empty.
    void SetValueCount(int count) { arrValues.SetSize(count); }
    int GetValueCount() const { return arrValues.GetSize(); }
    /// Empty, with a log entry, for a position out of range.
    CString GetValueAt(int index) const;
    /// A position out of range is ignored in silence.
    void SetValueAt(int index, CString value);
    /// A position out of range throws CInvalidArgException.
    void RemoveValueAt(int index) { arrValues.RemoveAt(index); }
    void RemoveAllValues() { arrValues.RemoveAll(); }

    /// The caller owns the copy.
    CRecord *Clone() const;
    /// Takes over everything; a null source is logged and leaves the record as it was.
    void Copy(CRecord *source);
    /// Takes over `values`; the shape and the mark stay.
    void CopyValueArray(CArray<CString, CString> &values);

    CArray<CString, CString> arrValues;
    /// The shape that the row belongs to.
    int nShapeID;
    /// 1 when it was deleted while it still waited to be stored.
    BYTE bDeleted = 0;
};
