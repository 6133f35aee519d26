#include "ktl/core/utility.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "ktl/core/log.h"
#include "ktl/platform/date_time.h"
#include "ktl/platform/last_error.h"
#include "tests/support/application.h"
#include "tests/support/faulty_filesystem.h"

using ktl::FromUtf8;
using ktl::ToUtf8;
using ktl::test::Application;

TEST(Paths, FileNameIsWhatFollowsTheLastBackslash) {
    struct Case {
        const char *path;
        int withExtension;
        const char *name;
    };
    const Case cases[] = {
        {"C:\\maps\\city.kml", 1, "city.kml"},
        {"C:\\maps\\city.kml", 0, "city"},
        {"C:\\maps\\a.b\\", 0, "a"},
        {"C:\\maps\\a.b\\", 1, "a.b"},
        {"city.tar.gz", 0, "city.tar"},
        {"city", 0, "city"},
        {"", 0, ""},
        {"\\", 1, ""},
        {"a.b\\c", 0, "c"},
        {"D:\\誠\\許功蓋", 1, "許功蓋"},  // in GBK 誠 ends in the byte of a backslash
    };
    for (const Case &c : cases) {
        EXPECT_EQ(ToUtf8(KtlGetFileNameByPath(FromUtf8(c.path), c.withExtension)), c.name) << c.path;
    }
    ASSERT_EQ(FromUtf8("誠").View().back(), '\\');
}

TEST(Paths, StandInTheApplicationsFolder) {
    const Application application;
    const CString folder = application.Folder().Name();
    EXPECT_EQ(KtlGetAppPathName(), folder);
    EXPECT_EQ(KtlGetConfigFilePath(), folder + "\\Kartelo.ini");
    EXPECT_FALSE(application.Folder().Has("TempDB"));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(KtlGetTempDBFolderPath(), folder + "\\TempDB");
    EXPECT_TRUE(application.Folder().Has("TempDB"));
    EXPECT_EQ(KtlGetTempFolderPath().Right(1), CString("\\"));
}

TEST(Paths, TempFolderThatCannotBeMadeIsStillNamed) {
    const Application application;
    ktl::test::FaultyFileSystem files;
    files.FailAfter(0, EACCES);
    EXPECT_EQ(KtlGetTempDBFolderPath(), application.Folder().Name() + "\\TempDB");
    EXPECT_FALSE(application.Folder().Has("TempDB"));
}

TEST(Paths, ValidityOfFoldersAndFiles) {
    const Application application;
    application.Folder().Write("a.txt", "x");
    const CString folder = application.Folder().Name();
    EXPECT_EQ(KtlIsValidFolderPath(folder), 1);
    EXPECT_EQ(KtlIsValidFolderPath(folder + "\\none"), 0);
    EXPECT_EQ(KtlIsValidFolderPath(""), 0);
    EXPECT_EQ(KtlIsValidFilePath(folder + "\\a.txt"), 1);
    EXPECT_EQ(KtlIsValidFilePath(folder + "\\b.txt"), 0);
}

TEST(Configuration, ValuesAreCutAt254Bytes) {
    const Application application;
    const CString file = KtlGetConfigFilePath();
    EXPECT_EQ(KtlReadINIString(file, "qx", "name"), CString());
    KtlWriteINIString(file, "qx", "name", FromUtf8("北京"));
    KtlWriteINIString(file, "qx", "long", CString('x', 400));
    EXPECT_EQ(KtlReadINIString(file, "QX", "NAME"), FromUtf8("北京"));
    EXPECT_EQ(KtlReadINIString(file, "qx", "long"), CString('x', 254));
}

