#pragma once

#include "ktl/core/language.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/export.h"
#include "ktl/platform/string.h"

/// \file
/// The one error log, "error.log" in the application's folder: GBK text, an entry of code, message, local time and an
/// empty line. Every place that logs has a code of its own. Nothing here throws, and a log that cannot be written is
/// left unwritten. No lock: entries of two threads may interleave.

/// Appends an entry. With `prompt` other than 0 the user is then asked whether to see the log, which opens on Yes.
KTL_API void KtlWriteLog(int code, CString message, int prompt);

/// The system's text for the thread's last error (`GetLastError`); it is logged when `code` is above 0.
KTL_API CString KtlCatchError(int code, int prompt);

/// Logs the exception's text with code 1, and asks. The exception stays the caller's.
KTL_API void KtlShowException(CException *exception);

namespace ktl {

/// The question that follows a logged error.
KTL_API CString LogQuestion(int code, Language language = kBuildLanguage);

}  // namespace ktl
