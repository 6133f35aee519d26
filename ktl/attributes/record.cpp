#include "ktl/attributes/record.h"

#include "ktl/core/log.h"
#include "ktl/platform/exception.h"

CString CRecord::GetValueAt(int index) const {
    constexpr int kErrorCode = 100066;
    try {
        return arrValues[index];
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
        return {};
    }
}

void CRecord::SetValueAt(int index, CString value) {
    constexpr int kErrorCode = 100067;
    if (index < 0 || index >= GetValueCount()) return;
    try {
        arrValues[index] = value;
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

CRecord *CRecord::Clone() const {
    return new CRecord(*this);
}

void CRecord::Copy(CRecord *source) {
    constexpr int kErrorCode = 100064;
    if (source == this) return;
    try {
        if (source == nullptr) throw CInvalidArgException();
        arrValues.Copy(source->arrValues);
        nShapeID = source->nShapeID;
        bDeleted = source->bDeleted;
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

void CRecord::CopyValueArray(CArray<CString, CString> &values) {
    if (&values != &arrValues) arrValues.Copy(values);
}