TEST(Url, IsTakenApart) {
    struct Case {
        const char *url;
        int ok;
        const char *host;
        const char *path;
        unsigned short port;
    };
    const Case cases[] = {
        {"http://maps.test/a/b.png?x=1", 1, "maps.test", "/a/b.png?x=1", 80},
        {"  HTTP://maps.test:8080/ \r\n", 1, "maps.test", "/", 8080},
        {"http://maps.test:65537/a", 1, "maps.test", "/a", 1},  // cut to 16 bits
        {"http://maps.test:x/a", 1, "maps.test", "/a", 0},
        {"http://maps.test/a:b", 1, "maps.test", "/a:b", 80},
        {"http:///a", 1, "", "/a", 80},
        {"https://maps.test/a", 0, "", "", 7},
        {"http://maps.test", 0, "", "", 7},
        {"maps.test/a", 0, "", "", 7},
        {"", 0, "", "", 7},
    };
    for (const Case &c : cases) {
        CString host = "old";
        CString path = "old";
        unsigned short port = 7;
        EXPECT_EQ(KtlParseURL(c.url, host, path, port), c.ok) << c.url;
        EXPECT_EQ(host, CString(c.host)) << c.url;
        EXPECT_EQ(path, CString(c.path)) << c.url;
        EXPECT_EQ(port, c.port) << c.url;
    }
}

TEST(RandomColor, IsTheSameWithinASecond) {
    static LONGLONG now = 1000;
    const ktl::Clock before = ktl::SetClock([] { return now; });
    const COLORREF first = KtlGetRandomColor();
    const COLORREF again = KtlGetRandomColor();
    now = 1001;
    const COLORREF later = KtlGetRandomColor();
    ktl::SetClock(before);
    EXPECT_EQ(first, again);
    EXPECT_NE(first, later);
    EXPECT_LE(first | later, 0xFFFFFFu);
}

namespace {

/// Noon of a winter day in local time, whatever the zone.
LONGLONG FixedNow() {
    return CTime(2024, 1, 31, 12, 5, 9).GetTime();
}

class ErrorLog : public testing::Test {
  protected:
    ErrorLog() : m_before(ktl::SetClock(FixedNow)) {}
    ~ErrorLog() override { ktl::SetClock(m_before); }

    ktl::Clock m_before;
};

}  // namespace

TEST_F(ErrorLog, AppendsEntries) {
    const Application application;
    KtlWriteLog(42, FromUtf8("读取失败"), 0);
    KtlWriteLog(1234567, "", 0);
    EXPECT_EQ(application.Log(),
              "异常:000042\n读取失败\n2024-01-31 12:05:09\n\n异常:1234567\n\n2024-01-31 12:05:09\n\n");
    EXPECT_TRUE(application.Questions().empty());
}

TEST_F(ErrorLog, OpensTheLogOnlyOnYes) {
    {
        const Application application(IDYES);
        KtlWriteLog(7, "x", 1);
        EXPECT_EQ(application.Questions(), std::vector<std::string>{"Inner Error:7,view the error log? 36"});
        EXPECT_EQ(application.Opened(), std::vector<std::string>{"open " + application.Folder().Path("error.log")});
    }
    const Application application(IDNO);
    KtlWriteLog(7, "x", 1);
    EXPECT_EQ(application.Questions().size(), 1u);
    EXPECT_TRUE(application.Opened().empty());
    EXPECT_EQ(ToUtf8(ktl::LogQuestion(7, ktl::Language::Chinese)), "异常:000007,是否需要查看错误日志?");
}

TEST_F(ErrorLog, CatchErrorLogsTheSystemsTextForCodesAboveZero) {
    const Application application;
    SetLastError(ERROR_ACCESS_DENIED);
    const CString text = KtlCatchError(0, 1);
    EXPECT_NE(text, CString());
    EXPECT_FALSE(application.Folder().Has("error.log"));
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(KtlCatchError(100089, 0), text);
    EXPECT_EQ(application.Log(), "异常:100089\n" + ToUtf8(text) + "\n2024-01-31 12:05:09\n\n");
}

TEST_F(ErrorLog, ShowExceptionCutsTheTextAndAsks) {
    const Application application;
    CException exception(std::string(400, 'e'));
    KtlShowException(&exception);
    EXPECT_EQ(application.Log(), "异常:000001\n" + std::string(254, 'e') + "\n2024-01-31 12:05:09\n\n");
    EXPECT_EQ(application.Questions().size(), 1u);
}

TEST_F(ErrorLog, FaultyDiskIsBorneInSilence) {
    const Application application;
    ktl::test::FaultyFileSystem files;
    for (int calls = 0; calls < 4; ++calls) {
        files.FailAfter(calls, ENOSPC);
        KtlWriteLog(7, "x", 1);
    }
    EXPECT_EQ(application.Questions().size(), 4u);
}
