#include <set>

#include "tests/attributes/table_fixture.h"

namespace {

class TableRows : public ktl::test::TableTest {
  protected:
    using Hits = CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT>;

    /// w001 with the columns name and more; ten rows, of which 3 and 7 are deleted.
    std::unique_ptr<CTable_Local_dbf> TenRows() {
        auto table = Make({Field("name", DATA_CHAR, 10), Field("note", DATA_MEMO, -1), Field("size", DATA_NUMERIC)});
        for (int i = 1; i <= 10; ++i) {
            const std::string n = std::to_string(i);
            Run("Insert Into w001 (ID,ShapeID,name,size) Values (" + n + "," + n + ",'name" + n + "'," + n + ".5)");
        }
        table->DeleteRecords(m_deleted, m_stored);
        return table;
    }

    static std::string Text(const Hits &hits) {
        std::string text;
        for (const STRUCT_SEARCH_RESULT &hit : hits) {
            text += std::to_string(hit.nLayerIndex) + " " + ktl::ToUtf8(hit.strLayerName) + " " +
                    std::to_string(hit.nShapeID) + " " + ktl::ToUtf8(hit.strValue) + "\n";
        }
        return text;
    }

    CArray<int, int> m_deleted = Numbers({3, 7});
    CArray<int, int> m_stored = Numbers({0, 0});
};

}  // namespace

TEST_F(TableRows, CountsLookAtFileAndBuffer) {
    const auto table = TenRows();
    for (int i = 11; i <= 13; ++i) table->AddNewRecord(i);
    table->DeleteRecord(12, 1);
    EXPECT_EQ(table->GetRecordCount(1), 13);
    EXPECT_EQ(table->GetRecordCount(0), 10);
    EXPECT_EQ(table->GetRecordCount(2), 10);
    EXPECT_EQ(table->GetNewRecordCount(), 3);
    EXPECT_EQ(Rows("Select ShapeID From w001 Where ID = -1"), "3\n7\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, DefaultRowsHaveZerosForNumbers) {
    const auto table = Make({Field("name", DATA_CHAR, 10), Field("n", DATA_NUMERIC), Field("b", DATA_BOOL),
                             Field("l", DATA_BIGINT), Field("note", DATA_MEMO), Field("i", DATA_INT)});
    table->AddNewRecord(42);
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(42, 1));
    EXPECT_EQ(ValuesOf(row.get()), "42|42||0|0|0||0|");
    EXPECT_EQ(table->GetShapeProperty(43, 1), nullptr);
}

TEST_F(TableRows, UnknownShapeActsOnTheLastBufferedRow) {
    const auto table = Make({Field("name", DATA_CHAR, 10)});
    table->DeleteRecord(1, 1);
    table->UpdateNewRecordPropertyValue(1, 2, "x");
    for (int i = 1; i <= 3; ++i) table->AddNewRecord(i);
    table->UpdateNewRecordPropertyValue(1, 2, "first");
    table->UpdateNewRecordPropertyValue(99, 2, "last");
    table->UpdateNewRecordPropertyValue(2, 9, "ignored");
    table->DeleteRecord(99, 1);
    const auto values = [&](int shape) {
        const std::unique_ptr<CRecord> row(table->GetShapeProperty(shape, 1));
        return ValuesOf(row.get()) + (row->bDeleted != 0 ? " deleted" : "");
    };
    EXPECT_EQ(values(1), "1|1|first|");
    EXPECT_EQ(values(2), "2|2||");
    EXPECT_EQ(values(3), "-1|3|last| deleted");
    table->RemoveNewRecordAt(0);
    EXPECT_EQ(table->GetNewRecordCount(), 2);
    EXPECT_THROW(table->RemoveNewRecordAt(2), CInvalidArgException);
    EXPECT_EQ(table->GetShapeProperty(1, 1), nullptr);
}

