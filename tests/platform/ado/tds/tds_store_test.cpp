// The SQL Server store and the real driver against a server on loopback.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>

#include "tests/platform/ado/tds/tds_fixture.h"

namespace ktl::test {
namespace {

using ado::Connection;
using ado::DataType;
using ado::RecordsetRef;

class TdsStore : public TdsFixture {};

TEST_F(TdsStore, LoginsThatFailSayWhy) {
    EXPECT_TRUE(Open()->IsOpen());
    const std::string wrong = FaultOf([&] { Open("wrong"); });
    EXPECT_EQ(wrong.find("18456: Login failed for user 'sa'."), 0u) << wrong;
    const std::string stranger = FaultOf([&] { Open("sec'ret;密", "map", "nobody"); });
    EXPECT_NE(stranger.find("Login failed for user 'nobody'."), std::string::npos) << stranger;
    const std::string missing = FaultOf([&] { Open("sec'ret;密", "nowhere"); });
    EXPECT_NE(missing.find("Cannot open database \"nowhere\""), std::string::npos) << missing;
}

TEST_F(TdsStore, DatabasesAreListedAndKeptApart) {
    EXPECT_EQ(Rows("Select [name] From master.dbo.[sysdatabases] Where [name] = 'MAP'"), "map\n");
    EXPECT_EQ(Rows("Select [name] From master.dbo.[sysdatabases] Where [name] = 'nowhere'"), "");
    Run("Create Table [map].dbo.[t] ([a] [int])");
    Run("Create Table other.dbo.t (a int)");
    Run("Insert Into [Map].dbo.[t] ([a]) Values ('1')");
    Run("Insert Into other..t Values (2)");
    EXPECT_EQ(Rows("Select * From t"), "1\n");
    Run("Use other");
    EXPECT_EQ(Rows("Select * From t"), "2\n");
}

TEST_F(TdsStore, ChineseTextGoesBothWays) {
    Run("Create Table [省界] ([名称] [nvarchar](20), [code] varchar(20), [fixed] char(6), [说明] ntext)");
    EXPECT_EQ(Run("Insert Into [省界] Values ('北京''市[x]', '中a国', '浙', '镕镕')"), 1);
    EXPECT_EQ(Run("Insert Into [省界]([名称]) Values ('上海')"), 1);
    EXPECT_EQ(Rows("Select [名称],[code],[fixed],[说明] From [省界]"), "北京'市[x]|中a国|浙|镕镕\n上海|~|~|~\n");
    EXPECT_EQ(Run("Update [省界] Set [名称]='重庆' Where [名称]='上海'"), 1);
    EXPECT_EQ(Rows("Select [名称] From [省界] Where [名称] Like '%庆%'"), "重庆\n");
    // The bytes are GBK on this side, whatever travelled.
    EXPECT_EQ(Select("Select [名称] From [省界] Where [名称]='重庆'")->GetCell(0).Text(), "\xD6\xD8\xC7\xEC");
    EXPECT_EQ(ToUtf8(Select("Select * From [省界]")->GetColumn(3).name), "说明");
}

TEST_F(TdsStore, ValuesOfEachTypeArriveWithTypeAndSize) {
    struct Case {
        const char *declaration;
        const char *literal;
        DataType type;
        int size;
        const char *text;
    };
    static constexpr Case kCases[] = {
        {"bit", "1", DataType::Boolean, 2, "-1"},
        {"tinyint", "255", DataType::UnsignedTinyInt, 1, "255"},
        {"smallint", "-32768", DataType::SmallInt, 2, "-32768"},
        {"int", "'-2147483648'", DataType::Integer, 4, "-2147483648"},
        {"bigint", "9223372036854775807", DataType::BigInt, 8, "9223372036854775807"},
        {"real", "0.1", DataType::Single, 4, "0.1"},
        {"float", "-1.5e300", DataType::Double, 8, "-1.5E+300"},
        {"numeric(31,15)", "'-116.397'", DataType::Numeric, 19, "-116.397"},
        {"money", "-12.3456", DataType::Currency, 8, "-12.3456"},
        {"datetime", "'2009-02-20 08:09:36'", DataType::DBTimeStamp, 16, "2009/2/20 8:09:36"},
        {"nvarchar(40)", "'ab'", DataType::VarWChar, 40, "ab"},
        {"varchar(30)", "'ab'", DataType::VarChar, 30, "ab"},
        {"ntext", "'ab'", DataType::LongVarWChar, 1073741823, "ab"},
        {"nvarchar(max)", "'ab'", DataType::LongVarWChar, 1073741823, "ab"},
    };
    int number = 0;
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.declaration);
        const std::string table = "v" + std::to_string(++number);
        Run("Create Table " + table + " (v " + c.declaration + ")");
        Run("Insert Into " + table + " Values (" + c.literal + ")");
        Run("Insert Into " + table + " Values (Null)");
        const RecordsetRef rows = Select("Select * From " + table);
        EXPECT_EQ(rows->GetColumn(0).type, c.type);
        EXPECT_EQ(rows->GetColumn(0).definedSize, c.size);
        EXPECT_EQ(rows->GetRecordCount(), 2);
        EXPECT_EQ(Rows("Select * From " + table), std::string(c.text) + "\n~\n");
    }
}

