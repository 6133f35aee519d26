#include "ktl/platform/profile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ktl/platform/encoding.h"
#include "ktl/platform/filesystem.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/system.h"

namespace {

constexpr std::string_view kBlanks = " \t\v";
constexpr std::string_view kNewline = "\r\n";
constexpr std::string_view kWideMark = "\xFF\xFE";
constexpr DWORD kSizeMask = 0xFFFF;

std::string_view Trimmed(std::string_view text, std::string_view set) {
    text.remove_prefix(std::min(text.find_first_not_of(set), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(set) + 1));
    return text;
}

CString NameArgument(const char *name) {
    return CString(Trimmed(name, " "));
}

bool IsSameName(std::string_view a, const CString &b) {
    return CString(a).CompareNoCase(b) == 0;
}

bool IsComment(std::string_view line) {
    return Trimmed(line, kBlanks).starts_with(';');
}

// The section that a line opens. A trail byte may have the code of ']'.
std::optional<std::string_view> SectionOf(std::string_view line) {
    line = Trimmed(line, kBlanks);
    if (!line.starts_with('[')) return std::nullopt;
    line.remove_prefix(1);
    std::size_t end = 0;
    while (end < line.size() && line[end] != ']') end += ktl::CharLength(line, end);
    return Trimmed(line.substr(0, end), kBlanks);
}

struct Entry {
    std::string_view key;
    std::string_view value;
};

std::optional<Entry> EntryOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || IsComment(line) || SectionOf(line)) return std::nullopt;
    return Entry{Trimmed(line.substr(0, equals), kBlanks), Trimmed(line.substr(equals + 1), kBlanks)};
}

std::string_view WithoutQuotes(std::string_view value) {
    const bool isQuoted = value.size() >= 2 && (value[0] == '"' || value[0] == '\'') && value[0] == value.back();
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

// A profile's text as lines, each with its own line end.
class Profile {
  public:
    struct Line {
        std::string text;
        std::string end;
    };
    // Lines of a section's body: [first, last).
    struct Body {
        std::size_t first;
        std::size_t last;
    };

    /// An `errno` value when there is no such file.
    int Load(const std::string &systemPath) {
        std::string content;
        const int error = ktl::ReadWholeFile(systemPath, content);
        if (error == 0) SplitLines(Decoded(content));
        return error;
    }
    int Save(const std::string &systemPath) const {
        std::string text;
        for (const Line &line : m_lines) text += line.text + line.end;
        return ktl::ReplaceWholeFile(systemPath, Encoded(text));
    }

    const std::vector<Line> &Lines() const { return m_lines; }

    std::optional<Body> FindSection(const CString &section) const {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            const auto name = SectionOf(m_lines[i].text);
            if (!name || !IsSameName(*name, section)) continue;
            std::size_t last = i + 1;
            while (last < m_lines.size() && !SectionOf(m_lines[last].text)) ++last;
            return Body{i + 1, last};
        }
        return std::nullopt;
    }
    std::optional<std::size_t> FindKey(const Body &body, const CString &key) const {
        for (std::size_t i = body.first; i < body.last; ++i) {
            const auto entry = EntryOf(m_lines[i].text);
            if (entry && IsSameName(entry->key, key)) return i;
        }
        return std::nullopt;
    }

    void Set(const CString &section, const CString &key, std::string_view value) {
        std::optional<Body> body = FindSection(section);
        if (!body) {
            Insert(m_lines.size(), "[" + std::string(section.View()) + "]");
            body = Body{m_lines.size(), m_lines.size()};
        }
        if (const auto line = FindKey(*body, key)) {
            const std::string kept(EntryOf(m_lines[*line].text)->key);
            m_lines[*line].text = kept + "=" + std::string(value);
            return;
        }
        std::size_t place = body->last;
        while (place > body->first && Trimmed(m_lines[place - 1].text, kBlanks).empty()) --place;
        Insert(place, std::string(key.View()) + "=" + std::string(value));
    }
    /// False when there is nothing to delete.
    bool DeleteKey(const CString &section, const CString &key) {
        const std::optional<Body> body = FindSection(section);
        const auto line = body ? FindKey(*body, key) : std::nullopt;
        if (line) m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(*line));
        return line.has_value();
    }
    /// Comments stay. False when there is no such section.
    bool DeleteSection(const CString &section) {
        const std::optional<Body> body = FindSection(section);
        if (!body) return false;
        const auto first = m_lines.begin() + static_cast<std::ptrdiff_t>(body->first);
        const auto last = m_lines.begin() + static_cast<std::ptrdiff_t>(body->last);
        const auto kept = std::stable_partition(first, last, [](const Line &line) { return IsComment(line.text); });
        m_lines.erase(kept, last);
        m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(body->first) - 1);
        return true;
    }

  private:
    std::string Decoded(const std::string &content) {
        m_isWide = content.starts_with(kWideMark);
        if (!m_isWide) return content;
        std::u16string text;
        for (std::size_t i = kWideMark.size(); i + 1 < content.size(); i += 2) {
            text += static_cast<char16_t>(static_cast<BYTE>(content[i]) | static_cast<BYTE>(content[i + 1]) << 8);
        }
        return std::string(ktl::GbkFromUtf16(text).View());
    }
    std::string Encoded(const std::string &text) const {
        if (!m_isWide) return text;
        std::string content(kWideMark);
        for (const char16_t unit : ktl::Utf16FromGbk(text)) {
            content += static_cast<char>(unit & 0xFF);
            content += static_cast<char>(unit >> 8);
        }
        return content;
    }
    void SplitLines(const std::string &text) {
        for (std::size_t from = 0; from < text.size();) {
            const std::size_t newline = std::min(text.find('\n', from), text.size());
            const bool hasReturn = newline < text.size() && newline > from && text[newline - 1] == '\r';
            const std::size_t end = newline - (hasReturn ? 1 : 0);
            const std::size_t next = std::min(newline + 1, text.size());
            m_lines.push_back({text.substr(from, end - from), text.substr(end, next - end)});
            from = next;
        }
    }
    void Insert(std::size_t place, std::string text) {
        if (place > 0 && m_lines[place - 1].end.empty()) m_lines[place - 1].end = kNewline;
        m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(place), {std::move(text), std::string(kNewline)});
    }

    std::vector<Line> m_lines;
    bool m_isWide = false;
};

