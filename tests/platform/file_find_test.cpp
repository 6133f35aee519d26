#include "ktl/platform/file_find.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ktl/platform/encoding.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/system.h"
#include "ktl/platform/wildcard.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl::test::ScratchFolder;
using Names = std::vector<std::string>;

Names Found(const CString &pattern) {
    Names names;
    CFileFind find;
    BOOL more = find.FindFile(pattern);
    while (more) {
        more = find.FindNextFile();
        names.push_back(ktl::ToUtf8(find.GetFileName()));
    }
    return names;
}

}  // namespace

TEST(Wildcard, FitsByThePlatformsRules) {
    struct Case {
        const char *pattern, *name;
        bool fits;
    };
    const Case cases[] = {
        {"*.*", "noext", true},    {"*", "a.b", true},       {"*.dbf", "A.DBF", true}, {"*.dbf", "a.dbfx", false},
        {"*.", "noext", true},     {"a?c", "abc", true},     {"a?c", "ac", false},     {"ab?", "ab", true},
        {"a?.txt", "a.txt", true}, {"a??", "a.b", true},     {"a.*", "a", true},       {"a.?", "a", true},
        {"*a*b*", "xaybz", true},  {"*a*b*", "xbya", false}, {"", "a", false},         {"?", "", true},
        {"**x", "x", true},        {"誠", "誠", true},       {"?.d", "誠.d", true},    {"??x", "誠x", false},
        {"*\\", "誠", false},      {"*|", "亅", false},      {"*.", "a.b", false},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(ktl::MatchesWildcard(ktl::FromUtf8(c.pattern).View(), ktl::FromUtf8(c.name).View()), c.fits)
            << c.pattern << " " << c.name;
    }
}

TEST(Wildcard, ManyStarsTakeNoExponentialTime) {
    EXPECT_FALSE(ktl::MatchesWildcard(std::string(60, '*') + "a" + std::string(60, '*') + "c", std::string(5000, 'a')));
}

TEST(FileFind, ListsInOrderWithTheDotsFirst) {
    const ScratchFolder folder;
    for (const char *name : {"b.dbf", "A.DBF", "c.txt", "_x", "誠.dbf"}) folder.Write(name, "");
    ASSERT_TRUE(CreateDirectory(folder.Name("sub")));
    EXPECT_EQ(Found(folder.Name("*.*")), (Names{".", "..", "A.DBF", "b.dbf", "c.txt", "sub", "_x", "誠.dbf"}));
    EXPECT_EQ(Found(folder.Name("*.dbf")), (Names{"A.DBF", "b.dbf", "誠.dbf"}));
    EXPECT_EQ(Found(folder.Name("sub/*.*")), (Names{".", ".."}));
    EXPECT_EQ(Found(folder.Name("C.TXT")), (Names{"c.txt"}));
    EXPECT_EQ(Found(folder.Name("sub")), (Names{"sub"}));
    // What GBK lacks is shown replaced.
    folder.Write("한ç.tab", "");
    EXPECT_EQ(Found(folder.Name("*.tab")), (Names{"?c.tab"}));
}

TEST(FileFind, TellsAMissingFileFromAMissingFolder) {
    const ScratchFolder folder;
    CFileFind find;
    struct Case {
        CString name;
        DWORD error;
    };
    const Case cases[] = {
        {folder.Name("none"), ERROR_FILE_NOT_FOUND},     {folder.Name("*.none"), ERROR_FILE_NOT_FOUND},
        {folder.Name("no/where"), ERROR_PATH_NOT_FOUND}, {folder.Name("no/*.*"), ERROR_PATH_NOT_FOUND},
        {folder.Name() + "\\", ERROR_FILE_NOT_FOUND},    {CString(), ERROR_FILE_NOT_FOUND},
    };
    for (const Case &c : cases) {
        EXPECT_FALSE(find.FindFile(c.name));
        EXPECT_EQ(GetLastError(), c.error) << ktl::ToUtf8(c.name);
    }
}

TEST(FileFind, EntryHasItsFacts) {
    const ScratchFolder folder;
    folder.Write("a.b.txt", "abc");
    CFileFind find;
    ASSERT_TRUE(find.FindFile(folder.Name("*.txt")));
    EXPECT_EQ(find.GetFileName(), "");
    EXPECT_FALSE(find.FindNextFile());
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(find.GetFileName() == "a.b.txt" && find.GetFileTitle() == "a.b");
    EXPECT_EQ(find.GetFilePath(), folder.Name("a.b.txt"));
    EXPECT_EQ(find.GetRoot(), folder.Name() + "\\");
    EXPECT_TRUE(find.GetLength() == 3U && !find.IsDirectory());
    ASSERT_TRUE(find.FindFile(folder.Name("*.*")));
    find.FindNextFile();
    EXPECT_TRUE(find.IsDots() && find.IsDirectory());
}
