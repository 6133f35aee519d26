#pragma once

#include <functional>

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"
#include "ktl/platform/window.h"

constexpr UINT MB_OK = 0x0;
constexpr UINT MB_OKCANCEL = 0x1;
constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
constexpr UINT MB_YESNOCANCEL = 0x3;
constexpr UINT MB_YESNO = 0x4;
constexpr UINT MB_RETRYCANCEL = 0x5;
/// The bits of the style that tell the buttons.
constexpr UINT MB_TYPEMASK = 0xF;
constexpr UINT MB_ICONSTOP = 0x10;
constexpr UINT MB_ICONQUESTION = 0x20;
constexpr UINT MB_ICONEXCLAMATION = 0x30;
constexpr UINT MB_ICONINFORMATION = 0x40;

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDABORT = 3;
constexpr int IDRETRY = 4;
constexpr int IDIGNORE = 5;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

/// Shows a text and gives the button pressed. Without a host's hook nothing blocks: the text goes to standard error, a
/// question gets its refusal (No, Cancel, Abort), a plain text OK.
KTL_API int AfxMessageBox(const char *text, UINT type = MB_OK, UINT help = 0);

/// Opens a file with its viewer or starts a program; above 32 is success. Without a host's hook nothing is started, a
/// line goes to standard error and the answer is 31.
KTL_API std::intptr_t ShellExecute(HWND window, const char *verb, const char *file, const char *parameters,
                                   const char *folder, int show);

namespace ktl {

/// Shows `text` with the buttons and icon of `type` and gives one of ID...; called on the asking thread.
using MessageBoxHook = std::function<int(const CString &text, UINT type)>;
/// Opens `file` (GBK) as `verb` says and gives a number above 32 on success.
using ShellExecuteHook = std::function<int(const CString &verb, const CString &file, const CString &parameters)>;

/// Both put a host's way in place (empty for none) and return the one before.
KTL_API MessageBoxHook SetMessageBoxHook(MessageBoxHook hook);
KTL_API ShellExecuteHook SetShellExecuteHook(ShellExecuteHook hook);

}  // namespace ktl
