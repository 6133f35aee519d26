// Making a dBASE table and changing its columns.

#include <array>

#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/dbf_head.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/core/log.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/progress_ctrl.h"

namespace {

/// Progress is told every so many rows, and at the last one.
constexpr int kProgressStep = 50;

CString DefinitionList(CFields &fields) {
    CString list;
    for (int i = 0; i < fields.GetFieldCount(); ++i) {
        list += fields.GetFieldAt(i)->GetSQLString() + ",";
    }
    return list.Left(list.GetLength() - 1);
}

void TellProgress(const CString &label, int done, int count, CProgressCtrl &progress, CWnd *window) {
    const int percent = static_cast<int>(static_cast<LONGLONG>(done) * 100 / count);
    progress.SetPos(percent);
    if (window == nullptr) return;
    CString text;
    text.Format(ktl::FromUtf8("[%s]属性导入进度 %d / %d = %d%%"), label.GetString(), done, count, percent);
    window->SetWindowText(text);
}

/// The row's number as ID and as ShapeID, which stand side by side.
void WriteNumber(CFile &file, const ktl::DbfHead &head, int row) {
    static_assert(ktl::kShapeIdOffset == ktl::kIdOffset + 4);
    std::array<BYTE, 8> bytes{};
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[i] = bytes[i + 4] = static_cast<BYTE>(static_cast<unsigned>(row) >> (8 * i) & 0xFF);
    }
    file.Seek(head.PositionOf(row, ktl::kIdOffset), CFile::begin);
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

}  // namespace

int CTable_Local_dbf::CreateNewLayerTable(CFields *fields) {
    if (!pAdo) return 0;
    auto columns = std::make_unique<CFields>();
    if (fields != nullptr) {
        columns->Copy(fields);
    } else {
        columns->InitToDefault();
    }
    ReplaceFields(std::move(columns));
    if (!ktl::RemoveIfThere(PathOf(strTableName))) return 0;
    CString sql;
    sql.Format("Create Table %s (%s)", strTableName.GetString(), DefinitionList(*pFields).GetString());
    return Execute(sql);
}

int CTable_Local_dbf::GetAllFieldName(CString table, CString &definitions, CString &names, int skipSystem) {
    std::unique_ptr<CFields> fromFile;
    if (!pFields && pAdo) fromFile.reset(pAdo->GetTableFields(table));
    CFields *fields = pFields ? pFields.get() : fromFile.get();
    if (fields == nullptr) return 0;
    for (int i = 0; i < fields->GetFieldCount(); ++i) {
        const CField &field = *fields->GetFieldAt(i);
        if (skipSystem == 1 && field.bSystem == 1) continue;
        definitions += field.GetSQLString() + ",";
        names += field.strName + ",";
    }
    definitions.Trim(',');
    names.Trim(',');
    return 1;
}

/// `sql` is the statement that was sent last. Without columns to copy, only the last of the rows is inserted, and for
/// no rows the last statement is sent again, which fails: meant so.
int CTable_Local_dbf::CopyForeignRows(const CString &table, const CString &source, const CString &names, CString sql) {
    if (!names.IsEmpty()) {
        sql.Format("Insert Into %s(%s) Select %s From %s", table.GetString(), names.GetString(), names.GetString(),
                   source.GetString());
        return Execute(sql);
    }
    const int count = static_cast<CAdo_Local &>(*pAdo).GetRecordCount(source, CString());
    for (int i = 0; i < count; ++i) sql.Format("Insert Into %s (ShapeID) Values (%d)", table.GetString(), i);
    return Execute(sql);
}

