#include "ktl/core/text.h"

#include <gtest/gtest.h>

#include <string>

#include "ktl/platform/encoding.h"

namespace {

/// Every text with a slash after it.
CString Listed(const CArray<CString, CString> &texts) {
    CString list;
    for (const CString &text : texts) list += text + "/";
    return list;
}

}  // namespace

TEST(WidthSplit, CountsPairsAsTwoAndBreaksWhereALineEnds) {
    struct Case {
        const char *text;
        int width;
        const char *lines;
    };
    const Case cases[] = {{"", 3, ""},           {"a中b", 3, "a中/b/"},  {"ab中", 4, "ab中/"},
                          {"ab中", 3, "ab/中/"}, {"中文", 1, "/中/文/"}, {"ab", -7, "/a/b/"}};
    for (const Case &c : cases) {
        const CString text = ktl::FromUtf8(c.text);
        CArray<CString, CString> lines;
        KtlSplitString(text, c.width, lines);
        EXPECT_EQ(ktl::ToUtf8(Listed(lines)), c.lines) << c.text << " " << c.width;
        if (text.IsEmpty()) continue;
        EXPECT_EQ(KtlBreakString(text, c.width, "/") + "/", Listed(lines)) << c.text << " " << c.width;
    }
    EXPECT_EQ(KtlBreakString("", 3), CString());
    EXPECT_EQ(KtlBreakString("abcd", 3), CString("abc\nd"));
}

// 0x80 and 0xFF are no lead bytes of the code page, but begin a pair here; the last byte may have no second one.
TEST(Characters, EveryByteFrom80BeginsAPair) {
    CArray<CString, CString> letters;
    KtlSpliteStringToSingle("\x80g\xFFz\xB0\xA1-\xB0", letters);
    EXPECT_EQ(Listed(letters), CString("\x80g/\xFFz/\xB0\xA1/-/\xB0/"));
    CArray<CString, CString> lines;
    KtlSplitString("a\xB0", 2, lines);
    EXPECT_EQ(Listed(lines), CString("a/\xB0/"));
}

TEST(SeparatorSplit, RemovesOneByteAndAlwaysAddsTheRest) {
    struct Case {
        const char *text, *separator;
        int keepEmpty;
        const char *parts;
    };
    // A separator's byte inside a pair is none: 0xB7 0x7C is one character.
    const Case cases[] = {{"a,b,", ",", 0, "a/b//"}, {",a,,b", ",", 0, "a/b/"},          {",a,,b", ",", 1, "/a//b/"},
                          {"", ",", 0, "/"},         {"a<>b<>c", "<>", 1, "a/>b/>c/"},   {"aaa", "aa", 1, "//a/"},
                          {"a,b", "", 1, "a,b/"},    {"x\xB7|y|z", "|", 1, "x\xB7|y/z/"}};
    for (const Case &c : cases) {
        CArray<CString, CString> parts;
        KtlSplitString(c.text, c.separator, parts, c.keepEmpty);
        EXPECT_EQ(Listed(parts), CString(c.parts)) << c.text << c.keepEmpty;
    }
}

TEST(SplitNumber, PutsCommasLeftOfTheLastDot) {
    const char *const cases[][2] = {
        {"1234567.89", "1,234,567.89"}, {"123", "123"}, {"-123", "-,123"}, {"", ""}, {".5", ".5"},
        {"1.234.567", "1.,234.567"},
    };
    for (const auto &c : cases) EXPECT_EQ(KtlGetSplitNumber(c[0]), CString(c[1])) << c[0];
}

TEST(WideText, IsCutAt1024) {
    EXPECT_EQ(GetStringWcharLength(CString('x', 5000)), 1024);
    EXPECT_STREQ(ToWChar(ktl::FromUtf8("a中")), L"a中");  // nothing stays of the longer text
    EXPECT_EQ(ktl::ToUtf8(WCharToString(std::wstring(L"中a").data())), "中a");
    EXPECT_EQ(WCharToString(nullptr), CString());
    EXPECT_EQ(WCharToString(std::wstring(2000, L'x').data()).GetLength(), 1024);
    // A pair is not cut in two.
    EXPECT_EQ(WCharToString((L"x" + std::wstring(600, L'中')).data()).GetLength(), 1023);
}
