#include "ktl/core/utility.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <string_view>

#include "ktl/platform/encoding.h"
#include "ktl/platform/file_find.h"
#include "ktl/platform/profile.h"
#include "ktl/platform/system.h"

namespace {

constexpr int kPathBuffer = 1024;
constexpr int kProfileBuffer = 255;
constexpr std::size_t kWideBuffer = 1024;

/// Calls `use` with each character of the text, of one or two bytes; a lone first byte at the end is one byte.
template <class Use>
void ForEachCharacter(const CString &text, Use use) {
    std::string_view rest = text.View();
    while (!rest.empty()) {
        const std::size_t length = static_cast<signed char>(rest[0]) < 0 && rest.size() > 1 ? 2 : 1;
        use(rest.substr(0, length));
        rest.remove_prefix(length);
    }
}

/// Display width of a character from `ForEachCharacter`.
int WidthOf(std::string_view character) {
    return static_cast<signed char>(character[0]) < 0 ? 2 : 1;
}

/// Walks the text with a running width, calling `endLine` before the character that would pass `width`.
template <class EndLine, class Add>
void WalkLines(const CString &text, int width, EndLine endLine, Add add) {
    int used = 0;
    ForEachCharacter(text, [&](std::string_view character) {
        const int w = WidthOf(character);
        if (used + w > width) {
            endLine();
            used = 0;
        }
        add(character);
        used += w;
    });
}

int Found(const CString &pattern) {
    CFileFind find;
    return find.FindFile(pattern) ? 1 : 0;
}

/// The position of the last byte `ch` that is a character of its own; -1 without one.
int LastOf(const CString &text, char ch) {
    return text.ReverseFind(ch);
}

}  // namespace

CString KtlGetAppPathName() {
    char buffer[kPathBuffer] = "";
    GetModuleFileNameA(nullptr, buffer, sizeof buffer);
    const CString path(buffer);
    const int slash = LastOf(path, '\\');
    return slash > 0 ? path.Left(slash) : path;
}

CString KtlGetConfigFilePath() {
    CString path;
    path.Format("%s\\Kartelo.ini", KtlGetAppPathName().GetString());
    return path;
}

CString KtlGetTempFolderPath() {
    char buffer[kPathBuffer] = "";
    GetTempPathA(sizeof buffer, buffer);
    return buffer;
}

CString KtlGetTempDBFolderPath() {
    CString path = KtlGetAppPathName() + "\\TempDB";
    CreateDirectory(path);
    return path;
}

CString KtlReadINIString(CString file, CString section, CString key) {
    char buffer[kProfileBuffer] = "";
    GetPrivateProfileStringA(section, key, "", buffer, sizeof buffer, file);
    return buffer;
}

void KtlWriteINIString(CString file, CString section, CString key, CString value) {
    WritePrivateProfileStringA(section, key, value, file);
}

int KtlIsValidFolderPath(CString path) {
    return path.IsEmpty() ? 0 : Found(path + "\\*.*");
}

int KtlIsValidFilePath(CString path) {
    return Found(path);
}

const char *KtlGetFileNameByPath(CString path, int withExtension) {
    static CString name;
    name = path;
    const int length = name.GetLength();
    if (length > 0 && LastOf(name, '\\') == length - 1) name = name.Left(length - 1);
    const int slash = LastOf(name, '\\');
    if (slash >= 0) name = name.Mid(slash + 1);
    if (withExtension == 0) {
        const int dot = LastOf(name, '.');
        if (dot >= 0) name = name.Left(dot);
    }
    return name;
}

int KtlParseURL(const char *url, CString &host, CString &path, unsigned short &port) {
    CString text(url);
    text.Trim();
    host.Empty();
    path.Empty();
    const int schemeEnd = text.Find("://");
    if (schemeEnd < 0) return 0;
    CString scheme = text.Left(schemeEnd + 3);
    if (scheme.MakeLower() != CString("http://")) return 0;
    text = text.Mid(schemeEnd + 3);
    const int slash = text.Find("/");
    if (slash < 0) return 0;
    path = text.Mid(slash);
    host = text.Left(slash);
    const int colon = host.Find(":");
    if (colon < 0) {
        port = 80;
    } else {
        port = static_cast<unsigned short>(std::strtol(host.Mid(colon + 1), nullptr, 10));
        host = host.Left(colon);
    }
    return 1;
}

void KtlSplitString(CString text, int width, CArray<CString, CString> &lines) {
    CString line;
    WalkLines(
        text, width,
        [&] {
            lines.Add(line);
            line.Empty();
        },
        [&](std::string_view character) { line.Append(character.data(), static_cast<int>(character.size())); });
    if (!line.IsEmpty()) lines.Add(line);
}

void KtlSplitString(CString text, CString separator, CArray<CString, CString> &parts, int keepEmpty) {
    int start = 0;
    // An empty separator is found nowhere: one that matched everywhere would never end.
    int position = separator.IsEmpty() ? -1 : text.Find(separator, start);
    while (position >= 0) {
        const CString piece = text.Mid(start, position - start);
        if (keepEmpty || !piece.IsEmpty()) parts.Add(piece);
        start = position + 1;
        position = text.Find(separator, start);
    }
    parts.Add(text.Mid(start));
}

void KtlSpliteStringToSingle(CString text, CArray<CString, CString> &letters) {
    ForEachCharacter(text, [&](std::string_view character) { letters.Add(CString(character)); });
}

CString KtlBreakString(CString text, int width) {
    return KtlBreakString(text, width, "\n");
}

CString KtlBreakString(CString text, int width, CString separator) {
    CString result;
    WalkLines(
        text, width, [&] { result += separator; },
        [&](std::string_view character) { result.Append(character.data(), static_cast<int>(character.size())); });
    return result;
}

CString KtlGetSplitNumber(CString number) {
    const int length = number.GetLength();
    const int dot = number.ReverseFind('.');
    const int fraction = dot < 0 ? 0 : length - dot;
    for (int position = length - fraction - 3; position > 0; position -= 3) number.Insert(position, ",");
    return number;
}

unsigned long KtlGetRandomColor() {
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    const unsigned red = static_cast<unsigned>(std::rand()) % 256;
    const unsigned green = static_cast<unsigned>(std::rand()) % 256;
    const unsigned blue = static_cast<unsigned>(std::rand()) % 256;
    return RGB(red, green, blue);
}

wchar_t *ToWChar(CString text) {
    static wchar_t buffer[kWideBuffer];
    std::fill(std::begin(buffer), std::end(buffer), L'\0');
    const std::wstring wide = ktl::WideFromGbk(text.View());
    std::copy_n(wide.begin(), std::min(wide.size(), kWideBuffer - 1), buffer);
    return buffer;
}

CString WCharToString(wchar_t *text) {
    const CString gbk = ktl::GbkFromWide(text);
    std::string_view bytes = gbk.View();
    std::size_t end = 0;
    while (end < bytes.size() && end + ktl::CharLength(bytes, end) < kWideBuffer) end += ktl::CharLength(bytes, end);
    return gbk.Left(static_cast<int>(end));
}

int GetStringWcharLength(CString text) {
    return static_cast<int>(std::wcslen(ToWChar(text)));
}
