#pragma once

#include <compare>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

#include "ktl/platform/export.h"

/// An 8-bit string of GBK bytes. Lengths and positions count bytes; searching, replacing, trimming and folding case
/// walk characters, so that a trail byte never matches an ASCII needle. No operation throws for a bad position: it is
/// clamped as told at each. `GetAt` and `[]` alone throw `CInvalidArgException`.
///
///     CString path = folder + "\\" + name;
///     path.Format("%s\\%s.dbf", folder.GetString(), name.GetString());
class KTL_API CString {
  public:
    CString() = default;
    /// A null pointer makes an empty string.
    CString(const char *text);
    CString(const char *text, int length);
    CString(char ch, int count = 1);
    CString(std::string_view text);
    CString(std::string text) : m_text(std::move(text)) {}

    CString &operator=(const char *text);
    CString &operator=(char ch);

    operator const char *() const { return m_text.c_str(); }
    const char *GetString() const { return m_text.c_str(); }
    std::string_view View() const { return m_text; }
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    /// 0 at index == length; throws CInvalidArgException outside 0..length.
    char GetAt(int index) const;
    char operator[](int index) const { return GetAt(index); }
    /// Throws CInvalidArgException outside 0..length-1.
    void SetAt(int index, char ch);

    CString &operator+=(const CString &text);
    CString &operator+=(const char *text);
    CString &operator+=(char ch);
    void Append(const char *text, int length);

    /// printf's formats, as the platform prints them whatever the locale. `%I64d` is 64 bits; `%ld` is 32 bits when
    /// given an `int`. A null `%s` prints "(null)"; an unknown conversion drops its `%` and prints its character.
    /// `%S` and `%ls` take a wchar_t string.
    void Format(const char *format, ...);
    void FormatV(const char *format, va_list args);
    void AppendFormat(const char *format, ...);

    int Find(const char *text, int start = 0) const;
    int Find(char ch, int start = 0) const;
    int ReverseFind(char ch) const;
    int FindOneOf(const char *chars) const;
    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Tokenize(const char *delimiters, int &start) const;

    /// Each of the trims returns this string.
    CString &Trim();
    CString &TrimLeft();
    CString &TrimRight();
    CString &Trim(char ch);
    CString &TrimLeft(char ch);
    CString &TrimRight(char ch);

    CString &MakeLower();
    CString &MakeUpper();
    /// The number of replacements.
    int Replace(const char *from, const char *to);
    int Replace(char from, char to);
    int Remove(char ch);
    int Insert(int index, const char *text);
    int Delete(int index, int count = 1);

    /// Negative, 0 or positive; both stop at an embedded NUL.
    int Compare(const char *other) const;
    int CompareNoCase(const char *other) const;

    /// At least `length` writable bytes and a terminator, good until `ReleaseBuffer` (-1: up to the first NUL).
    char *GetBuffer(int length);
    void ReleaseBuffer(int length = -1);

    /// Comparison as `Compare`. Found through a CString only, so that other texts keep their own comparison.
    friend bool operator==(const CString &a, const CString &b) { return a.Compare(b) == 0; }
    friend bool operator==(const CString &a, const char *b) { return a.Compare(b) == 0; }
    friend std::strong_ordering operator<=>(const CString &a, const CString &b) { return a.Compare(b) <=> 0; }
    friend std::strong_ordering operator<=>(const CString &a, const char *b) { return a.Compare(b) <=> 0; }

  private:
    std::string m_text;
};

KTL_API CString operator+(const CString &a, const CString &b);
KTL_API CString operator+(const CString &a, const char *b);
KTL_API CString operator+(const char *a, const CString &b);
KTL_API CString operator+(const CString &a, char b);
