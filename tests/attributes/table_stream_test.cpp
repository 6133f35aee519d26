#include "ktl/platform/archive.h"
#include "ktl/platform/mem_file.h"
#include "tests/attributes/table_fixture.h"

namespace ktl::test {
namespace {

class TableStream : public TableTest {
  protected:
    static std::string Stored(CTable_Local_dbf &table, int version = 205) {
        CMemFile file;
        CArchive archive(&file, CArchive::store);
        table.Serialize(archive, version);
        archive.Close();
        std::string bytes(static_cast<std::size_t>(file.GetLength()), '\0');
        file.SeekToBegin();
        file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
        return bytes;
    }
    static void LoadInto(CTable_Local_dbf &table, const std::string &bytes, int version = 205) {
        CMemFile file;
        file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
        file.SeekToBegin();
        CArchive archive(&file, CArchive::load);
        table.Serialize(archive, version);
    }

    std::string Memo(int shape) { return RawCell("Select note From w001 Where ShapeID=" + std::to_string(shape)); }
    /// A file as the stream holds it.
    std::string Part(const std::string &name) const {
        const std::string content = FileOf(name);
        std::string length;
        for (int i = 0; i < 8; ++i) length += static_cast<char>(content.size() >> (8 * i));
        return length + content;
    }
};

TEST_F(TableStream, StreamIsNameAndWholeFiles) {
    auto table = Make({Field("note", DATA_MEMO, -1), Field("name", DATA_CHAR, 254)});
    Buffer(*table, 1, {"text", "中国"});
    for (int shape = 2; shape < 300; ++shape) table->AddNewRecord(shape);
    const std::string bytes = Stored(*table);
    ASSERT_GT(FileOf("w001b.fpt").size(), 0u);
    EXPECT_TRUE(bytes == "\4w001" + Part("w001b.dbf") + std::string("\1\0\0\0", 4) + Part("w001b.fpt"));
    EXPECT_TRUE(Stored(*table, 204) == "\4w001" + Part("w001b.dbf"));
    EXPECT_EQ(table->DeleteField(*table->GetFieldByName("note")), 1);
    const std::string without = Stored(*table);
    EXPECT_TRUE(without == "\4w001" + Part("w001b.dbf") + std::string(4, '\0')) << "an older memo file is gone";
    LoadInto(*table, without);
    EXPECT_TRUE(FileOf("w001.dbf") == FileOf("w001b.dbf"));
    EXPECT_EQ(RowOf(*table, 1, 0), "1|1|中国|");
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 id 2 4 system\n1 shapeid 2 4 system\n2 name 1 254\n") << "read anew";
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, RoundTripKeepsLiveRowsOnly) {
    auto table = Make({Field("name", DATA_CHAR, 20), Field("note", DATA_MEMO, -1), Field("size", DATA_NUMERIC),
                       Field("big", DATA_BIGINT), Field("flag", DATA_BOOL)});
    Buffer(*table, 1, {"it's 中国", "line 1\r\nit's\tline 2", "-12.3456789", "9000000000", "1"});
    Buffer(*table, 2, {"two", "", "7", "-5", "0"});
    Buffer(*table, 3, {"buffered, deleted", "x", "0", "0", "0"});
    table->DeleteRecord(3, 1);
    EXPECT_EQ(During([&] { Stored(*table); }),
              "(held: w001)\n"
              "Insert Into [w001] (ID,ShapeID,name,size,big,flag) Values (1,1,'it''s 中国',-12.3456789,9000000000,1)\n"
              "Update w001 Set note='line 1'+CHR(10)+''+CHR(10)+'it''s    line 2'+CHR(10)+'' Where ShapeID=1\n"
              "Insert Into [w001] (ID,ShapeID,name,size,big,flag) Values (2,2,'two',7,-5,0)\n"
              "Update w001 Set note=''+CHR(10)+'' Where ShapeID=2\nCreate Table w001b ([ID] int,[ShapeID] int,"
              "[name] Char(20),[note] memo,[size] numeric(20,10),[big] bigint,[flag] int)\n"
              "Insert Into [w001b] Select ID,ShapeID,name,note,size,big,flag From [w001] Where ID <> -1\n");
    EXPECT_EQ(table->GetNewRecordCount(), 0);
    table->DeleteRecord(2, 0);
    const std::string bytes = Stored(*table);
    EXPECT_EQ(table->GetRecordCount(1), 2) << "the live table keeps its deleted rows";
    CFile::Remove(m_path + "\\w001.fpt");
    table = std::make_unique<CTable_Local_dbf>();
    LoadInto(*table, bytes);
    EXPECT_EQ(table->GetTableName(), "w001");
    EXPECT_EQ(table->GetRecordCount(1), 1);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|it's 中国|line 1\n\nit's    line 2|-12.3456789|9000000000|1\n");
    EXPECT_EQ(ListOf(table->GetTableFields()),
              "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 20\n3 note 8 4\n"
              "4 size 4 20\n5 big 4 20\n6 flag 2 4\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, MemosEndEveryLineInALineFeed) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    const std::string fits(8000, 'x');
    std::string chinese = "a";
    for (int i = 0; i < 200; ++i) chinese += "国";
    const std::string x255(255, 'x');
    const std::string cases[][2] = {{x255, x255 + "\n"},       {"", "\n"},          {"a\n", "a\n\n"},
                                    {"a\r\nb", "a\n\nb\n"},    {fits, fits + "\n"}, {fits + "y", ""},
                                    {chinese, chinese + "\n"}, {"'", "'\n"}};
    for (int shape = 0; const auto &[text, stored] : cases) Buffer(*table, shape++, {text});
    const std::string statements = During([&] { Stored(*table); });
    EXPECT_NE(statements.find("note='" + x255.substr(1) + "'+'x'+CHR(10)+'' Where"), std::string::npos);
    for (int shape = 0; const auto &[text, stored] : cases) {
        EXPECT_EQ(Memo(shape++), std::string(FromUtf8(stored).View())) << text;
    }
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, RowThatDoesNotFitLeavesItsNumbers) {
    std::vector<CField> columns = {Field("n", DATA_INT)};
    for (int i = 0; i < 33; ++i) columns.push_back(Field(("c" + std::to_string(i)).c_str(), DATA_CHAR, 254));
    columns.push_back(Field("note", DATA_MEMO, -1));
    auto table = Make(columns);
    std::vector<std::string> values(34, std::string(254, 'x'));
    values[0] = "3";
    values.push_back("memo");
    Buffer(*table, 5, values);
    Buffer(*table, 6, {"", "an empty number leaves a gap"});
    Buffer(*table, 7, {"4", "fits"});
    Stored(*table);
    EXPECT_EQ(m_app.Logged(100099), 2);
    EXPECT_EQ(m_app.Questions().size(), 1u) << "too long a statement is not sent";
    EXPECT_NE(m_app.Log().find("添加记录失败，这里将插入一条空记录。"), std::string::npos);
    EXPECT_EQ(Rows("Select ID,ShapeID,n,c0,c32 From w001"), "5|5|0||\n6|6|0||\n7|7|4|fits|\n");
    EXPECT_EQ(Memo(5), "memo\n");
}

TEST_F(TableStream, UnwritableTableLeavesTheStreamEmpty) {
    // A column that has no definition, in the middle and at the end.
    const CField name = Field("name", DATA_CHAR, 5);
    const CField price = Field("price", DATA_UNSUPPORTED);
    for (const std::vector<CField> &columns : {std::vector{price, name}, std::vector{name, price}}) {
        auto table = Make({name});
        table->GetTableFields()->Copy(Columns(columns).get());
        EXPECT_EQ(Stored(*table), "");
    }
    // A date column is made under another name.
    EXPECT_EQ(Stored(*Make({Field("built", DATA_DATETIME)}, "w003")), "");
    EXPECT_EQ(m_app.Logged(2), 3);
}

TEST_F(TableStream, ColumnLeftInTheListShiftsNoRowOut) {
    auto table = Make({Field("a", DATA_CHAR, 5), Field("b", DATA_CHAR, 5)});
    Buffer(*table, 1, {"1", "2"});
    EXPECT_EQ(table->DeleteField(*table->GetFieldByName("a")), 1);
    EXPECT_FALSE(Stored(*table).empty());
    // The buffered row kept the dropped column's value, which is the next column's now.
    EXPECT_EQ(Rows("Select * From w001"), "1|1|1\n");
    EXPECT_EQ(table->GetNewRecordCount(), 0);
    table->AddNewRecord(1);
    table->GetTableFields()->RemoveAllFields();
    Stored(*table);
    EXPECT_EQ(m_app.Logged(100101), 1);
    EXPECT_EQ(table->GetNewRecordCount(), 1) << "a failure keeps the buffer";
}

TEST_F(TableStream, OlderDocumentsBringNoMemos) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    for (const int shape : {1, 2, 3}) Buffer(*table, shape, {"text"});
    const std::string bytes = Stored(*table, 204);
    table.reset();
    CTable_Local_dbf loaded;
    LoadInto(loaded, bytes, 204);
    EXPECT_FALSE(m_app.Folder().Has("TempDB/w001.fpt"));
    EXPECT_EQ(Rows("Select * From w001"), "1|1|\n2|2|\n3|3|\n");
    // New texts are kept, and a pointer into the lost file leads to none of them.
    Set(loaded, {2}, {0}, "note", "new");
    Buffer(loaded, 4, {"row"});
    CTable_Local_dbf again;
    LoadInto(again, Stored(loaded));
    EXPECT_EQ(Rows("Select * From w001"), "1|1|\n2|2|new\n3|3|\n4|4|row\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, CutStreamThrowsAndAFileInUseStays) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    Buffer(*table, 1, {"text"});
    std::string bytes = Stored(*table);
    {
        const CFile held(m_path + "\\w001.dbf", CFile::modeRead | CFile::shareDenyNone);
        table->DeleteRecord(1, 0);
        const std::string before = FileOf("w001.dbf");
        CTable_Local_dbf loaded;
        LoadInto(loaded, bytes);
        EXPECT_TRUE(FileOf("w001.dbf") == before);
    }
    for (std::size_t length = 0; length < bytes.size(); length += length < 40 ? 1 : 97) {
        CTable_Local_dbf loaded;
        EXPECT_THROW(LoadInto(loaded, bytes.substr(0, length)), CArchiveException) << length;
    }
    for (std::size_t i = 5; i < 13; ++i) bytes[i] = '\x7F';
    CTable_Local_dbf loaded;
    EXPECT_THROW(LoadInto(loaded, bytes), CArchiveException);
}

TEST_F(TableStream, TableOutsideTheFolderIsRefused) {
    auto table = Make({});
    const std::string content = Stored(*table).substr(5);
    // The last one is a broken character before the separator.
    for (const std::string name : {"../out", "..\\out", "/tmp/out", "x\\..\\..\\out", "\x81/../../out"}) {
        CTable_Local_dbf loaded;
        EXPECT_THROW(LoadInto(loaded, static_cast<char>(name.size()) + name + content), CArchiveException) << name;
        EXPECT_EQ(loaded.GetTableName(), "");
    }
    EXPECT_FALSE(m_app.Folder().Has("out.dbf"));
    // 乗 ends in the code of a backslash, which is no separator.
    const std::string chinese(FromUtf8("乗").View());
    CTable_Local_dbf loaded;
    LoadInto(loaded, '\2' + chinese + content);
    EXPECT_EQ(loaded.GetFieldCount(), 2);
}

}  // namespace
}  // namespace ktl::test