int CTable_Local_dbf::CreateDBFTable(CString label, CString table, CProgressCtrl *progress, CWnd *window) {
    if (!pAdo) return 0;
    const CString source = table + "b";
    CString definitions;
    CString names;
    GetAllFieldName(source, definitions, names, 1);
    CString sql;
    if (definitions.IsEmpty()) {
        sql.Format("Create Table %s ([ID] int,[ShapeID] int)", table.GetString());
        names.Empty();
    } else {
        sql.Format("Create Table %s ([ID] int,[ShapeID] int,%s)", table.GetString(), definitions.GetString());
    }
    if (Execute(sql) == 0) return 0;
    if (CopyForeignRows(table, source, names, sql) == 0) return 0;
    sql.Format("Update %s Set ID=0,ShapeID=0", table.GetString());
    if (Execute(sql) == 0) return 0;
    return ModifyIDValue(label, PathOf(table), progress, window);
}

int CTable_Local_dbf::ModifyIDValue(CString label, CString path, CProgressCtrl *progress, CWnd *window) {
    CFile file;
    if (!file.Open(path, CFile::modeReadWrite | CFile::typeBinary | CFile::shareDenyNone)) return 0;
    try {
        const ktl::DbfHead head = ktl::ReadDbfHead(file);
        const int count = head.RecordsIn(file);
        if (progress != nullptr) {
            progress->SetRange(0, 100);
            progress->SetPos(0);
        }
        for (int i = 0; i < count; ++i) {
            const int done = i + 1;
            if (progress != nullptr && (done % kProgressStep == 0 || done == count)) {
                TellProgress(label, done, count, *progress, window);
            }
            WriteNumber(file, head, i);
        }
        return 1;
    } catch (CException &exception) {
        KtlShowException(&exception);
        return 0;
    }
}

/// The store must hold the table open nowhere before its columns change.
int CTable_Local_dbf::CloseWorkArea() {
    CString sql;
    sql.Format("USE IN SELECT ('%s')", strTableName.GetString());
    return Execute(sql);
}

void CTable_Local_dbf::AddField(CField field) {
    constexpr int kErrorCode = 100070;
    try {
        if (CloseWorkArea() == 0) return;
        CString sql;
        sql.Format("USE %s EXCLUSIVE", strTableName.GetString());
        if (Execute(sql) == 0) return;
        sql.Format("Alter Table %s Add %s", strTableName.GetString(), field.GetSQLString().GetString());
        if (Execute(sql) != 1) return;
        if (!pFields) throw CInvalidArgException();
        pFields->AddField(field);
        for (CRecord *record : arrNewRecords) record->AddValue(CString());
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

int CTable_Local_dbf::DeleteField(CField field) {
    constexpr int kErrorCode = 100069;
    try {
        if (CloseWorkArea() == 0) return 0;
        if (!pFields) throw CInvalidArgException();
        if (pFields->DeleteFieldByName(field.strName) == 0) return 1;
        CString sql;
        sql.Format("ALTER TABLE [%s] DROP COLUMN [%s]", strTableName.GetString(), field.strName.GetString());
        if (Execute(sql) != 1) return 1;
        // The field itself is gone already: this finds another one only when identifiers repeat.
        for (int i = 0; i < pFields->GetFieldCount(); ++i) {
            if (pFields->GetFieldAt(i)->nID != field.nID) continue;
            pFields->RemoveFieldAt(i);
            for (CRecord *record : arrNewRecords) record->RemoveValueAt(i);
            break;
        }
        return 1;
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
        return 0;
    }
}

void CTable_Local_dbf::UpdateField(CField field) {
    CFields *fields = GetTableFields();
    const CField *found = fields != nullptr ? fields->GetFieldByID(field.nID) : nullptr;
    if (found == nullptr) return;
    const CField old = *found;
    if (CloseWorkArea() == 0) return;
    CString sql;
    if (old.strName != field.strName) {
        sql.Format("Alter Table %s Rename %s to %s", strTableName.GetString(), old.strName.GetString(),
                   field.strName.GetString());
        Execute(sql);
    }
    if (old.eType != field.eType || old.nLength != field.nLength || old.nDecimal != field.nDecimal) {
        sql.Format("ALTER TABLE [%s] ALTER COLUMN %s", strTableName.GetString(), field.GetSQLString().GetString());
        Execute(sql);
    }
    fields->UpdateField(field);
}
