#include "tests/attributes/table_fixture.h"

namespace ktl::test {
namespace {

class TableRows : public TableTest {
  protected:
    using Hits = CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT>;

    /// w001 with the columns name, note and size; ten rows, of which 3 and 7 are deleted.
    Table TenRows() {
        auto table = Make({Field("name", DATA_CHAR, 10), Field("note", DATA_MEMO, -1), Field("size", DATA_NUMERIC)});
        for (int i = 1; i <= 10; ++i) {
            const std::string n = std::to_string(i);
            Run("Insert Into w001 (ID,ShapeID,name,size) Values (" + n + "," + n + ",'name" + n + "'," + n + ".5)");
        }
        auto deleted = Numbers({3, 7});
        auto stored = Numbers({0, 0});
        table->DeleteRecords(deleted, stored);
        return table;
    }

    static std::string Column(CTable_Local_dbf &table, const char *field) {
        CArray<CString, CString> values;
        values.Add("old");
        table.ReadValueArray(field, values);
        return ListOf(values);
    }
    static std::string Text(const Hits &hits) {
        std::string text;
        for (const STRUCT_SEARCH_RESULT &hit : hits) {
            text += std::to_string(hit.nLayerIndex) + " " + ToUtf8(hit.strLayerName) + " " +
                    std::to_string(hit.nShapeID) + " " + ToUtf8(hit.strValue) + "\n";
        }
        return text;
    }
};

TEST_F(TableRows, RowsAreInFileAndBuffer) {
    const auto table = TenRows();
    for (int i = 11; i <= 13; ++i) table->AddNewRecord(i);
    table->DeleteRecord(12, 1);
    EXPECT_EQ(table->GetRecordCount(1), 13);
    EXPECT_EQ(table->GetRecordCount(0), 10);
    EXPECT_EQ(table->GetRecordCount(2), 10);
    EXPECT_EQ(table->GetNewRecordCount(), 3);
    EXPECT_EQ(Rows("Select ShapeID From w001 Where ID = -1"), "3\n7\n");
    EXPECT_EQ(RowOf(*table, 4, 0), "4|4|name4||4.5|");
    EXPECT_EQ(RowOf(*table, 3, 0), "-1|3|name3||3.5|");
    EXPECT_EQ(RowOf(*table, 11, 0), "(none)");
    EXPECT_EQ(RowOf(*table, 4, 1), "(none)");
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(4, 0));
    EXPECT_EQ(row->nShapeID, 4);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, BufferedRowsHaveZerosForNumbersAndAnUnknownShapeIsTheLast) {
    const auto table = Make({Field("name", DATA_CHAR, 10), Field("n", DATA_NUMERIC), Field("b", DATA_BOOL),
                             Field("l", DATA_BIGINT), Field("note", DATA_MEMO), Field("i", DATA_INT)});
    table->DeleteRecord(1, 1);
    table->UpdateNewRecordPropertyValue(1, 2, "x");
    for (int i = 1; i <= 3; ++i) table->AddNewRecord(i);
    table->UpdateNewRecordPropertyValue(1, 2, "first");
    table->UpdateNewRecordPropertyValue(99, 2, "last");
    table->UpdateNewRecordPropertyValue(2, 19, "ignored");
    table->DeleteRecord(99, 1);
    EXPECT_EQ(RowOf(*table, 1, 1), "1|1|first|0|0|0||0|");
    EXPECT_EQ(RowOf(*table, 2, 1), "2|2||0|0|0||0|");
    EXPECT_EQ(RowOf(*table, 3, 1), "-1|3|last|0|0|0||0| deleted");
    table->RemoveNewRecordAt(0);
    EXPECT_EQ(table->GetNewRecordCount(), 2);
    EXPECT_THROW(table->RemoveNewRecordAt(2), CInvalidArgException);
    EXPECT_EQ(RowOf(*table, 1, 1), "(none)");
}

TEST_F(TableRows, ColumnsWithoutAListAreLogged) {
    CTable_Local_dbf table;
    EXPECT_EQ(table.GetTableKind(), 1);
    EXPECT_EQ(table.GetFieldCount(), 0);
    EXPECT_EQ(m_app.Logged(100072), 1);
    EXPECT_EQ(table.IsValidFieldName("name"), 0);
    EXPECT_EQ(m_app.Logged(100073), 1);
    EXPECT_EQ(table.GetTableFields(), nullptr);
    Make({Field("name", DATA_CHAR, 10)});
    const auto opened = Open();
    EXPECT_EQ(opened->GetTableFields(), opened->GetTableFields()) << "read once";
    EXPECT_EQ(opened->IsValidFieldName("NAME"), 1);
    EXPECT_EQ(opened->IsValidFieldName("name2"), 0);
}

TEST_F(TableRows, ValuesGoWhereTheFlagsSay) {
    const auto table = TenRows();
    table->AddNewRecord(11);
    Set(*table, {2, 11, 5}, {0, 1, 0}, "NAME", "new");
    Set(*table, {2, 11, 5}, {0, 1, 0}, "size", "12.75xyz");
    EXPECT_EQ(Rows("Select ShapeID,size From w001 Where name = 'new'"), "2|12\n5|12\n");
    EXPECT_EQ(RowOf(*table, 11, 1), "11|11|new||12.75xyz|");
    table->GetFieldByName("size")->nDecimal = 1;
    Set(*table, {2}, {0}, "size", "-0.25");
    EXPECT_EQ(Rows("Select size From w001 Where name = 'new'"), "-0.25\n12\n");
    table->UpdatePropertyValue(7, "name", "same");
    EXPECT_EQ(Rows("Select Count(0) From w001 Where name = 'same'"), "10\n") << "whatever the number";
    EXPECT_EQ(RowOf(*table, 11, 1), "11|11|new||12.75xyz|");
    EXPECT_EQ(m_app.Log(), "");
    Set(*table, {2}, {0}, "none", "x");
    Set(*table, {2, 5}, {0}, "name", "x");
    EXPECT_EQ(m_app.Logged(100074), 2);
    EXPECT_EQ(Rows("Select ShapeID From w001 Where name = 'x'"), "2\n") << "until the flags end";
    table->UpdatePropertyValue(7, "name", "o'clock");
    EXPECT_EQ(m_app.Logged(2), 1) << "the value is not escaped";
}

TEST_F(TableRows, LongTextIsCutBetweenCharacters) {
    const auto table = Make({Field("name", DATA_CHAR, 254)});
    Run("Insert Into w001 Values (1,1,'')");
    table->AddNewRecord(2);
    const CString a252('a', 252);
    const CString country = FromUtf8("国");
    const CString cases[][2] = {{a252 + "aa", a252 + "aa"},
                                {a252 + "aab", a252 + "aa"},
                                {a252 + "a" + country, a252 + "a"},
                                {a252 + country + country, a252 + country}};
    for (const auto &[value, stored] : cases) {
        Set(*table, {1, 2}, {0, 1}, "name", value);
        EXPECT_EQ(CString(RawCell("Select name From w001")), stored);
        EXPECT_EQ(RowOf(*table, 2, 1), "2|2|" + ToUtf8(stored) + "|");
    }
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, MemoOfAStoredRowKeepsItsLinesUpTo8000Bytes) {
    const auto table = Make({Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    const std::string chinese(FromUtf8("国家[地图]|图层").View());
    const std::string cases[][2] = {{"it's 'so'", "it's 'so'"}, {"a\tb\n\nc\rd", "a\tb\n\nc\nd"},
                                    {"\n\n\t\n", "\n\n\t\n"},   {"", ""},
                                    {chinese, chinese},         {std::string(8000, 'x'), std::string(8000, 'x')}};
    for (const auto &[text, stored] : cases) {
        Set(*table, {1}, {0}, "note", CString(text));
        EXPECT_EQ(RawCell("Select note From w001"), stored);
    }
    EXPECT_EQ(m_app.Log(), "");
    Set(*table, {1}, {0}, "note", CString('y', 8001));
    EXPECT_EQ(RawCell("Select note From w001"), std::string(8000, 'x'));
    // Only the last piece is sent, without quotes.
    EXPECT_NE(m_app.Log().find("\nReplace note With y Additive While ShapeID=1 In w001\n"), std::string::npos);
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(TableRows, FastColumnLosesItsLastByte) {
    const auto table = Make({Field("first", DATA_NUMERIC), Field("name", DATA_CHAR, 10), Field("last", DATA_CHAR, 3)});
    for (const char *name : {"0123456789", "  ab", "中国地图省", ""}) {
        Run(std::string("Insert Into w001 Values (1,1,1.5,'") + name + "','xyz')");
    }
    table->DeleteRecord(1, 0);
    Buffer(*table, 5, {"", "buffered text"});
    table->AddNewRecord(6);
    table->DeleteRecord(5, 1);
    EXPECT_EQ(Column(*table, "NAME"), "012345678|ab|" + ToUtf8(FromUtf8("中国地图省").Left(9)) + "||buffered text||");
    EXPECT_EQ(m_app.Log(), "");
    // The standard list tells 8 bytes for ID and ShapeID, which have 4: the column is looked for 8 bytes too far.
    const auto standard = Standard();
    Run("Insert Into w001 (ID,ShapeID,name) Values (1,1,'0123456789')");
    EXPECT_EQ(Column(*standard, "name"), "89|");
    EXPECT_EQ(Column(*Open(), "name"), "0123456789|");
}

TEST_F(TableRows, FastColumnOfADamagedFileIsShort) {
    Make({Field("name", DATA_CHAR, 10)});
    for (int i = 0; i < 5; ++i) Run("Insert Into w001 Values (1,1,'abcdefghij')");
    const std::string whole = FileOf("w001.dbf");
    const auto read = [&](const std::string &content) {
        WriteFile("w002.dbf", content);
        return Column(*Open("w002"), "name");
    };
    // Records of which four are read at a time.
    std::string wide = whole;
    wide[10] = '\x60';
    wide[11] = '\xEA';
    const std::size_t header = static_cast<unsigned char>(whole[8]) + 256u * static_cast<unsigned char>(whole[9]);
    for (char row = 'a'; row < 'f'; ++row) {
        wide.resize(header + 60000u * static_cast<std::size_t>(row - 'a'), ' ');
        wide += std::string(19, row);
    }
    EXPECT_EQ(read(wide), "aaaaaaaaa|bbbbbbbbb|ccccccccc|ddddddddd|eeeeeeeee|");
    std::string many = whole;
    many[4] = many[5] = many[6] = many[7] = '\xFF';
    const std::string end = read(many);
    EXPECT_TRUE(end.starts_with("abcdefghi|abcdefghi|abcdefghi|abcdefghi|abcdefghi|")) << end;
    EXPECT_LT(end.size(), 60u);
    std::string still = whole;
    still[10] = still[11] = '\0';
    EXPECT_EQ(read(still), "");
    EXPECT_EQ(read(whole.substr(0, header + 19 + 12)), "abcdefghi|abc|");
    EXPECT_EQ(read(whole.substr(0, header + 19)), "abcdefghi|");
    EXPECT_EQ(read(whole.substr(0, header - 4)), "");
    EXPECT_EQ(Column(*Open("w009"), "name"), "old|") << "no file";
    EXPECT_EQ(m_app.Logged(100097), 0);
}

TEST_F(TableRows, ColumnByStatementLeavesDeletedRowsOut) {
    const auto table = TenRows();
    Run("Update w001 Set note='a'+CHR(13)+'b' Where ShapeID=2");
    Buffer(*table, 11, {"", "new\r"});
    table->AddNewRecord(12);
    table->DeleteRecord(12, 1);
    CArray<CString, CString> values;
    table->ReadValueArrayBySql("note", values, 0);
    EXPECT_EQ(ListOf(values), "|a\nb|||||||new\r|");
    table->ReadValueArrayBySql("size", values, 0);
    EXPECT_EQ(ListOf(values), "1.5|2.5|4.5|5.5|6.5|8.5|9.5|10.5|0|");
    table->ReadValueArrayBySql("name", values, 1);
    EXPECT_EQ(values.GetSize(), 12);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, SearchTakesTheBufferFirst) {
    const auto table = TenRows();
    Run("Update w001 Set name='中国' Where ShapeID=10");
    for (const int shape : {12, 11, 13}) Buffer(*table, shape, {"中国name"});
    table->DeleteRecord(12, 1);
    Hits hits;
    hits.Add(STRUCT_SEARCH_RESULT());
    table->SearchByKeyWords(4, "layer", 2, "name", hits);
    EXPECT_EQ(Text(hits),
              "-1  -1 \n4 layer 11 中国name\n4 layer 13 中国name\n4 layer 1 name1\n4 layer 2 name2\n"
              "4 layer 4 name4\n4 layer 5 name5\n4 layer 6 name6\n4 layer 8 name8\n4 layer 9 name9\n");
    hits.RemoveAll();
    table->SearchByKeyWords(0, "", 2, FromUtf8("国"), hits);
    table->SearchByKeyWords(0, "", 2, "NAME", hits);
    table->SearchByKeyWords(0, "", -1, "name", hits);
    EXPECT_EQ(Text(hits), "0  11 中国name\n0  13 中国name\n0  10 中国\n");
    EXPECT_EQ(m_app.Log(), "");
    table->SearchByKeyWords(0, "", 9, "nothing", hits);
    EXPECT_EQ(m_app.Logged(100100), 1);
}

TEST_F(TableRows, SearchStopsAt200Hits) {
    const auto table = Make({Field("name", DATA_CHAR, 10)});
    for (int i = 0; i < 150; ++i) {
        Run("Insert Into w001 Values (1," + std::to_string(i) + ",'word')");
        Buffer(*table, 1000 + i, {"word"});
    }
    Hits hits;
    table->SearchByKeyWords(1, "", 2, "word", hits);
    ASSERT_EQ(hits.GetSize(), 200);
    EXPECT_TRUE(hits[149].nShapeID == 1149 && hits[199].nShapeID == 49);
    table->SearchByKeyWords(2, "", 2, "word", hits);
    EXPECT_EQ(hits.GetSize(), 200);
    hits.SetSize(100);
    // Full by the buffer alone: no statement goes out, so the missing file is not noticed.
    CFile::Remove(m_path + "\\w001.dbf");
    table->SearchByKeyWords(3, "", 2, "word", hits);
    EXPECT_EQ(hits.GetSize(), 200);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, StatementsAreFixed) {
    const auto table = Standard();
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    CArray<CString, CString> values;
    Hits hits;
    const auto check = [&](auto action, const char *statements) { EXPECT_EQ(During(action), statements); };
    check([&] { table->GetRecordCount(1); }, "Select Count(0) From [w001]\n");
    check([&] { table->GetRecordCount(0); }, "Select Count(0) From [w001] Where ID<>-1\n");
    check([&] { delete table->GetShapeProperty(1, 0); }, "Select * From w001 Where ShapeID=1\n");
    check([&] { table->DeleteRecord(1, 0); }, "Update w001 Set ID = -1 Where ShapeID = 1\n");
    check([&] { table->UpdatePropertyValue(7, "name", "v"); }, "Update [w001] Set [name]='v'\n");
    check([&] { Set(*table, {1}, {0}, "name", "v"); }, "Update w001 Set name='v' Where ShapeID=1\n");
    check([&] { Set(*table, {1}, {0}, "ID", "12.9"); }, "Update w001 Set ID=12 Where ShapeID=1\n");
    table->GetFieldByName("ID")->nDecimal = 1;
    check([&] { Set(*table, {1}, {0}, "ID", "-2"); }, "Update w001 Set ID=-2.000000 Where ShapeID=1\n");
    check([&] { Set(*table, {1}, {0}, "remark", "'\t\r\n"); },
          "Update w001 Set remark=''''+CHR(9)+CHR(10)+CHR(10)+'' Where ShapeID=1\n");
    check(
        [&] {
            Set(*table, {1, 2}, {0, 0}, "name", "");
        },
        "(held: w001)\nUpdate w001 Set name='' Where ShapeID=1\nUpdate w001 Set name='' Where ShapeID=2\n");
    check([&] { table->ReadValueArrayBySql("name", values, 0); }, "Select name From w001 Where ID <> -1\n");
    check([&] { table->ReadValueArrayBySql("name", values, 1); }, "Select name From w001\n");
    check([&] { table->SearchByKeyWords(0, "", 2, "a_", hits); },
          "Select Top 200 ShapeID,name From w001 Where name Like '%a_%' And ID <> -1 Order By ShapeID\n");
    check([&] { m_ado.GetMaxValue("w001", "ID"); }, "Select Max(ID) From [w001]\n");
    check([&] { m_ado.GetMinValue("w001", "ID"); }, "Select Min(ID) From [w001]\n");
}

}  // namespace
}  // namespace ktl::test
