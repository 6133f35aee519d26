#include "ktl/platform/file_find.h"

#include <algorithm>
#include <cerrno>

#include "ktl/platform/encoding.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/wildcard.h"

using ktl::FileInfo;
using ktl::FileSystem;

namespace {

// Small letters count as capitals, so that '_' comes behind them; the rest goes by its code point, which is UTF-8's
// order.
bool SortsBefore(const std::string &a, const std::string &b) {
    const auto key = [](char c) {
        return static_cast<unsigned char>(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
    };
    const auto [x, y] =
        std::mismatch(a.begin(), a.end(), b.begin(), b.end(), [&](char c, char d) { return key(c) == key(d); });
    if (x == a.end() && y == b.end()) return a < b;
    return x == a.end() || (y != b.end() && key(*x) < key(*y));
}

int ListMatching(const std::string &folder, std::string_view pattern, std::vector<std::string> &names) {
    std::vector<std::string> all;
    if (const int error = FileSystem::Current().List(folder.empty() ? "." : folder, all)) return error;
    std::erase_if(all,
                  [&](const std::string &name) { return !ktl::MatchesWildcard(pattern, ktl::FromUtf8(name).View()); });
    names = std::move(all);
    std::sort(names.begin(), names.end(), SortsBefore);
    if (folder != "/") {
        for (const char *dots : {"..", "."}) {
            if (ktl::MatchesWildcard(pattern, dots)) names.insert(names.begin(), dots);
        }
    }
    return 0;
}

// A name without a wildcard needs no look through the folder when it is there as it stands.
int FindOne(const std::string &path, std::vector<std::string> &names) {
    const std::string existing = ktl::ExistingPath(path);
    FileInfo info;
    if (const int error = FileSystem::Current().Stat(existing, info)) return error;
    names.push_back(existing.substr(existing.rfind('/') + 1));
    return 0;
}

}  // namespace

BOOL CFileFind::FindFile(const char *name, DWORD) {
    Close();
    const CString path(name ? name : "*.*");
    const std::string system = ktl::SystemPath(path);
    const std::size_t nameStart = system.rfind('/') + 1;
    m_systemRoot = system.substr(0, nameStart);
    const std::string pattern = system.substr(nameStart);
    const bool hasWildcard = pattern.find_first_of("*?") != std::string::npos;
    int error = 0;
    if (pattern.empty()) {
        error = ENOENT;
    } else if (hasWildcard) {
        error = ListMatching(m_systemRoot, ktl::FromUtf8(pattern).View(), m_names);
        if (error == ENOENT) error = ENOTDIR;
    } else {
        error = FindOne(system, m_names);
    }
    if (error == 0 && m_names.empty()) error = ENOENT;
    if (error != 0) {
        SetLastError(ktl::PlatformError(error, system));
        return FALSE;
    }
    m_root = ktl::PlatformPath(ktl::AbsolutePath(m_systemRoot));
    return TRUE;
}

BOOL CFileFind::FindNextFile() {
    const int last = static_cast<int>(m_names.size()) - 1;
    if (m_index < last) ++m_index;
    if (m_index < last) return TRUE;
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}

void CFileFind::Close() {
    m_names.clear();
    m_index = -1;
    m_root.Empty();
    m_systemRoot.clear();
}

CString CFileFind::GetFileName() const {
    const std::string *name = Name();
    return name ? ktl::FromUtf8(*name) : CString();
}

CString CFileFind::GetFileTitle() const {
    const CString name = GetFileName();
    const int dot = name.ReverseFind('.');
    return dot > 0 && !IsDots() ? name.Left(dot) : name;
}

CString CFileFind::GetFilePath() const {
    return Name() ? m_root + GetFileName() : CString();
}

ULONGLONG CFileFind::GetLength() const {
    const FileInfo info = Info();
    return info.isFolder ? 0 : info.size;
}

BOOL CFileFind::IsDirectory() const {
    return Info().isFolder ? TRUE : FALSE;
}

BOOL CFileFind::IsDots() const {
    const std::string *name = Name();
    return name && (*name == "." || *name == "..") ? TRUE : FALSE;
}

BOOL CFileFind::IsHidden() const {
    const std::string *name = Name();
    return name && name->starts_with('.') && !IsDots() ? TRUE : FALSE;
}

BOOL CFileFind::IsReadOnly() const {
    return Info().isReadOnly ? TRUE : FALSE;
}

BOOL CFileFind::GetLastWriteTime(CTime &time) const {
    if (!Name()) return FALSE;
    time = CTime(Info().modified);
    return TRUE;
}

const std::string *CFileFind::Name() const {
    return m_index >= 0 ? &m_names[static_cast<std::size_t>(m_index)] : nullptr;
}

FileInfo CFileFind::Info() const {
    FileInfo info;
    if (const std::string *name = Name()) FileSystem::Current().Stat(m_systemRoot + *name, info);
    return info;
}
