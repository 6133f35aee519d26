#include "ktl/attributes/table_text.h"

#include "ktl/core/text.h"

namespace ktl {

namespace {

constexpr const char *kJoint = "'+'";
constexpr const char *kLineFeed = "'+CHR(10)+'";

}  // namespace

CString DoubleQuotes(CString text) {
    text.Replace("'", "''");
    return text;
}

CString BreakLiteral(const CString &text) {
    return text.GetLength() > kLiteralBytes ? KtlBreakString(text, kLiteralBytes, kJoint) : text;
}

CString CutToLiteral(const CString &text) {
    if (text.GetLength() <= kLiteralBytes) return text;
    const CString broken = KtlBreakString(text, kLiteralBytes);
    const int end = broken.Find('\n');
    return end < 0 ? broken : broken.Left(end);
}

CString MemoLiteral(CString text) {
    text.Replace("'", "''");
    text.Replace("\t", "'+CHR(9)+'");
    text.Replace("\n", kLineFeed);
    // A carriage return becomes a line feed: meant so.
    text.Replace("\r", kLineFeed);
    // Empty literals between two such characters.
    text.Replace("+''+", "+");
    return BreakLiteral(text);
}

CString MemoLines(CString text) {
    text.Replace("'", "''");
    text.Replace("\t", "    ");
    text.Replace("\r", "\n");
    CArray<CString, CString> lines;
    KtlSplitString(text, "\n", lines, 1);
    CString joined;
    for (const CString &line : lines) joined += BreakLiteral(line) + kLineFeed;
    return joined;
}

}  // namespace ktl
