#pragma once

#include "ktl/platform/string.h"

namespace ktl {

/// A literal of the statement language holds so many bytes, a column of texts so many characters.
constexpr int kLiteralBytes = 254;
/// A memo of more bytes is not stored whole.
constexpr int kMemoBytes = 8000;

/// Each ' doubled.
CString DoubleQuotes(CString text);
/// At most 254 bytes of a longer text, not cut through a character, and no more than its first line.
CString CutToLiteral(const CString &text);
/// What stands between the quotes for a memo of at most `kMemoBytes` that is set in a stored row.
CString MemoLiteral(CString text);
/// The same for a memo of a row that is stored for the first time: every line ends in a line feed, the last one too.
CString MemoLines(CString text);
/// The text with its literal ended and begun anew every 254 bytes. A cut between two quotes alters the
/// text, one in a joint spoils the statement: meant so.
CString BreakLiteral(const CString &text);

}  // namespace ktl
