#pragma once

#include "ktl/core/paths.h"
#include "ktl/core/text.h"
#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// Splits "http://host:port/path": 1 on success. The path keeps its slash and must be there; the port is 80 unless
/// told. Any other scheme, https among them, gives 0 and empty texts.
KTL_API int KtlParseURL(const char *url, CString &host, CString &path, unsigned short &port);

/// A colour by `rand`, seeded anew from the clock by every call: calls in one second give one colour.
KTL_API COLORREF KtlGetRandomColor();
