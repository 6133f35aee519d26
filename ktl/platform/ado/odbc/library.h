#pragma once

#include <cstdint>
#include <string>

#include "ktl/platform/encoding.h"
#include "ktl/platform/types.h"

/// \file
/// ODBC's functions and constants; only the sources of this folder see them. Two of its integer names have other
/// widths than the platform's and step aside.

#define WCHAR OdbcWchar
#define ULONG OdbcUlong
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
#undef WCHAR
#undef ULONG
#undef BOOL

namespace ktl::ado::odbc {

/// Texts go to the driver and come back as UTF-16: the narrow functions leave the encoding to the process's locale, and
/// to the driver a login in Latin-1.
inline SQLWCHAR *Wide(std::u16string &text) {
    return reinterpret_cast<SQLWCHAR *>(text.data());
}
/// The text up to its zero, in GBK.
inline CString Narrow(const SQLWCHAR *text) {
    return GbkFromUtf16(reinterpret_cast<const char16_t *>(text));
}

/// A number where ODBC's attributes are handed over as pointers.
inline void *AttributeNumber(std::intptr_t value) {
    return reinterpret_cast<void *>(value);
}

}  // namespace ktl::ado::odbc
