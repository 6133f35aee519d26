#include "ktl/attributes/record.h"

#include <memory>

#include "ktl/core/log.h"
#include "ktl/platform/exception.h"

namespace {

constexpr int kCopyErrorCode = 100064;
constexpr int kReadErrorCode = 100066;
constexpr int kWriteErrorCode = 100067;

/// Runs `work`; a failure is logged under `code` and goes no further.
template <class Work>
void Guarded(int code, Work work) {
    try {
        work();
    } catch (const std::exception &) {
        KtlCatchError(code, 1);
    }
}

}  // namespace

CString CRecord::GetValueAt(int index) const {
    CString value;
    Guarded(kReadErrorCode, [&] { value = arrValues.GetAt(index); });
    return value;
}

void CRecord::SetValueAt(int index, CString value) {
    if (index < 0 || index >= GetValueCount()) return;
    Guarded(kWriteErrorCode, [&] { arrValues.SetAt(index, value); });
}

CRecord *CRecord::Clone() const {
    auto copy = std::make_unique<CRecord>(nShapeID);
    copy->bDeleted = bDeleted;
    copy->arrValues.Copy(arrValues);
    return copy.release();
}

void CRecord::Copy(CRecord *source) {
    if (source == this) return;
    Guarded(kCopyErrorCode, [&] {
        if (!source) throw CInvalidArgException();
        arrValues.Copy(source->arrValues);
        nShapeID = source->nShapeID;
        bDeleted = source->bDeleted;
    });
}

void CRecord::CopyValueArray(CArray<CString, CString> &values) {
    if (&values != &arrValues) arrValues.Copy(values);
}
