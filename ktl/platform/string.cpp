#include "ktl/platform/string.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/format.h"

using ktl::CharLength;

namespace {

constexpr std::string_view kBlanks = "\t\n\v\f\r ";

std::string_view OrEmpty(const char *text) {
    return text ? std::string_view(text) : std::string_view();
}

// A byte below this never is the second one of a character.
constexpr bool IsNeverTrail(char c) {
    return static_cast<unsigned char>(c) < 0x40;
}

// The first character's start at or behind `target`, walking from the character's start `position`.
std::size_t Boundary(std::string_view text, std::size_t position, std::size_t target) {
    while (position < target) position += CharLength(text, position);
    return position;
}

// The first occurrence that begins at a character's start, walking from `start`.
std::size_t FindText(std::string_view text, std::string_view needle, std::size_t start) {
    std::size_t boundary = start;
    for (;;) {
        const std::size_t found = text.find(needle, boundary);
        if (found == std::string_view::npos) return found;
        boundary = Boundary(text, boundary, found);
        if (boundary == found) return found;
    }
}

std::size_t FindByte(std::string_view text, char ch, std::size_t start) {
    if (IsNeverTrail(ch)) return text.find(ch, start);
    for (std::size_t i = start; i < text.size(); i += CharLength(text, i)) {
        if (text[i] == ch && CharLength(text, i) == 1) return i;
    }
    return std::string_view::npos;
}

int AsIndex(std::size_t position) {
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

// The character at `position` is one of `set`.
bool IsOneOf(std::string_view text, std::size_t position, std::string_view set) {
    const std::size_t length = CharLength(text, position);
    for (std::size_t i = 0; i < set.size(); i += CharLength(set, i)) {
        if (CharLength(set, i) == length && text.compare(position, length, set, i, length) == 0) return true;
    }
    return false;
}

std::size_t Span(std::string_view text, std::size_t position, std::string_view set, bool including) {
    while (position < text.size() && IsOneOf(text, position, set) == including) position += CharLength(text, position);
    return position;
}

// Folding: ASCII letters, and the full-width ones, whose lead byte is A3.
constexpr unsigned char kWideLead = 0xA3;
struct Fold {
    unsigned char first;
    unsigned char last;
    unsigned char wideFirst;
    unsigned char wideLast;
    int step;
};
constexpr Fold kToLower = {'A', 'Z', 0xC1, 0xDA, 0x20};
constexpr Fold kToUpper = {'a', 'z', 0xE1, 0xFA, -0x20};

constexpr unsigned char FoldByte(const Fold &fold, unsigned char byte, bool isWide) {
    const unsigned char first = isWide ? fold.wideFirst : fold.first;
    const unsigned char last = isWide ? fold.wideLast : fold.last;
    return byte >= first && byte <= last ? static_cast<unsigned char>(byte + fold.step) : byte;
}

void FoldText(std::string &text, const Fold &fold) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharLength(text, i);
        const auto first = static_cast<unsigned char>(text[i]);
        if (length == 1) {
            text[i] = static_cast<char>(FoldByte(fold, first, false));
        } else if (first == kWideLead) {
            text[i + 1] = static_cast<char>(FoldByte(fold, static_cast<unsigned char>(text[i + 1]), true));
        }
        i += length;
    }
}

// The character at `position` folded to lower case as a number, and the position moved behind it.
unsigned TakeFolded(std::string_view text, std::size_t &position) {
    const auto first = static_cast<unsigned char>(text[position]);
    if (CharLength(text, position) == 1) {
        ++position;
        return FoldByte(kToLower, first, false);
    }
    const auto second = static_cast<unsigned char>(text[position + 1]);
    position += 2;
    return first << 8 | (first == kWideLead ? FoldByte(kToLower, second, true) : second);
}

}  // namespace

CString::CString(const char *text) : m_text(OrEmpty(text)) {}

