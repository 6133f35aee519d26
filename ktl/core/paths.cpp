#include "ktl/core/paths.h"

#include "ktl/platform/file_find.h"
#include "ktl/platform/profile.h"
#include "ktl/platform/system.h"

namespace {

constexpr DWORD kPathBuffer = 1024;
constexpr DWORD kValueBuffer = 255;

int IsFound(const CString &pattern) {
    CFileFind find;
    return find.FindFile(pattern) ? 1 : 0;
}

}  // namespace

CString KtlGetAppPathName() {
    char buffer[kPathBuffer] = {};
    GetModuleFileNameA(nullptr, buffer, kPathBuffer);
    CString path(buffer);
    const int slash = path.ReverseFind('\\');
    return slash > 0 ? path.Left(slash) : path;
}

CString KtlGetConfigFilePath() {
    CString path;
    path.Format("%s\\Kartelo.ini", KtlGetAppPathName().GetString());
    return path;
}

CString KtlGetTempFolderPath() {
    char buffer[kPathBuffer] = {};
    GetTempPathA(kPathBuffer, buffer);
    return CString(buffer);
}

CString KtlGetTempDBFolderPath() {
    CString path = KtlGetAppPathName() + "\\TempDB";
    CreateDirectory(path);
    return path;
}

CString KtlReadINIString(CString file, CString section, CString key) {
    char buffer[kValueBuffer] = {};
    GetPrivateProfileStringA(section, key, nullptr, buffer, kValueBuffer, file);
    return CString(buffer);
}

void KtlWriteINIString(CString file, CString section, CString key, CString value) {
    WritePrivateProfileStringA(section, key, value, file);
}

int KtlIsValidFolderPath(CString path) {
    return path.IsEmpty() ? 0 : IsFound(path + "\\*.*");
}

int KtlIsValidFilePath(CString path) {
    return IsFound(path);
}

const char *KtlGetFileNameByPath(CString path, int withExtension) {
    static thread_local CString name;
    name = path;
    const int last = name.GetLength() - 1;
    if (last >= 0 && name.ReverseFind('\\') == last) name = name.Left(last);
    name = name.Mid(name.ReverseFind('\\') + 1);
    const int dot = name.ReverseFind('.');
    if (withExtension == 0 && dot >= 0) name = name.Left(dot);
    return name;
}
