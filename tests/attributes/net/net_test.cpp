// CAdo_Net and CTable_Net through the real driver against a server on loopback.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ktl/attributes/ado_net.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_net.h"
#include "ktl/platform/ado/error.h"
#include "tests/support/application.h"
#include "tests/support/tds_server/mute_port.h"
#include "tests/support/tds_server/server.h"

namespace ktl::test {
namespace {

class Net : public ::testing::Test {
  protected:
    Net() {
        Aim(Here());
        EXPECT_EQ(m_ado.Connection(CString()), 1) << m_app.Log();
    }
    std::string Here() const { return "127.0.0.1," + std::to_string(m_server.Port()); }
    void Aim(const std::string &server, const std::string &password = "pass;word") {
        m_ado.InitAdo(FromUtf8(server), "sa", FromUtf8(password), "map", 0);
    }
    int Run(const std::string &sql) { return m_ado.ExecuteSql(FromUtf8(sql)); }
    /// A statement's cells in UTF-8 with `|` between them and a line feed behind each row; "none" without rows.
    std::string Rows(const std::string &sql) {
        const ado::RecordsetRef rows = m_ado.GetRecordset(FromUtf8(sql), 1, 0);
        if (!rows) return "none";
        std::string text;
        for (; !rows->IsEOF(); rows->MoveNext()) {
            for (int i = 0; i < rows->GetColumnCount(); ++i) {
                text += (i ? "|" : "") + ToUtf8(m_ado.GetItemValue(rows, i));
            }
            text += '\n';
        }
        return text;
    }
    /// The text of the last fault in the log: the description, and what was sent on a line of its own.
    std::string LastFault() const {
        static constexpr std::string_view kHead = ":000002\n";
        static constexpr std::string_view kTail = "\n2000-01-01 00:00:00\n\n";
        const std::string log = m_app.Log();
        const std::size_t head = log.rfind(kHead);
        if (head == std::string::npos || log.size() < head + kHead.size() + kTail.size()) return "";
        return log.substr(head + kHead.size(), log.size() - head - kHead.size() - kTail.size());
    }
    void Write(const std::string &sql, const char *field, std::string bytes) {
        m_ado.AddBLOBValue(FromUtf8(sql), field, reinterpret_cast<unsigned char *>(bytes.data()),
                           static_cast<long>(bytes.size()), 0);
    }
    std::string Read(const std::string &sql, const char *field) {
        const ado::RecordsetRef rows = m_ado.GetRecordset(FromUtf8(sql), 1, 0);
        long size = -1;
        const std::unique_ptr<unsigned char[]> block(m_ado.GetBLOBValue(rows, field, size));
        if (!block) return "null " + std::to_string(size);
        return std::string(reinterpret_cast<const char *>(block.get()), static_cast<std::size_t>(size));
    }

    Application m_app;
    TdsServer m_server{"sa", "pass;word", {"map", "省库"}};
    CAdo_Net m_ado;
};

// In a process of its own, since the driver manager remembers its list of drivers.
TEST(NetDeathTest, DriverThatIsNotInstalledIsNamedInTheLog) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Ends before the process does, so that its folder goes.
    const auto connect = [] {
        const Application app;
        ::setenv("ODBCSYSINI", app.Folder().Path().c_str(), 1);
        CAdo_Net ado;
        ado.InitAdo("127.0.0.1,1", "sa", "", "map", 0);
        const int connected = ado.Connection(CString());
        std::fprintf(stderr, "%s", app.Log().c_str());
        return connected;
    };
    EXPECT_EXIT(std::exit(connect()), ::testing::ExitedWithCode(0),
                "000002\nThe ODBC driver \"FreeTDS\" is not installed.\n");
}

std::string Bytes(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i * 31 + i / 251);
    return bytes;
}

TEST_F(Net, DatabasesAreFoundAndTheConnectionStaysOnMaster) {
    EXPECT_EQ(m_ado.IsExistDatabase(FromUtf8("省库")), 1);
    EXPECT_EQ(m_server.Statements().back(), "Select [name] From [sysdatabases] Where [name] = '省库'");
    EXPECT_EQ(Run("Create Table inmaster (a int)"), 1);
    EXPECT_EQ(m_ado.IsExistDatabase("nowhere"), 0);
    EXPECT_EQ(m_ado.IsExistTable("INMASTER"), 1);
    EXPECT_EQ(m_ado.Connection(FromUtf8("省库")), 1);
    EXPECT_EQ(m_ado.IsExistTable("inmaster"), 0);
    EXPECT_EQ(m_app.Log(), "");
    Aim(Here(), "wrong");
    EXPECT_EQ(m_ado.IsExistDatabase("map"), 0);
    EXPECT_FALSE(m_ado.GetConnection());
    EXPECT_EQ(LastFault().find("Login failed for user 'sa'."), 0u) << LastFault();
}

