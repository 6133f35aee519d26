#include <algorithm>
#include <cstring>

#include "ktl/attributes/ado_local_mdb.h"
#include "ktl/platform/ado/error.h"
#include "tests/attributes/table_fixture.h"

namespace {

class Ado : public ktl::test::TableTest {};

/// A .dbf file without rows: `columns` are name, letter and width; then the terminator and the backlink area.
struct DbfColumn {
    const char *name;
    char letter;
    int width;
};

std::string DbfFile(const std::vector<DbfColumn> &columns, const std::string &backlink = "") {
    std::string file(32, '\0');
    file[0] = 0x30;
    const std::size_t length = 32 + 32 * columns.size() + 1 + 263;
    file[8] = static_cast<char>(length & 0xFF);
    file[9] = static_cast<char>(length >> 8);
    for (const DbfColumn &column : columns) {
        std::string entry(32, '\0');
        std::strncpy(entry.data(), column.name, 11);
        entry[11] = column.letter;
        entry[16] = static_cast<char>(column.width);
        file += entry;
    }
    file += '\r' + backlink;
    file.resize(length, '\0');
    return file;
}

}  // namespace

TEST_F(Ado, LongStatementIsNotSent) {
    Run("Create Table t (ID int,ShapeID int)");
    CString sql("Insert Into t (ID,ShapeID) Values (1,2)");
    sql += CString(' ', 8192 - sql.GetLength());
    EXPECT_EQ(m_ado.ExecuteSql(sql), 1);
    EXPECT_EQ(m_ado.ExecuteSql(sql + " "), 0);
    EXPECT_EQ(m_app.Logged(100098), 1);
    EXPECT_NE(m_app.Log().find("查询语句长度不能超过8192字节"), std::string::npos);
    EXPECT_EQ(m_ado.ExecuteSql(""), 0);
    EXPECT_EQ(Rows("Select ID,ShapeID From t"), "1|2\n");
    EXPECT_EQ(m_app.Questions().size(), 1u);
    const CString blanks(' ', 9000);
    EXPECT_TRUE(m_ado.GetRecordset("Select * From t" + blanks, 1, 0)) << "no limit for reading";
}

TEST_F(Ado, FaultsAreLoggedWithTheStatement) {
    EXPECT_EQ(m_ado.ExecuteSql("Update missing Set a=1"), 0);
    EXPECT_FALSE(m_ado.GetRecordset("Select * From missing", 1, 1));
    EXPECT_EQ(m_app.Logged(2), 2);
    EXPECT_NE(m_app.Log().find("\nUpdate missing Set a=1\n"), std::string::npos);
    EXPECT_NE(m_app.Log().find("\nSelect * From missing\n"), std::string::npos);
    EXPECT_EQ(m_app.Questions().size(), 2u);
}

