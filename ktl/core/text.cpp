#include "ktl/core/text.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <string_view>

#include "ktl/platform/encoding.h"

namespace {

/// Characters of `ToWChar`, bytes of `WCharToString`.
constexpr std::size_t kConverted = 1024;

bool BeginsPair(char byte) {
    return static_cast<signed char>(byte) < 0;
}

/// Calls `use` with each character of the text: one or two bytes, a first byte that ends the text alone.
template <class Use>
void ForEachCharacter(std::string_view text, Use use) {
    while (!text.empty()) {
        const std::size_t length = BeginsPair(text[0]) && text.size() > 1 ? 2 : 1;
        use(text.substr(0, length));
        text.remove_prefix(length);
    }
}

/// Calls `add` with each character, and `endLine` before each that would take the line beyond `width`.
template <class EndLine, class Add>
void WalkLines(std::string_view text, int width, EndLine endLine, Add add) {
    int used = 0;
    ForEachCharacter(text, [&](std::string_view character) {
        const int wide = BeginsPair(character[0]) ? 2 : 1;
        if (used + wide > width) {
            endLine();
            used = 0;
        }
        add(character);
        used += wide;
    });
}

}  // namespace

void KtlSplitString(CString text, int width, CArray<CString, CString> &lines) {
    std::string line;
    const auto endLine = [&] {
        lines.Add(CString(line));
        line.clear();
    };
    WalkLines(text.View(), width, endLine, [&](std::string_view character) { line += character; });
    if (!line.empty()) endLine();
}

void KtlSplitString(CString text, CString separator, CArray<CString, CString> &parts, int keepEmpty) {
    int start = 0;
    while (!separator.IsEmpty()) {
        const int found = text.Find(separator, start);
        if (found < 0) break;
        if (keepEmpty != 0 || found > start) parts.Add(text.Mid(start, found - start));
        start = found + 1;
    }
    parts.Add(text.Mid(start));
}

void KtlSpliteStringToSingle(CString text, CArray<CString, CString> &letters) {
    ForEachCharacter(text.View(), [&](std::string_view character) { letters.Add(CString(character)); });
}

CString KtlBreakString(CString text, int width) {
    return KtlBreakString(text, width, "\n");
}

CString KtlBreakString(CString text, int width, CString separator) {
    std::string result;
    WalkLines(
        text.View(), width, [&] { result += separator.View(); },
        [&](std::string_view character) { result += character; });
    return CString(std::move(result));
}

CString KtlGetSplitNumber(CString number) {
    const int length = number.GetLength();
    const int dot = number.ReverseFind('.');
    const int fraction = dot < 0 ? 0 : length - dot;
    for (int place = length - fraction - 3; place > 0; place -= 3) number.Insert(place, ",");
    return number;
}

wchar_t *ToWChar(CString text) {
    static thread_local wchar_t buffer[kConverted + 1];
    const std::wstring wide = ktl::WideFromGbk(text.View());
    const std::size_t length = std::min(wide.size(), kConverted);
    std::fill(std::copy_n(wide.data(), length, buffer), std::end(buffer), L'\0');
    return buffer;
}

CString WCharToString(wchar_t *text) {
    if (text == nullptr) return {};
    const CString gbk = ktl::GbkFromWide(text);
    const std::string_view bytes = gbk.View();
    std::size_t end = 0;
    while (end < bytes.size()) {
        const std::size_t next = end + ktl::CharLength(bytes, end);
        if (next > kConverted) break;
        end = next;
    }
    return gbk.Left(static_cast<int>(end));
}

int GetStringWcharLength(CString text) {
    return static_cast<int>(std::wcslen(ToWChar(text)));
}
