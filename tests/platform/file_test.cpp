#include "ktl/platform/file.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "ktl/platform/encoding.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/mem_file.h"
#include "tests/support/faulty_filesystem.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl::test::FaultyFileSystem;
using ktl::test::ScratchFolder;

int CauseOf(const std::function<void()> &action) {
    try {
        action();
    } catch (const CFileException &e) {
        return e.m_cause;
    }
    return CFileException::none;
}

int OpenCause(const CString &name, UINT flags) {
    CFile file;
    CFileException error;
    return file.Open(name, flags, &error) ? static_cast<int>(CFileException::none) : error.m_cause;
}

}  // namespace

TEST(File, OpenTellsWhyItFailed) {
    const ScratchFolder folder;
    folder.Write("a.txt", "abc");
    struct Case {
        CString name;
        UINT flags;
        int cause;
    };
    const Case cases[] = {
        {folder.Name("none"), CFile::modeRead, CFileException::fileNotFound},
        {folder.Name("no/where"), CFile::modeRead, CFileException::badPath},
        {folder.Name("no/where"), CFile::modeCreate | CFile::modeWrite, CFileException::badPath},
        {folder.Name("a.txt/b"), CFile::modeRead, CFileException::badPath},
        {folder.Name(), CFile::modeRead, CFileException::accessDenied},
        {folder.Name("none"), CFile::modeWrite, CFileException::fileNotFound},
        {folder.Name("A.TXT"), CFile::modeRead, CFileException::none},
        {CString(), CFile::modeRead, CFileException::fileNotFound},
    };
    for (const Case &c : cases) EXPECT_EQ(OpenCause(c.name, c.flags), c.cause) << ktl::ToUtf8(c.name);
    EXPECT_THROW(CFile(folder.Name("none"), CFile::modeRead), CFileException);
}

TEST(File, ExceptionNamesTheFile) {
    char text[64] = {};
    const CFileException e(CFileException::fileNotFound, 2, ktl::FromUtf8("誠.dbf"));
    EXPECT_TRUE(e.GetErrorMessage(text, sizeof text));
    EXPECT_EQ(CString(text), ktl::FromUtf8("誠.dbf was not found."));
    EXPECT_TRUE(e.GetErrorMessage(text, 4));
    EXPECT_STREQ(text, "\xD5\x5C.");
    EXPECT_FALSE(CException().GetErrorMessage(text, 4));
    EXPECT_STREQ(text, "");
}

TEST(File, ErrnoHasACause) {
    const std::pair<int, int> cases[] = {
        {ENOTDIR, CFileException::badPath},        {EMFILE, CFileException::tooManyOpenFiles},
        {EPERM, CFileException::accessDenied},     {EROFS, CFileException::accessDenied},
        {EBADF, CFileException::invalidFile},      {EIO, CFileException::hardIO},
        {EBUSY, CFileException::sharingViolation}, {ETXTBSY, CFileException::sharingViolation},
        {EDEADLK, CFileException::lockViolation},  {ENOSPC, CFileException::diskFull},
        {EDQUOT, CFileException::diskFull},        {ENXIO, CFileException::genericException},
    };
    for (const auto &[error, cause] : cases) {
        EXPECT_EQ(CFileException::FromSystemError(error, "x").m_cause, cause) << error;
    }
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(ktl::ErrorText(ERROR_ACCESS_DENIED), "Access is denied.\r\n");
    EXPECT_EQ(ktl::ErrorText(4711), "");
}

TEST(File, CreateEmptiesUnlessToldOtherwise) {
    const ScratchFolder folder;
    folder.Write("a", "abcdef");
    CFile(folder.Name("a"), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite).Write("X", 1);
    EXPECT_EQ(folder.Read("a"), "Xbcdef");
    CFile(folder.Name("a"), CFile::modeCreate | CFile::modeWrite).Write("new", 3);
    EXPECT_EQ(folder.Read("a"), "new");
    CFile(folder.Name("誠"), CFile::modeCreate | CFile::modeWrite).Close();
    EXPECT_TRUE(folder.Has("誠"));
}

TEST(File, PositionsGoWhereTheyAreSent) {
    const ScratchFolder folder;
    CFile file(folder.Name("a"), CFile::modeCreate | CFile::modeReadWrite);
    file.Write("abc", 3);
    EXPECT_EQ(file.Seek(6, CFile::begin), 6U);
    file.Write("g", 1);
    EXPECT_EQ(file.GetLength(), 7U);
    EXPECT_EQ(CauseOf([&] { file.Seek(-8, CFile::current); }), CFileException::badSeek);
    EXPECT_EQ(file.GetPosition(), 7U);
    EXPECT_EQ(file.Seek(-7, CFile::end), 0U);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 8), 7U);
    EXPECT_EQ(std::string(buffer, 7), std::string("abc\0\0\0g", 7));
    file.SetLength(2);
    EXPECT_EQ(file.GetPosition(), 2U);
    file.SetLength(4);
    EXPECT_EQ(file.SeekToEnd(), 4U);
    EXPECT_EQ(CauseOf([&] { file.Seek(std::numeric_limits<LONGLONG>::max(), CFile::end); }), CFileException::badSeek);
}

