#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// \file
/// The calling thread's last error, in the platform's numbers. A failed file, folder or profile operation sets it;
/// success leaves it.

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_NO_MORE_FILES = 18;
constexpr DWORD ERROR_SEEK = 25;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_SHARING_VIOLATION = 32;
constexpr DWORD ERROR_LOCK_VIOLATION = 33;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_DISK_FULL = 112;
constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_IO_DEVICE = 1117;

KTL_API DWORD GetLastError();
KTL_API void SetLastError(DWORD code);

namespace ktl {

/// The platform's number for an `errno` value.
KTL_API DWORD PlatformError(int systemError);
/// As above for a file's name: a missing file is told from a missing folder.
KTL_API DWORD PlatformError(int systemError, const std::string &systemPath);
/// The system's text for a platform error, ending in "\r\n"; empty for a number without a text.
KTL_API CString ErrorText(DWORD code);

}  // namespace ktl