CString::CString(const char *text, int length) {
    if (text && length > 0) m_text.assign(text, static_cast<std::size_t>(length));
}

CString::CString(char ch, int count) : m_text(static_cast<std::size_t>(std::max(count, 0)), ch) {}

CString::CString(std::string_view text) : m_text(text) {}

CString &CString::operator=(const char *text) {
    if (text) {
        m_text = text;
    } else {
        m_text.clear();
    }
    return *this;
}

CString &CString::operator=(char ch) {
    m_text.assign(1, ch);
    return *this;
}

char CString::GetAt(int index) const {
    if (index < 0 || index > GetLength()) throw CInvalidArgException();
    return m_text.c_str()[index];
}

void CString::SetAt(int index, char ch) {
    if (index < 0 || index >= GetLength()) throw CInvalidArgException();
    m_text[static_cast<std::size_t>(index)] = ch;
}

CString &CString::operator+=(const CString &text) {
    m_text += text.m_text;
    return *this;
}

CString &CString::operator+=(const char *text) {
    if (text) m_text += text;
    return *this;
}

CString &CString::operator+=(char ch) {
    m_text += ch;
    return *this;
}

void CString::Append(const char *text, int length) {
    if (text && length > 0) m_text.append(text, static_cast<std::size_t>(length));
}

