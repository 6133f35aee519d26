#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// \file
/// What the operating system is asked for: places, folders, colours, milliseconds.

/// Index of the buttons' shadow colour.
constexpr int COLOR_BTNSHADOW = 16;
/// The platform's default colour scheme; 0 for an index that has no colour here.
KTL_API DWORD GetSysColor(int index);

/// The running program's path into a buffer of `size` bytes, cut to fit; the length without the terminator. The folder
/// is the one of `ktl::SetApplicationFolder`, when there is one. The module argument is not used.
KTL_API DWORD GetModuleFileNameA(void *module, char *buffer, DWORD size);
/// The folder for temporary files with its trailing backslash; the length without the terminator, or the size needed
/// when the buffer is too small.
KTL_API DWORD GetTempPathA(DWORD size, char *buffer);

/// Nonzero on success; otherwise the last error tells (183 when it exists, 3 without its parent).
KTL_API BOOL CreateDirectory(const char *path, void *security = nullptr);
/// Removes an empty folder.
KTL_API BOOL RemoveDirectory(const char *path);
KTL_API BOOL DeleteFile(const char *path);
/// Renames a file or folder; fails when the new name exists.
KTL_API BOOL MoveFile(const char *from, const char *to);

KTL_API void Sleep(DWORD milliseconds);
/// Milliseconds of a clock that never goes back; it wraps after 49 days.
KTL_API DWORD GetTickCount();

namespace ktl {

/// Another writable folder (GBK) to stand for the program's; empty for the program's own.
KTL_API void SetApplicationFolder(const CString &folder);
/// The running program's path.
KTL_API CString ModuleFileName();
/// The folder for temporary files with its trailing backslash.
KTL_API CString TemporaryFolder();

}  // namespace ktl