TEST_F(TdsStore, ByteBlocksAreWholeWhateverTheirSize) {
    Run("Create Table blobs (id int, b image, v varbinary(8))");
    // Around the sizes of a packet and of the reader's piece, and with zero bytes.
    for (const int size : {1, 8, 4087, 4088, 16383, 16384, 16385, 300000}) {
        SCOPED_TRACE(size);
        std::string bytes;
        std::string digits;
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(i * 7 + i / 256);
            const auto byte = static_cast<unsigned char>(bytes.back());
            digits += "0123456789ABCDEF"[byte >> 4];
            digits += "0123456789ABCDEF"[byte & 15];
        }
        Run("Delete From blobs");
        Run("Insert Into blobs Values (1, 0x" + digits + ", 0x0001FF)");
        const RecordsetRef rows = Select("Select * From blobs");
        EXPECT_EQ(rows->GetColumn(1).type, DataType::LongVarBinary);
        EXPECT_EQ(rows->GetActualSize(1), size);
        EXPECT_TRUE(rows->GetCell(1).Bytes() == bytes);
        EXPECT_EQ(rows->GetCell(2).Bytes(), std::string_view("\x00\x01\xFF", 3));
    }
}

TEST_F(TdsStore, LongTextIsWholeAcrossPieces) {
    Run("Create Table texts (t ntext)");
    // An odd byte in front moves the two-byte characters across every boundary.
    for (const int odd : {0, 1}) {
        std::string text(static_cast<std::size_t>(odd), 'x');
        for (int i = 0; i < 20000; ++i) text += "国";
        Run("Delete From texts");
        Run("Insert Into texts Values ('" + text + "')");
        EXPECT_TRUE(Rows("Select * From texts") == text + "\n");
    }
}

TEST_F(TdsStore, CountsAreExactAndRecordsetsStandBesideEachOther) {
    Run("Create Table [w] ([ID] int, [ShapeID] int)");
    for (int i = 0; i < 300; ++i) {
        Run("Insert Into [w] Values (" + std::to_string(i) + "," + std::to_string(i * 2) + ")");
    }
    const RecordsetRef all = Select("Select * From [w]");
    const RecordsetRef top = Select("Select Top 1 * From [map].dbo.[w]");
    const RecordsetRef none = Select("Select * From [w] Where ID < 0");
    EXPECT_EQ(all->GetRecordCount(), 300);
    EXPECT_EQ(top->GetRecordCount(), 1);
    EXPECT_EQ(none->GetRecordCount(), 0);
    EXPECT_TRUE(none->IsEOF());
    EXPECT_EQ(none->GetColumnCount(), 2);
    EXPECT_EQ(Rows("Select Count(0) From [w] Where ShapeID >= 100"), "250\n");
    EXPECT_EQ(Rows("Select Max(ShapeID) From [w]"), "598\n");
    EXPECT_EQ(Run("Update [w] Set ID = -1 Where ShapeID < 10"), 5);
    EXPECT_EQ(Run("Delete From [w] Where ShapeID = 1"), 0);
    // What was opened before the change shows the rows as they were.
    EXPECT_EQ(all->GetCell(0).Integer(), 0);
}

