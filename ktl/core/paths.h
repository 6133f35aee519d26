#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"

/// \file
/// Folders, file names and the configuration file. Paths are GBK with '\' separators.

/// The running program's folder (or `ktl::SetApplicationFolder`'s), without a trailing backslash.
KTL_API CString KtlGetAppPathName();
/// "Kartelo.ini" in the application's folder.
KTL_API CString KtlGetConfigFilePath();
/// The system's folder for temporary files, with its trailing backslash.
KTL_API CString KtlGetTempFolderPath();
/// "TempDB" under the application's folder; made by every call, and a failure to make it is ignored.
KTL_API CString KtlGetTempDBFolderPath();

/// A key's value, at most 254 bytes; empty when file, section or key is missing.
KTL_API CString KtlReadINIString(CString file, CString section, CString key);
/// Sets a key, making file and section as needed. A failure has no effect.
KTL_API void KtlWriteINIString(CString file, CString section, CString key, CString value);

/// 1 when there is such a folder; 0 for an empty path. No trailing backslash.
KTL_API int KtlIsValidFolderPath(CString path);
/// 1 when there is a file, or a folder, of that name.
KTL_API int KtlIsValidFilePath(CString path);

/// The last part of a path, a trailing backslash dropped; without its extension when `withExtension` is 0. The text is
/// good until this thread's next call.
KTL_API const char *KtlGetFileNameByPath(CString path, int withExtension);
