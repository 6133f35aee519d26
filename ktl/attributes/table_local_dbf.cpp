#include "ktl/attributes/table_local_dbf.h"

#include "ktl/attributes/ado_guard.h"
#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/column_kind.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_text.h"
#include "ktl/core/log.h"
#include "ktl/core/text.h"
#include "ktl/platform/parse.h"

namespace {

/// Sets a memo of more than `ktl::kMemoBytes`: a statement for each piece, of which each takes the place of the one
/// before. The piece stands without quotes. Both are meant so; the memo is not stored.
CString LongMemoStatement(const CString &table, const CString &field, const CString &value, int shapeID) {
    CArray<CString, CString> pieces;
    KtlSplitString(value, ktl::kMemoBytes, pieces);
    CString sql;
    for (int i = 0; i < pieces.GetSize(); ++i) {
        const char *format =
            i == 0 ? "Replace %s With %s While ShapeID=%d In %s" : "Replace %s With %s Additive While ShapeID=%d In %s";
        sql.Format(format, field.GetString(), ktl::BreakLiteral(pieces[i]).GetString(), shapeID, table.GetString());
    }
    return sql;
}

CString TextStatement(const CString &table, const CString &field, const CString &literal, int shapeID) {
    CString sql;
    sql.Format("Update %s Set %s='%s' Where ShapeID=%d", table.GetString(), field.GetString(), literal.GetString(),
               shapeID);
    return sql;
}

CString NumberStatement(const CString &table, const CField &field, const CString &value, int shapeID) {
    CString sql;
    if (field.nDecimal > 0) {
        sql.Format("Update %s Set %s=%f Where ShapeID=%d", table.GetString(), field.strName.GetString(),
                   ktl::ParseDouble(value.View()), shapeID);
    } else {
        sql.Format("Update %s Set %s=%d Where ShapeID=%d", table.GetString(), field.strName.GetString(),
                   ktl::ParseInt(value.View()), shapeID);
    }
    return sql;
}

/// Sets one value of a stored row; empty for a type whose values are not set.
CString UpdateStatement(const CString &table, const CField &field, const CString &value, int shapeID) {
    if (field.eType == DATA_CHAR) return TextStatement(table, field.strName, value, shapeID);
    if (ktl::IsNumberType(field.eType)) return NumberStatement(table, field, value, shapeID);
    if (field.eType != DATA_MEMO) return {};
    if (value.GetLength() > ktl::kMemoBytes) return LongMemoStatement(table, field.strName, value, shapeID);
    return TextStatement(table, field.strName, ktl::MemoLiteral(value), shapeID);
}

}  // namespace

CTable_Local_dbf::CTable_Local_dbf() {
    nTableKind = 1;
}

CTable_Local_dbf::CTable_Local_dbf(CString folder, CString table) : CTable_Local_dbf() {
    strTableName = table;
    pAdo = std::make_unique<CAdo_Local_dbf>();
    ktl::GuardStore(folder, 0, [&] { return pAdo->ConnDB(folder); });
}

CTable_Local_dbf::~CTable_Local_dbf() = default;

int CTable_Local_dbf::Execute(const CString &sql) {
    return pAdo ? pAdo->ExecuteSql(sql) : 0;
}

/// For as long as what is returned lives, the table is locked once and not anew for each statement, which then costs
/// less than half.
std::shared_ptr<void> CTable_Local_dbf::Hold(const CString &table) const {
    const ktl::ado::ConnectionRef connection = pAdo ? pAdo->GetConnection() : nullptr;
    return connection ? connection->HoldTable(table) : nullptr;
}

CString CTable_Local_dbf::PathOf(const CString &table) const {
    CString path;
    if (pAdo) path.Format("%s\\%s.dbf", pAdo->GetDBPath().GetString(), table.GetString());
    return path;
}

int CTable_Local_dbf::GetRecordCount(int all) {
    if (all == 1) {
        return (pAdo ? static_cast<CAdo_Local &>(*pAdo).GetRecordCount(strTableName, CString()) : 0) +
               GetNewRecordCount();
    }
    int count = pAdo ? static_cast<CAdo_Local &>(*pAdo).GetRecordCount(strTableName, "ID<>-1") : 0;
    for (const CRecord *record : arrNewRecords) count += record->bDeleted == 0 ? 1 : 0;
    return count;
}

CFields *CTable_Local_dbf::GetTableFields() {
    if (!pFields && pAdo) pFields.reset(pAdo->GetTableFields(strTableName));
    return pFields.get();
}

CRecord *CTable_Local_dbf::GetShapeProperty(int shapeID, int isNew) {
    if (isNew != 0) return GetNewShapeProperty(shapeID);
    CString sql;
    sql.Format("Select * From %s Where ShapeID=%d", strTableName.GetString(), shapeID);
    const ktl::ado::RecordsetRef rows = pAdo ? pAdo->GetRecordset(sql, 1, 0) : nullptr;
    if (!rows) return nullptr;
    auto record = std::make_unique<CRecord>(shapeID);
    for (int i = 0; i < rows->GetColumnCount(); ++i) record->AddValue(pAdo->GetItemValue(rows, i));
    rows->Close();
    return record.release();
}

void CTable_Local_dbf::DeleteRecord(int shapeID, int isNew) {
    if (isNew != 0) {
        DeleteNewRecord(shapeID);
        return;
    }
    CString sql;
    sql.Format("Update %s Set ID = -1 Where ShapeID = %d", strTableName.GetString(), shapeID);
    Execute(sql);
}

void CTable_Local_dbf::DeleteRecords(CArray<int, int> &shapeIDs, CArray<int, int> &isNew) {
    const std::shared_ptr<void> hold = shapeIDs.GetSize() > 1 ? Hold(strTableName) : nullptr;
    for (int i = 0; i < shapeIDs.GetSize(); ++i) DeleteRecord(shapeIDs[i], isNew[i]);
}

void CTable_Local_dbf::UpdatePropertyValue(CArray<int, int> &shapeIDs, CArray<int, int> &isNew, CString field,
                                           CString value) {
    constexpr int kErrorCode = 100074;
    try {
        CFields *fields = GetTableFields();
        const CField *column = fields != nullptr ? fields->GetFieldByName(field) : nullptr;
        if (column == nullptr) throw CInvalidArgException();
        if (column->eType == DATA_CHAR) value = ktl::CutToLiteral(value);
        const std::shared_ptr<void> hold = shapeIDs.GetSize() > 1 ? Hold(strTableName) : nullptr;
        for (int i = 0; i < shapeIDs.GetSize(); ++i) {
            if (isNew[i] == 1) {
                UpdateNewRecordPropertyValue(shapeIDs[i], column->nID, value);
                continue;
            }
            Execute(UpdateStatement(strTableName, *column, value, shapeIDs[i]));
        }
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

void CTable_Local_dbf::UpdatePropertyValue(int, CString field, CString value) {
    CString sql;
    sql.Format("Update [%s] Set [%s]='%s'", strTableName.GetString(), field.GetString(), value.GetString());
    Execute(sql);
}

ktl::ado::RecordsetRef CTable_Local_dbf::GetRecordset(CString sql) {
    return pAdo ? pAdo->GetRecordset(sql, 1, 0) : nullptr;
}

CString CTable_Local_dbf::GetItemValue(const ktl::ado::RecordsetRef &rows, CString field) {
    return pAdo ? pAdo->GetItemValue(rows, field) : CString();
}