TEST_F(TdsStore, TableListHoldsTablesOfTheOpenDatabase) {
    Run("Create Table [省界] (a int)");
    Run("Create Table other.dbo.hidden (a int)");
    const RecordsetRef tables = Link().OpenSchema(Connection::kSchemaTables);
    ASSERT_EQ(tables->GetRecordCount(), 1);
    EXPECT_EQ(ToUtf8(tables->GetCell("TABLE_NAME").ToText()), "省界");
    EXPECT_STREQ(tables->GetCell("TABLE_TYPE").ToText(), "TABLE");
}

TEST_F(TdsStore, FaultsCarryTheServersNumberAndText) {
    struct Case {
        const char *statement;
        const char *fault;
    };
    static constexpr Case kCases[] = {
        {"Select * From [没有]", "208: Invalid object name 'map.没有'."},
        {"Select [nix] From t", "207: Invalid column name 'nix'."},
        {"Selct 1", "102: Incorrect syntax near 'Selct'."},
        {"Insert Into t Values (1,'it's',0)", "105: Unclosed quotation mark after the character string ',0)'."},
        {"Insert Into t Values (7,'twice',0)",
         "2627: Violation of UNIQUE KEY constraint on 't.id'. Cannot insert "
         "duplicate key."},
        {"Insert Into t Values (8,'much too long',0)", "8152: String or binary data would be truncated."},
        {"Insert Into t Values ('x','a',0)", "245: Conversion failed when converting the value to data type int."},
        {"Insert Into t Values (9,'a','')", "8114: Error converting data type nvarchar to numeric."},
        {"Create Table t (a int)", "2714: There is already an object named 't' in the database."},
        {"Use nowhere", "911: Database 'nowhere' does not exist. Make sure that the name is entered correctly."},
        {"Insert Into t Values (10,'ok',0); Select * From nix", "208: Invalid object name 'map.nix'."},
    };
    Run("Create Table t (id int Primary Key, name nvarchar(6), n numeric(31,15))");
    Run("Insert Into t Values (7,'once',0)");
    for (const Case &c : kCases) {
        EXPECT_EQ(FaultOf([&] { Run(c.statement); }), c.fault) << c.statement;
    }
    // The connection goes on after each of them.
    EXPECT_EQ(Rows("Select id, name From t"), "7|once\n10|ok\n");
}

TEST_F(TdsStore, StatementsTravelAsTheyAreWritten) {
    Run("Create Table t (a nvarchar(9))");
    Run("Insert Into [Map].dbo.[t]([a]) Values ('中')");
    const std::vector<std::string> sent = m_server.Statements();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.back(), "Insert Into [Map].dbo.[t]([a]) Values ('中')");
}

TEST_F(TdsStore, StatementThatTakesTooLongEndsInAnError) {
    m_connection = Open("sec'ret;密", "map;Command Timeout=1");
    Run("Create Table t (a int)");
    const auto start = std::chrono::steady_clock::now();
    const std::string fault = FaultOf([&] { Run("WaitFor Delay '0:0:20'; Insert Into t Values (1)"); });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_NE(fault.find("Timeout expired"), std::string::npos) << fault;
    // The connection goes on, and one that waits less long is not disturbed.
    Run("WaitFor Delay '0:0:0.1'");
    EXPECT_EQ(Rows("Select 7"), "7\n");
}

TEST_F(TdsStore, LostConnectionIsAnErrorAndANewOneWorks) {
    Run("Create Table t (a int)");
    m_server.DropConnections();
    EXPECT_NE(FaultOf([&] { Run("Insert Into t Values (1)"); }), "");
    m_connection = Open();
    EXPECT_EQ(Run("Insert Into t Values (2)"), 1);
}

}  // namespace
}  // namespace ktl::test
