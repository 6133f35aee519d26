// The files themselves: what is written byte by byte, what another reader sees, and what foreign writers leave.

#include <gdal.h>
#include <gtest/gtest.h>
#include <ogr_api.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/platform/ado/foreign_table.h"
#include "tests/platform/ado/tables.h"

namespace ktl::test {
namespace {

class File : public testing::Test {
  protected:
    std::string Bytes(const char *name) const {
        std::ifstream in(folder.Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    ScratchFolder folder;
    Tables tables{folder};
};

std::uint32_t Number(const std::string &bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

TEST_F(File, RecordsCanBeWalkedByHand) {
    tables.Run("Create Table w001 ([ID] int,[ShapeID] int,[名称] Char(10),[v] numeric(20,10),[m] memo)");
    tables.Run("Insert Into w001 Values (-1,258,'国',-1.5,'text')");
    tables.Run("Insert Into w001 (ID,ShapeID) Values (5,6)");
    const std::string bytes = Bytes("w001.dbf");
    const std::size_t header = 32 + 5 * 32 + 1 + 263;
    const std::size_t record = 1 + 4 + 4 + 10 + 20 + 4;
    ASSERT_EQ(bytes.size(), header + 2 * record + 1);
    EXPECT_EQ(bytes[0], 0x30);
    EXPECT_EQ(Number(bytes, 4, 4), 2U);
    EXPECT_EQ(Number(bytes, 8, 2), header);
    EXPECT_EQ(Number(bytes, 10, 2), record);
    EXPECT_EQ(bytes[28], 2) << "memo file";
    EXPECT_EQ(bytes[29], 0x7A) << "GBK";
    EXPECT_EQ(bytes[32 + 5 * 32], 0x0D);
    EXPECT_EQ(bytes.substr(32 + 5 * 32 + 1, 263), std::string(263, '\0'));
    const char letters[] = {'I', 'I', 'C', 'N', 'M'};
    const std::size_t widths[] = {4, 4, 10, 20, 4};
    std::size_t offset = 1;
    for (std::size_t i = 0; i < 5; ++i) {
        const std::size_t entry = 32 + i * 32;
        EXPECT_EQ(bytes[entry + 11], letters[i]);
        EXPECT_EQ(Number(bytes, entry + 12, 4), offset);
        EXPECT_EQ(Number(bytes, entry + 16, 1), widths[i]);
        EXPECT_EQ(bytes[entry + 18], letters[i] == 'I' ? 4 : 0);
        offset += widths[i];
    }
    EXPECT_EQ(bytes[32 + 3 * 32 + 17], 10) << "decimals";
    EXPECT_EQ(bytes.substr(32 + 2 * 32, 5), std::string("\xC3\xFB\xB3\xC6\0", 5));
    EXPECT_EQ(Number(bytes, header + 1, 4), 0xFFFFFFFFU);
    EXPECT_EQ(Number(bytes, header + 5, 4), 258U);
    EXPECT_EQ(bytes.substr(header + 9, 10), "\xB9\xFA        ");
    EXPECT_EQ(bytes.substr(header + 19, 20), "       -1.5000000000");
    EXPECT_EQ(Number(bytes, header + 39, 4), 8U) << "the first block behind the memo header";
    EXPECT_EQ(bytes.substr(header + record, record),
              std::string(" \5\0\0\0\6\0\0\0", 9) + std::string(30, ' ') + std::string(4, '\0'));
    EXPECT_EQ(bytes.back(), 0x1A);
    const std::string memo = Bytes("w001.fpt");
    ASSERT_EQ(memo.size(), 576U);
    EXPECT_EQ(memo.substr(0, 8), std::string("\0\0\0\x09\0\0\0\x40", 8));
    EXPECT_EQ(memo.substr(512, 12), std::string("\0\0\0\1\0\0\0\4text", 12));
}

TEST_F(File, EveryWriteIsThereWhenItsStatementEnds) {
    tables.Run("Create Table t (ID int, name Char(4))");
    for (int i = 1; i <= 5; ++i) {
        tables.Run("Insert Into t Values (" + std::to_string(i) + ",'x')");
        const std::string bytes = Bytes("t.dbf");
        EXPECT_EQ(Number(bytes, 4, 4), static_cast<std::uint32_t>(i));
        EXPECT_EQ(bytes.size(), 360U + 9U * static_cast<std::size_t>(i) + 1);
    }
    tables.Run("Update t Set name='yy' Where ID=3");
    EXPECT_EQ(Bytes("t.dbf").substr(360 + 2 * 9 + 5, 4), "yy  ");
}

TEST_F(File, WritesOfOthersAreNoticed) {
    tables.Run("Create Table t (ID int, ShapeID int)");
    for (int i = 0; i < 100; ++i) tables.Run("Insert Into t Values (" + std::to_string(i) + ",0)");
    EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=7"), "");
    {
        // Numbers written into the records, as an import does it.
        std::fstream file(folder.Path("t.dbf"), std::ios::binary | std::ios::in | std::ios::out);
        for (std::int32_t i = 0; i < 100; ++i) {
            file.seekp(32 + 2 * 32 + 1 + 263 + 9 * i + 5);
            file.write(reinterpret_cast<const char *>(&i), 4);
        }
    }
    ::usleep(20'000);
    EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=7"), "7\n");
    // Another file in the place of the open one, with other columns.
    ScratchFolder other;
    Tables others(other);
    others.Run("Create Table t (a Char(3))");
    others.Run("Insert Into t Values ('new')");
    std::filesystem::rename(other.Path("t.dbf"), folder.Path("t.dbf"));
    EXPECT_EQ(tables.Rows("Select * From t"), "new\n");
    // Renamed away, and another written under the name.
    std::filesystem::rename(folder.Path("t.dbf"), folder.Path("old.dbf"));
    EXPECT_NE(tables.Fault("Select * From t"), "");
    tables.Run("Create Table t (b int)");
    EXPECT_EQ(tables.Rows("Select Count(0) From t"), "0\n");
    std::filesystem::remove(folder.Path("t.dbf"));
    EXPECT_NE(tables.Fault("Insert Into t Values (1)"), "");
}

TEST_F(File, OgrReadsWhatIsWritten) {
    // Columns of the kinds that OGR knows, each with the value that it is to read; ~ is a null.
    const char *const fields[] = {"name", "v", "n", "d", "l", "f"};
    std::string wide;
    for (int i = 0; i < 127; ++i) wide += "国";
    const struct {
        std::string values;
        std::string read;
    } rows[] = {
        {"'北京 O''Brien',-1234.0123456789,-42,{^1999-12-31},.T.,2.5",
         "北京 O'Brien|-1234.0123456789|-42|1999/12/31|T|2.5000"},
        {"'',0.0000000001,99999999,{^2024-02-29},.F.,-0.25", "~|0.0000000001|99999999|2024/02/29|F|-0.2500"},
        {"'尾\\|字[]',-0.0000000001,-9999999,{^2100-02-28},.T.,0",
         "尾\\|字[]|-0.0000000001|-9999999|2100/02/28|T|0.0000"},
        {"'" + wide + "',99999999.5,0,{^1899-12-31},.F.,-1e9",
         wide + "|99999999.5000000000|0|1899/12/31|F|-1000000000.0000"},
        {"'null',Null,Null,{},Null,Null", "null|~|~|~|~|~"},
    };
    tables.Run("Create Table t (ID int, name Char(254), v numeric(20,10), n numeric(8), d date, l logical, f float)");
    for (const auto &row : rows) tables.Run("Insert Into t Values (1," + row.values + ")");
    GDALAllRegister();
    GDALDatasetH data = GDALOpenEx(folder.Path("t.dbf").c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr);
    ASSERT_NE(data, nullptr);
    OGRLayerH layer = GDALDatasetGetLayer(data, 0);
    ASSERT_EQ(OGR_L_GetFeatureCount(layer, 1), 5);
    for (const auto &row : rows) {
        OGRFeatureH feature = OGR_L_GetNextFeature(layer);
        std::string read;
        for (const char *field : fields) {
            const int index = OGR_F_GetFieldIndex(feature, field);
            if (field != fields[0]) read += '|';
            read += OGR_F_IsFieldSetAndNotNull(feature, index) ? OGR_F_GetFieldAsString(feature, index) : "~";
        }
        EXPECT_EQ(read, row.read);
        OGR_F_Destroy(feature);
    }
    GDALClose(data);
}

TEST_F(File, WhatOgrWritesIsReadAndCanBeChanged) {
    GDALAllRegister();
    GDALDriverH driver = GDALGetDriverByName("ESRI Shapefile");
    char option[] = "ENCODING=UTF-8";
    char *options[] = {option, nullptr};
    const std::string path = folder.Path("o");
    GDALDatasetH data = GDALCreate(driver, path.c_str(), 0, 0, 0, GDT_Unknown, nullptr);
    OGRLayerH layer = GDALDatasetCreateLayer(data, "o", nullptr, wkbNone, options);
    const auto field = [&](const char *name, OGRFieldType type, int width, int precision) {
        OGRFieldDefnH definition = OGR_Fld_Create(name, type);
        OGR_Fld_SetWidth(definition, width);
        OGR_Fld_SetPrecision(definition, precision);
        OGR_L_CreateField(layer, definition, 0);
        OGR_Fld_Destroy(definition);
    };
    field("名", OFTString, 30, 0);
    field("v", OFTReal, 24, 15);
    field("d", OFTDate, 0, 0);
    OGRFeatureH feature = OGR_F_Create(OGR_L_GetLayerDefn(layer));
    OGR_F_SetFieldString(feature, 0, "北京 é");
    OGR_F_SetFieldDouble(feature, 1, -0.5);
    OGR_F_SetFieldDateTime(feature, 2, 2020, 1, 31, 0, 0, 0, 0);
    ASSERT_EQ(OGR_L_CreateFeature(layer, feature), OGRERR_NONE);
    OGR_F_Destroy(feature);
    GDALClose(data);
    std::filesystem::rename(folder.Path("o/o.dbf"), folder.Path("o.DBF"));
    std::filesystem::rename(folder.Path("o/o.cpg"), folder.Path("o.CPG"));
    EXPECT_EQ(tables.Rows("Select * From o"), "北京 é|-0.5|2020/1/31\n");
    tables.Run("Update o Set 名='上海'+名");
    EXPECT_NE(Bytes("o.DBF").find("上海北京"), std::string::npos) << "UTF-8 in the file";
}

TEST_F(File, ForeignFlavoursAreRead) {
    // dBASE III with a .dbt: a memo ends with 1A.
    std::string dbt(512 * 3, '\0');
    dbt.replace(512, 6, "first\x1A");
    dbt.replace(1024, 12, std::string(12, 'x'));
    ForeignTable third(0x83);
    third.Column("NAME", 'C', 6)
        .Column("NUM", 'N', 12, 2)
        .Column("OK", 'L', 1)
        .Column("DAY", 'D', 8)
        .Column("M", 'M', 10);
    third.Row(
        "abc   "
        " 1.1e+002   "
        "Y"
        "20200131"
        "         1");
    third.Row(
        "      "
        "            "
        "?"
        "        "
        "         2");
    third.Row(
        "gone  "
        "           1"
        "N"
        "20200131"
        "          ",
        true);
    third.Row(
        "x\xB9\xFA   "
        "         -.5"
        "f"
        "00000000"
        "        99");
    third.Save(folder, "third.dbf");
    folder.Write("third.dbt", dbt);
    EXPECT_EQ(tables.Rows("Select * From third"), "abc|110|-1|2020/1/31|first\n|~|~|~|" + std::string(12, 'x') +
                                                      std::string(500, '\0') + "\nx国|-0.5|0|~|~\n");

    // dBASE IV: the block tells its length, its own eight bytes counted.
    std::string fourth(512 * 2, '\0');
    fourth[20] = 0;
    fourth[21] = 2;
    fourth.replace(512, 12, std::string("\xFF\xFF\x08\0\x0C\0\0\0four", 12));
    ForeignTable four(0x8B);
    four.Column("M", 'M', 10).Row("         1").Save(folder, "four.dbf");
    folder.Write("FOUR.DBT", fourth);
    EXPECT_EQ(tables.Rows("Select * From four"), "four\n");

    // Older FoxPro: decimal pointers into an .fpt with large blocks.
    std::string fpt(1024, '\0');
    fpt[6] = 2;
    fpt.replace(512, 13, std::string("\0\0\0\1\0\0\0\5older", 13));
    ForeignTable old(0xF5);
    old.Column("M", 'M', 10).Row("         1").Save(folder, "old.dbf");
    folder.Write("old.fpt", fpt);
    EXPECT_EQ(tables.Rows("Select * From old"), "older\n");
    tables.Run("Update old Set M='newer'");
    EXPECT_EQ(tables.Rows("Select * From old"), "newer\n");
    tables.Run("Update four Set M='fourth'");
    tables.Run("Update third Set M='3rd' Where NUM=110");
    EXPECT_EQ(tables.Rows("Select M From four"), "fourth\n");
    EXPECT_EQ(tables.Rows("Select M From third Where NUM=110"), "3rd\n");
    // A change of columns makes them tables of the kind that we write, with the same texts.
    tables.Run("Alter Table third Add x int");
    EXPECT_EQ(Bytes("third.dbf")[0], 0x30);
    EXPECT_FALSE(folder.Has("third.dbt"));
    EXPECT_EQ(tables.Rows("Select NAME,M,x From third Where NUM=110"), "abc|3rd|0\n");
    tables.Run("Alter Table old Add x int");
    EXPECT_EQ(tables.Rows("Select * From old"), "newer|0\n");
}

TEST_F(File, TheHiddenColumnTellsNullsAndLengths) {
    ForeignTable table(0x32);
    table.Column("ID", 'I', 4, 0, 0x06).Column("V", 'V', 5, 0, 0x02).Column("N", 'N', 4, 1).Column("L", 'L', 1, 0, 2);
    table.Column("T", 'T', 8, 0, 0x06).Column("_NullFlags", '0', 1, 0, 0x05);
    // Bits: ID null 0, V length 1, V null 2, L null 3, T null 4.
    table.Row(std::string("\7\0\0\0"
                          "ab\0\0\2"
                          "    "
                          " ",
                          14) +
              std::string(8, '\0') + '\x02');
    table.Row(std::string("\0\0\0\0"
                          "abcde"
                          " 1.5"
                          "T",
                          14) +
              std::string(8, '\0') + '\x11');
    table.Save(folder, "h.dbf");
    // In such a table a blank that is not marked is the empty value, as the provider gives it.
    EXPECT_EQ(tables.Rows("Select * From h"), "7|ab|0|0|0:00:00\n~|abcde|1.5|-1|~\n");
    EXPECT_EQ(tables.Rows("Select ID From h Where ID Is Null"), "~\n");
    EXPECT_EQ(tables.Rows("Select ID From h Where ID = 0"), "");
    EXPECT_EQ(tables.Rows("Select ID From h Where ID <> -1"), "7\n");
    tables.Run("Update h Set V='xyz',L=Null Where ID=7");
    tables.Run("Insert Into h (ID) Values (8)");
    EXPECT_EQ(tables.Rows("Select ID,V,L,N From h"), "7|xyz|~|0\n~|abcde|-1|1.5\n8|~|~|0\n");
    EXPECT_EQ(tables.Fault("Update h Set N=Null"),
              "1581 Column \"N\" does not take a null in record 1 of table \"h\".");
    // The hidden column stays, at the end, with its bits in the new places.
    tables.Run("Alter Table h Drop Column ID");
    tables.Run("Alter Table h Add z Char(2)");
    EXPECT_EQ(tables.Rows("Select * From h"), "xyz|0|~|0:00:00|\nabcde|1.5|-1|~|\n~|0|~|~|\n");
    EXPECT_EQ(Bytes("h.dbf")[32 + 5 * 32 + 11], '0');
}

TEST_F(File, AnEmptyDateIsWrittenAsBlanksAndTheZeroDayIsNot) {
    tables.Run("Create Table e (d date, s datetime)");
    tables.Run("Insert Into e Values ({}, {})");
    tables.Run("Insert Into e Values ({^1899-12-30}, {^1899-12-30})");
    EXPECT_EQ(Bytes("e.dbf").substr(360, 17), std::string(9, ' ') + std::string(8, '\0'));
    EXPECT_EQ(tables.Rows("Select * From e"), "~|~\n0:00:00|0:00:00\n");
    // Where nulls have marks a blank is the empty date.
    ForeignTable table(0x30);
    table.Column("D", 'D', 8, 0, 2).Column("_NullFlags", '0', 1, 0, 0x05);
    table.Row(std::string("20200131\0", 9)).Save(folder, "m.dbf");
    tables.Run("Update m Set D={}");
    EXPECT_EQ(tables.Rows("Select Count(0) From m Where D={}"), "1\n");
    EXPECT_EQ(Bytes("m.dbf").substr(32 + 64 + 264, 10), std::string(9, ' ') + '\0');
}

TEST_F(File, PackTakesTheDeletedRowsOutAndKeepsTheOthersMemos) {
    tables.Run("Create Table p (ID int, ShapeID int, m memo)");
    for (int i = 0; i < 10; ++i) {
        const std::string n = std::to_string(i);
        tables.Run("Insert Into p Values (" + n + "," + n + ",'memo " + n + "')");
    }
    tables.Run("Delete From p Where ShapeID % 2 = 0");
    tables.Run("Pack p");
    const std::string bytes = Bytes("p.dbf");
    EXPECT_EQ(Number(bytes, 4, 4), 5U);
    EXPECT_EQ(bytes.size(), 32U + 3 * 32 + 264 + 5 * 13 + 1);
    EXPECT_EQ(tables.Rows("Select m From p Where ShapeID=7"), "memo 7\n");
    tables.Run("Use p");
    tables.Run("Delete From p Where ShapeID=1");
    tables.Run("Pack");
    EXPECT_EQ(tables.Rows("Select ShapeID,m From p"), "3|memo 3\n5|memo 5\n7|memo 7\n9|memo 9\n");
}

TEST_F(File, AutoincrementGoesOnInTheHeader) {
    ForeignTable table(0x31);
    table.Column("K", 'I', 4, 0, 0x0C).Column("A", 'C', 2);
    table.Entry(0, 19, std::string("\x05\0\0\0\x02", 5));
    table.Save(folder, "k.dbf");
    tables.Run("Insert Into k (A) Values ('a')");
    tables.Run("Insert Into k (A) Values ('b')");
    EXPECT_EQ(tables.Rows("Select * From k"), "5|a\n7|b\n");
    EXPECT_EQ(Number(Bytes("k.dbf"), 32 + 19, 4), 9U);
}

TEST_F(File, CodePagesAreHonoured) {
    const struct {
        unsigned char mark;
        const char *cpg;
        std::string stored;
        const char *text;
    } cases[] = {
        {0x03, nullptr, "caf\xE9", "café"},        {0x7A, nullptr, "\xB9\xFA", "国"},
        {0x4D, nullptr, "\xB9\xFA", "国"},         {0x00, nullptr, "\xB9\xFA", "国"},
        {0x57, "UTF-8\r\n", "\xE5\x9B\xBD", "国"}, {0x78, nullptr, "\xB0\xEA", "國"},
        {0x7B, nullptr, "\x8D\x91", "国"},         {0xC9, nullptr, "\xCC", "М"},
        {0x7A, "ISO 88591", "\xE9", "é"},          {0x01, nullptr, "\x82", "é"},
        {0x57, "936", "\xB9\xFA", "国"},           {0x00, "LDID/201", "\xCC", "М"},
    };
    int count = 0;
    for (const auto &row : cases) {
        const std::string name = "c" + std::to_string(count++);
        ForeignTable table(0x03);
        table.CodePage(row.mark).Column("A", 'C', 8).Row(row.stored + std::string(8 - row.stored.size(), ' '));
        table.Save(folder, name + ".dbf");
        if (row.cpg) folder.Write(name + ".cpg", row.cpg);
        EXPECT_EQ(tables.Rows("Select * From " + name), std::string(row.text) + "\n") << name;
        tables.Run("Update " + name + " Set A=A+'" + row.text + "' Where A='" + row.text + "'");
        tables.Run("Update " + name + " Set A='" + row.text + "'");
        EXPECT_NE(Bytes((name + ".dbf").c_str()).find(row.stored), std::string::npos) << name;
    }
}

TEST_F(File, OddHeadersOfOtherWritersAreTaken) {
    // Another byte than 0D behind the columns, no end mark, a text wider than a byte tells, a name of eleven bytes.
    ForeignTable table(0x03);
    table.Column("ELEVENBYTES", 'C', 300).Column("B", 'N', 3);
    table.Terminator('\0').EndMark(false);
    table.Row(std::string(299, 'w') + "." + " 42");
    table.Save(folder, "odd.dbf");
    EXPECT_EQ(tables.Rows("Select * From odd"), std::string(299, 'w') + ".|42\n");
    // The newer kind without the area behind the columns, with enough of them to be taken for it.
    ForeignTable bare(0x30);
    for (int i = 0; i < 10; ++i) bare.Column("C" + std::to_string(i), 'C', 1);
    bare.Row("0123456789");
    std::string bytes = bare.Bytes();
    bytes.erase(32 + 10 * 32 + 1, 263);
    bytes[8] = static_cast<char>(32 + 10 * 32 + 1 - 256);
    bytes[9] = 1;
    folder.Write("bare.dbf", bytes);
    EXPECT_EQ(tables.Rows("Select C0,C9 From bare"), "0|9\n");
    // Times a millisecond short.
    ForeignTable times(0x30);
    times.Column("T", 'T', 8, 0, 4)
        .Row(std::string("\x05\x79\x25\x00"
                         "\xE7\xD0\xB1\x03",
                         8));
    times.Save(folder, "times.dbf");
    EXPECT_EQ(tables.Rows("Select * From times"), "2011/9/8 17:13:05\n");
}

}  // namespace
}  // namespace ktl::test