TEST_F(Net, RowsGoInAndOutInEveryType) {
    ASSERT_EQ(
        Run("Create Table [道路] (ID int Primary Key, [名称] nvarchar(20), code varchar(20), fix char(8), memo ntext,"
            " old text, n numeric(20,10), m money, f float, b bit, d datetime, big bigint)"),
        1);
    ASSERT_EQ(Run("Insert Into [道路] Values (1,'长安街','京''A','甲','长','旧',-0.5,12.3456,1e100,1,"
                  "'2009-02-20 08:09:36',-9223372036854775808)"),
              1)
        << m_app.Log();
    ASSERT_EQ(Run("Insert Into [道路](ID) Values (2)"), 1);
    EXPECT_EQ(Rows("Select * From [道路] Where [名称]='长安街' And code Like '京%'"),
              "1|长安街|京'A|甲|长|旧|-0.5|12.3456|1E+100|-1|2009/2/20 8:09:36|-9223372036854775808\n");
    EXPECT_EQ(Rows("Select * From [道路] Where [名称] Is Null"), "2|||||||||||\n");
    EXPECT_EQ(Run("Update [道路] Set [名称]='无名' Where ID=2"), 1);
    EXPECT_EQ(Run("Delete From [道路] Where [名称]='长安街'"), 1);
    const ado::RecordsetRef rows = m_ado.GetRecordset(FromUtf8("Select * From [道路]"), 1, 1);
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->GetRecordCount(), 1);
    EXPECT_EQ(ToUtf8(m_ado.GetItemValue(rows, FromUtf8("名称"))), "无名");
    EXPECT_EQ(m_ado.IsExist("Select ID From [map].dbo.[nothing]"), 0);
    EXPECT_EQ(LastFault(), "Invalid object name 'map.nothing'.\nSelect ID From [map].dbo.[nothing]");
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(Net, StatementsThatFailAreLoggedAndTheConnectionGoesOn) {
    Run("Create Table t (a int Primary Key)");
    EXPECT_EQ(Run(""), 0);
    EXPECT_EQ(Run("Insert Into t Values (1) " + std::string(8167, ' ')), 1);
    EXPECT_EQ(Run("Insert Into t Values (2) " + std::string(8168, ' ')), 0);
    EXPECT_EQ(m_app.Logged(100098), 1);
    EXPECT_EQ(Run("Insert Into t Values (1)"), 0);
    EXPECT_EQ(LastFault().find("Violation of UNIQUE KEY constraint"), 0u) << LastFault();
    EXPECT_NE(LastFault().find("\nInsert Into t Values (1)"), std::string::npos) << LastFault();
    EXPECT_EQ(Rows("Select a From t Where a=2"), "none");
    EXPECT_EQ(m_app.Logged(2), 1) << "no rows are no fault";
    EXPECT_EQ(Rows("Select 省 From t"), "none");
    EXPECT_EQ(LastFault(), "Invalid column name '省'.\nSelect 省 From t");
    EXPECT_EQ(Rows("Select * From t"), "1\n");
}

