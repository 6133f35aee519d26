#include "ktl/platform/archive.h"

#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/mem_file.h"
#include "tests/support/faulty_filesystem.h"
#include "tests/support/scratch_folder.h"

namespace {

using ktl::test::FaultyFileSystem;
using ktl::test::ScratchFolder;

std::string Stored(const std::function<void(CArchive &)> &write, int size = 4096) {
    CMemFile file;
    CArchive archive(&file, CArchive::store, size);
    write(archive);
    archive.Close();
    return std::string(file.GetContent().begin(), file.GetContent().end());
}

CMemFile FileOf(std::string_view bytes) {
    return CMemFile(reinterpret_cast<const BYTE *>(bytes.data()), static_cast<UINT>(bytes.size()));
}

// The cause of the archive exception that `action` throws; `none` without one.
int CauseOf(const std::function<void()> &action) {
    try {
        action();
    } catch (const CArchiveException &e) {
        return e.m_cause;
    }
    return CArchiveException::none;
}

CString ReadText(std::string_view bytes) {
    CMemFile file = FileOf(bytes);
    CArchive archive(&file, CArchive::load);
    CString text;
    archive >> text;
    return text;
}

std::string_view operator""_bytes(const char *text, std::size_t size) {
    return {text, size};
}

// One of each primitive.
struct Sample {
    bool flag = true;
    char letter = 'k';
    BYTE byte = 0xFE;
    short small = -2;
    WORD word = 0xFFFE;
    int number = -123456;
    UINT natural = 0xFEDCBA98;
    long longNumber = -5;
    unsigned long color = 0x00BBCCDD;
    LONGLONG big = -(1LL << 40);
    float single = 1.5F;
    double real = -0.1;
    CString name = ktl::FromUtf8("誠");
    CTime time{1234567890123LL};
    CRect rect{1, -2, 3, -4};

    static void Transfer(auto &&step, auto &s) {
        const auto each = [&step](auto &...values) { (step(values), ...); };
        each(s.flag, s.letter, s.byte, s.small, s.word, s.number, s.natural, s.longNumber, s.color, s.big, s.single,
             s.real, s.name, s.time, s.rect);
    }
    void Write(CArchive &archive) const {
        Transfer([&](const auto &value) { archive << value; }, *this);
    }
    void Read(CArchive &archive) {
        Transfer([&](auto &value) { archive >> value; }, *this);
    }
};

Sample Zeroed() {
    Sample s;
    Sample::Transfer([](auto &value) { value = std::remove_cvref_t<decltype(value)>{}; }, s);
    return s;
}

}  // namespace

TEST(Archive, PrimitivesAreLittleEndianAndUnpadded) {
    EXPECT_EQ(Stored([](CArchive &a) { a << true << 'A' << static_cast<short>(-2) << 0x01020304; }),
              "\x01\x41\xFE\xFF\x04\x03\x02\x01"_bytes);
    EXPECT_EQ(Stored([](CArchive &a) { a << -1L << 0xAABBCCDDUL; }), "\xFF\xFF\xFF\xFF\xDD\xCC\xBB\xAA"_bytes);
    EXPECT_EQ(Stored([](CArchive &a) { a << 1.0 << -2.0F; }), "\0\0\0\0\0\0\xF0\x3F\0\0\0\xC0"_bytes);
    EXPECT_EQ(Stored([](CArchive &a) { a << 1LL << L'\x4E2D'; }), "\1\0\0\0\0\0\0\0\x2D\x4E"_bytes);
    EXPECT_EQ(Stored([](CArchive &a) { a << CPoint(1, -1) << CTime(2); }),
              "\1\0\0\0\xFF\xFF\xFF\xFF\2\0\0\0\0\0\0\0"_bytes);
}

TEST(Archive, EveryPrimitiveComesBack) {
    for (const int size : {1, 128, 4096}) {
        const std::string bytes = Stored([](CArchive &a) { Sample().Write(a); }, size);
        CMemFile file = FileOf(bytes);
        CArchive archive(&file, CArchive::load, size);
        Sample read = Zeroed();
        read.Read(archive);
        EXPECT_EQ(Stored([&](CArchive &a) { read.Write(a); }), bytes);
        EXPECT_EQ(read.longNumber, -5);
    }
}

TEST(Archive, EveryTruncatedStreamIsAnError) {
    const std::string bytes = Stored([](CArchive &a) {
        Sample().Write(a);
        a << CString('x', 300) << 7;
    });
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        CMemFile file = FileOf(std::string_view(bytes).substr(0, length));
        CArchive archive(&file, CArchive::load, 128);
        EXPECT_EQ(CauseOf([&] {
                      Sample sample;
                      sample.Read(archive);
                      CString text;
                      int number = 0;
                      archive >> text >> number;
                  }),
                  CArchiveException::endOfFile)
            << length;
    }
}

TEST(ArchiveText, PrefixGrowsWithTheLength) {
    struct Case {
        int length;
        std::string_view prefix;
    };
    const Case cases[] = {
        {254, "\xFE"_bytes},
        {255, "\xFF\xFF\0"_bytes},
        {0xFFFD, "\xFF\xFD\xFF"_bytes},
        {0xFFFE, "\xFF\xFF\xFF\xFE\xFF\0\0"_bytes},
        {0x10000, "\xFF\xFF\xFF\0\0\1\0"_bytes},
    };
    for (const Case &c : cases) {
        const CString text('x', c.length);
        const std::string bytes = Stored([&](CArchive &a) { a << text; });
        EXPECT_EQ(bytes.size(), c.prefix.size() + text.View().size());
        EXPECT_EQ(std::string_view(bytes).substr(0, c.prefix.size()), c.prefix) << c.length;
        EXPECT_EQ(ReadText(bytes).GetLength(), c.length);
    }
}

