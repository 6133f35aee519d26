#pragma once

#include <memory>
#include <vector>

#include "ktl/attributes/search_result.h"
#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/array.h"
#include "ktl/platform/export.h"
#include "ktl/platform/object.h"
#include "ktl/platform/string.h"

class CArchive;
class CField;
class CFields;
class CRecord;

/// The attribute table of a layer: one row for each shape, linked by the column ShapeID. Rows added while editing wait
/// in a buffer until the document is saved, so a row is in one of two places: the argument `isNew` tells which (1: the
/// buffer). A deleted row stays where it is with the ID -1. The base class has the buffer and no store: its virtual
/// operations do nothing and answer 0, null or empty.
class KTL_API CXTable : public CObject {
  public:
    CXTable();
    CXTable(const CXTable &) = delete;
    CXTable &operator=(const CXTable &) = delete;
    ~CXTable() override;

    using CObject::Serialize;

    /// Stored and buffered rows; deleted ones too when `all` is 1.
    virtual int GetRecordCount(int all);
    /// The columns; the table keeps them.
    virtual CFields *GetTableFields();
    /// A shape's row, which the caller owns, or null.
    virtual CRecord *GetShapeProperty(int shapeID, int isNew);
    /// Writes the table into a document, or reads it from there.
    virtual void Serialize(CArchive &archive, int version);
    /// Marks a shape's row as deleted.
    virtual void DeleteRecord(int shapeID, int isNew);
    /// Replaces the array by a column's texts: of every stored row as the file holds them, then of every buffered one.
    virtual void ReadValueArray(CString field, CArray<CString, CString> &values);
    /// The same by a statement; without deleted rows when `all` is 0. With no row in the file the buffered ones are
    /// appended to what the array holds.
    virtual void ReadValueArrayBySql(CString field, CArray<CString, CString> &values, int all);
    /// `DeleteRecord` for each pair of two parallel arrays.
    virtual void DeleteRecords(CArray<int, int> &shapeIDs, CArray<int, int> &isNew);
    /// Sets one value in the rows that two parallel arrays name.
    virtual void UpdatePropertyValue(CArray<int, int> &shapeIDs, CArray<int, int> &isNew, CString field, CString value);
    /// Sets one value in every stored row, whatever the number: meant so.
    virtual void UpdatePropertyValue(int number, CString field, CString value);
    /// Appends the rows whose cell at `field` holds the keywords; at most 200 hits are in the array in the end.
    virtual void SearchByKeyWords(int layerIndex, CString layerName, int field, CString keyWords,
                                  CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> &results);
    /// The rows of a statement; empty when it fails or there are none.
    virtual ktl::ado::RecordsetRef GetRecordset(CString sql);
    /// The current row's cell as text.
    virtual CString GetItemValue(const ktl::ado::RecordsetRef &rows, CString field);
    /// Changes of the columns; the field's nID says which one an update is for. `DeleteField` answers 1 when it could
    /// try.
    virtual void AddField(CField field);
    virtual int DeleteField(CField field);
    virtual void UpdateField(CField field);

    /// 0 no store, 1 dBASE, 2 Access, 3 server: the number that stands in a document.
    int GetTableKind() const { return nTableKind; }
    /// Also the base name of the table's file.
    CString GetTableName() const { return strTableName; }

    /// Appends a finished row to the buffer; takes ownership.
    void AddNewRecord(CRecord *record);
    /// Appends a row of default values: the shape's number as ID and ShapeID, "0" for numbers, else empty.
    void AddNewRecord(int shapeID);
    /// Deletes a row of the buffer; a bad position throws CInvalidArgException.
    void RemoveNewRecordAt(int index);
    /// Deleted rows count.
    int GetNewRecordCount() const { return arrNewRecords.GetSize(); }
    /// A row of the buffer, which keeps it; a bad position throws CInvalidArgException.
    const CRecord *GetNewRecordAt(int index) const { return arrNewRecords.GetAt(index); }
    /// Sets a value of a buffered row. A shape without one acts on the last row: meant so.
    void UpdateNewRecordPropertyValue(int shapeID, int fieldID, CString value);

    /// 0, and an entry in the log, while the columns are not known.
    int GetFieldCount() const;
    /// A field of the list, good until the list changes, or null.
    CField *GetFieldAt(int index);
    CField *GetFieldByName(CString name);
    /// 1 when there is a column of that name.
    int IsValidFieldName(CString name) const;

  protected:
    /// Marks a buffered row as deleted; it stays in the buffer. A shape without one acts on the last row: meant so.
    void DeleteNewRecord(int shapeID);
    /// A copy of a buffered row, which the caller owns, or null.
    CRecord *GetNewShapeProperty(int shapeID);
    /// Puts other columns in the place of the old ones. Pointers to those stay good as long as the table.
    void ReplaceFields(std::unique_ptr<CFields> fields);
    /// Empties the buffer. The rows stay the table's, and pointers to them good.
    void ForgetNewRecords();

    /// Null until it is asked for or built.
    std::unique_ptr<CFields> pFields;
    /// The rows that wait to be stored; the table owns them.
    CArray<CRecord *, CRecord *> arrNewRecords;
    CString strTableName;
    int nTableKind = 0;

  private:
    CRecord *LastLookedAt(int shapeID);

    std::vector<std::unique_ptr<CFields>> m_formerFields;
    std::vector<std::unique_ptr<CRecord>> m_storedRecords;
};