TEST_F(Net, ByteBlocksGoBothWaysIntoTheFirstRow) {
    Run("Create Table b (k int Primary Key, same nvarchar(4), p image, v varbinary(max))");
    for (const char *row : {"1,'a',Null,0x01", "2,'a',Null,0x01", "3,'a',Null,0x01"}) {
        Run(std::string("Insert Into b Values (") + row + ")");
    }
    for (const std::size_t size : {1u, 8000u, 8001u, 65535u, 65537u, 1000000u}) {
        SCOPED_TRACE(size);
        const std::string bytes = Bytes(size);
        Write("Select p From b Where same='a' Order By k Desc", "p", bytes);
        Write("Select * From b Where k=2", "V", bytes);
        EXPECT_TRUE(Read("Select * From b Where k=3", "p") == bytes);
        EXPECT_TRUE(Read("Select v From b Where k=2", "v") == bytes);
    }
    EXPECT_EQ(Rows("Select k From b Where p Is Null"), "1\n2\n");
    EXPECT_EQ(Rows("Select k From b Where v=0x01"), "1\n3\n");
    EXPECT_EQ(Read("Select p From b Where k=1", "p"), "null 0");
    EXPECT_EQ(Read("Select same From b Where k=1", "same"), "null 1") << "a text is no block";
    Write("Select p From b", "p", "");
    EXPECT_EQ(Rows("Select k From b Where p Is Null"), "1\n2\n") << "a size of 0 does nothing";
    EXPECT_EQ(m_app.Log(), "");

    const ado::RecordsetRef rows = m_ado.GetRecordset("Select * From b Order By k", 1, 0);
    rows->MoveNext();
    std::string bytes = Bytes(70000);
    m_ado.AddBLOBValue(rows, "p", reinterpret_cast<unsigned char *>(bytes.data()), 70000, 0);
    EXPECT_EQ(Rows("Select k From b Where p Is Null"), "1\n2\n") << "the caller updates the row";
    rows->Update();
    EXPECT_EQ(Rows("Select k From b Where p Is Null"), "1\n");
    EXPECT_TRUE(Read("Select * From b Where k=2", "p") == bytes);
    Write("Select * From b Where k=9", "p", "x");
    EXPECT_EQ(LastFault(), "There is no current row: the recordset is at its end.\nSelect * From b Where k=9");
    Write("Select * From b", "nix", "x");
    EXPECT_EQ(m_app.Logged(2), 2);
}

