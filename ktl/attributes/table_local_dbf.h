#pragma once

#include <memory>

#include "ktl/attributes/table_local.h"

class CAdo_Local_dbf;
class CFile;
class CProgressCtrl;
class CWnd;

/// A dBASE table in a folder, reached by statements and at some points as a file. A document carries a compacted copy
/// of the file and of its memo file; the live file keeps its deleted rows.
///
///     CTable_Local_dbf table(KtlGetTempDBFolderPath(), "w001");
///     if (table.CreateNewLayerTable(nullptr)) table.AddNewRecord(shapeID);
class KTL_API CTable_Local_dbf : public CTable_Local {
  public:
    /// Without a folder: for reading from a document.
    CTable_Local_dbf();
    /// A folder that cannot be opened is logged, and the table is then without its store.
    CTable_Local_dbf(CString folder, CString table);
    ~CTable_Local_dbf() override;

    using CXTable::Serialize;

    int GetRecordCount(int all) override;
    CFields *GetTableFields() override;
    CRecord *GetShapeProperty(int shapeID, int isNew) override;
    /// The table's name, the .dbf file and, from version 205 on, the memo file. Storing moves the buffer into the live
    /// file first; when the copy cannot be made, the stream gets nothing. Loading writes the files into the folder of
    /// temporary tables, over older ones; a stream that ends early, or whose table is to lie elsewhere, throws
    /// CArchiveException.
    void Serialize(CArchive &archive, int version) override;
    void DeleteRecord(int shapeID, int isNew) override;
    /// The bytes of a column without its last one, as text; rows that are deleted count.
    void ReadValueArray(CString field, CArray<CString, CString> &values) override;
    void ReadValueArrayBySql(CString field, CArray<CString, CString> &values, int all) override;
    void DeleteRecords(CArray<int, int> &shapeIDs, CArray<int, int> &isNew) override;
    /// A text is cut to 254 bytes, not through a character; a memo of more than 8000 bytes is not stored whole.
    void UpdatePropertyValue(CArray<int, int> &shapeIDs, CArray<int, int> &isNew, CString field,
                             CString value) override;
    void UpdatePropertyValue(int number, CString field, CString value) override;
    void SearchByKeyWords(int layerIndex, CString layerName, int field, CString keyWords,
                          CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> &results) override;
    ktl::ado::RecordsetRef GetRecordset(CString sql) override;
    CString GetItemValue(const ktl::ado::RecordsetRef &rows, CString field) override;
    /// The buffered rows get an empty value at their end when the column was added.
    void AddField(CField field) override;
    /// 1 unless the table is in use or an exception was logged. The list loses the field whatever the store does; the
    /// buffered rows keep their value unless identifiers repeat: meant so.
    int DeleteField(CField field) override;
    /// The list takes over the field whatever the store does.
    void UpdateField(CField field) override;

    /// Makes the table with a copy of these columns, or with the default ones for null, in the place of an older file;
    /// 1 when it exists.
    int CreateNewLayerTable(CFields *fields);
    /// Makes `table` of the table that stands in the folder with "b" behind its name: ID and ShapeID in front, its own
    /// columns behind them, every row numbered. The label is for the progress text; the control and the window may be
    /// null, and without a control nothing is told. 1 or 0.
    int CreateDBFTable(CString label, CString table, CProgressCtrl *progress, CWnd *window);

  protected:
    /// Null until the table has a folder.
    std::unique_ptr<CAdo_Local_dbf> pAdo;

  private:
    int Execute(const CString &sql);
    std::shared_ptr<void> Hold(const CString &table) const;
    CString PathOf(const CString &table) const;
    int CloseWorkArea();

    int ReadColumn(const CString &field, CArray<CString, CString> &values);
    int GetFieldOffsetAndLen(CString field, int &offset, int &length);
    bool SearchNewRecords(const STRUCT_SEARCH_RESULT &hit, int field, const CString &keyWords,
                          CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> &results);

    void SaveNewRecord(CString table);
    void InsertRecord(const CString &table, const CString &head, const CRecord &record);
    void SaveMemos(const CRecord &record);
    void Store(CArchive &archive, int version);
    void Load(CArchive &archive, int version);
    int MakeCompactTable(const CString &compact);

    int GetAllFieldName(CString table, CString &definitions, CString &names, int skipSystem);
    int CopyForeignRows(const CString &table, const CString &source, const CString &names, CString sql);
    int ModifyIDValue(CString label, CString path, CProgressCtrl *progress, CWnd *window);
};
