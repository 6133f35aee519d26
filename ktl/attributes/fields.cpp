#include "ktl/attributes/fields.h"

#include <algorithm>

#include "ktl/core/log.h"
#include "ktl/platform/encoding.h"

namespace {

struct DefaultField {
    const char *name;
    int length;
    ENUM_DATA type;
    BYTE isSystem;
};

/// The row's live mark and its shape come first in every table; the system keeps both.
constexpr DefaultField kDefaultFields[] = {
    {"ID", 8, DATA_INT, 1},
    {"ShapeID", 8, DATA_INT, 1},
    {"name", 254, DATA_CHAR, 0},
    {"remark", -1, DATA_MEMO, 0},
};

}  // namespace

void CFields::InitToDefault() {
    CField field;
    int id = 0;
    for (const DefaultField &column : kDefaultFields) {
        field.nID = id++;
        field.strName = column.name;
        field.nLength = column.length;
        field.nDecimal = 0;
        field.eType = column.type;
        field.bReadOnly = column.isSystem;
        field.bSystem = column.isSystem;
        AddField(field);
    }
}

void CFields::GetFieldArray(CArray<CField, CField> &fields) const {
    if (&fields != &m_fields) fields.Copy(m_fields);
}

void CFields::Copy(CFields *source) {
    if (source != nullptr && source != this) m_fields.Copy(source->m_fields);
}

int CFields::AddField(CField field) {
    if (IsExist(field.strName)) return 0;
    if (field.nID < 0) field.nID = GetFieldCount();
    field.nSpare2 = 0;
    m_fields.Add(field);
    return 1;
}

int CFields::IsExist(CString name) const {
    if (name == "*") return 0;
    name.MakeLower();
    return std::any_of(m_fields.begin(), m_fields.end(),
                       [&](const CField &field) { return CString(field.strName).MakeLower() == name; });
}

CField *CFields::GetFieldAt(int index) {
    constexpr int kErrorCode = 100100;
    if (index >= GetFieldCount()) {
        KtlWriteLog(kErrorCode, ktl::FromUtf8("超出索引范围"), 1);
        return nullptr;
    }
    return &m_fields[index];
}

CField *CFields::GetFieldByName(CString name) {
    for (CField &field : m_fields) {
        if (field.strName.CompareNoCase(name) == 0) return &field;
    }
    return nullptr;
}

CField *CFields::GetFieldByID(int id) {
    CField *last = nullptr;
    for (CField &field : m_fields) {
        last = &field;
        if (field.nID == id) break;
    }
    return last;
}

int CFields::UpdateField(CField field) {
    for (CField &stored : m_fields) {
        if (stored.nID != field.nID) continue;
        stored = field;
        stored.nSpare3 = 0;
        return 1;
    }
    return 0;
}

int CFields::DeleteFieldByName(CString name) {
    name.MakeLower();
    for (int i = 0; i < GetFieldCount(); ++i) {
        if (m_fields[i].strName.MakeLower() != name) continue;
        m_fields.RemoveAt(i);
        return 1;
    }
    return 0;
}
