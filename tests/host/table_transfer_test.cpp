#include "host/table_transfer.h"

#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <memory>

#include "host/error.h"
#include "host/table_data.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/mem_file.h"
#include "ktl/platform/system.h"
#include "tests/host/scratch_folder.h"

namespace {

using namespace ktl::host;

class TableTransfer : public ::testing::Test {
  protected:
    TableTransfer() { ktl::SetApplicationFolder(ktl::PlatformPath(m_folder.Path("home"))); }
    ~TableTransfer() override { ktl::SetApplicationFolder(CString()); }

    std::string Source(const std::string &properties) {
        std::string features;
        for (std::size_t start = 0; start < properties.size();) {
            const std::size_t end = std::min(properties.find('\n', start), properties.size());
            features +=
                (start > 0 ? "," : "") +
                (R"({"type":"Feature","geometry":null,"properties":{)" + properties.substr(start, end - start)) + "}}";
            start = end + 1;
        }
        return m_folder.Write("in.geojson", R"({"type":"FeatureCollection","features":[)" + features + "]}");
    }
    std::unique_ptr<CTable_Local_dbf> NewTable() {
        return std::make_unique<CTable_Local_dbf>(ktl::PlatformPath(m_folder.Path("")), "w001");
    }

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
    static void Save(CTable_Local_dbf &table) {
        CMemFile file;
        CArchive archive(&file, CArchive::store);
        table.Serialize(archive, 205);
        archive.Close();
        EXPECT_GT(file.GetLength(), 300u);
    }

    ScratchFolder m_folder;
};

}  // namespace

TEST_F(TableTransfer, TypesAndValuesComeOver) {
    const auto table = NewTable();
    const TableReport report = ImportTable(
        {Source("\"n\":-7,\"big\":9000000000,\"real\":1.25,\"yes\":true,\"text\":\"中国\",\"day\":\"2009/02/20\"\n"
                "\"n\":null,\"big\":1,\"real\":0.1,\"yes\":false,\"text\":\"it's\",\"day\":null"),
         ""},
        *table);
    EXPECT_EQ(Names(*table), "ID 2 4,ShapeID 2 4,n 2 4,big 3 20,real 4 20,yes 5 4,text 1 4,day 1 10,");
    EXPECT_EQ(report.rows, 2);
    EXPECT_EQ(Row(*table, 0), "0|0|-7|9000000000|1.25|1|中国|2009/02/20|");
    EXPECT_EQ(Row(*table, 1), "1|1|0|1|0.1|0|it's||");
    EXPECT_EQ(report.emptyNumbers, 1);
    EXPECT_TRUE(report.notes.empty() && report.replacedCharacters == 0);
    Save(*table);
    EXPECT_EQ(table->GetRecordCount(0), 2);
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(1, 0));
    EXPECT_EQ(row->GetValueAt(6), "it's");
}

TEST_F(TableTransfer, NamesAreCutBetweenCharactersAndUnique) {
    const auto table = NewTable();
    const TableReport report = ImportTable(
        {Source("\"a中国地图省市\":1,\"a中国地图县\":2,\"ID\":3,\"shapeid\":4,\"update\":5,\"2 x-y\":6,\"\":7"), ""},
        *table);
    EXPECT_EQ(Names(*table),
              "ID 2 4,ShapeID 2 4,a中国地图 2 4,a中国地图1 2 4,ID1 2 4,shapeid1 2 4,update1 2 4,"
              "_2_x_y 2 4,_ 2 4,");
    EXPECT_EQ(report.notes.size(), 7u);
    Save(*table);
    EXPECT_EQ(table->GetRecordCount(0), 1);
}

TEST_F(TableTransfer, WhatDoesNotFitIsTold) {
    const auto table = NewTable();
    const std::string lengthy(300, 'x');
    const TableReport report = ImportTable({Source("\"r\":1e12,\"t\":1e-15,\"long\":\"" + lengthy +
                                                   "\",\"emoji\":\"a😀b\"\n\"r\":2.5,\"t\":0,\"long\":\"\""),
                                            ""},
                                           *table);
    EXPECT_EQ(Names(*table), "ID 2 4,ShapeID 2 4,r 1 13,t 1 5,long 8 4,emoji 1 3,");
    EXPECT_EQ(report.notes.size(), 2u);
    EXPECT_EQ(report.replacedCharacters, 1);
    Save(*table);
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(0, 0));
    EXPECT_EQ(row->GetValueAt(4), lengthy.c_str());
    EXPECT_THROW(ImportTable({m_folder.Path("none.shp"), ""}, *table), Error);
    EXPECT_THROW(ImportTable({m_folder.Path("in.geojson"), "other"}, *table), Error);
}

TEST_F(TableTransfer, EveryFormatGivesTheRowsBack) {
    GDALAllRegister();
    const auto table = NewTable();
    ImportTable({Source("\"n\":-7,\"big\":9000000000,\"real\":-1.25,\"text\":\"中国\"\n"
                        "\"n\":8,\"big\":2,\"real\":0.5,\"text\":\"gone\"\n\"n\":9,\"big\":3,\"real\":3,\"text\":\"\""),
                 ""},
                *table);
    Save(*table);
    table->DeleteRecord(1, 0);
    table->AddNewRecord(3);
    table->UpdateNewRecordPropertyValue(3, 5, ktl::FromUtf8("新"));
    for (const char *name : {"out.dbf", "out.geojson", "out.csv", "out.gpkg", "out.sqlite"}) {
        const std::string path = m_folder.Path(name);
        EXPECT_EQ(ExportTable(*table, path).rows, 3) << name;
        const TableData back = ReadTable(path, "out", {}, kAllRows);
        ASSERT_EQ(back.rows.size(), 3u) << name;
        std::string text;
        for (const auto &row : back.rows) {
            for (const auto &cell : row) text += cell.value_or("") + "|";
        }
        EXPECT_EQ(text, "-7|9000000000|-1.25|中国|9|3|3||0|0|0|新|") << name;
        EXPECT_THROW(ExportTable(*table, path), Error) << "it is there already";
    }
    EXPECT_THROW(ExportTable(*table, m_folder.Path("out.nothing")), Error);
    EXPECT_THROW(ExportTable(*table, m_folder.Path("none/out.csv")), Error);
}
