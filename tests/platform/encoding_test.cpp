#include "ktl/platform/encoding.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

std::string Bytes(const CString &text) {
    return std::string(text.View());
}

std::string Pair(unsigned lead, unsigned trail) {
    return {static_cast<char>(lead), static_cast<char>(trail)};
}

std::string Utf8Of(char32_t c) {
    return ktl::ToUtf8(ktl::GbkFromWide(std::wstring(1, static_cast<wchar_t>(c))));
}

}  // namespace

TEST(Encoding, EveryCharacterComesBack) {
    int characters = 0;
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            if (trail == 0x7F) continue;
            const std::string gbk = Pair(lead, trail);
            const std::string utf8 = ktl::ToUtf8(gbk);
            if (utf8 == "\uFFFD") continue;
            ++characters;
            int replaced = 0;
            EXPECT_EQ(Bytes(ktl::FromUtf8(utf8, &replaced)), gbk) << utf8;
            EXPECT_EQ(replaced, 0) << utf8;
        }
    }
    // 21,791 characters of the code page and 1,894 of the user areas.
    EXPECT_EQ(characters, 21791 + 1894);
}

TEST(Encoding, KnownCodes) {
    const std::pair<const char *, const char *> cases[] = {
        {"中文", "\xD6\xD0\xCE\xC4"},
        {"誠", "\xD5\x5C"},
        {"亅", "\x81\x7C"},
        {"€", "\x80"},
        {"·", "\xA1\xA4"},
        {"—", "\xA1\xAA"},
        {"ⅰ", "\xA2\xA1"},
        {"\uE000", "\xAA\xA1"},
        {"\uE234", "\xF8\xA1"},
        {"\uE4C6", "\xA1\x40"},
        {"\uE765", "\xA7\xA0"},
    };
    for (const auto &[utf8, gbk] : cases) {
        EXPECT_EQ(Bytes(ktl::FromUtf8(utf8)), gbk);
        EXPECT_EQ(ktl::ToUtf8(gbk), utf8);
    }
    EXPECT_EQ(Utf8Of(0xE233), ktl::ToUtf8("\xAF\xFE"));
    EXPECT_EQ(Utf8Of(0xE4C5), ktl::ToUtf8("\xFE\xFE"));
}

TEST(Encoding, WhatGbkLacksIsPlainAndCounted) {
    struct Case {
        const char *utf8, *gbk;
        int replaced;
    };
    const Case cases[] = {
        {"Curaçao", "Curacao", 1},
        {"São Tomé", "Sao Tom\xA8\xA6", 1},
        {"Straße Æ œ Þ", "Strasse AE oe Th", 4},
        {"Đà Nẵng", "D\xA8\xA4 Nang", 2},
        {"İzmir ığüşö", "Izmir ig\xA8\xB9so", 5},
        {"e\u0301", "e", 1},
        {"a\u00A0b\u2022\u30FB", "a b\xA1\xA4\xA1\xA4", 3},
        {"‹©®™›", "<(C)(R)TM>", 5},
        {"Άθήνα", "\xA6\xA1\xA6\xC8\xA6\xC7\xA6\xCD\xA6\xC1", 2},
        {"한글", "??", 2},
        {"😀x", "?x", 1},
        {"\uFEFFa", "a", 1},
    };
    for (const Case &c : cases) {
        int replaced = 0;
        EXPECT_EQ(Bytes(ktl::FromUtf8(c.utf8, &replaced)), c.gbk) << c.utf8;
        EXPECT_EQ(replaced, c.replaced) << c.utf8;
    }
}

TEST(Encoding, EveryFormIsTextThatGbkHas) {
    for (char32_t c = 0xA0; c < 0x10000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const CString gbk = ktl::GbkFromWide(std::wstring(1, static_cast<wchar_t>(c)));
        const std::string utf8 = ktl::ToUtf8(gbk);
        EXPECT_EQ(ktl::FromUtf8(utf8), gbk) << static_cast<unsigned>(c);
        EXPECT_EQ(utf8.find("\uFFFD"), std::string::npos) << static_cast<unsigned>(c);
    }
}

TEST(Encoding, DamagedTextIsReplacedByteByByte) {
    const std::pair<std::string, std::string> utf8Cases[] = {
        {"\xC3", "?"},
        {"a\xE4\xB8", "a??"},
        {"\xC0\xAF", "??"},
        {"\xED\xA0\x80", "???"},
        {"\xF5\x80\x80\x80", "????"},
        {"\x80z", "?z"},
        {"\xF4\x90\x80\x80", "????"},
        {"\xE4z", "?z"},
        {"\xED\xB0\x80", "???"},
    };
    for (const auto &[utf8, gbk] : utf8Cases) EXPECT_EQ(Bytes(ktl::FromUtf8(utf8)), gbk);
    const std::pair<std::string, std::string> gbkCases[] = {
        {"a\xD6", "a\uFFFD"},   {"\xD6/x", "\uFFFD/x"},     {"\xFF", "\uFFFD"},
        {"\xA2\xAB", "\uFFFD"}, {"\xD6\x7F", "\uFFFD\x7F"},
    };
    for (const auto &[gbk, utf8] : gbkCases) EXPECT_EQ(ktl::ToUtf8(gbk), utf8);
    EXPECT_EQ(ktl::ToUtf8(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(Encoding, WideTextKeepsItsCharacters) {
    const CString text = ktl::FromUtf8("a中誠€");
    EXPECT_EQ(ktl::WideFromGbk(text.View()), L"a中誠€");
    EXPECT_EQ(ktl::GbkFromWide(L"a中誠€"), text);
    EXPECT_EQ(ktl::Utf16FromGbk(text.View()), u"a中誠€");
    int replaced = 0;
    EXPECT_EQ(Bytes(ktl::GbkFromUtf16(u"中😀\xD800x", &replaced)), "\xD6\xD0??x");
    EXPECT_EQ(replaced, 2);
}

TEST(FileNames, SecondBytesAreNoSeparators) {
    const std::pair<const char *, const char *> cases[] = {
        {"\\data\\誠\\亅.dbf", "/data/誠/亅.dbf"}, {"誠\\", "誠/"}, {"a/b\\c", "a/b/c"}, {"\\", "/"}, {"", ""},
    };
    for (const auto &[platform, system] : cases) {
        EXPECT_EQ(ktl::SystemPath(ktl::FromUtf8(platform)), system);
    }
    EXPECT_EQ(ktl::SystemPath("a\\\xD5"), "a/\uFFFD");
    EXPECT_EQ(ktl::PlatformPath("/data/誠/亅"), ktl::FromUtf8("\\data\\誠\\亅"));
    EXPECT_EQ(ktl::PlatformPath("/한/ç"), "\\?\\c");
}

TEST(Encoding, ManyReplacementsTakeLinearTime) {
    std::string utf8;
    for (int i = 0; i < 200000; ++i) utf8 += "한ﬃ";
    int replaced = 0;
    EXPECT_EQ(ktl::FromUtf8(utf8, &replaced).GetLength(), 800000);
    EXPECT_EQ(replaced, 400000);
}
