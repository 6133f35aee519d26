#include "ktl/attributes/fields.h"

#include <algorithm>

#include "ktl/core/log.h"
#include "ktl/platform/encoding.h"

namespace {

constexpr int kIndexErrorCode = 100100;

struct StandardColumn {
    const char *name;
    int length;
    ENUM_DATA type;
    /// The system's own columns are read-only.
    bool isSystem;
};
constexpr StandardColumn kStandardColumns[] = {
    {"ID", 8, DATA_INT, true},
    {"ShapeID", 8, DATA_INT, true},
    {"name", 254, DATA_CHAR, false},
    {"remark", -1, DATA_MEMO, false},
};

CString Lower(CString name) {
    return name.MakeLower();
}

}  // namespace

void CFields::InitToDefault() {
    CField field;
    int id = 0;
    for (const StandardColumn &column : kStandardColumns) {
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
    fields.Copy(m_fields);
}

void CFields::Copy(CFields *source) {
    if (source && source != this) m_fields.Copy(source->m_fields);
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
                       [&](const CField &field) { return Lower(field.strName) == name; });
}

CField *CFields::GetFieldAt(int index) {
    if (index >= GetFieldCount()) {
        KtlWriteLog(kIndexErrorCode, ktl::FromUtf8("超出索引范围"), 1);
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
        field.nSpare3 = 0;
        stored = field;
        return 1;
    }
    return 0;
}

int CFields::DeleteFieldByName(CString name) {
    name.MakeLower();
    for (int index = 0; index < GetFieldCount(); ++index) {
        if (m_fields[index].strName.MakeLower() != name) continue;
        m_fields.RemoveAt(index);
        return 1;
    }
    return 0;
}
