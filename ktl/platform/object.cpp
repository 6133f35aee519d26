#include "ktl/platform/object.h"

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass *base) const {
    for (const CRuntimeClass *record = this; record; record = record->m_pBaseClass) {
        if (record == base) return TRUE;
    }
    return FALSE;
}

const CRuntimeClass *CObject::GetThisClass() {
    static const CRuntimeClass record = {"CObject", sizeof(CObject), 0xFFFF, nullptr, nullptr};
    return &record;
}

const CRuntimeClass *CObject::GetRuntimeClass() const {
    return GetThisClass();
}

void CObject::Serialize(CArchive &) {}
