#include "ktl/platform/last_error.h"

#include <cerrno>
#include <string>

#include "ktl/platform/filesystem.h"

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

struct SystemError {
    int system;
    DWORD platform;
};

constexpr SystemError kSystemErrors[] = {
    {0, ERROR_SUCCESS},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ENAMETOOLONG, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EIO, ERROR_IO_DEVICE},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EDEADLK, ERROR_LOCK_VIOLATION},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {ESPIPE, ERROR_SEEK},
};

struct Text {
    DWORD code;
    const char *text;
};

constexpr Text kTexts[] = {
    {ERROR_SUCCESS, "The operation completed successfully.\r\n"},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified.\r\n"},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified.\r\n"},
    {ERROR_TOO_MANY_OPEN_FILES, "The system cannot open the file.\r\n"},
    {ERROR_ACCESS_DENIED, "Access is denied.\r\n"},
    {ERROR_INVALID_HANDLE, "The handle is invalid.\r\n"},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory is available.\r\n"},
    {ERROR_NO_MORE_FILES, "There are no more files.\r\n"},
    {ERROR_SEEK, "The position cannot be reached on the device.\r\n"},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning.\r\n"},
    {ERROR_SHARING_VIOLATION, "The file is being used by another process.\r\n"},
    {ERROR_LOCK_VIOLATION, "A part of the file is locked by another process.\r\n"},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect.\r\n"},
    {ERROR_DISK_FULL, "There is not enough space on the disk.\r\n"},
    {ERROR_NEGATIVE_SEEK, "The position lies before the beginning of the file.\r\n"},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty.\r\n"},
    {ERROR_ALREADY_EXISTS, "The file already exists.\r\n"},
    {ERROR_IO_DEVICE, "The request failed because of a device error.\r\n"},
};

bool IsParentMissing(const std::string &systemPath) {
    const std::size_t slash = systemPath.rfind('/');
    if (slash == std::string::npos || slash == 0) return false;
    ktl::FileInfo info;
    return ktl::FileSystem::Current().Stat(systemPath.substr(0, slash), info) != 0;
}

}  // namespace

DWORD GetLastError() {
    return t_lastError;
}

void SetLastError(DWORD code) {
    t_lastError = code;
}

namespace ktl {

DWORD PlatformError(int systemError) {
    for (const SystemError &entry : kSystemErrors) {
        if (entry.system == systemError) return entry.platform;
    }
    return ERROR_GEN_FAILURE;
}

DWORD PlatformError(int systemError, const std::string &systemPath) {
    if (systemError == ENOENT && IsParentMissing(systemPath)) return ERROR_PATH_NOT_FOUND;
    return PlatformError(systemError);
}

CString ErrorText(DWORD code) {
    for (const Text &entry : kTexts) {
        if (entry.code == code) return CString(entry.text);
    }
    return {};
}

}  // namespace ktl