void CString::Format(const char *format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::FormatV(const char *format, va_list args) {
    m_text = ktl::FormatText(OrEmpty(format), args);
}

void CString::AppendFormat(const char *format, ...) {
    va_list args;
    va_start(args, format);
    m_text += ktl::FormatText(OrEmpty(format), args);
    va_end(args);
}

int CString::Find(const char *text, int start) const {
    if (!text || start < 0 || start > GetLength()) return -1;
    return AsIndex(FindText(m_text, text, static_cast<std::size_t>(start)));
}

int CString::Find(char ch, int start) const {
    if (start < 0 || start >= GetLength()) return -1;
    return AsIndex(FindByte(m_text, ch, static_cast<std::size_t>(start)));
}

int CString::ReverseFind(char ch) const {
    if (IsNeverTrail(ch)) return AsIndex(m_text.rfind(ch));
    int last = -1;
    for (std::size_t i = 0; i < m_text.size(); i += CharLength(m_text, i)) {
        if (m_text[i] == ch && CharLength(m_text, i) == 1) last = static_cast<int>(i);
    }
    return last;
}

int CString::FindOneOf(const char *chars) const {
    const std::size_t found = Span(m_text, 0, OrEmpty(chars), false);
    return found < m_text.size() ? static_cast<int>(found) : -1;
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    return Mid(GetLength() - std::clamp(count, 0, GetLength()));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    if (first >= GetLength() || count <= 0) return {};
    return CString(
        std::string_view(m_text).substr(static_cast<std::size_t>(std::max(first, 0)), static_cast<std::size_t>(count)));
}

CString CString::Tokenize(const char *delimiters, int &start) const {
    const std::string_view set = OrEmpty(delimiters);
    const std::string_view text = m_text;
    const std::size_t from = start < 0 ? text.size() : Span(text, static_cast<std::size_t>(start), set, true);
    if (from >= text.size()) {
        start = -1;
        return {};
    }
    const std::size_t until = Span(text, from, set, false);
    start = static_cast<int>(std::min(until + 1, text.size()));
    return CString(text.substr(from, until - from));
}

CString &CString::Trim() {
    return TrimRight().TrimLeft();
}

CString &CString::TrimLeft() {
    m_text.erase(0, std::min(m_text.find_first_not_of(kBlanks), m_text.size()));
    return *this;
}

CString &CString::TrimRight() {
    m_text.erase(m_text.find_last_not_of(kBlanks) + 1);
    return *this;
}

CString &CString::Trim(char ch) {
    return TrimRight(ch).TrimLeft(ch);
}

CString &CString::TrimLeft(char ch) {
    m_text.erase(0, Span(m_text, 0, std::string_view(&ch, 1), true));
    return *this;
}

CString &CString::TrimRight(char ch) {
    std::size_t keep = 0;
    for (std::size_t i = 0; i < m_text.size();) {
        const bool isOther = !IsOneOf(m_text, i, std::string_view(&ch, 1));
        i += CharLength(m_text, i);
        if (isOther) keep = i;
    }
    m_text.erase(keep);
    return *this;
}

CString &CString::MakeLower() {
    FoldText(m_text, kToLower);
    return *this;
}

CString &CString::MakeUpper() {
    FoldText(m_text, kToUpper);
    return *this;
}

int CString::Replace(const char *from, const char *to) {
    const std::string_view old = OrEmpty(from);
    if (old.empty()) return 0;
    const std::string text = m_text;
    const std::string oldCopy(old);
    const std::string newText(OrEmpty(to));
    std::string result;
    int count = 0;
    std::size_t position = 0;
    for (;; ++count) {
        const std::size_t found = FindText(text, oldCopy, position);
        if (found == std::string::npos) break;
        result.append(text, position, found - position).append(newText);
        position = found + oldCopy.size();
    }
    if (count > 0) m_text = result.append(text, position);
    return count;
}

int CString::Replace(char from, char to) {
    if (from == to) return 0;
    int count = 0;
    for (std::size_t i = FindByte(m_text, from, 0); i != std::string::npos; i = FindByte(m_text, from, i + 1)) {
        m_text[i] = to;
        ++count;
    }
    return count;
}

int CString::Remove(char ch) {
    std::string kept;
    kept.reserve(m_text.size());
    for (std::size_t i = 0; i < m_text.size();) {
        const std::size_t length = CharLength(m_text, i);
        if (length > 1 || m_text[i] != ch) kept.append(m_text, i, length);
        i += length;
    }
    const auto removed = static_cast<int>(m_text.size() - kept.size());
    m_text = std::move(kept);
    return removed;
}

int CString::Insert(int index, const char *text) {
    const std::string added(OrEmpty(text));
    m_text.insert(static_cast<std::size_t>(std::clamp(index, 0, GetLength())), added);
    return GetLength();
}

int CString::Delete(int index, int count) {
    const int first = std::max(index, 0);
    if (count > 0 && first < GetLength())
        m_text.erase(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
    return GetLength();
}

int CString::Compare(const char *other) const {
    return std::strcmp(m_text.c_str(), other ? other : "");
}

int CString::CompareNoCase(const char *other) const {
    const std::string_view a = m_text.c_str();
    const std::string_view b = OrEmpty(other);
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < a.size() && k < b.size()) {
        const unsigned x = TakeFolded(a, i);
        const unsigned y = TakeFolded(b, k);
        if (x != y) return x < y ? -1 : 1;
    }
    return (i < a.size() ? 1 : 0) - (k < b.size() ? 1 : 0);
}

char *CString::GetBuffer(int length) {
    if (length < 0) throw CInvalidArgException();
    if (length > GetLength()) m_text.resize(static_cast<std::size_t>(length));
    return m_text.data();
}

void CString::ReleaseBuffer(int length) {
    if (length > GetLength()) throw CInvalidArgException();
    m_text.resize(length < 0 ? std::strlen(m_text.c_str()) : static_cast<std::size_t>(length));
}

CString operator+(const CString &a, const CString &b) {
    std::string sum;
    sum.reserve(a.View().size() + b.View().size());
    return CString(std::move(sum.append(a.View()).append(b.View())));
}

CString operator+(const CString &a, const char *b) {
    std::string sum(a.View());
    return CString(std::move(sum.append(OrEmpty(b))));
}

CString operator+(const char *a, const CString &b) {
    std::string sum(OrEmpty(a));
    return CString(std::move(sum.append(b.View())));
}

CString operator+(const CString &a, char b) {
    std::string sum(a.View());
    return CString(std::move(sum += b));
}