TEST(ArchiveText, SixteenBitTextBecomesGbk) {
    EXPECT_EQ(ReadText("\xFF\xFE\xFF\2\x2D\x4E\x87\x65"_bytes), ktl::FromUtf8("中文"));
    std::string longText("\xFF\xFE\xFF\xFF\x2C\x01", 6);
    for (int i = 0; i < 300; ++i) longText += "\x2D\x4E"_bytes;
    EXPECT_EQ(ReadText(longText).GetLength(), 600);
    EXPECT_EQ(CauseOf([] { ReadText("\xFF\xFE\xFF\2\x2D\x4E\x87"_bytes); }), CArchiveException::endOfFile);
}

TEST(ArchiveText, ALengthIsNotTrustedWithMemory) {
    for (const std::string_view bytes :
         {"\xFF\xFF\xFF\xFE\xFF\xFF\xFFxyz"_bytes, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"_bytes,
          "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x1F"_bytes,
          "\xFF\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"_bytes}) {
        EXPECT_EQ(CauseOf([&] { ReadText(bytes); }), CArchiveException::endOfFile);
    }
    CString untouched("old");
    CMemFile file = FileOf("\5xy"_bytes);
    CArchive archive(&file, CArchive::load);
    EXPECT_THROW(archive >> untouched, CArchiveException);
    EXPECT_EQ(untouched, "old");
}

TEST(Archive, WrongDirectionIsAnError) {
    CMemFile file = FileOf("abcdefgh");
    CArchive reader(&file, CArchive::load);
    int number = 0;
    char buffer[4] = {};
    EXPECT_EQ(CauseOf([&] { reader << number; }), CArchiveException::readOnly);
    EXPECT_EQ(CauseOf([&] { reader.Write(buffer, 4); }), CArchiveException::readOnly);
    CMemFile target;
    CArchive writer(&target, CArchive::store);
    EXPECT_EQ(CauseOf([&] { writer >> number; }), CArchiveException::writeOnly);
    EXPECT_EQ(CauseOf([&] { writer.Read(buffer, 4); }), CArchiveException::writeOnly);
    writer.Close();
    EXPECT_EQ(CauseOf([&] { writer << number; }), CArchiveException::genericException);
}

TEST(Archive, BlocksPassTheBufferAndReadShortAtTheEnd) {
    const std::string block(1000, 'b');
    const std::string bytes = Stored(
        [&](CArchive &a) {
            a << 'a';
            a.Write(block.data(), 1000);
            a << 'c';
        },
        128);
    EXPECT_EQ(bytes, "a" + block + "c");
    CMemFile file = FileOf(bytes);
    CArchive archive(&file, CArchive::load, 128);
    std::string read(2000, '\0');
    char first = 0;
    archive >> first;
    EXPECT_EQ(archive.Read(read.data(), 2000), 1001U);
    EXPECT_EQ(read.substr(0, 1001), block + "c");
    EXPECT_EQ(archive.Read(read.data(), 1), 0U);
}

TEST(Archive, LinesEndWithEitherNewline) {
    CMemFile file = FileOf("one\r\ntwo\n\nlast");
    CArchive archive(&file, CArchive::load, 128);
    CString line;
    for (const char *text : {"one", "two", "", "last"}) {
        EXPECT_TRUE(archive.ReadString(line));
        EXPECT_EQ(line, text);
    }
    EXPECT_FALSE(archive.ReadString(line));
}

TEST(Archive, FlushGivesBackWhatWasNotRead) {
    CMemFile file = FileOf("\1\0\0\0rest"_bytes);
    CArchive archive(&file, CArchive::load);
    int number = 0;
    archive >> number;
    archive.Close();
    EXPECT_EQ(file.GetPosition(), 4U);
    char rest[4];
    EXPECT_EQ(file.Read(rest, 4), 4U);
}

TEST(Archive, AbortDropsAndTheDestructorWrites) {
    CMemFile file;
    {
        CArchive aborted(&file, CArchive::store);
        aborted << 1;
        aborted.Abort();
        CArchive kept(&file, CArchive::store | CArchive::bNoFlushOnDelete);
        kept << 2;
    }
    EXPECT_EQ(file.GetLength(), 0U);
    {
        CArchive archive(&file, CArchive::store);
        archive << 3;
    }
    EXPECT_EQ(file.GetLength(), 4U);
}

TEST(Archive, AFullDiskIsToldAndDoesNotHideAnotherError) {
    const ScratchFolder folder;
    FaultyFileSystem files;
    CFile file(folder.Name("full"), CFile::modeCreate | CFile::modeWrite);
    files.LimitWrites(10);
    CArchive archive(&file, CArchive::store, 128);
    for (int i = 0; i < 8; ++i) archive << 1;
    EXPECT_THROW(archive.Close(), CFileException);
    archive.Close();  // the same bytes do not go out again
    EXPECT_THROW(
        {
            CArchive doomed(&file, CArchive::store);
            doomed << 1;
            throw CInvalidArgException();
        },
        CInvalidArgException);
    EXPECT_THROW(
        {
            CArchive failing(&file, CArchive::store);
            failing << 1;
        },
        CFileException);
}

TEST(Archive, ShortReadsOfTheFileAreNoEnd) {
    const ScratchFolder folder;
    folder.Write("data", Stored([](CArchive &a) { Sample().Write(a); }));
    FaultyFileSystem files;
    files.ShortReads(3);
    CFile file(folder.Name("data"), CFile::modeRead);
    CArchive archive(&file, CArchive::load);
    Sample sample = Zeroed();
    sample.Read(archive);
    EXPECT_EQ(sample.real, -0.1);
}