TEST_F(TableRows, StoredRowComesWhole) {
    const auto table = TenRows();
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(4, 0));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->nShapeID, 4);
    EXPECT_EQ(ValuesOf(row.get()), "4|4|name4||4.5|");
    const std::unique_ptr<CRecord> deleted(table->GetShapeProperty(3, 0));
    EXPECT_EQ(ValuesOf(deleted.get()), "-1|3|name3||3.5|");
    EXPECT_EQ(table->GetShapeProperty(11, 0), nullptr);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, ColumnsWithoutAListAreLogged) {
    CTable_Local_dbf table;
    EXPECT_EQ(table.GetFieldCount(), 0);
    EXPECT_EQ(table.IsValidFieldName("name"), 0);
    EXPECT_EQ(m_app.Logged(100072), 1);
    EXPECT_EQ(m_app.Logged(100073), 1);
    EXPECT_EQ(table.GetTableFields(), nullptr);
    EXPECT_EQ(table.GetTableKind(), 1);

    const auto made = TenRows();
    EXPECT_EQ(made->IsValidFieldName("NAME"), 1);
    EXPECT_EQ(made->IsValidFieldName("name2"), 0);
    const auto opened = Open();
    EXPECT_EQ(opened->GetTableFields(), opened->GetTableFields());
    EXPECT_EQ(opened->GetFieldCount(), 5);
}

TEST_F(TableRows, IntegerFormChangesEveryStoredRow) {
    const auto table = TenRows();
    table->AddNewRecord(11);
    table->UpdatePropertyValue(7, "name", "same");
    EXPECT_EQ(Rows("Select Count(0) From w001 Where name = 'same'"), "10\n");
    const std::unique_ptr<CRecord> buffered(table->GetShapeProperty(11, 1));
    EXPECT_EQ(buffered->GetValueAt(2), "");
    table->UpdatePropertyValue(7, "name", "o'clock");
    EXPECT_EQ(m_app.Logged(2), 1) << "the value is not escaped";
}

TEST_F(TableRows, ArrayFormFollowsTheFlags) {
    const auto table = TenRows();
    table->AddNewRecord(11);
    auto shapes = Numbers({2, 11, 5});
    auto flags = Numbers({0, 1, 0});
    table->UpdatePropertyValue(shapes, flags, "NAME", "new");
    table->UpdatePropertyValue(shapes, flags, "size", "12.75xyz");
    EXPECT_EQ(Rows("Select ShapeID,size From w001 Where name = 'new'"), "2|12\n5|12\n");
    const std::unique_ptr<CRecord> buffered(table->GetShapeProperty(11, 1));
    EXPECT_EQ(ValuesOf(buffered.get()), "11|11|new||12.75xyz|");
    table->GetFieldByName("size")->nDecimal = 1;
    table->UpdatePropertyValue(shapes, flags, "size", "-0.25");
    EXPECT_EQ(Rows("Select size From w001 Where name = 'new'"), "-0.25\n-0.25\n");
    EXPECT_EQ(m_app.Log(), "");
    table->UpdatePropertyValue(shapes, flags, "none", "x");
    auto few = Numbers({0});
    table->UpdatePropertyValue(shapes, few, "name", "x");
    EXPECT_EQ(m_app.Logged(100074), 2);
    EXPECT_EQ(Rows("Select ShapeID From w001 Where name = 'x'"), "2\n");
}

