#include "host/table_export.h"

#include <gdal_priv.h>
#include <gtest/gtest.h>

#include "host/error.h"
#include "tests/host/table_fixture.h"

namespace {

using namespace ktl::host;

class TableExport : public TableTest {};

TEST_F(TableExport, EveryFormatGivesTheRowsOfATableBack) {
    const auto table = NewTable();
    ImportTable({Source("\"n\":-7,\"big\":9000000000,\"real\":-1.25,\"text\":\"中国\"\n"
                        "\"n\":8,\"big\":2,\"real\":0.5,\"text\":\"gone\"\n\"n\":9,\"big\":3,\"real\":3,\"text\":\"\""),
                 ""},
                *table);
    Save(*table);
    table->DeleteRecord(1, 0);
    table->AddNewRecord(3);
    table->UpdateNewRecordPropertyValue(3, 5, ktl::FromUtf8("新"));
    for (const char *name : {"out.dbf", "out.geojson", "out.csv", "out.gpkg", "表.sqlite", "out.tab"}) {
        const std::string path = m_folder.Path(name);
        EXPECT_EQ(ExportTable(*table, {path}).rows, 3) << name;
        std::string text = Text(path);
        for (std::size_t at; (at = text.find('~')) != std::string::npos;) text.erase(at, 1);
        EXPECT_EQ(text.substr(text.find('\n') + 1), "-7|9000000000|-1.25|中国|\n9|3|3||\n0|0|0|新|\n") << name;
        EXPECT_THROW(ExportTable(*table, {path}), Error) << "it is there already";
    }
    EXPECT_THROW(ExportTable(*table, {m_folder.Path("out.nothing")}), Error);
    EXPECT_THROW(ExportTable(*table, {m_folder.Path("none/out.csv")}), Error);
}

TEST_F(TableExport, ValuesOfEveryTypeComeThroughEveryFormatThatHasIt) {
    const std::string source = Source(
        R"("a long 名字":1,"big":9223372036854775807,"emoji":"😀","yes":true,"day":"2009-02-20","at":"2009-02-20T08:09:36","list":[1,2])"
        "\n"
        R"("a long 名字":null,"big":null,"emoji":null,"yes":null,"day":null,"at":null,"list":null)");
    for (const char *name : {"out.gpkg", "out.sqlite", "out.geojson"}) {
        ExportRows({source, ""}, {m_folder.Path(name)});
        EXPECT_EQ(Text(m_folder.Path(name)),
                  "a long 名字 integer|big integer|emoji text|yes yes/no|day date|at date+time|list text|\n"
                  "1|9223372036854775807|😀|true|2009-02-20|2009-02-20 08:09:36|[ 1, 2 ]|\n~|~|~|~|~|~|~|\n")
            << name;
    }
    const TableReport report = ExportRows({source, ""}, {m_folder.Path("out.dbf")});
    EXPECT_EQ(Text(m_folder.Path("out.dbf")),
              "a_long_名 integer|big integer|emoji text|yes yes/no|day date|at date+time|list text|\n"
              "1|9223372036854775807|?|true|2009-02-20|2009-02-20 08:09:36|[ 1, 2 ]|\n~|~||~|~|~||\n");
    EXPECT_EQ(report.replacedCharacters, 1);
}

// A format that drops rows without a shape, a run that is stopped, and a place that can't be written.
TEST_F(TableExport, AFailureLeavesWhatWasThere) {
    const std::string source = Source("\"n\":1\n\"n\":2");
    for (const char *name : {"out.fgb", "out.shp", "out.csv"}) {
        m_folder.Write(name, "old");
        const int count = m_folder.Count();
        const auto stop = [](const Progress &) { return false; };
        EXPECT_THROW(ExportRows({source, ""}, {m_folder.Path(name), true}, stop), Error) << name;
        EXPECT_EQ(m_folder.Read(name), "old");
        EXPECT_EQ(m_folder.Count(), count) << name;
    }
    EXPECT_THROW(ExportRows({source, ""}, {m_folder.Path("out.fgb"), true}), Error);
    EXPECT_EQ(m_folder.Read("out.fgb"), "old");
    m_folder.Write("out.gpkg-wal", "in use");
    EXPECT_THROW(ExportRows({source, ""}, {m_folder.Path("out.gpkg"), true}), Error);
    m_folder.Write("out.csvt", "Date");
    ExportRows({source, ""}, {m_folder.Path("out.csv"), true});
    EXPECT_EQ(Text(m_folder.Path("out.csv")), "n text|\n1|\n2|\n");
}

}  // namespace