TEST(File, AccessIsKept) {
    const ScratchFolder folder;
    folder.Write("a", "abc");
    char c = 0;
    CFile reader(folder.Name("a"), CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(CauseOf([&] { reader.Write("x", 1); }), CFileException::accessDenied);
    EXPECT_EQ(CauseOf([&] { reader.SetLength(0); }), CFileException::accessDenied);
    CFile writer(folder.Name("a"), CFile::modeWrite | CFile::shareDenyNone);
    EXPECT_EQ(CauseOf([&] { writer.Read(&c, 1); }), CFileException::accessDenied);
    reader.Close();
    reader.Close();
    EXPECT_EQ(CauseOf([&] { reader.Read(&c, 1); }), CFileException::invalidFile);
}

TEST(File, ShareFlagsHoldWithinTheProcess) {
    const ScratchFolder folder;
    folder.Write("a", "abc");
    const CString name = folder.Name("a");
    struct Case {
        UINT first, second;
        int cause;
    };
    constexpr UINT kRead = CFile::modeRead;
    constexpr UINT kWrite = CFile::modeReadWrite;
    const Case cases[] = {
        {kRead, kRead | CFile::shareDenyNone, CFileException::sharingViolation},
        {kRead | CFile::shareDenyNone, kRead, CFileException::sharingViolation},
        {kRead | CFile::shareDenyNone, kWrite | CFile::shareDenyNone, CFileException::none},
        {kRead | CFile::shareDenyWrite, kRead | CFile::shareDenyWrite, CFileException::none},
        {kRead | CFile::shareDenyWrite, kWrite | CFile::shareDenyNone, CFileException::sharingViolation},
        {kWrite | CFile::shareDenyNone, kRead | CFile::shareDenyWrite, CFileException::sharingViolation},
        {CFile::modeWrite | CFile::shareDenyRead, kRead | CFile::shareDenyNone, CFileException::sharingViolation},
        {kRead | CFile::shareDenyWrite, CFile::modeCreate | CFile::modeWrite, CFileException::sharingViolation},
    };
    for (const Case &c : cases) {
        const CFile first(name, c.first);
        EXPECT_EQ(OpenCause(name, c.second), c.cause) << std::hex << c.first << " " << c.second;
    }
    // A refused open has not emptied the file, and a closed one is forgotten.
    EXPECT_EQ(folder.Read("a"), "abc");
    EXPECT_EQ(OpenCause(name, kRead), CFileException::none);
}

TEST(File, RemoveAndRenameRefuseWhatThePlatformRefuses) {
    const ScratchFolder folder;
    folder.Write("a", "1");
    folder.Write("b", "2");
    const CString a = folder.Name("a");
    const CString b = folder.Name("b");
    EXPECT_EQ(CauseOf([&] { CFile::Rename(a, b); }), CFileException::accessDenied);
    EXPECT_EQ(CauseOf([&] { CFile::Rename(folder.Name("none"), b); }), CFileException::fileNotFound);
    EXPECT_EQ(CauseOf([&] { CFile::Remove(folder.Name()); }), CFileException::accessDenied);
    {
        const CFile open(a, CFile::modeRead | CFile::shareDenyNone);
        EXPECT_EQ(CauseOf([&] { CFile::Remove(a); }), CFileException::sharingViolation);
        EXPECT_EQ(CauseOf([&] { CFile::Rename(a, folder.Name("c")); }), CFileException::sharingViolation);
    }
    CFileStatus status;
    status.m_attribute = CFile::readOnly;
    CFile::SetStatus(a, status);
    EXPECT_EQ(CauseOf([&] { CFile::Remove(a); }), CFileException::accessDenied);
    CFile::Rename(a, folder.Name("A"));
    EXPECT_EQ(folder.Read("A"), "1");
    status.m_attribute = CFile::hidden;
    CFile::SetStatus(folder.Name("A"), status);
    CFile::Remove(a);
    EXPECT_FALSE(folder.Has("A"));
    EXPECT_EQ(folder.Read("b"), "2");
}

TEST(File, StatusGoesInAndOut) {
    const ScratchFolder folder;
    folder.Write("Name.Ext.txt", "abc");
    CFileStatus status;
    EXPECT_FALSE(CFile::GetStatus(folder.Name("none"), status));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    status.m_mtime = CTime(1000000000);
    CFile::SetStatus(folder.Name("name.ext.TXT"), status);
    ASSERT_TRUE(CFile::GetStatus(folder.Name("Name.Ext.txt"), status));
    EXPECT_EQ(status.m_mtime.GetTime(), 1000000000);
    EXPECT_TRUE(status.m_size == 3U && status.m_attribute == CFile::normal);
    EXPECT_EQ(status.m_szFullName, folder.Name("Name.Ext.txt"));
    ASSERT_TRUE(CFile::GetStatus(folder.Name(), status));
    EXPECT_EQ(status.m_attribute & CFile::directory, CFile::directory);
    EXPECT_THROW(CFile::SetStatus(folder.Name("none"), status), CFileException);
    const CFile file(folder.Name("Name.Ext.txt"), CFile::modeRead);
    EXPECT_TRUE(file.GetFileName() == "Name.Ext.txt" && file.GetFileTitle() == "Name.Ext");
    EXPECT_EQ(file.GetFilePath(), folder.Name("Name.Ext.txt"));
}

TEST(File, AFullDiskIsNotSilent) {
    const ScratchFolder folder;
    FaultyFileSystem files;
    CFile file(folder.Name("a"), CFile::modeCreate | CFile::modeWrite);
    files.LimitWrites(5);
    EXPECT_EQ(CauseOf([&] { file.Write("abcdefgh", 8); }), CFileException::diskFull);
    EXPECT_EQ(file.GetPosition(), 5U);
    files.FailAfter(0, EIO);
    EXPECT_EQ(CauseOf([&] { file.Write("x", 1); }), CFileException::hardIO);
    EXPECT_EQ(CauseOf([&] { file.Flush(); }), CFileException::hardIO);
}

TEST(ReplacementFile, TakesThePlaceOnlyWhenCommitted) {
    const ScratchFolder folder;
    folder.Write("doc", "old");
    const CString name = folder.Name("doc");
    {
        ktl::ReplacementFile file(name);
        file.Write("half", 4);
        EXPECT_EQ(folder.Read("doc"), "old");
    }
    EXPECT_EQ(folder.Read("doc"), "old");
    {
        ktl::ReplacementFile file(name);
        file.Write("new", 3);
        file.Commit();
    }
    EXPECT_EQ(folder.Read("doc"), "new");
    ktl::ReplacementFile blocked(name);
    const CFile open(name, CFile::modeRead);
    EXPECT_EQ(CauseOf([&] { blocked.Commit(); }), CFileException::sharingViolation);
    EXPECT_EQ(CauseOf([&] { ktl::ReplacementFile(folder.Name("no/where")); }), CFileException::badPath);
}

TEST(ReplaceWholeFile, EveryFailureLeavesTheOldFileAlone) {
    const ScratchFolder folder;
    folder.Write("doc", "old");
    int failures = 0;
    for (int calls = 0; calls < 10; ++calls) {
        FaultyFileSystem files;
        files.FailAfter(calls, ENOSPC);
        const int error = ktl::ReplaceWholeFile(folder.Path("doc"), "new");
        EXPECT_EQ(folder.Read("doc"), error == 0 ? "new" : "old") << calls;
        if (error == 0) break;
        ++failures;
    }
    // Open, write, flush and rename can each fail.
    EXPECT_EQ(failures, 4);
    FaultyFileSystem files;
    files.LimitWrites(2);
    EXPECT_EQ(ktl::ReplaceWholeFile(folder.Path("doc"), "newer"), ENOSPC);
    EXPECT_EQ(folder.Read("doc"), "new");
}

TEST(ReplaceWholeFile, AProcessThatEndsLeavesOldOrNew) {
    const ScratchFolder folder;
    for (int calls = 0; calls < 5; ++calls) {
        folder.Write("doc", "old");
        const pid_t child = ::fork();
        if (child == 0) {
            FaultyFileSystem files;
            files.ExitAfter(calls, 9);
            ktl::ReplaceWholeFile(folder.Path("doc"), "new");
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), calls < 4 ? 9 : 0) << calls;
        EXPECT_EQ(folder.Read("doc"), calls < 4 ? "old" : "new") << calls;
    }
}

