#pragma once

#include "ktl/platform/array.h"
#include "ktl/platform/export.h"
#include "ktl/platform/string.h"

/// \file
/// Cutting and converting GBK text. A byte of 0x80 and above begins a character of two bytes and of width 2 (0x80 and
/// 0xFF too); any other byte is a character of width 1. A first byte that ends the text stands alone, with width 2.

/// Appends to `lines` the pieces of `text` that are at most `width` wide. A character wider than `width` stands in a
/// line of its own, with an empty line before it when it is the first.
KTL_API void KtlSplitString(CString text, int width, CArray<CString, CString> &lines);

/// Appends to `parts` what stands between the separators. Exactly one byte is removed for a separator, so a longer one
/// leaves its tail at the head of the next part: meant so. Empty parts are dropped when `keepEmpty` is 0, but never the
/// last one. An empty separator is never found.
KTL_API void KtlSplitString(CString text, CString separator, CArray<CString, CString> &parts, int keepEmpty);

/// Appends the single characters of `text`.
KTL_API void KtlSpliteStringToSingle(CString text, CArray<CString, CString> &letters);

/// `text` with a separator ("\n") wherever the width-based `KtlSplitString` would end a line.
KTL_API CString KtlBreakString(CString text, int width);
KTL_API CString KtlBreakString(CString text, int width, CString separator);

/// A number's text with a comma before every three digits left of its last dot. A sign counts as a digit: "-123" gives
/// "-,123".
KTL_API CString KtlGetSplitNumber(CString number);

/// At most 1024 characters of the text as wide ones. Good until this thread's next call.
KTL_API wchar_t *ToWChar(CString text);
/// At most 1024 bytes of the text in GBK; a null pointer gives an empty text.
KTL_API CString WCharToString(wchar_t *text);
/// The length of `ToWChar`'s text.
KTL_API int GetStringWcharLength(CString text);