TEST_F(Ado, NoRowsIsNoFault) {
    Run("Create Table t (ID int,ShapeID int)");
    EXPECT_FALSE(m_ado.GetRecordset("Select * From t", 1, 0));
    const ktl::ado::RecordsetRef rows = m_ado.GetRecordset("Select * From t", 0, 0);
    ASSERT_TRUE(rows);
    EXPECT_TRUE(rows->IsOpen() && rows->IsEOF() && rows->GetRecordCount() == 0);
    EXPECT_EQ(m_ado.IsExist("Select * From t"), 0);
    Run("Insert Into t (ID,ShapeID) Values (1,1)");
    EXPECT_EQ(m_ado.IsExist("Select * From t"), 1);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(Ado, UnconnectedSaysSo) {
    CAdo_Local_dbf ado;
    EXPECT_FALSE(ado.GetRecordset("Select * From t", 1, 0));
    EXPECT_EQ(ado.ExecuteSql("Update t Set a=1"), 0);
    EXPECT_EQ(ado.IsExistTable("t"), 0);
    EXPECT_EQ(m_app.Logged(2), 3);
    EXPECT_NE(m_app.Log().find("数据库未连接。"), std::string::npos);

    m_ado.DisConnection();
    EXPECT_FALSE(m_ado.GetConnection());
    EXPECT_EQ(m_ado.ExecuteSql("Update t Set a=1"), 0);
}

TEST_F(Ado, MissingFolderIsLeftToTheCaller) {
    CAdo_Local_dbf ado;
    const CString missing = m_path + "\\none";
    EXPECT_THROW(ado.ConnDB(missing), ktl::ado::Error);
    EXPECT_EQ(ado.GetDBPath(), missing);
    // A table catches it.
    CTable_Local_dbf table(missing, "w001");
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_EQ(table.CreateNewLayerTable(nullptr), 0);
}

TEST_F(Ado, CellsBecomeTrimmedTexts) {
    Run("Create Table t (ID int,ShapeID int,name Char(10),size numeric(20,10),note memo)");
    Run("Insert Into t (ID,ShapeID,name,size,note) Values (-7,8,'  中国 ',-1.5,'a'+CHR(10)+'b '+CHR(10))");
    Run("Insert Into t (ID,ShapeID) Values (2,3)");
    EXPECT_EQ(Rows("Select * From t"), "-7|8|  中国|-1.5|a\nb\n2|3|||\n");
    const ktl::ado::RecordsetRef rows = m_ado.GetRecordset("Select Max(ID) From t Where ShapeID=99", 1, 0);
    ASSERT_TRUE(rows);
    EXPECT_EQ(m_ado.GetItemValue(rows, 0), "") << "a null cell";
    EXPECT_EQ(m_app.Log(), "");
    EXPECT_EQ(m_ado.GetItemValue(rows, "none"), "");
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(Ado, CountsAndExtremes) {
    Run("Create Table t (ID int,ShapeID int,size numeric(20,10))");
    CAdo_Local &local = m_ado;
    EXPECT_EQ(local.GetRecordCount("t", ""), 0);
    EXPECT_EQ(m_ado.GetMaxValue("t", "size"), 0.0) << "the null maximum of no rows";
    for (const char *values : {"1,1,-2.5", "-1,2,40", "3,3,7"})
        Run(std::string("Insert Into t Values (") + values + ")");
    EXPECT_EQ(local.GetRecordCount("t", ""), 3);
    EXPECT_EQ(local.GetRecordCount("t", "ID<>-1"), 2);
    EXPECT_EQ(m_ado.GetMaxValue("t", "size"), 40.0);
    EXPECT_EQ(m_ado.GetMinValue("t", "size"), -2.5);
    EXPECT_EQ(m_ado.GetMaxValue("none", "size"), -1.0);
    EXPECT_EQ(m_ado.GetMinValue("none", "size"), -1.0);
    EXPECT_EQ(local.GetRecordCount("none", ""), 0);
    EXPECT_EQ(static_cast<CAdo &>(m_ado).GetRecordCount("t"), 0) << "the virtual one counts nothing";
}

TEST_F(Ado, TableNamesHaveNoCase) {
    EXPECT_EQ(m_ado.IsExistTable("Plain"), 0);
    EXPECT_EQ(m_ado.CreateTable("Plain"), 1);
    EXPECT_EQ(m_ado.IsExistTable("pLAIN"), 1);
    EXPECT_EQ(m_ado.IsExistTable("plai"), 0);
    const std::unique_ptr<CFields> fields(m_ado.GetTableFields("Plain"));
    EXPECT_EQ(ListOf(fields.get()), "0 ID 2 4 system\n1 ShapeID 2 4 system\n");
}

TEST_F(Ado, ByteBlocksGoBothWays) {
    Run("Create Table t (ID int,ShapeID int,pic image)");
    Run("Insert Into t (ID,ShapeID) Values (1,1)");
    std::vector<unsigned char> bytes(70000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 7);
    const auto size = static_cast<long>(bytes.size());
    const auto read = [&] {
        const ktl::ado::RecordsetRef rows = m_ado.GetRecordset("Select pic From t", 1, 0);
        long length = -1;
        const std::unique_ptr<unsigned char[]> block(m_ado.GetBLOBValue(rows, "pic", length));
        EXPECT_EQ(block == nullptr, length == 0);
        return block ? std::vector<unsigned char>(block.get(), block.get() + length) : std::vector<unsigned char>();
    };
    EXPECT_TRUE(read().empty());
    m_ado.AddBLOBValue("Select pic From t", "pic", nullptr, 5, 0);
    m_ado.AddBLOBValue("Select pic From t", "pic", bytes.data(), 0, 0);
    EXPECT_TRUE(read().empty());
    m_ado.AddBLOBValue("Select pic From t", "pic", bytes.data(), size, 0);
    EXPECT_TRUE(read() == bytes);

    bytes.resize(3);
    const ktl::ado::RecordsetRef rows = m_ado.GetRecordset("Select pic From t", 1, 0);
    EXPECT_EQ(m_ado.GetItemValue(rows, 0), "") << "a block has no text";
    m_ado.AddBLOBValue(rows, "pic", bytes.data(), 3, 1);
    rows->Update();
    EXPECT_TRUE(read() == bytes);
    Run("Create Table m (ID int,note memo)");
    Run("Insert Into m Values (1,'text')");
    long length = 0;
    EXPECT_EQ(m_ado.GetBLOBValue(m_ado.GetRecordset("Select * From m", 1, 0), "note", length), nullptr) << "a text";
    EXPECT_EQ(length, 4);
    EXPECT_EQ(m_app.Log(), "");
    m_ado.AddBLOBValue("Select pic From none", "pic", bytes.data(), 3, 0);
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(Ado, ColumnsComeFromTheFile) {
    WriteFile("three.dbf", DbfFile({{"ID", 'I', 4}, {"update", 'C', 12}, {"price", 'Y', 8}}));
    std::unique_ptr<CFields> fields(m_ado.GetTableFields("three"));
    EXPECT_EQ(ListOf(fields.get()), "0 ID 2 4 system\n1 update 1 12 system\n2 price -1 8 system\n");

    // Every letter; the unknown ones leave gaps, and the area behind the entries holds none.
    WriteFile("all.dbf", DbfFile({{"c", 'C', 254},
                                  {"v", 'V', 9},
                                  {"b", 'B', 8},
                                  {"f", 'F', 20},
                                  {"n", 'N', 6},
                                  {"l", 'L', 1},
                                  {"d", 'D', 9},
                                  {"t", 'T', 4},
                                  {"m", 'M', 10},
                                  {"g", 'G', 4},
                                  {"p", 'P', 4},
                                  {"ABCDEFGHIJK", 'C', 5},
                                  {"_NullFlags", '0', 1}},
                                 "..\\CCCCCCCC.dbcCCCCCCCCCCCCCCCCCCCCCCCCCCCC"));
    fields.reset(m_ado.GetTableFields("all"));
    EXPECT_EQ(ListOf(fields.get()),
              "0 c 1 254\n2 b 4 8\n3 f 4 20\n4 n 4 6\n5 l 5 1\n6 d 6 8\n7 t 6 8\n8 m 8 10\n9 g -1 4 system\n"
              "10 p -1 4 system\n11 ABCDEFGHIJK 1 5\n");
    EXPECT_EQ(fields->GetFieldAt(0)->nDecimal, 0);
    EXPECT_EQ(fields->GetFieldAt(0)->bReadOnly, 0);
}

TEST_F(Ado, DamagedHeadsGiveFewerColumns) {
    const std::string whole = DbfFile({{"ID", 'I', 4}, {"ShapeID", 'I', 4}, {"name", 'C', 10}});
    for (std::size_t length = 0; length < whole.size(); length += 5) {
        WriteFile("cut.dbf", whole.substr(0, length));
        const std::unique_ptr<CFields> fields(m_ado.GetTableFields("cut"));
        EXPECT_LE(fields->GetFieldCount(), 3);
        // The first entry's letter is byte 43.
        EXPECT_EQ(fields->GetFieldCount() > 0, length >= 44) << length;
    }
    for (const int headerLength : {0, 1, 31, 32, 63, 0xFFFF}) {
        std::string file = whole;
        file[8] = static_cast<char>(headerLength & 0xFF);
        file[9] = static_cast<char>(headerLength >> 8);
        WriteFile("odd.dbf", file);
        const std::unique_ptr<CFields> fields(m_ado.GetTableFields("odd"));
        EXPECT_EQ(fields->GetFieldCount(), headerLength == 0xFFFF ? 3 : 0) << headerLength;
    }
    const std::unique_ptr<CFields> none(m_ado.GetTableFields("none"));
    EXPECT_EQ(none->GetFieldCount(), 0);
}

TEST_F(Ado, MissingAccessFileIsLogged) {
    CAdo_Local_mdb ado;
    EXPECT_EQ(ado.ConnDB(m_path + "\\none.mdb"), 0);
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_FALSE(ado.GetConnection());
}
