#include "ktl/platform/profile.h"

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/system.h"
#include "tests/support/faulty_filesystem.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl::test::FaultyFileSystem;
using ktl::test::ScratchFolder;

class Profiles : public testing::Test {
  protected:
    std::string Get(const char *section, const char *key, const char *defaultText = "(default)", DWORD size = 32768) {
        std::vector<char> buffer(size + 1, '#');
        const DWORD length = GetPrivateProfileStringA(section, key, defaultText, buffer.data(), size, Name());
        return std::string(buffer.data(), length);
    }
    CString Name() const { return m_folder.Name("test.ini"); }
    void Have(std::string_view content) const { m_folder.Write("test.ini", content); }
    std::string Content() const { return m_folder.Read("test.ini"); }
    BOOL Put(const char *section, const char *key, const char *value) const {
        return WritePrivateProfileStringA(section, key, value, Name());
    }

    ScratchFolder m_folder;
};

}  // namespace

TEST_F(Profiles, ReadingFollowsThePlatform) {
    struct Case {
        std::string_view content;
        const char *section, *key, *expected;
    };
    const Case cases[] = {
        {"[S]\r\nk=v\r\n", "s", "K", "v"},
        {"[S]\nk=v", "S", "k", "v"},
        {" \t[ \tS\t ] x\n\t k \v=\t v \v\n", "S", "k", "v"},
        {"[S]\nk=v", " S ", " k ", "v"},
        {"[S]\nk=v", "\tS", "k", "(default)"},
        {"k=0\n[S]\nk=v", "S", "k", "v"},
        {"[S\nk=v", "S", "k", "v"},
        {"[S]]x\nk=v", "S", "k", "v"},
        {"[S]\nk=\" v \"", "S", "k", " v "},
        {"[S]\nk=' v '", "S", "k", " v "},
        {"[S]\nk=''v''", "S", "k", "'v'"},
        {"[S]\nk=\"v'", "S", "k", "\"v'"},
        {"[S]\nk=\"", "S", "k", "\""},
        {"[S]\n\"k\"=v", "S", "k", "(default)"},
        {"[S]\n\"k\"=v", "S", "\"k\"", "v"},
        {"[S]\n;k=c\nk=v", "S", "k", "v"},
        {"[S]\n ; k=c", "S", "k", "(default)"},
        {"[S]\nk=;v;w", "S", "k", ";v;w"},
        {"[S]\n#k=v", "S", "#k", "v"},
        {"[S]\nk=1\nk=2", "S", "k", "1"},
        {"[S]\na=1\n[S]\nk=2", "S", "k", "(default)"},
        {"[S]\nk=", "S", "k", ""},
        {"[S]\nk", "S", "k", "(default)"},
        {"[S]\nk=a=b", "S", "k", "a=b"},
        {"[T]\nk=v", "S", "k", "(default)"},
        {"\xEF\xBB\xBF[S]\nk=v", "S", "k", "(default)"},
        {"", "S", "k", "(default)"},
    };
    for (const Case &c : cases) {
        Have(c.content);
        EXPECT_EQ(Get(c.section, c.key), c.expected) << c.content;
    }
}

TEST_F(Profiles, SecondBytesAreNoBrackets) {
    // 乚 is 81 5D in this code page; its second byte is ']'.
    Have("[\x81]A]\nkey=\xD5\x5C\n");
    EXPECT_EQ(Get("\x81]a", "KEY"), "\xD5\x5C");
    EXPECT_TRUE(Put("\x81]A", "two", "2"));
    EXPECT_EQ(Content(), "[\x81]A]\nkey=\xD5\x5C\ntwo=2\r\n");
}

TEST_F(Profiles, DefaultLosesItsTrailingSpacesOnly) {
    Have("[S]\nk=v");
    EXPECT_EQ(Get("S", "none", "  d \t  "), "  d \t");
    EXPECT_EQ(Get("S", "none", nullptr), "");
    EXPECT_EQ(GetPrivateProfileStringA("S", "k", "x", nullptr, 5, Name()), 0U);
}

TEST_F(Profiles, ValuesAreCutToTheBuffer) {
    Have("[S]\nk=abcdef\n");
    for (const DWORD size : {7U, 6U, 1U}) EXPECT_EQ(Get("S", "k", "", size), std::string("abcdef", size - 1));
    char untouched[] = "#";
    EXPECT_EQ(GetPrivateProfileStringA("S", "k", "", untouched, 0, Name()), 0U);
    EXPECT_EQ(GetPrivateProfileStringA("S", "k", "", untouched, 65536, Name()), 0U);
    EXPECT_STREQ(untouched, "#");
    const std::string longValue(10000, 'x');
    Have("[S]\nk=" + longValue + "\nl=2");
    EXPECT_EQ(Get("S", "k"), longValue);
    EXPECT_EQ(Get("S", "k", "", 255).size(), 254U);
    EXPECT_EQ(Get("S", "l"), "2");
}