TEST(ReplaceWholeFile, KeepsLinksAndPermissions) {
    const ScratchFolder folder;
    folder.Write("real", "old");
    ASSERT_EQ(ktl::FileSystem::System().SetMode(folder.Path("real"), 0640), 0);
    ASSERT_EQ(::symlink("real", folder.Path("link").c_str()), 0);
    EXPECT_EQ(ktl::ReplaceWholeFile(folder.Path("link"), "new"), 0);
    EXPECT_EQ(folder.Read("real"), "new");
    ktl::FileInfo info;
    ASSERT_EQ(ktl::FileSystem::System().Stat(folder.Path("real"), info), 0);
    EXPECT_EQ(info.mode, 0640U);
}

TEST(MemFile, GrowsWithZerosAndHandsItsContentOver) {
    CMemFile file;
    file.Seek(3, CFile::begin);
    file.Write("x", 1);
    file.SeekToBegin();
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 8), 4U);
    EXPECT_EQ(std::string(buffer, 4), std::string("\0\0\0x", 4));
    EXPECT_EQ(file.Read(buffer, 8), 0U);
    EXPECT_THROW(file.Seek(-1, CFile::begin), CFileException);
    file.SetLength(2);
    EXPECT_EQ(file.Detach().size(), 2U);
    EXPECT_EQ(file.GetLength(), 0U);
}
