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
    // In GBK the last letter of 誠 has the byte of a backslash.
    const Case cases[] = {{"C:\\maps\\city.kml", 0, "city"},
                          {"a.b\\", 0, "a"},
                          {"a.b\\", 1, "a.b"},
                          {"x.tar.gz", 0, "x.tar"},
                          {"", 0, ""},
                          {"\\", 1, ""},
                          {"a.b\\c", 0, "c"},
                          {"D:\\誠\\許功蓋", 1, "許功蓋"}};
    for (const Case &c : cases) {
        EXPECT_EQ(ToUtf8(KtlGetFileNameByPath(FromUtf8(c.path), c.withExtension)), c.name) << c.path;
    }
}

TEST(Paths, StandInTheApplicationsFolderAndAreFound) {
    const Application application;
    const CString folder = application.Folder().Name();
    EXPECT_EQ(KtlGetAppPathName(), folder);
    EXPECT_EQ(KtlGetConfigFilePath(), folder + "\\Kartelo.ini");
    {
        ktl::test::FaultyFileSystem files;
        files.FailAfter(0, EACCES);
        EXPECT_EQ(KtlGetTempDBFolderPath(), folder + "\\TempDB");
    }
    EXPECT_FALSE(application.Folder().Has("TempDB"));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(KtlGetTempDBFolderPath(), folder + "\\TempDB");
    EXPECT_TRUE(KtlIsValidFolderPath(folder + "\\TempDB"));
    EXPECT_FALSE(KtlIsValidFolderPath(folder + "\\none") || KtlIsValidFolderPath(""));
    application.Folder().Write("a.txt", "x");
    EXPECT_TRUE(KtlIsValidFilePath(folder + "\\a.txt") && !KtlIsValidFilePath(folder + "\\b.txt"));
    EXPECT_EQ(KtlGetTempFolderPath().Right(1), CString("\\"));
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
        const char *host, *path;
        unsigned short port;
    };
    // A port is cut to 16 bits.
    const Case cases[] = {{"  HTTP://m.t:8080/ \r\n", 1, "m.t", "/", 8080},
                          {"http://m.t:65537/a", 1, "m.t", "/a", 1},
                          {"http://m.t:x/a", 1, "m.t", "/a", 0},
                          {"http://m.t/a:b", 1, "m.t", "/a:b", 80},
                          {"http:///a", 1, "", "/a", 80},
                          {"https://m.t/a", 0, "", "", 7},
                          {"http://m.t", 0, "", "", 7},
                          {"m.t/a", 0, "", "", 7}};
    for (const Case &c : cases) {
        CString host = "old";
        CString path = "old";
        unsigned short port = 7;
        EXPECT_EQ(KtlParseURL(c.url, host, path, port), c.ok) << c.url;
        EXPECT_TRUE(host == c.host && path == c.path && port == c.port) << c.url << host << path << port;
    }
}

TEST(RandomColor, IsTheSameWithinASecond) {
    static LONGLONG now = 1000;
    const ktl::Clock before = ktl::SetClock([] { return now; });
    const COLORREF first = KtlGetRandomColor();
    EXPECT_EQ(KtlGetRandomColor(), first);
    now = 1001;
    EXPECT_NE(KtlGetRandomColor(), first);
    ktl::SetClock(before);
}

namespace {

/// The clock stands just after noon in local time, whatever the zone.
class ErrorLog : public testing::Test {
  protected:
    ~ErrorLog() override { ktl::SetClock(m_before); }

  private:
    ktl::Clock m_before = ktl::SetClock([] { return CTime(2024, 1, 31, 12, 5, 9).GetTime(); });
};

}  // namespace

TEST_F(ErrorLog, AppendsEntries) {
    const Application application;
    KtlWriteLog(42, FromUtf8("读取失败"), 0);
    KtlWriteLog(1234567, "", 0);
    EXPECT_EQ(application.Log(),
              "异常:000042\n读取失败\n2024-01-31 12:05:09\n\n异常:1234567\n\n2024-01-31 12:05:09\n\n");
}

TEST_F(ErrorLog, OpensTheLogOnlyOnYes) {
    for (const int answer : {IDYES, IDNO}) {
        const Application application(answer);
        KtlWriteLog(7, "x", 1);
        EXPECT_EQ(application.Questions(), std::vector<std::string>{"Inner Error:7,view the error log? 36"});
        const std::vector<std::string> opened{"open " + application.Folder().Path("error.log")};
        EXPECT_EQ(application.Opened(), answer == IDYES ? opened : std::vector<std::string>());
    }
    EXPECT_EQ(ToUtf8(ktl::LogQuestion(7, ktl::Language::Chinese)), "异常:000007,是否需要查看错误日志?");
}

TEST_F(ErrorLog, CatchErrorLogsTheSystemsTextForCodesAboveZero) {
    const Application application;
    for (const int code : {0, 100089}) {
        SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_EQ(KtlCatchError(code, 0), CString("Access is denied.\r\n"));
    }
    EXPECT_EQ(application.Log(), "异常:100089\nAccess is denied.\r\n\n2024-01-31 12:05:09\n\n");
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