TEST_F(Net, TableTellsItsColumnsFromTheDatabaseMap) {
    Run("Create Table [路] (Id int, shapeid bigint, [Update] bit, [名] nvarchar(40), c char(12), t ntext, n "
        "numeric(31,15),"
        " f float, r real, m money, d datetime, img image, vb varbinary(max), ti tinyint, s smallint)");
    m_ado.Connection("master");
    CTable_Net empty;
    empty.InitTable(&m_ado, FromUtf8("路"));
    EXPECT_EQ(empty.GetFieldCount(), 0) << "without a row the columns are not told";
    EXPECT_EQ(m_server.Statements().back(), "Select Top 1 * From [map].dbo.[路]");
    Run("Insert Into [map].dbo.[路](Id) Values (1)");
    CTable_Net table;
    table.InitTable(&m_ado, FromUtf8("路"));
    struct Expected {
        const char *name;
        ENUM_DATA type;
        int length;
        int system;
    };
    constexpr int kLong = 2147483647;
    static constexpr Expected kFields[] = {
        {"Id", DATA_INT, 4, 1},        {"shapeid", DATA_BIGINT, 8, 1}, {"Update", DATA_BOOL, 2, 1},
        {"名", DATA_CHAR, 40, 0},      {"c", DATA_CHAR, 12, 0},        {"t", DATA_CHAR, 1073741823, 0},
        {"n", DATA_NUMERIC, 19, 0},    {"f", DATA_NUMERIC, 8, 0},      {"r", DATA_UNSUPPORTED, 4, 0},
        {"m", DATA_UNSUPPORTED, 8, 0}, {"d", DATA_UNSUPPORTED, 16, 0}, {"img", DATA_BINARY, kLong, 0},
        {"vb", DATA_BINARY, kLong, 0}, {"ti", DATA_INT, 1, 0},         {"s", DATA_INT, 2, 0},
    };
    int position = 0;
    for (const Expected &expected : kFields) {
        const CField *field = table.GetFieldAt(position);
        ASSERT_NE(field, nullptr) << expected.name;
        EXPECT_EQ(ToUtf8(field->strName), expected.name);
        EXPECT_EQ(field->eType, expected.type) << expected.name;
        EXPECT_EQ(field->nLength, expected.length) << expected.name;
        EXPECT_EQ(field->bSystem, expected.system) << expected.name;
        EXPECT_TRUE(field->nID == position && field->bReadOnly == 0) << expected.name;
        ++position;
    }
    EXPECT_EQ(table.GetFieldCount(), position);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(Net, BufferedRowsReachTheServerWhereTheListsAgree) {
    Run("Create Table t (ShapeID int, name nvarchar(9), size float)");
    CTable_Net table;
    table.InitTable(&m_ado, "t");
    table.AddNewRecord(7);
    table.AddNewRecord(8);
    // No row tells the columns yet, so only the shapes' numbers go out.
    table.UpdatePropertyToDB();
    EXPECT_EQ(Rows("Select * From t"), "7||\n8||\n");
    EXPECT_EQ(m_server.Statements()[m_server.Statements().size() - 2],
              "Insert Into [Map].dbo.[t]([ShapeID]) Values (8)");
    EXPECT_EQ(table.GetNewRecordCount(), 0);

    table.GetTableFields();
    for (const int shape : {9, 10, 11}) table.AddNewRecord(shape);
    table.UpdateNewRecordPropertyValue(9, 1, FromUtf8("  国 "));
    table.UpdateNewRecordPropertyValue(10, 1, "it's");
    table.UpdatePropertyToDB();
    const std::vector<std::string> sent = m_server.Statements();
    const std::string head = "Insert Into [Map].dbo.[t]([ShapeID],[ShapeID],[name],[size]) Values (";
    ASSERT_GE(sent.size(), 4u);
    EXPECT_EQ(sent[sent.size() - 4], "Select Top 1 * From [map].dbo.[t]");
    EXPECT_EQ(sent[sent.size() - 3], head + "9,'国','0')");
    EXPECT_EQ(sent[sent.size() - 2], head + "10,'it's','0')");
    EXPECT_EQ(sent[sent.size() - 1], head + "11,'11','0')");
    EXPECT_EQ(m_app.Logged(2), 3) << "the lists do not agree where a system column is";
    EXPECT_EQ(table.GetNewRecordCount(), 0);
    EXPECT_EQ(Rows("Select Count(0) From t"), "2\n");

    // Everything else is the base class's, which asks no store.
    CArray<CString, CString> values;
    table.ReadValueArray("name", values);
    table.ReadValueArrayBySql("name", values, 1);
    table.DeleteRecord(7, 0);
    table.UpdatePropertyValue(7, "name", "x");
    EXPECT_EQ(values.GetSize(), 0);
    EXPECT_EQ(table.GetRecordCount(1), 0);
    EXPECT_EQ(table.GetShapeProperty(7, 0), nullptr);
    EXPECT_EQ(m_server.Statements().back(), "Select Count(0) From t");
}

TEST_F(Net, ServerThatIsAwayIsLoggedAndStatementsSayNotConnected) {
    const MutePort port(false);
    Aim(port.Server());
    EXPECT_EQ(m_ado.Connection(CString()), 0);
    EXPECT_NE(LastFault().find("Unable to connect"), std::string::npos) << LastFault();
    EXPECT_EQ(Run("Select 1"), 0);
    EXPECT_EQ(LastFault().find("数据库未连接。"), 0u) << LastFault();
    EXPECT_FALSE(m_ado.GetRecordset("Select 1", 1, 0));
    CTable_Net table;
    table.InitTable(&m_ado, "t");
    EXPECT_EQ(table.GetFieldCount(), 0);
    EXPECT_EQ(m_app.Logged(2), 4);
    Aim(Here());
    EXPECT_EQ(m_ado.Connection(CString()), 1);
}

TEST_F(Net, ConnectionLostInTheMiddleIsLoggedAndCanBeMadeAnew) {
    Run("Create Table t (a int Primary Key, p image)");
    for (int i = 0; i < 3; ++i) Run("Insert Into t Values (" + std::to_string(i) + ",Null)");
    const ado::RecordsetRef rows = m_ado.GetRecordset("Select * From t", 1, 0);
    m_server.DropConnections();
    EXPECT_EQ(Run("Insert Into t Values (9,Null)"), 0);
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_FALSE(m_ado.GetRecordset("Select * From t", 1, 0));
    EXPECT_EQ(m_ado.IsExistTable("t"), 0);
    EXPECT_EQ(m_app.Logged(2), 3);
    // What was read stays readable; what is written has nowhere to go.
    rows->MoveNext();
    EXPECT_EQ(m_ado.GetItemValue(rows, 0), "1");
    rows->AppendChunk(1, "x");
    EXPECT_THROW(rows->Update(), ado::Error);
    EXPECT_EQ(m_ado.Connection(CString()), 1);
    EXPECT_EQ(Rows("Select a From t"), "0\n1\n2\n");
    m_ado.DisConnection();
    EXPECT_EQ(m_ado.GetItemValue(rows, 0), "1");
}

}  // namespace
}  // namespace ktl::test
