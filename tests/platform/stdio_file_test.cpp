#include "ktl/platform/stdio_file.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/faulty_filesystem.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl::test::FaultyFileSystem;
using ktl::test::ScratchFolder;

constexpr UINT kCreate = CFile::modeCreate | CFile::modeWrite;

std::vector<std::string> Lines(const CString &name, UINT flags) {
    CStdioFile file(name, flags);
    std::vector<std::string> lines;
    CString line;
    while (file.ReadString(line)) lines.emplace_back(line.View());
    return lines;
}

}  // namespace

TEST(StdioFile, TextTranslatesNewlinesBothWays) {
    const ScratchFolder folder;
    {
        CStdioFile file(folder.Name("a"), kCreate);
        file.WriteString("one\ntwo\r\n");
        EXPECT_EQ(file.GetPosition(), 11U);
        file.Write("x\n", 2);
    }
    EXPECT_EQ(folder.Read("a"), "one\r\ntwo\r\r\nx\r\n");
    CStdioFile file(folder.Name("a"), CFile::modeRead);
    char buffer[64] = {};
    EXPECT_EQ(file.Read(buffer, 64), 11U);
    EXPECT_STREQ(buffer, "one\ntwo\r\nx\n");
}

TEST(StdioFile, BinaryTranslatesNothing) {
    const ScratchFolder folder;
    CStdioFile(folder.Name("a"), kCreate | CFile::typeBinary).WriteString("a\nb\r\n\x1Ax");
    EXPECT_EQ(folder.Read("a"), "a\nb\r\n\x1Ax");
    EXPECT_EQ(Lines(folder.Name("a"), CFile::typeBinary), (std::vector<std::string>{"a", "b\r", "\x1Ax"}));
}

TEST(StdioFile, LinesEndAsTheTextDoes) {
    const ScratchFolder folder;
    struct Case {
        std::string content;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"", {}},
        {"a", {"a"}},
        {"a\r\n", {"a"}},
        {"\r\n\r\n", {"", ""}},
        {"a\rb\nc", {"a\rb", "c"}},
        {"a\r", {"a\r"}},
        {"a\r\r\nb", {"a\r", "b"}},
        {"a\r\nb\x1Ax\r\nd", {"a", "b"}},
        {"\x1A", {}},
    };
    for (const Case &c : cases) {
        folder.Write("a", c.content);
        EXPECT_EQ(Lines(folder.Name("a"), CFile::modeRead), c.lines) << c.content;
    }
}

TEST(StdioFile, APairOfBytesAcrossTheBufferIsOneNewline) {
    const ScratchFolder folder;
    for (const std::size_t length : {16382U, 16383U, 16384U, 16385U}) {
        folder.Write("a", std::string(length, 'x') + "\r\nend");
        const auto lines = Lines(folder.Name("a"), CFile::modeRead);
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0].size(), length);
        EXPECT_EQ(lines[1], "end");
    }
}

TEST(StdioFile, PositionsCountTheFilesBytes) {
    const ScratchFolder folder;
    folder.Write("a", "one\r\ntwo\r\nthree");
    CStdioFile file(folder.Name("a"), CFile::modeReadWrite);
    CString line;
    file.ReadString(line);
    EXPECT_EQ(file.GetPosition(), 5U);
    file.WriteString("TWO");
    EXPECT_EQ(file.GetPosition(), 8U);
    file.ReadString(line);
    EXPECT_EQ(line, "");
    file.ReadString(line);
    EXPECT_EQ(line, "three");
    file.SeekToEnd();
    file.WriteString("\n!");
    EXPECT_EQ(file.GetLength(), 18U);
    file.Close();
    EXPECT_EQ(folder.Read("a"), "one\r\nTWO\r\nthree\r\n!");
}

TEST(StdioFile, BufferFormKeepsTheNewline) {
    const ScratchFolder folder;
    folder.Write("a", "abcdef\r\nx");
    CStdioFile file(folder.Name("a"), CFile::modeRead);
    char buffer[5] = {};
    EXPECT_STREQ(file.ReadString(buffer, 5), "abcd");
    EXPECT_STREQ(file.ReadString(buffer, 5), "ef\n");
    EXPECT_STREQ(file.ReadString(buffer, 5), "x");
    EXPECT_EQ(file.ReadString(buffer, 5), nullptr);
}

TEST(StdioFile, AFullDiskIsTold) {
    const ScratchFolder folder;
    FaultyFileSystem files;
    CStdioFile file(folder.Name("a"), kCreate);
    files.LimitWrites(3);
    file.WriteString("longer than three");
    EXPECT_THROW(file.Close(), CFileException);
}
