#include <algorithm>

#include "ktl/platform/archive.h"
#include "ktl/platform/mem_file.h"
#include "tests/attributes/table_fixture.h"

namespace {

class TableStream : public ktl::test::TableTest {
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

    static void SetRow(CTable_Local_dbf &table, int shape, const std::vector<std::string> &values) {
        table.AddNewRecord(shape);
        for (std::size_t i = 0; i < values.size(); ++i) {
            table.UpdateNewRecordPropertyValue(shape, static_cast<int>(i) + 2, ktl::FromUtf8(values[i]));
        }
    }

    std::string Memo(int shape) { return RawCell("Select note From w001 Where ShapeID=" + std::to_string(shape)); }

    static std::string Length64(std::size_t length) {
        std::string bytes;
        for (int i = 0; i < 8; ++i) bytes += static_cast<char>(static_cast<std::uint64_t>(length) >> (8 * i));
        return bytes;
    }
};

}  // namespace

TEST_F(TableStream, StreamIsNameAndWholeFiles) {
    auto table = Make({Field("name", DATA_CHAR, 10), Field("note", DATA_MEMO, -1)});
    SetRow(*table, 1, {"中国", "text"});
    const std::string bytes = Stored(*table);
    const std::string dbf = FileOf("w001b.dbf");
    const std::string fpt = FileOf("w001b.fpt");
    ASSERT_FALSE(dbf.empty());
    ASSERT_FALSE(fpt.empty());
    const std::string head = std::string("\4w001") + Length64(dbf.size()) + dbf;
    EXPECT_TRUE(bytes == head + std::string("\1\0\0\0", 4) + Length64(fpt.size()) + fpt);
    EXPECT_TRUE(Stored(*table, 204) ==
                std::string("\4w001") + Length64(FileOf("w001b.dbf").size()) + FileOf("w001b.dbf"));

    auto plain = Make({Field("name", DATA_CHAR, 10)}, "w002");
    const std::string without = Stored(*plain);
    EXPECT_TRUE(without == std::string("\4w002") + Length64(FileOf("w002b.dbf").size()) + FileOf("w002b.dbf") +
                               std::string(4, '\0'));
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, RoundTripKeepsLiveRowsOnly) {
    std::string bytes;
    {
        auto table = Make({Field("name", DATA_CHAR, 20), Field("note", DATA_MEMO, -1), Field("size", DATA_NUMERIC),
                           Field("big", DATA_BIGINT), Field("flag", DATA_BOOL)});
        SetRow(*table, 1, {"it's 中国", "line 1\r\nit's\tline 2", "-12.3456789", "9000000000", "1"});
        SetRow(*table, 2, {"two", "", "7", "-5", "0"});
        SetRow(*table, 3, {"buffered, deleted", "x", "0", "0", "0"});
        table->DeleteRecord(3, 1);
        bytes = Stored(*table);
        EXPECT_EQ(table->GetNewRecordCount(), 0);
        table->DeleteRecord(2, 0);
        bytes = Stored(*table);
        EXPECT_EQ(table->GetRecordCount(1), 2) << "the live table keeps its deleted rows";
        EXPECT_EQ(m_app.Log(), "");
    }
    CFile::Remove(m_path + "\\w001.fpt");
    CTable_Local_dbf table;
    LoadInto(table, bytes);
    EXPECT_EQ(table.GetTableName(), "w001");
    EXPECT_EQ(table.GetRecordCount(1), 1);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|it's 中国|line 1\n\nit's    line 2|-12.3456789|9000000000|1\n");
    EXPECT_EQ(Memo(1), "line 1\n\nit's    line 2\n");
    EXPECT_EQ(ListOf(table.GetTableFields()),
              "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 20\n3 note 8 4\n"
              "4 size 4 20\n5 big 4 20\n6 flag 2 4\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, MemosEndEveryLineInALineFeed) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    const std::string fits(8000, 'x');
    const std::string chinese = [] {
        std::string text;
        for (int i = 0; i < 200; ++i) text += "国";
        return "a" + text;
    }();
    SetRow(*table, 1, {""});
    SetRow(*table, 2, {"a\n"});
    SetRow(*table, 3, {"a\r\nb"});
    SetRow(*table, 4, {fits});
    SetRow(*table, 5, {fits + "y"});
    SetRow(*table, 6, {chinese});
    SetRow(*table, 7, {"'"});
    Stored(*table);
    EXPECT_EQ(Memo(1), "\n");
    EXPECT_EQ(Memo(2), "a\n\n");
    EXPECT_EQ(Memo(3), "a\n\nb\n");
    EXPECT_EQ(Memo(4), fits + "\n");
    EXPECT_EQ(Memo(5), "") << "8001 bytes";
    EXPECT_EQ(Memo(6), std::string(ktl::FromUtf8(chinese).GetString()) + "\n");
    EXPECT_EQ(Memo(7), "'\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, RowThatDoesNotFitLeavesItsNumbers) {
    std::vector<CField> columns;
    for (int i = 0; i < 33; ++i) columns.push_back(Field(("c" + std::to_string(i)).c_str(), DATA_CHAR, 254));
    columns.push_back(Field("note", DATA_MEMO, -1));
    auto table = Make(columns);
    table->AddNewRecord(5);
    for (int i = 0; i < 33; ++i) table->UpdateNewRecordPropertyValue(5, i + 2, CString('x', 254));
    table->UpdateNewRecordPropertyValue(5, 35, "memo");
    table->AddNewRecord(6);
    Stored(*table);
    EXPECT_EQ(m_app.Logged(100099), 1);
    EXPECT_NE(m_app.Log().find("添加记录失败，这里将插入一条空记录。"), std::string::npos);
    EXPECT_TRUE(m_app.Questions().empty());
    EXPECT_EQ(Rows("Select ID,ShapeID,c0,c32 From w001"), "5|5||\n6|6||\n");
    EXPECT_EQ(Memo(5), "memo\n");
}

TEST_F(TableStream, EmptyNumberSpoilsItsRow) {
    auto table = Make({Field("n", DATA_INT), Field("name", DATA_CHAR, 5)});
    SetRow(*table, 1, {"", "one"});
    SetRow(*table, 2, {"2", "two"});
    Stored(*table);
    EXPECT_EQ(m_app.Logged(100099), 1);
    EXPECT_EQ(Rows("Select ID,ShapeID,n,name From w001"), "1|1|0|\n2|2|2|two\n");
}

TEST_F(TableStream, UnwritableTableLeavesTheStreamEmpty) {
    // A column that has no definition, in the middle and at the end.
    for (const bool atEnd : {false, true}) {
        std::vector<CField> columns = {Field("name", DATA_CHAR, 5)};
        auto table = Make(columns);
        Run("Insert Into w001 Values (1,1,'a')");
        columns.insert(atEnd ? columns.end() : columns.begin(), Field("price", DATA_UNSUPPORTED));
        CFields *fields = table->GetTableFields();
        fields->RemoveAllFields();
        fields->Copy(Columns(columns).get());
        EXPECT_EQ(Stored(*table), "") << atEnd;
    }
    // A date column is made under another name.
    auto dated = Make({Field("built", DATA_DATETIME)}, "w003");
    EXPECT_EQ(dated->GetRecordCount(1), 0);
    EXPECT_EQ(Stored(*dated), "");
    EXPECT_EQ(m_app.Logged(2), 3);
}

TEST_F(TableStream, ColumnLeftInTheListShiftsNoRowOut) {
    auto table = Make({Field("a", DATA_CHAR, 5), Field("b", DATA_CHAR, 5)});
    SetRow(*table, 1, {"1", "2"});
    EXPECT_EQ(table->DeleteField(*table->GetFieldByName("a")), 1);
    EXPECT_FALSE(Stored(*table).empty());
    // The buffered row kept the dropped column's value, which is the next column's now.
    EXPECT_EQ(Rows("Select * From w001"), "1|1|1\n");
    EXPECT_EQ(table->GetNewRecordCount(), 0);
}

TEST_F(TableStream, FailingRowKeepsTheBuffer) {
    auto table = Make({});
    table->AddNewRecord(1);
    table->GetTableFields()->RemoveAllFields();
    Stored(*table);
    EXPECT_EQ(m_app.Logged(100101), 1);
    EXPECT_EQ(table->GetNewRecordCount(), 1);
}

TEST_F(TableStream, OlderDocumentsBringNoMemos) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    for (const int shape : {1, 2, 3}) SetRow(*table, shape, {"text"});
    const std::string bytes = Stored(*table, 204);
    table.reset();
    CTable_Local_dbf loaded;
    LoadInto(loaded, bytes, 204);
    EXPECT_FALSE(m_app.Folder().Has("TempDB/w001.fpt"));
    EXPECT_EQ(Rows("Select * From w001"), "1|1|\n2|2|\n3|3|\n");
    // New texts are kept, and a pointer into the lost file leads to none of them.
    auto shapes = Numbers({2});
    auto flags = Numbers({0});
    loaded.UpdatePropertyValue(shapes, flags, "note", "new");
    SetRow(loaded, 4, {"row"});
    CTable_Local_dbf again;
    LoadInto(again, Stored(loaded));
    EXPECT_EQ(Rows("Select * From w001"), "1|1|\n2|2|new\n3|3|\n4|4|row\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, DroppedMemoColumnLeavesNoMemoFile) {
    auto table = Make({Field("name", DATA_CHAR, 5), Field("note", DATA_MEMO, -1)});
    SetRow(*table, 1, {"a", "text"});
    Stored(*table);
    ASSERT_TRUE(m_app.Folder().Has("TempDB/w001b.fpt"));
    EXPECT_EQ(table->DeleteField(*table->GetFieldByName("note")), 1);
    const std::string bytes = Stored(*table);
    EXPECT_EQ(bytes.substr(bytes.size() - 4), std::string(4, '\0'));
    CTable_Local_dbf loaded;
    LoadInto(loaded, bytes);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|a\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableStream, EveryCutStreamThrows) {
    auto table = Make({Field("note", DATA_MEMO, -1)});
    SetRow(*table, 1, {"text"});
    const std::string bytes = Stored(*table);
    for (std::size_t length = 0; length < bytes.size(); length += length < 40 ? 1 : 97) {
        CTable_Local_dbf loaded;
        EXPECT_THROW(LoadInto(loaded, bytes.substr(0, length)), CArchiveException) << length;
    }
    std::string longer = bytes;
    for (std::size_t i = 5; i < 13; ++i) longer[i] = '\x7F';
    CTable_Local_dbf loaded;
    EXPECT_THROW(LoadInto(loaded, longer), CArchiveException);
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
    const std::string chinese(ktl::FromUtf8("乗").View());
    CTable_Local_dbf loaded;
    LoadInto(loaded, '\2' + chinese + content);
    EXPECT_EQ(loaded.GetFieldCount(), 2);
}

TEST_F(TableStream, FileThatCannotBeReplacedEndsLoading) {
    auto table = Make({Field("name", DATA_CHAR, 5)});
    const std::string bytes = Stored(*table);
    Run("Insert Into w001 Values (1,1,'old')");
    const std::string before = FileOf("w001.dbf");
    CFile held(m_path + "\\w001.dbf", CFile::modeRead | CFile::shareDenyNone);
    CTable_Local_dbf loaded;
    LoadInto(loaded, bytes);
    EXPECT_TRUE(FileOf("w001.dbf") == before);
}

TEST_F(TableStream, DefaultTableSavesAndLoads) {
    auto table = Open();
    ASSERT_EQ(table->CreateNewLayerTable(nullptr), 1);
    for (int i = 0; i < 300; ++i) table->AddNewRecord(i);
    table->UpdateNewRecordPropertyValue(299, 2, ktl::FromUtf8("最后"));
    const std::string bytes = Stored(*table);
    CTable_Local_dbf loaded;
    LoadInto(loaded, bytes);
    EXPECT_EQ(loaded.GetRecordCount(0), 300);
    const std::unique_ptr<CRecord> row(loaded.GetShapeProperty(299, 0));
    EXPECT_EQ(ValuesOf(row.get()), "299|299|最后||");
    EXPECT_EQ(m_app.Log(), "");
}
