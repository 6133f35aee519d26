#include "ktl/attributes/dbf_head.h"

#include <algorithm>
#include <array>
#include <limits>

#include "ktl/core/paths.h"
#include "ktl/platform/file.h"

namespace ktl {

int DbfHead::RecordsIn(const CFile &file) const {
    const ULONGLONG length = file.GetLength();
    if (recordLength == 0 || length <= static_cast<ULONGLONG>(headerLength)) return 0;
    const auto step = static_cast<ULONGLONG>(recordLength);
    const ULONGLONG room = (length - static_cast<ULONGLONG>(headerLength) + step - 1) / step;
    constexpr ULONGLONG kMost = std::numeric_limits<int>::max();
    return static_cast<int>(std::min<ULONGLONG>({recordCount, room, kMost}));
}

bool RemoveIfThere(const CString &path) {
    if (KtlIsValidFilePath(path) != 1) return true;
    try {
        CFile::Remove(path);
        return true;
    } catch (const CFileException &) {
        return false;
    }
}

DbfHead ReadDbfHead(CFile &file) {
    std::array<BYTE, DbfHead::kSize> bytes{};
    file.SeekToBegin();
    file.Read(bytes.data(), DbfHead::kSize);
    DbfHead head;
    for (std::size_t i = 4; i-- > 0;) head.recordCount = head.recordCount << 8 | bytes[4 + i];
    head.headerLength = bytes[8] | bytes[9] << 8;
    head.recordLength = bytes[10] | bytes[11] << 8;
    return head;
}

}  // namespace ktl
