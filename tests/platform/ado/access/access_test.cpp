#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "ktl/platform/ado/access/field.h"
#include "ktl/platform/ado/access/quiet.h"
#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"
#include "tests/support/scratch_folder.h"

/// The expected values of `sample.mdb` are those that mdb-export prints of it.
namespace ktl::ado {
namespace {

const std::string kSample = std::string(KTL_SOURCE_DIR) + "/tests/platform/ado/data/sample.mdb";

ConnectionRef Open(const std::string &systemPath) {
    return Connection::Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source = " + PlatformPath(systemPath));
}

/// Cells with `|` between them and a line feed behind each row; a null is `~`, of bytes the number is shown.
std::string RowsOf(Recordset &rows) {
    std::string text;
    for (; !rows.IsEOF(); rows.MoveNext()) {
        for (int i = 0; i < rows.GetColumnCount(); ++i) {
            const Value &cell = rows.GetCell(i);
            if (i > 0) text += '|';
            if (cell.IsNull()) {
                text += '~';
            } else if (cell.GetKind() == Value::Kind::Bytes) {
                text += "<" + std::to_string(cell.Bytes().size()) + ">";
            } else {
                text += ToUtf8(cell.ToText());
            }
        }
        text += '\n';
    }
    return text;
}

std::string Rows(Connection &connection, std::string_view statement) {
    return RowsOf(*connection.OpenRecordset(FromUtf8(statement), false));
}

/// The number of the error that `run` throws; 0 without one.
template <class Run>
int FaultOf(Run run) {
    try {
        run();
    } catch (const Error &error) {
        EXPECT_FALSE(error.GetDescription().IsEmpty());
        return error.GetNumber();
    }
    return 0;
}

TEST(Access, StatementsGiveTheRowsOfAnotherReader) {
    const ConnectionRef connection = Open(kSample);
    const struct {
        const char *statement;
        const char *rows;
    } cases[] = {
        {"Select * From Users", "1|Nuintun|Male|1989/1/25|-1\n2|Angela|Female|1988/12/18|0\n3|张三|男|1986/12/18|-1\n"},
        {"Select * From [点位表]", "1|北京|116.4\n2|上海|121.5\n3|~|~\n"},
        {"Select 编号 From 点位表 Where 名称 Like '%海'", "2\n"},
        {"Select Count(0) From [AllTypes]", "500\n"},
        {"Select Sum(ID), Sum(ByteN), Sum(SmallN), Sum(SingleV), Sum(MoneyV) From AllTypes",
         "125250|62530|250|31312.5|1546286.4\n"},
        {"Select Min(SmallN), Max(SmallN), Min(DoubleV), Max(MoneyV) From AllTypes", "-249|250|-198.9|6172.8\n"},
        {"Select Count(DateV), Count(NameA), Count(NameCN), Count(Note), Count(Pic), Count(BinV) From AllTypes",
         "462|429|450|455|100|83\n"},
        {"Select Count(*) From AllTypes Where Flag", "166\n"},
        {"Select Count(*) From AllTypes Where NameCN Like '%江%'", "151\n"},
        {"Select Count(*) From AllTypes Where SmallN < -100", "149\n"},
        {"Select ID From AllTypes Where SmallN = -7", "243\n"},
        {"Select Count(*) From AllTypes Where NameA Is Null", "71\n"},
        {"Select Top 3 ID From AllTypes Where NameCN Like '%江%' Order By ID Desc", "499\n496\n492\n"},
        {"Select ID, ByteN, SmallN, Flag, SingleV, DoubleV, MoneyV, DateV, NameA, NameCN, Note, Pic, BinV "
         "From AllTypes Where ID In (1, 5, 7, 10)",
         "1|1|-249|0|0.25|-198.9|12.3456|2000/1/2 12:59:30|item-001|关村|备注1 关村|~|~\n"
         "5|5|-245|0|1.25|-194.5|61.728|2000/1/8 16:59:30|item-005|村大街长江黄|备注5 村大街长江黄|<30>|~\n"
         "7|7|-243|0|1.75|-192.3|86.4192|2000/1/11 18:59:30|~|表字段测试北京市|备注7 表字段测试北京市|~|~\n"
         "10|10|-240|0|2.5|-189|123.456|2000/1/16 9:59:30|item-010|~|备注10 江图|<30>|~\n"},
        {"Select ID From AllTypes Where DateV < {^2000-01-04} Order By DateV", "1\n"},
    };
    for (const auto &row : cases) EXPECT_EQ(Rows(*connection, row.statement), row.rows) << row.statement;
}

TEST(Access, MemosAndBlocksOfSeveralPagesAreWhole) {
    const ConnectionRef connection = Open(kSample);
    const RecordsetRef rows =
        connection->OpenRecordset("Select Note, Pic From AllTypes Where ID = 350 Or ID = 500 Order By ID", false);
    std::string note;
    for (int i = 0; i < 300; ++i) note += "备注350 据库表字段测试北京";
    ASSERT_EQ(rows->GetRecordCount(), 2);
    EXPECT_EQ(ToUtf8(rows->GetCell("Note").Text()), note);
    rows->MoveNext();
    EXPECT_EQ(rows->GetActualSize(1), 9000);
    const std::string_view block = rows->GetCell("Pic").Bytes();
    EXPECT_EQ(block.substr(0, 8), std::string_view("\xF4\xF5\xF8\xFD\x04\x0D\x18\x25", 8));
    EXPECT_EQ(rows->GetChunk(1, 20000).Bytes(), block);
}

TEST(Access, ColumnsHaveTheirTypesAndSizes) {
    const ConnectionRef connection = Open(kSample);
    const RecordsetRef rows = connection->OpenRecordset("Select Top 1 * From AllTypes", false);
    constexpr int kLong = 2147483647;
    const struct {
        const char *name;
        DataType type;
        int size;
    } cases[] = {
        {"ID", DataType::Integer, 4},
        {"ByteN", DataType::UnsignedTinyInt, 1},
        {"SmallN", DataType::SmallInt, 2},
        {"Flag", DataType::Boolean, 2},
        {"SingleV", DataType::Single, 4},
        {"DoubleV", DataType::Double, 8},
        {"MoneyV", DataType::Currency, 8},
        {"DateV", DataType::Date, 8},
        {"NameA", DataType::VarWChar, 255},
        {"NameCN", DataType::VarWChar, 50},
        {"Note", DataType::LongVarWChar, kLong},
        {"Pic", DataType::LongVarBinary, kLong},
        {"BinV", DataType::VarBinary, 50},
    };
    ASSERT_EQ(rows->GetColumnCount(), static_cast<int>(std::size(cases)));
    for (int i = 0; i < rows->GetColumnCount(); ++i) {
        const Column &column = rows->GetColumn(i);
        EXPECT_EQ(column.name, cases[i].name);
        EXPECT_EQ(column.type, cases[i].type) << cases[i].name;
        EXPECT_EQ(column.definedSize, cases[i].size) << cases[i].name;
    }
}

TEST(Access, SchemaListsTheUsersTables) {
    EXPECT_EQ(RowsOf(*Open(kSample)->OpenSchema(Connection::kSchemaTables)),
              "~|~|Users|TABLE\n~|~|AllTypes|TABLE\n~|~|w001|TABLE\n~|~|点位表|TABLE\n");
}

TEST(Access, StatementsThatWouldWriteAreErrors) {
    const ConnectionRef connection = Open(kSample);
    for (const char *statement : {"Insert Into w001 (ID) Values (9)", "Update w001 Set ID = 9 Where ID = 1",
                                  "Delete From w001", "Create Table w002 (ID int)", "Drop Table w001",
                                  "Alter Table w001 Add Z int", "Insert Into w001 (ID) Select UserId From Users"}) {
        EXPECT_EQ(FaultOf([&] { connection->Execute(statement); }), error_number::kReadOnly) << statement;
    }
    const RecordsetRef rows = connection->OpenRecordset("Select * From AllTypes", false);
    rows->AppendChunk(rows->FindColumn("Pic"), "bytes");
    EXPECT_EQ(FaultOf([&] { rows->Update(); }), error_number::kReadOnly);
    EXPECT_EQ(Rows(*connection, "Select Count(*) From w001"), "5\n");
}

TEST(Access, UnknownNamesAreErrors) {
    const ConnectionRef connection = Open(kSample);
    EXPECT_EQ(FaultOf([&] { connection->Execute("Select * From nowhere"); }), error_number::kFileNotFound);
    EXPECT_EQ(FaultOf([&] { connection->Execute("Select ID From w001 Where nothing = 1"); }),
              error_number::kColumnNotFound);
}

TEST(Access, FilesOfAnotherKindAreNotOpened) {
    const test::ScratchFolder folder;
    folder.Write("empty.mdb", "");
    folder.Write("short.mdb", std::string("\0\1\0\0Standard Jet DB", 19));
    folder.Write("text.mdb", std::string(20000, 'x'));
    std::filesystem::create_directory(folder.Path("folder.mdb"));
    for (const char *name : {"missing.mdb", "empty.mdb", "short.mdb", "text.mdb", "folder.mdb"}) {
        EXPECT_NE(FaultOf([&] { Open(folder.Path(name)); }), 0) << name;
    }
}

/// Everything that a reader may ask of a file; an Error counts as an answer.
void ReadAll(const std::string &path) {
    const ConnectionRef connection = Open(path);
    for (const char *table : {"Users", "AllTypes", "w001", "点位表"}) {
        Rows(*connection, std::string("Select * From ") + table);
    }
}

TEST(Access, CutOffFileIsAnErrorAtEveryLength) {
    const test::ScratchFolder folder;
    const std::string path = folder.Path("cut.mdb");
    std::filesystem::copy_file(kSample, path);
    EXPECT_EQ(FaultOf([&] { ReadAll(path); }), 0);
    int silent = 0;
    for (std::uintmax_t size = std::filesystem::file_size(path) - 4096; size > 0;
         size -= std::min(size, std::uintmax_t{4096})) {
        std::filesystem::resize_file(path, size);
        silent += FaultOf([&] { ReadAll(path); }) == 0;
        std::filesystem::resize_file(path, size - 1);
        EXPECT_NE(FaultOf([&] { ReadAll(path); }), 0) << size - 1;
    }
    EXPECT_EQ(silent, 0);
}

std::string SampleContent() {
    std::ifstream file(kSample, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Access, TableWithoutAPageMapIsAnError) {
    const test::ScratchFolder folder;
    std::string content = SampleContent();
    // In the definition of w001: the row of the map in its page.
    content[111 * 4096 + 55] = 9;
    folder.Write("map.mdb", content);
    const ConnectionRef connection = Open(folder.Path("map.mdb"));
    EXPECT_EQ(FaultOf([&] { connection->Execute("Select * From w001"); }), error_number::kNotATable);
    EXPECT_EQ(Rows(*connection, "Select Count(*) From AllTypes"), "500\n");
}

TEST(Access, GarbageInAFileIsSurvived) {
    const test::ScratchFolder folder;
    const std::string sample = SampleContent();
    std::mt19937 random(20260101);
    int faults = 0;
    for (int i = 0; i < 200; ++i) {
        std::string content = sample;
        const std::size_t page = random() % (content.size() / 4096);
        for (int k = 0; k < 8; ++k) {
            // Half of the pages get it into their heads, where it does most.
            const std::size_t at = page * 4096 + random() % (i % 2 ? 64 : 4096);
            content[at] = static_cast<char>(random());
        }
        folder.Write("garbage.mdb", content);
        faults += FaultOf([&] { ReadAll(folder.Path("garbage.mdb")); }) != 0;
    }
    EXPECT_GT(faults, 10);
}

TEST(Access, ChangedFileIsReadAnew) {
    const test::ScratchFolder folder;
    const std::string path = folder.Path("changing.mdb");
    std::filesystem::copy_file(kSample, path);
    const ConnectionRef connection = Open(path);
    EXPECT_EQ(Rows(*connection, "Select Name From w001 Where ID = 3"), "pt3\n");
    std::string content = SampleContent();
    const std::size_t at = content.find("pt3");
    ASSERT_NE(at, std::string::npos);
    content[at + 2] = '9';
    folder.Write("changing.mdb", content);
    EXPECT_EQ(Rows(*connection, "Select Name From w001 Where ID = 3"), "pt9\n");
    std::filesystem::remove(path);
    EXPECT_EQ(FaultOf([&] { connection->Execute("Select * From w001"); }), error_number::kFileNotFound);
}

TEST(AccessField, TextTakesBothForms) {
    using namespace std::string_view_literals;
    const struct {
        std::string_view bytes;
        const char *text;
    } cases[] = {
        {""sv, ""},
        {"A\0\x2D\x4E"sv, "A中"},
        {"\xFF\xFE"
         "abc"sv,
         "abc"},
        {"\xFF\xFE"
         "a\0\x2D\x4E\x87\x65\0b"sv,
         "a中文b"},
        {"\x2D"sv, ""},
    };
    for (const auto &row : cases) EXPECT_EQ(ToUtf8(access::TextFromField(row.bytes)), row.text);
}

TEST(AccessQuiet, OtherThreadsKeepTheirStreams) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const auto say = [](const char *text) {
        std::fputs(text, stderr);
        std::fputs(text, stdout);
    };
    say("before ");
    {
        const access::Quiet quiet;
        const access::Quiet nested;
        say("dropped ");
        std::thread([&] { say("other "); }).join();
    }
    say("after");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "before other after");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "before other after");
}

}  // namespace
}  // namespace ktl::ado
