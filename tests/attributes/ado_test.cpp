#include <cstring>
#include <filesystem>
#include <tuple>

#include "ktl/attributes/ado_local_mdb.h"
#include "ktl/attributes/table_local_mdb.h"
#include "ktl/platform/ado/error.h"
#include "tests/attributes/table_fixture.h"

namespace ktl::test {
namespace {

class Ado : public TableTest {
  protected:
    std::string FieldsOf(const char *table) {
        return ListOf(std::unique_ptr<CFields>(m_ado.GetTableFields(table)).get());
    }
};

/// A .dbf file without rows, of columns with name, letter and width; then the terminator and the backlink area.
using DbfColumns = std::vector<std::tuple<const char *, char, int>>;

std::string DbfFile(const DbfColumns &columns, const std::string &backlink = "") {
    std::string file(32, '\0');
    file[0] = 0x30;
    const std::size_t length = 32 + 32 * columns.size() + 1 + 263;
    file[8] = static_cast<char>(length & 0xFF);
    file[9] = static_cast<char>(length >> 8);
    for (const auto &[name, letter, width] : columns) {
        std::string entry(name);
        entry.resize(32, '\0');
        entry[11] = letter;
        entry[16] = static_cast<char>(width);
        entry[17] = 2;
        file += entry;
    }
    file += '\r' + backlink;
    file.resize(length, '\0');
    return file;
}

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
    EXPECT_TRUE(m_ado.GetRecordset("Select * From t" + CString(' ', 9000), 1, 0)) << "no limit for reading";
}

TEST_F(Ado, FaultsAreLoggedAndNoRowsIsNone) {
    Run("Create Table t (ID int,ShapeID int)");
    EXPECT_FALSE(m_ado.GetRecordset("Select * From t", 1, 0));
    const ado::RecordsetRef rows = m_ado.GetRecordset("Select * From t", 0, 0);
    EXPECT_TRUE(rows && rows->IsOpen() && rows->IsEOF() && rows->GetRecordCount() == 0);
    EXPECT_EQ(m_ado.IsExist("Select * From t"), 0);
    Run("Insert Into t (ID,ShapeID) Values (1,1)");
    EXPECT_EQ(m_ado.IsExist("Select * From t"), 1);
    EXPECT_EQ(m_app.Log(), "");
    EXPECT_EQ(m_ado.ExecuteSql("Update missing Set a=1"), 0);
    EXPECT_FALSE(m_ado.GetRecordset("Select * From missing", 1, 1));
    EXPECT_EQ(m_app.Logged(2), 2);
    EXPECT_NE(m_app.Log().find("\nUpdate missing Set a=1\n"), std::string::npos);
    EXPECT_NE(m_app.Log().find("\nSelect * From missing\n"), std::string::npos);
    EXPECT_EQ(m_app.Questions().size(), 2u);
}

TEST_F(Ado, UnconnectedSaysSo) {
    const ado::ConnectionRef connection = m_ado.GetConnection();
    m_ado.DisConnection();
    EXPECT_FALSE(m_ado.GetConnection() || connection->IsOpen());
    EXPECT_FALSE(m_ado.GetRecordset("Select * From t", 1, 0));
    EXPECT_EQ(m_ado.ExecuteSql("Update t Set a=1"), 0);
    EXPECT_EQ(m_ado.IsExistTable("t"), 0);
    EXPECT_EQ(m_app.Logged(2), 3);
    EXPECT_NE(m_app.Log().find("数据库未连接。"), std::string::npos);
    const CString missing = m_path + "\\none";
    EXPECT_THROW(m_ado.ConnDB(missing), ado::Error);
    EXPECT_EQ(m_ado.GetDBPath(), missing);
    // A table catches it.
    CTable_Local_dbf table(missing, "w001");
    EXPECT_EQ(m_app.Logged(2), 4);
    EXPECT_EQ(table.CreateNewLayerTable(nullptr), 0);
}

TEST_F(Ado, CellsBecomeTrimmedTexts) {
    Run("Create Table t (ID int,ShapeID int,name Char(10),size numeric(20,10),note memo)",
        "Insert Into t (ID,ShapeID,name,size,note) Values (-7,8,'  中国 ',-1.5,'a'+CHR(10)+'b '+CHR(10))",
        "Insert Into t (ID,ShapeID) Values (2,3)");
    EXPECT_EQ(Rows("Select * From t"), "-7|8|  中国|-1.5|a\nb\n2|3|||\n");
    EXPECT_EQ(Rows("Select Max(ID) From t Where ShapeID=99"), "\n") << "a null cell";
    EXPECT_EQ(m_app.Log(), "");
    const ado::RecordsetRef rows = m_ado.GetRecordset("Select * From t", 1, 0);
    EXPECT_EQ(m_ado.GetItemValue(rows, "none"), "");
    EXPECT_EQ(m_ado.GetItemValue(rows, 99), "");
    EXPECT_EQ(m_app.Logged(2), 2);
}

TEST_F(Ado, CountsAndExtremes) {
    Run("Create Table t (ID int,ShapeID int,size numeric(20,10))");
    CAdo_Local &local = m_ado;
    EXPECT_EQ(local.GetRecordCount("t", ""), 0);
    EXPECT_EQ(m_ado.GetMaxValue("t", "size"), 0.0) << "the null maximum of no rows";
    Run("Insert Into t Values (1,1,-2.5)", "Insert Into t Values (-1,2,40)", "Insert Into t Values (3,3,7)");
    EXPECT_EQ(local.GetRecordCount("t", ""), 3);
    EXPECT_EQ(local.GetRecordCount("t", "ID<>-1"), 2);
    EXPECT_EQ(m_ado.GetMaxValue("t", "size"), 40.0);
    EXPECT_EQ(m_ado.GetMinValue("t", "size"), -2.5);
    EXPECT_EQ(m_ado.GetMinValue("none", "size"), -1.0);
    EXPECT_EQ(local.GetRecordCount("none", ""), 0);
    EXPECT_EQ(static_cast<CAdo &>(m_ado).GetRecordCount("t"), 0) << "the virtual one counts nothing";
}

TEST_F(Ado, ByteBlocksGoBothWays) {
    Run("Create Table t (ID int,pic image,note memo)", "Insert Into t (ID,note) Values (1,'text')");
    std::vector<unsigned char> bytes(70000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 7);
    const auto rows = [&] { return m_ado.GetRecordset("Select * From t", 1, 0); };
    const auto expect = [&](const char *field, const unsigned char *content, long size) {
        long told = -1;
        const std::unique_ptr<unsigned char[]> block(m_ado.GetBLOBValue(rows(), field, told));
        ASSERT_TRUE(told == size && (block == nullptr) == (content == nullptr)) << told;
        EXPECT_TRUE(!block || std::memcmp(block.get(), content, static_cast<std::size_t>(size)) == 0);
    };
    m_ado.AddBLOBValue("Select pic From t", "pic", nullptr, 5, 0);
    m_ado.AddBLOBValue("Select pic From t", "pic", bytes.data(), 0, 0);
    expect("pic", nullptr, 0);
    m_ado.AddBLOBValue("Select pic From t", "pic", bytes.data(), 70000, 0);
    expect("pic", bytes.data(), 70000);
    const ado::RecordsetRef open = rows();
    EXPECT_EQ(m_ado.GetItemValue(open, "pic"), "") << "a block has no text";
    m_ado.AddBLOBValue(open, "pic", bytes.data() + 1, 3, 1);
    expect("pic", bytes.data(), 70000);
    open->Update();
    expect("pic", bytes.data() + 1, 3);
    expect("note", nullptr, 4);
    EXPECT_EQ(m_app.Log(), "");
    m_ado.AddBLOBValue("Select pic From none", "pic", bytes.data(), 3, 0);
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(Ado, ColumnsComeFromTheFile) {
    EXPECT_EQ(m_ado.IsExistTable("Plain"), 0);
    EXPECT_EQ(m_ado.CreateTable("Plain"), 1);
    EXPECT_EQ(m_ado.IsExistTable("pLAIN"), 1);
    EXPECT_EQ(m_ado.IsExistTable("plai"), 0);
    EXPECT_EQ(FieldsOf("Plain"), "0 ID 2 4 system\n1 ShapeID 2 4 system\n");

    // Every letter; the unknown ones leave gaps, and the area behind the entries holds none.
    const DbfColumns columns = {{"c", 'C', 254}, {"v", 'V', 9},           {"b", 'B', 8},       {"f", 'F', 20},
                                {"n", 'N', 6},   {"l", 'L', 1},           {"d", 'D', 9},       {"t", 'T', 4},
                                {"m", 'M', 10},  {"g", 'G', 4},           {"p", 'P', 4},       {"y", 'Y', 8},
                                {"i", 'I', 4},   {"ABCDEFGHIJK", 'C', 5}, {"update", 'C', 12}, {"_NullFlags", '0', 1}};
    WriteFile("all.dbf", DbfFile(columns, "..\\CCCCCCCC.dbcCCCCCCCCCCCCCCCCCCCCCCCCCCCC"));
    EXPECT_EQ(FieldsOf("all"),
              "0 c 1 254\n2 b 4 8\n3 f 4 20\n4 n 4 6\n5 l 5 1\n6 d 6 8\n7 t 6 8\n8 m 8 10\n9 g -1 4 system\n"
              "10 p -1 4 system\n11 y -1 8 system\n12 i 2 4\n13 ABCDEFGHIJK 1 5\n14 update 1 12 system\n");
    const std::unique_ptr<CFields> fields(m_ado.GetTableFields("all"));
    EXPECT_TRUE(fields->GetFieldAt(0)->nDecimal == 0 && fields->GetFieldAt(0)->bReadOnly == 0);
}

TEST_F(Ado, DamagedHeadsGiveFewerColumns) {
    const auto count = [&](const std::string &file) {
        WriteFile("odd.dbf", file);
        return std::unique_ptr<CFields>(m_ado.GetTableFields("odd"))->GetFieldCount();
    };
    const std::string whole = DbfFile({{"ID", 'I', 4}, {"ShapeID", 'I', 4}, {"name", 'C', 10}});
    for (std::size_t length = 0; length < whole.size(); length += 5) {
        // The first entry's letter is byte 43.
        const int found = count(whole.substr(0, length));
        EXPECT_TRUE(found <= 3 && (found > 0) == (length >= 44)) << length;
    }
    for (const int headerLength : {0, 1, 31, 32, 63, 0xFFFF}) {
        std::string file = whole;
        file[8] = static_cast<char>(headerLength & 0xFF);
        file[9] = static_cast<char>(headerLength >> 8);
        EXPECT_EQ(count(file), headerLength == 0xFFFF ? 3 : 0) << headerLength;
    }
    EXPECT_EQ(FieldsOf("none"), "");
}

// How the cells of an Access file read is tested with the store.
TEST_F(Ado, AccessFileIsConnectedOnceAndNeverWritten) {
    const std::string file = m_app.Folder().Path("sample.mdb");
    std::filesystem::copy_file(KTL_SOURCE_DIR "/tests/platform/ado/data/sample.mdb", file);
    const std::string content = m_app.Folder().Read("sample.mdb");
    CAdo_Local_mdb ado;
    const CString path = m_app.Folder().Name("sample.mdb");
    EXPECT_EQ(ado.ConnDB(path), 1);
    EXPECT_EQ(ado.GetConnection()->GetConnectionTimeout(), 5000);
    EXPECT_EQ(ado.ConnDB("elsewhere.mdb"), 1) << "connected already";
    EXPECT_EQ(ado.GetDBPath(), path);
    for (const char *table : {"ALLTYPES", "点位表"}) EXPECT_EQ(ado.IsExistTable(FromUtf8(table)), 1);
    for (const char *table : {"user", "MSysObjects", ""}) EXPECT_EQ(ado.IsExistTable(table), 0) << table;
    EXPECT_EQ(static_cast<CAdo_Local &>(ado).GetRecordCount("AllTypes", "NameA Is Null"), 71);
    EXPECT_EQ(m_app.Log(), "");
    EXPECT_EQ(ado.ExecuteSql("Delete From w001"), 0);
    EXPECT_NE(m_app.Log().find("can only be read.\nDelete From w001\n"), std::string::npos) << m_app.Log();
    unsigned char byte = 1;
    ado.AddBLOBValue("Select Pic From AllTypes", "Pic", &byte, 1, 0);
    EXPECT_EQ(m_app.Logged(2), 2);
    EXPECT_EQ(ado.CreateTable("made"), 1) << "nothing of its own";
    EXPECT_TRUE(m_app.Folder().Read("sample.mdb") == content);
    ado.DisConnection();
    EXPECT_EQ(ado.ConnDB("elsewhere.mdb"), 0);
    EXPECT_EQ(m_app.Logged(2), 3);
    EXPECT_EQ(ado.ConnDB(path), 1) << "a failure leaves no half connection";
    EXPECT_EQ(ado.IsExist("Select * From Users"), 1);
}

TEST_F(Ado, AccessTableHasItsKindAndABufferOnly) {
    CTable_Local_mdb table;
    EXPECT_EQ(table.GetTableKind(), 2);
    table.AddNewRecord(std::make_unique<CRecord>(7).release());
    EXPECT_EQ(table.GetNewRecordCount(), 1);
    EXPECT_EQ(table.GetRecordCount(1), 0) << "the base class counts nothing";
    EXPECT_EQ(table.GetShapeProperty(7, 1), nullptr);
    EXPECT_FALSE(table.GetRecordset("Select * From w001"));
    EXPECT_EQ(table.DeleteField(CField()), 0);
    EXPECT_EQ(m_app.Log(), "");
}

}  // namespace
}  // namespace ktl::test