TEST_F(Profiles, ListsSectionsAndKeys) {
    Have("[A]\nx=1\nnokey\n;c=1\ny=2\n[B]\n[A]\nz=3\n");
    using namespace std::string_view_literals;
    EXPECT_EQ(Get(nullptr, nullptr), "A\0B\0A\0"sv);
    EXPECT_EQ(Get("a", nullptr), "x\0y\0"sv);
    EXPECT_EQ(Get("B", nullptr), "");
    EXPECT_EQ(Get("C", nullptr), "(default)");
    char buffer[8];
    struct Case {
        DWORD size;
        DWORD length;
        std::string_view content;
    };
    const Case cases[] = {
        {5, 4, "x\0y\0\0"sv}, {4, 2, "x\0\0\0"sv}, {3, 1, "x\0\0"sv}, {2, 0, "\0\0"sv}, {1, 0, "\0"sv}};
    for (const Case &c : cases) {
        std::fill(buffer, buffer + sizeof buffer, '#');
        EXPECT_EQ(GetPrivateProfileStringA("A", nullptr, "", buffer, c.size, Name()), c.length) << c.size;
        EXPECT_EQ(std::string_view(buffer, c.size), c.content) << c.size;
        EXPECT_EQ(buffer[c.size], '#');
    }
}

TEST_F(Profiles, IntegersAreReadAsFarAsTheyGo) {
    struct Case {
        const char *value;
        int expected;
    };
    const Case cases[] = {{"12", 12}, {"-7x", -7}, {"0x1F", 31}, {"abc", 0}, {"", 0}, {"4294967295", -1}, {"+3", 0}};
    for (const Case &c : cases) {
        Have(std::string("[S]\nk=") + c.value);
        EXPECT_EQ(static_cast<int>(GetPrivateProfileIntA("S", "k", 5, Name())), c.expected) << c.value;
    }
    EXPECT_EQ(GetPrivateProfileIntA("S", "none", 5, Name()), 5U);
}

TEST_F(Profiles, WritingFollowsThePlatform) {
    struct Case {
        std::string_view before;
        const char *section, *key, *value;
        std::string_view after;
    };
    const Case cases[] = {
        {"", "S", "k", "v", "[S]\r\nk=v\r\n"},
        {"", " S ", " k ", " \"v\" ", "[S]\r\nk= \"v\" \r\n"},
        {"", "S", "k", "", "[S]\r\nk=\r\n"},
        {"[S]\nKey = 1\nb=2\n", "s", "key", "9", "[S]\nKey=9\nb=2\n"},
        {"[S]\r\na=1\r\n\r\n[T]\r\n", "S", "b", "2", "[S]\r\na=1\r\nb=2\r\n\r\n[T]\r\n"},
        {"[S]\na=1", "S", "b", "2", "[S]\na=1\r\nb=2\r\n"},
        {"text\n[S]", "T", "k", "v", "text\n[S]\r\n[T]\r\nk=v\r\n"},
        {"[S]\na=1\nb=2\n", "S", "A", nullptr, "[S]\nb=2\n"},
        {"[S]\na=1\n", "S", "none", nullptr, "[S]\na=1\n"},
        {"[R]\nx=1\n[S]\na=1\n;note\nb\n[T]\n", "s", nullptr, nullptr, "[R]\nx=1\n;note\n[T]\n"},
        {"[S]\na=1\n", "none", nullptr, nullptr, "[S]\na=1\n"},
        {"[S]\n;k=1\n", "S", "k", "2", "[S]\n;k=1\nk=2\r\n"},
    };
    for (const Case &c : cases) {
        Have(c.before);
        EXPECT_TRUE(Put(c.section, c.key, c.value));
        EXPECT_EQ(Content(), c.after) << c.before;
    }
}

TEST_F(Profiles, SixteenBitFilesStaySo) {
    using namespace std::string_view_literals;
    Have("\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0\x2D\x4E\r\0\n\0"sv);
    EXPECT_EQ(Get("S", "k"), ktl::FromUtf8("中").View());
    EXPECT_TRUE(Put("S", "k", ktl::FromUtf8("文")));
    EXPECT_EQ(Content(), "\xFF\xFE[\0S\0]\0\r\0\n\0k\0=\0\x87\x65\r\0\n\0"sv);
}

TEST_F(Profiles, WhatCannotBeWrittenIsTold) {
    EXPECT_FALSE(Put(nullptr, "k", "v"));
    EXPECT_FALSE(WritePrivateProfileStringA("S", "k", "v", m_folder.Name("no/where.ini")));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_TRUE(Put("S", "k", nullptr));
    EXPECT_FALSE(m_folder.Has("test.ini"));
    Have("[S]\nk=old\n");
    for (int calls = 0; calls < 5; ++calls) {
        FaultyFileSystem files;
        if (calls < 4) files.FailAfter(calls, ENOSPC);
        if (calls == 4) files.FailReadsAfter(0, ENOSPC);
        EXPECT_FALSE(Put("S", "k", "new"));
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
        EXPECT_EQ(Content(), "[S]\nk=old\n");
    }
    const CFile open(Name(), CFile::modeRead);
    EXPECT_FALSE(Put("S", "k", "new"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
}

TEST_F(Profiles, BareNamesLieInTheApplicationsFolder) {
    ktl::SetApplicationFolder(m_folder.Name());
    EXPECT_TRUE(WritePrivateProfileStringA("S", "k", "v", "bare.ini"));
    ktl::SetApplicationFolder("");
    EXPECT_EQ(m_folder.Read("bare.ini"), "[S]\r\nk=v\r\n");
}