std::string ProfilePath(const char *fileName) {
    const std::string path = ktl::SystemPath(fileName);
    if (path.find('/') != std::string::npos) return ktl::ExistingPath(path);
    const std::string program = ktl::SystemPath(ktl::ModuleFileName());
    return ktl::ExistingPath(program.substr(0, program.rfind('/') + 1) + path);
}

// A key's value; nothing when file, section or key is missing.
std::optional<CString> FindValue(const char *section, const char *key, const char *fileName) {
    Profile profile;
    const std::string path = ProfilePath(fileName);
    int error = profile.Load(path);
    const auto body = error == 0 ? profile.FindSection(NameArgument(section)) : std::nullopt;
    const auto line = body ? profile.FindKey(*body, NameArgument(key)) : std::nullopt;
    if (line) return CString(WithoutQuotes(EntryOf(profile.Lines()[*line].text)->value));
    SetLastError(error != 0 ? ktl::PlatformError(error, path) : ERROR_FILE_NOT_FOUND);
    return std::nullopt;
}

// Names with a NUL after each: the sections, or the keys of one section. Nothing when that one is missing.
std::optional<std::string> ListNames(const char *section, const char *fileName) {
    Profile profile;
    if (profile.Load(ProfilePath(fileName)) != 0) return std::nullopt;
    const Profile::Body whole = {0, profile.Lines().size()};
    const auto body = section ? profile.FindSection(NameArgument(section)) : whole;
    if (!body) return std::nullopt;
    std::string names;
    for (std::size_t i = body->first; i < body->last; ++i) {
        const std::string &line = profile.Lines()[i].text;
        const auto entry = EntryOf(line);
        const auto name = section ? (entry ? std::optional(entry->key) : std::nullopt) : SectionOf(line);
        if (name && !name->empty()) names.append(*name).push_back('\0');
    }
    return names;
}

DWORD CopyText(std::string_view text, char *buffer, DWORD size) {
    const auto length = std::min(static_cast<DWORD>(text.size()), size - 1);
    text.copy(buffer, length);
    buffer[length] = '\0';
    return length;
}

// The list ends in two terminators, cut or not.
DWORD CopyList(const std::string &names, char *buffer, DWORD size) {
    if (size < 2) return CopyText("", buffer, size);
    const bool fits = names.size() < size;
    const DWORD length = fits ? static_cast<DWORD>(names.size()) : size - 2;
    std::memcpy(buffer, names.data(), length);
    std::memset(buffer + length, 0, std::min(size - length, DWORD{2}));
    return length;
}

std::string_view DefaultText(const char *text) {
    std::string_view view = text ? std::string_view(text) : std::string_view();
    view.remove_suffix(view.size() - (view.find_last_not_of(' ') + 1));
    return view;
}

}  // namespace

DWORD GetPrivateProfileStringA(const char *section, const char *key, const char *defaultText, char *buffer, DWORD size,
                               const char *fileName) {
    size &= kSizeMask;
    if (!buffer || size == 0) return 0;
    if (!section || !key) {
        const std::optional<std::string> names = ListNames(section, fileName);
        if (names) return CopyList(*names, buffer, size);
    } else if (const std::optional<CString> value = FindValue(section, key, fileName)) {
        return CopyText(value->View(), buffer, size);
    }
    return CopyText(DefaultText(defaultText), buffer, size);
}

UINT GetPrivateProfileIntA(const char *section, const char *key, int defaultValue, const char *fileName) {
    if (!section || !key) return static_cast<UINT>(defaultValue);
    const std::optional<CString> value = FindValue(section, key, fileName);
    if (!value) return static_cast<UINT>(defaultValue);
    std::string_view text = value->View();
    const bool isNegative = text.starts_with('-');
    if (isNegative) text.remove_prefix(1);
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex) text.remove_prefix(2);
    const UINT base = isHex ? 16 : 10;
    UINT number = 0;
    for (const char c : text) {
        const char lower = static_cast<char>(c | 0x20);
        const UINT digit = c >= '0' && c <= '9'           ? static_cast<UINT>(c - '0')
                           : lower >= 'a' && lower <= 'f' ? static_cast<UINT>(lower - 'a') + 10
                                                          : base;
        if (digit >= base) break;
        number = number * base + digit;
    }
    return isNegative ? 0 - number : number;
}

BOOL WritePrivateProfileStringA(const char *section, const char *key, const char *value, const char *fileName) {
    static std::mutex mutex;
    if (!section || !fileName) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    const std::lock_guard guard(mutex);
    const std::string path = ProfilePath(fileName);
    Profile profile;
    int error = profile.Load(path);
    if (error == ENOENT) error = 0;
    bool isChanged = true;
    if (error == 0 && key && value) {
        profile.Set(NameArgument(section), NameArgument(key), value);
    } else if (error == 0) {
        isChanged = key ? profile.DeleteKey(NameArgument(section), NameArgument(key))
                        : profile.DeleteSection(NameArgument(section));
    }
    if (error == 0 && isChanged) error = profile.Save(path);
    if (error == 0) return TRUE;
    SetLastError(ktl::PlatformError(error, path));
    return FALSE;
}