TEST_F(TableRows, LongTextIsCutBetweenCharacters) {
    const auto table = Make({Field("name", DATA_CHAR, 254)});
    Run("Insert Into w001 Values (1,1,'')");
    table->AddNewRecord(2);
    auto shapes = Numbers({1, 2});
    auto flags = Numbers({0, 1});
    const auto expect = [&](const CString &value, const CString &stored) {
        table->UpdatePropertyValue(shapes, flags, "name", value);
        EXPECT_EQ(CString(RawCell("Select name From w001")), stored);
        const std::unique_ptr<CRecord> row(table->GetShapeProperty(2, 1));
        EXPECT_EQ(row->GetValueAt(2), stored);
    };
    const CString a254('a', 254);
    const CString country = ktl::FromUtf8("国");
    expect(a254, a254);
    expect(a254 + "b", a254);
    expect(CString('a', 253) + country, CString('a', 253));
    expect(CString('a', 252) + country + country, CString('a', 252) + country);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, MemoOfAStoredRowKeepsItsLines) {
    const auto table = Make({Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    auto shapes = Numbers({1});
    auto flags = Numbers({0});
    struct Case {
        std::string text;
        std::string stored;
    };
    const std::string chinese = std::string(ktl::FromUtf8("国家[地图]|图层").GetString());
    const Case cases[] = {
        {"plain", "plain"},
        {"it's 'so'", "it's 'so'"},
        {"a\tb\n\nc\rd", "a\tb\n\nc\nd"},
        {"\n\n\t\n", "\n\n\t\n"},
        {"", ""},
        {chinese, chinese},
        {std::string(8000, 'x'), std::string(8000, 'x')},
    };
    for (const Case &row : cases) {
        table->UpdatePropertyValue(shapes, flags, "note", row.text.c_str());
        EXPECT_EQ(RawCell("Select note From w001"), row.stored);
    }
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, MemoOfMoreThan8000BytesIsNotStored) {
    const auto table = Make({Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID,note) Values (1,1,'old')");
    auto shapes = Numbers({1});
    auto flags = Numbers({0});
    table->UpdatePropertyValue(shapes, flags, "note", CString('x', 8001));
    EXPECT_EQ(RawCell("Select note From w001"), "old");
    // Only the last piece is sent, without quotes.
    EXPECT_NE(m_app.Log().find("\nReplace note With x Additive While ShapeID=1 In w001\n"), std::string::npos);
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(TableRows, FastColumnLosesItsLastByte) {
    const auto table = Make({Field("first", DATA_NUMERIC), Field("name", DATA_CHAR, 10), Field("last", DATA_CHAR, 3)});
    for (const char *name : {"0123456789", "  ab", "中国地图省", ""}) {
        Run(std::string("Insert Into w001 Values (1,1,1.5,'") + name + "','xyz')");
    }
    table->DeleteRecord(1, 0);
    table->AddNewRecord(5);
    table->AddNewRecord(6);
    table->DeleteRecord(5, 1);
    table->UpdateNewRecordPropertyValue(5, 3, "buffered text");
    CArray<CString, CString> values;
    values.Add("old");
    table->ReadValueArray("NAME", values);
    ASSERT_EQ(values.GetSize(), 6);
    EXPECT_EQ(values[0], "012345678");
    EXPECT_EQ(values[1], "ab");
    EXPECT_EQ(values[2], ktl::FromUtf8("中国地图省").Left(9));
    EXPECT_EQ(values[3], "");
    EXPECT_EQ(values[4], "buffered text");
    EXPECT_EQ(values[5], "");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, FastColumnOfAFreshListIsWhereTheListSays) {
    // The standard list tells 8 bytes for ID and ShapeID, which have 4: the column is looked for 8 bytes too far.
    const auto table = Open();
    ASSERT_EQ(table->CreateNewLayerTable(nullptr), 1);
    Run("Insert Into w001 (ID,ShapeID,name) Values (1,1,'0123456789')");
    CArray<CString, CString> values;
    table->ReadValueArray("name", values);
    EXPECT_EQ(ListOf(values), "89|");
    const auto opened = Open();
    opened->ReadValueArray("name", values);
    EXPECT_EQ(ListOf(values), "0123456789|");
}

TEST_F(TableRows, FastColumnOfADamagedFileIsShort) {
    Make({Field("name", DATA_CHAR, 10)});
    for (int i = 0; i < 5; ++i) Run("Insert Into w001 Values (1,1,'abcdefghij')");
    const std::string whole = FileOf("w001.dbf");
    const auto read = [&](std::string content) {
        WriteFile("w002.dbf", content);
        CArray<CString, CString> values;
        Open("w002")->ReadValueArray("name", values);
        return ListOf(values);
    };
    std::string many = whole;
    many[4] = many[5] = many[6] = many[7] = '\xFF';
    const std::string end = read(many);
    EXPECT_TRUE(end.starts_with("abcdefghi|abcdefghi|abcdefghi|abcdefghi|abcdefghi|")) << end;
    EXPECT_LT(end.size(), 60u);
    std::string still = whole;
    still[10] = still[11] = '\0';
    EXPECT_EQ(read(still), "");
    const std::size_t header = static_cast<unsigned char>(whole[8]) + 256u * static_cast<unsigned char>(whole[9]);
    EXPECT_EQ(read(whole.substr(0, header + 19 + 12)), "abcdefghi|abc|");
    EXPECT_EQ(read(whole.substr(0, header - 4)), "");
    CArray<CString, CString> values;
    values.Add("kept");
    Open("w009")->ReadValueArray("name", values);
    EXPECT_EQ(ListOf(values), "kept|") << "no file";
    EXPECT_EQ(m_app.Logged(100097), 0);
}

TEST_F(TableRows, ColumnByStatementLeavesDeletedRowsOut) {
    const auto table = TenRows();
    Run("Update w001 Set note='a'+CHR(13)+'b' Where ShapeID=2");
    table->AddNewRecord(11);
    table->AddNewRecord(12);
    table->UpdateNewRecordPropertyValue(11, 3, "new\r");
    table->DeleteRecord(12, 1);
    CArray<CString, CString> values;
    table->ReadValueArrayBySql("note", values, 0);
    EXPECT_EQ(ListOf(values), "|a\nb|||||||new\r|");
    table->ReadValueArrayBySql("name", values, 1);
    EXPECT_EQ(values.GetSize(), 12);
    CArray<CString, CString> numbers;
    table->ReadValueArrayBySql("size", numbers, 0);
    EXPECT_EQ(ListOf(numbers), "1.5|2.5|4.5|5.5|6.5|8.5|9.5|10.5|0|");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableRows, SearchTakesTheBufferFirst) {
    const auto table = TenRows();
    Run("Update w001 Set name='中国' Where ShapeID=10");
    table->AddNewRecord(12);
    table->AddNewRecord(11);
    table->AddNewRecord(13);
    for (const int shape : {11, 12, 13}) table->UpdateNewRecordPropertyValue(shape, 2, ktl::FromUtf8("中国name"));
    table->DeleteRecord(12, 1);
    Hits hits;
    hits.Add(STRUCT_SEARCH_RESULT());
    table->SearchByKeyWords(4, "layer", 2, "name", hits);
    EXPECT_EQ(Text(hits),
              "-1  -1 \n4 layer 11 中国name\n4 layer 13 中国name\n4 layer 1 name1\n4 layer 2 name2\n"
              "4 layer 4 name4\n4 layer 5 name5\n4 layer 6 name6\n4 layer 8 name8\n4 layer 9 name9\n");
    hits.RemoveAll();
    table->SearchByKeyWords(0, "", 2, ktl::FromUtf8("国"), hits);
    EXPECT_EQ(Text(hits), "0  11 中国name\n0  13 中国name\n0  10 中国\n");
    hits.RemoveAll();
    table->SearchByKeyWords(0, "", 2, "NAME", hits);
    table->SearchByKeyWords(0, "", -1, "name", hits);
    EXPECT_EQ(hits.GetSize(), 0);
    EXPECT_EQ(m_app.Log(), "");
    table->SearchByKeyWords(0, "", 9, "nothing", hits);
    EXPECT_EQ(m_app.Logged(100100), 1);
}

TEST_F(TableRows, SearchStopsAt200Hits) {
    const auto table = Make({Field("name", DATA_CHAR, 10)});
    Hits hits;
    for (int i = 0; i < 150; ++i) {
        Run("Insert Into w001 Values (1," + std::to_string(i) + ",'word')");
        table->AddNewRecord(1000 + i);
        table->UpdateNewRecordPropertyValue(1000 + i, 2, "word");
    }
    table->SearchByKeyWords(1, "", 2, "word", hits);
    ASSERT_EQ(hits.GetSize(), 200);
    EXPECT_EQ(hits[149].nShapeID, 1149);
    EXPECT_EQ(hits[199].nShapeID, 49);
    table->SearchByKeyWords(2, "", 2, "word", hits);
    EXPECT_EQ(hits.GetSize(), 200);
    hits.SetSize(100);
    // Full by the buffer alone: no statement goes out, so the missing file is not noticed.
    CFile::Remove(m_path + "\\w001.dbf");
    table->SearchByKeyWords(3, "", 2, "word", hits);
    EXPECT_EQ(hits.GetSize(), 200);
    EXPECT_EQ(m_app.Log(), "");
}
