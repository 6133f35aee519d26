#include "host/table_import.h"

#include <gtest/gtest.h>

#include "host/error.h"
#include "ktl/attributes/record.h"
#include "tests/host/table_fixture.h"

namespace {

using namespace ktl::host;

class TableImport : public TableTest {
  protected:
    static std::string Names(CTable_Local_dbf &table) {
        std::string names;
        for (int i = 0; i < table.GetFieldCount(); ++i) {
            const CField &field = *table.GetFieldAt(i);
            names += ktl::ToUtf8(field.strName) + " " + std::to_string(field.eType) + " " +
                     std::to_string(field.nLength) + ",";
        }
        return names;
    }
    static std::string Row(const CXTable &table, int index) {
        std::string text;
        for (const CString &value : table.GetNewRecordAt(index)->arrValues) text += ktl::ToUtf8(value) + "|";
        return text;
    }
    TableReport ToFile(const std::string &properties, const char *name = "out.dbf", bool overwrite = false) {
        return ImportToFile({Source(properties), ""}, m_folder.Path(name), overwrite);
    }
};

TEST_F(TableImport, TypesAndValuesComeOver) {
    const auto table = NewTable();
    const TableReport report = ImportTable(
        {Source("\"n\":-7,\"big\":9000000000,\"real\":1.25,\"yes\":true,\"text\":\"中国\",\"day\":\"2009/02/20\"\n"
                "\"n\":null,\"big\":1,\"real\":0.1,\"yes\":false,\"text\":\"it's\",\"day\":null"),
         ""},
        *table);
    EXPECT_EQ(Names(*table), "ID 2 4,ShapeID 2 4,n 2 4,big 3 20,real 4 20,yes 5 4,text 1 4,day 1 10,");
    EXPECT_EQ(report.rows, 2);
    EXPECT_EQ(Row(*table, 0), "0|0|-7|9000000000|1.25|1|中国|2009-02-20|");
    EXPECT_EQ(Row(*table, 1), "1|1|0|1|0.1|0|it's||");
    EXPECT_EQ(report.emptyNumbers, 1);
    EXPECT_TRUE(report.notes.empty() && report.replacedCharacters == 0);
    Save(*table);
    EXPECT_EQ(table->GetRecordCount(0), 2);
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(1, 0));
    EXPECT_EQ(row->GetValueAt(6), "it's");
}

TEST_F(TableImport, NamesAreCutBetweenCharactersAndUnique) {
    const auto table = NewTable();
    const TableReport report = ImportTable(
        {Source("\"a中国地图省市\":1,\"a中国地图县\":2,\"ID\":3,\"shapeid\":\"4\",\"update\":5,\"2 x-y\":6,\"\":7,"
                "\"NULL\":8"),
         ""},
        *table);
    EXPECT_EQ(Names(*table),
              "ID 2 4,ShapeID 2 4,a中国地图 2 4,a中国地图1 2 4,ID1 2 4,shapeid1 1 1,update1 2 4,"
              "_2_x_y 2 4,_ 2 4,NULL1 2 4,");
    EXPECT_EQ(report.notes.size(), 8u);
    Save(*table);
    EXPECT_EQ(table->GetRecordCount(0), 1);
}

TEST_F(TableImport, WhatDoesNotFitIsTold) {
    const auto table = NewTable();
    const std::string lengthy(9000, 'x');
    const TableReport report = ImportTable({Source("\"r\":1e12,\"t\":1e-15,\"d\":0.12345678912,\"long\":\"" + lengthy +
                                                   "\",\"emoji\":\"a😀b\"\n\"r\":2.5,\"t\":0,\"d\":0.1,\"long\":\"\""),
                                            ""},
                                           *table);
    EXPECT_EQ(Names(*table), "ID 2 4,ShapeID 2 4,r 1 13,t 1 5,d 4 20,long 8 4,emoji 1 3,");
    EXPECT_EQ(report.notes,
              (std::vector<std::string>{"column 'r' holds values that such a column of a table cannot: kept as text",
                                        "column 't' holds values that such a column of a table cannot: kept as text",
                                        "column 'd' has 1 numbers rounded to 10 decimals",
                                        "1 texts of more than 8000 bytes will not be saved"}));
    EXPECT_EQ(report.replacedCharacters, 1);
    EXPECT_EQ(Row(*table, 0), "0|0|1000000000000|1e-15|0.1234567891|" + lengthy + "|a?b|");
    EXPECT_THROW(ImportTable({m_folder.Path("none.shp"), ""}, *table), Error);
    EXPECT_THROW(ImportTable({m_folder.Path("in.geojson"), "other"}, *table), Error);
}

// The file need not keep to what a layer's buffer can say.
TEST_F(TableImport, AFileKeepsEmptyValuesLongTextsAndLineEnds) {
    const std::string lengthy = std::string(9000, 'x') + "\\n'中\\t";
    const TableReport report =
        ToFile("\"n\":null,\"big\":-9223372036854775808,\"real\":null,\"yes\":true,\"text\":\"" + lengthy +
               "\"\n\"n\":-7,\"big\":9223372036854775807,\"real\":-99999999.5,\"yes\":null,\"text\":null");
    EXPECT_EQ(report.rows, 2);
    EXPECT_TRUE(report.notes.empty() && report.emptyNumbers == 0);
    EXPECT_EQ(Text(m_folder.Path("out.dbf")),
              "ID integer|ShapeID integer|n integer|big integer|real number|yes yes/no|text memo|\n"
              "0|0|~|-9223372036854775808|~|true|" +
                  std::string(9000, 'x') +
                  "\n'中\t|\n"
                  "1|1|-7|9223372036854775807|-99999999.5|~||\n");
}

TEST_F(TableImport, AnotherLayersTableComesWithoutItsOwnColumnsAndDeletedRows) {
    m_folder.Write("old.csvt", "Integer,Integer,String");
    m_folder.Write("old.csv", "ID,ShapeID,name\n5,5,a\n-1,6,gone\n7,7,b\n");
    EXPECT_EQ(ImportToFile({m_folder.Path("old.csv"), ""}, m_folder.Path("new.dbf"), false).rows, 2);
    EXPECT_EQ(Text(m_folder.Path("new.dbf")), "ID integer|ShapeID integer|name text|\n0|0|a|\n1|1|b|\n");
}

// A code page file of an older table would be taken for the new one's, and so would its memos.
TEST_F(TableImport, AFileIsReplacedAsAWholeOrNotAtAll) {
    ToFile("\"t\":\"中\"");
    const std::string first = m_folder.Read("out.dbf");
    m_folder.Write("out.cpg", "UTF-8");
    m_folder.Write("out.fpt", "old");
    const int count = m_folder.Count();
    EXPECT_THROW(ToFile("\"t\":\"国\""), Error);
    EXPECT_THROW(ImportToFile({m_folder.Path("in.geojson"), ""}, m_folder.Path("out.dbf"), true,
                              [](const Progress &progress) { return progress.what != std::string("importing"); }),
                 Interrupted);
    EXPECT_EQ(m_folder.Read("out.dbf"), first);
    EXPECT_EQ(m_folder.Count(), count);
    ToFile("\"t\":\"国\"", "out.dbf", true);
    EXPECT_EQ(Text(m_folder.Path("out.dbf")), "ID integer|ShapeID integer|t text|\n0|0|国|\n");
    EXPECT_EQ(m_folder.Count(), count - 2);
}

}  // namespace
