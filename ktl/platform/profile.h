#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// \file
/// Profiles: files of sections and keys. Sections and keys compare without case; the first of duplicates counts; lines
/// that begin with ';' are comments. A bare file name is looked for in the application's folder. Each write replaces
/// the file in one step.

/// The value of a key, cut to size - 1 bytes, its length returned; `defaultText` (null counts as empty) less its
/// trailing spaces when file, section or key is missing. Blanks around a value and one matching pair of quotes are
/// dropped. A null key lists the section's keys, a null section the sections: each with its terminator, then one more;
/// size - 2 is returned when the list is cut. `size` counts modulo 65536; with 0 the buffer is left alone.
KTL_API DWORD GetPrivateProfileStringA(const char *section, const char *key, const char *defaultText, char *buffer,
                                       DWORD size, const char *fileName);

/// Leading decimal digits after an optional '-', or "0x" and hexadecimal digits; 0 for a value without; `defaultValue`
/// only when the key is missing.
KTL_API UINT GetPrivateProfileIntA(const char *section, const char *key, int defaultValue, const char *fileName);

/// Sets a key, making file and section as needed; a null value deletes the key, a null key the section. FALSE when the
/// file cannot be written or the section is null; the last error tells.
KTL_API BOOL WritePrivateProfileStringA(const char *section, const char *key, const char *value, const char *fileName);
