#include "ktl/platform/share_table.h"

#include <algorithm>

#include "ktl/platform/file.h"

namespace ktl {

ShareTable &ShareTable::Instance() {
    // Never destroyed: files of static life close at the program's end.
    static ShareTable *const table = new ShareTable;
    return *table;
}

bool ShareTable::Enter(FileSystem::File file, const FileInfo &info, UINT flags) {
    const Entry entry = MakeEntry(info, flags);
    const std::lock_guard guard(m_mutex);
    if (!entry.IsKnown()) return true;
    for (const auto &[other, held] : m_entries) {
        if (held.IsSameFile(entry) && (held.Denies(entry) || entry.Denies(held))) return false;
    }
    m_entries[file] = entry;
    return true;
}

void ShareTable::Leave(FileSystem::File file) {
    const std::lock_guard guard(m_mutex);
    m_entries.erase(file);
}

bool ShareTable::IsOpen(const FileInfo &info) {
    const Entry entry = MakeEntry(info, CFile::modeRead);
    const std::lock_guard guard(m_mutex);
    return entry.IsKnown() && std::any_of(m_entries.begin(), m_entries.end(),
                                          [&](const auto &item) { return item.second.IsSameFile(entry); });
}

ShareTable::Entry ShareTable::MakeEntry(const FileInfo &info, UINT flags) {
    constexpr UINT kAccessMask = 0x3;
    constexpr UINT kShareMask = 0x70;
    const UINT access = flags & kAccessMask;
    const UINT share = flags & kShareMask;
    const bool isExclusive = share == CFile::shareCompat || share == CFile::shareExclusive;
    return {info.device,
            info.inode,
            access != CFile::modeWrite,
            access != CFile::modeRead,
            isExclusive || share == CFile::shareDenyRead,
            isExclusive || share == CFile::shareDenyWrite};
}

}  // namespace ktl
