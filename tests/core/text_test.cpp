#include "ktl/core/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ktl/platform/encoding.h"

namespace {

using Texts = std::vector<std::string>;

Texts Utf8(const CArray<CString, CString> &texts) {
    Texts result;
    for (const CString &text : texts) result.push_back(ktl::ToUtf8(text));
    return result;
}

Texts Bytes(const CArray<CString, CString> &texts) {
    Texts result;
    for (const CString &text : texts) result.emplace_back(text.View());
    return result;
}

Texts SplitByWidth(const char *utf8, int width) {
    CArray<CString, CString> lines;
    KtlSplitString(ktl::FromUtf8(utf8), width, lines);
    return Utf8(lines);
}

Texts Split(const char *text, const char *separator, int keepEmpty) {
    CArray<CString, CString> parts;
    KtlSplitString(text, separator, parts, keepEmpty);
    return Bytes(parts);
}

}  // namespace

TEST(WidthSplit, CountsPairsAsTwo) {
    struct Case {
        const char *text;
        int width;
        Texts lines;
    };
    const Case cases[] = {
        {"", 3, {}},
        {"a中b", 4, {"a中b"}},
        {"a中b", 3, {"a中", "b"}},
        {"ab中", 3, {"ab", "中"}},
        {"abcdef", 3, {"abc", "def"}},
        {"中文字", 4, {"中文", "字"}},
        {"中文", 1, {"", "中", "文"}},
        {"ab", 0, {"", "a", "b"}},
        {"ab", -7, {"", "a", "b"}},
    };
    for (const Case &c : cases) EXPECT_EQ(SplitByWidth(c.text, c.width), c.lines) << c.text << " " << c.width;
}

TEST(WidthSplit, BreakPutsTheSeparatorWhereALineEnds) {
    const auto broken = [](const char *text, int width, const char *separator) {
        return ktl::ToUtf8(KtlBreakString(ktl::FromUtf8(text), width, separator));
    };
    EXPECT_EQ(broken("ab中文", 3, "'+'"), "ab'+'中'+'文");
    EXPECT_EQ(broken("", 3, "|"), "");
    EXPECT_EQ(broken("ab", 0, "|"), "|a|b");
    EXPECT_EQ(KtlBreakString("abcd", 3), CString("abc\nd"));
}

// 0x80 and 0xFF are no lead bytes of the code page, but begin a pair here; the last byte may have no second one.
TEST(Characters, EveryByteFrom80BeginsAPair) {
    CArray<CString, CString> letters;
    KtlSpliteStringToSingle(
        "a\x80g\xFFz\xB0\xA1"
        "b\xB0",
        letters);
    EXPECT_EQ(Bytes(letters), (Texts{"a", "\x80g", "\xFFz", "\xB0\xA1", "b", "\xB0"}));
    CArray<CString, CString> lines;
    KtlSplitString("a\xB0", 2, lines);
    EXPECT_EQ(Bytes(lines), (Texts{"a", "\xB0"}));
}

TEST(SeparatorSplit, RemovesOneByteAndAlwaysAddsTheRest) {
    struct Case {
        const char *text;
        const char *separator;
        int keepEmpty;
        Texts parts;
    };
    const Case cases[] = {
        {"a,b", ",", 0, {"a", "b"}},
        {"a,b,", ",", 0, {"a", "b", ""}},
        {",a,,b", ",", 0, {"a", "b"}},
        {",a,,b", ",", 1, {"", "a", "", "b"}},
        {"", ",", 0, {""}},
        {"a<>b<>c", "<>", 1, {"a", ">b", ">c"}},
        {"a<>", "<>", 1, {"a", ">"}},
        {"aaa", "aa", 1, {"", "", "a"}},
        {"a,b", "", 1, {"a,b"}},
        {"a,b", ";", 0, {"a,b"}},
        // A separator's byte inside a pair is none: 0xB7 0x7C is one character.
        {"x\xB7|y|z", "|", 1, {"x\xB7|y", "z"}},
    };
    for (const Case &c : cases) EXPECT_EQ(Split(c.text, c.separator, c.keepEmpty), c.parts) << c.text;
}

TEST(SplitNumber, PutsCommasLeftOfTheLastDot) {
    const char *const cases[][2] = {
        {"1234567.89", "1,234,567.89"}, {"123", "123"}, {"1234", "1,234"}, {"-123", "-,123"},
        {"-1234.5", "-1,234.5"},        {"", ""},       {".5", ".5"},      {"1.234.567", "1.,234.567"},
    };
    for (const auto &c : cases) EXPECT_EQ(KtlGetSplitNumber(c[0]), CString(c[1])) << c[0];
}

TEST(WideText, IsCutAt1024) {
    EXPECT_STREQ(ToWChar(ktl::FromUtf8("a中")), L"a中");
    EXPECT_EQ(GetStringWcharLength(ktl::FromUtf8("图层1")), 3);
    EXPECT_EQ(GetStringWcharLength(CString('x', 5000)), 1024);
    EXPECT_STREQ(ToWChar("b"), L"b");  // nothing stays of the longer text

    EXPECT_EQ(ktl::ToUtf8(WCharToString(std::wstring(L"中a").data())), "中a");
    EXPECT_EQ(WCharToString(nullptr), CString());
    EXPECT_EQ(WCharToString(std::wstring(2000, L'x').data()).GetLength(), 1024);
    // A pair is not cut in two.
    EXPECT_EQ(WCharToString((L"x" + std::wstring(600, L'中')).data()).GetLength(), 1023);
}
