#include "ktl/attributes/xtable.h"

#include "ktl/attributes/column_kind.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/core/log.h"

namespace {

/// The columns of a default row that are set from the shape: ID and ShapeID.
constexpr int kSystemColumns = 2;

}  // namespace

CXTable::CXTable() = default;

CXTable::~CXTable() {
    for (CRecord *record : arrNewRecords) delete record;
}

int CXTable::GetRecordCount(int) {
    return 0;
}

CFields *CXTable::GetTableFields() {
    return nullptr;
}

CRecord *CXTable::GetShapeProperty(int, int) {
    return nullptr;
}

void CXTable::Serialize(CArchive &, int) {}

void CXTable::DeleteRecord(int, int) {}

void CXTable::ReadValueArray(CString, CArray<CString, CString> &) {}

void CXTable::ReadValueArrayBySql(CString, CArray<CString, CString> &, int) {}

void CXTable::DeleteRecords(CArray<int, int> &, CArray<int, int> &) {}

void CXTable::UpdatePropertyValue(CArray<int, int> &, CArray<int, int> &, CString, CString) {}

void CXTable::UpdatePropertyValue(int, CString, CString) {}

void CXTable::SearchByKeyWords(int, CString, int, CString, CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> &) {}

ktl::ado::RecordsetRef CXTable::GetRecordset(CString) {
    return {};
}

CString CXTable::GetItemValue(const ktl::ado::RecordsetRef &, CString) {
    return {};
}

void CXTable::AddField(CField) {}

int CXTable::DeleteField(CField) {
    return 0;
}

void CXTable::UpdateField(CField) {}

void CXTable::AddNewRecord(CRecord *record) {
    if (record != nullptr) arrNewRecords.Add(record);
}

void CXTable::AddNewRecord(int shapeID) {
    auto record = std::make_unique<CRecord>(shapeID);
    const int count = GetFieldCount();
    record->SetValueCount(count);
    CString number;
    number.Format("%d", shapeID);
    for (int i = 0; i < count; ++i) {
        if (i < kSystemColumns) {
            record->SetValueAt(i, number);
        } else if (ktl::IsNumberType(pFields->GetFieldAt(i)->eType)) {
            record->SetValueAt(i, "0");
        }
    }
    arrNewRecords.Add(record.get());
    record.release();
}

void CXTable::RemoveNewRecordAt(int index) {
    const std::unique_ptr<CRecord> record(arrNewRecords.GetAt(index));
    arrNewRecords.RemoveAt(index);
}

CRecord *CXTable::LastLookedAt(int shapeID) {
    CRecord *last = nullptr;
    for (CRecord *record : arrNewRecords) {
        last = record;
        if (record->nShapeID == shapeID) break;
    }
    return last;
}

void CXTable::UpdateNewRecordPropertyValue(int shapeID, int fieldID, CString value) {
    if (CRecord *record = LastLookedAt(shapeID)) record->SetValueAt(fieldID, value);
}

void CXTable::DeleteNewRecord(int shapeID) {
    CRecord *record = LastLookedAt(shapeID);
    if (record == nullptr) return;
    record->SetValueAt(0, "-1");
    record->bDeleted = 1;
}

CRecord *CXTable::GetNewShapeProperty(int shapeID) {
    for (const CRecord *record : arrNewRecords) {
        if (record->nShapeID == shapeID) return record->Clone();
    }
    return nullptr;
}

int CXTable::GetFieldCount() const {
    constexpr int kErrorCode = 100072;
    if (pFields) return pFields->GetFieldCount();
    KtlCatchError(kErrorCode, 1);
    return 0;
}

CField *CXTable::GetFieldAt(int index) {
    return pFields ? pFields->GetFieldAt(index) : nullptr;
}

CField *CXTable::GetFieldByName(CString name) {
    return pFields ? pFields->GetFieldByName(name) : nullptr;
}

int CXTable::IsValidFieldName(CString name) const {
    constexpr int kErrorCode = 100073;
    if (pFields) return pFields->GetFieldByName(name) != nullptr ? 1 : 0;
    KtlCatchError(kErrorCode, 1);
    return 0;
}

void CXTable::ReplaceFields(std::unique_ptr<CFields> fields) {
    if (pFields) m_formerFields.push_back(std::move(pFields));
    pFields = std::move(fields);
}

void CXTable::ForgetNewRecords() {
    for (CRecord *record : arrNewRecords) m_storedRecords.emplace_back(record);
    arrNewRecords.RemoveAll();
}
