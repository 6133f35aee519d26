// Cells written back to the server: which row, and what arrives.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/platform/ado/tds/tds_fixture.h"

namespace ktl::test {
namespace {

using ado::RecordsetRef;
using ado::Value;

std::string Bytes(int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(i * 7 + i / 256);
    return bytes;
}

class TdsWrite : public TdsFixture {
  protected:
    /// Writes into the `row`th row of a statement; what it reports.
    std::string Write(std::string_view statement, int row, std::string_view column, std::string_view bytes) {
        return FaultOf([&] {
            const RecordsetRef rows = Select(statement);
            for (int i = 0; i < row; ++i) rows->MoveNext();
            rows->AppendChunk(rows->RequireColumn(FromUtf8(column).View()), bytes);
            rows->Update();
        });
    }
};

TEST_F(TdsWrite, BlocksOfEverySizeGoIntoNullAndFilledCells) {
    for (const char *type : {"image", "varbinary(max)", "varbinary(8000)"}) {
        for (const int size : {0, 1, 4087, 7999, 8000, 8001, 65535, 65536, 300000}) {
            if (size > 8000 && std::string_view(type).ends_with("(8000)")) continue;
            SCOPED_TRACE(type + std::string(" ") + std::to_string(size));
            const std::string bytes = Bytes(size);
            Run(std::string("Create Table b (id int Primary Key, b ") + type + ")");
            Run("Insert Into b Values (1, Null); Insert Into b Values (2, 0xFFFF); Insert Into b Values (3, Null)");
            EXPECT_EQ(Write("Select * From b Order By id", 0, "b", bytes), "");
            EXPECT_EQ(Write("Select * From b Order By id", 1, "b", bytes), "");
            const RecordsetRef rows = Select("Select b From b Order By id");
            for (int row = 0; row < 2; ++row, rows->MoveNext()) {
                EXPECT_EQ(rows->GetCell(0).GetKind(), Value::Kind::Bytes);
                EXPECT_TRUE(rows->GetCell(0).Bytes() == bytes);
            }
            EXPECT_TRUE(rows->GetCell(0).IsNull());
            Run("Drop Table b");
        }
    }
}

TEST_F(TdsWrite, ChunksAreJoinedAndTheRecordsetShowsThem) {
    Run("Create Table b (id int Primary Key, b image, c image); Insert Into b Values (1, 0xAA, 0xAA)");
    const RecordsetRef rows = Select("Select * From b");
    rows->AppendChunk(1, "ab");
    rows->AppendChunk(1, "cd");
    rows->AppendChunk(2, "e");
    rows->Update();
    EXPECT_EQ(rows->GetCell(1).Bytes(), "abcd");
    EXPECT_EQ(Rows("Select id From b Where b=0x61626364 And c=0x65"), "1\n");
}

TEST_F(TdsWrite, RowIsFoundByItsKeyShownOrNot) {
    // Two keys of every kind of value; `name` is equal everywhere.
    static constexpr const char *kKeys[][2] = {
        {"k int", "1|2"},
        {"k bigint", "9223372036854775806|9223372036854775807"},
        {"k nvarchar(20)", "'国''s [1]'|'國'"},
        {"k varchar(20)", "'中a'|'中b'"},
        {"k char(4)", "'a'|'b'"},
        {"k numeric(31,15)", "-116.3970001|-116.3970002"},
        {"k money", "-1.5|1.5"},
        {"k datetime", "'2009-02-20 08:09:36'|'2009-02-20 08:09:37'"},
        {"k float", "0.1|1e300"},
        {"k varbinary(9)", "0x00FF|0x00FE"},
        {"k bit", "0|1"},
        {"[k]]e y] int", "1|2"},
        // Its second byte in GBK is a bracket.
        {"[癩] int", "1|2"},
    };
    for (const auto &[declaration, literals] : kKeys) {
        for (const char *select : {"Select * From [表]", "Select b, name From [map].dbo.[表] Where name='相同'"}) {
            SCOPED_TRACE(std::string(declaration) + " " + select);
            const std::string all = literals;
            Run(std::string("Create Table [表] (") + declaration + " Primary Key, name nvarchar(9), b image)");
            Run("Insert Into [表] Values (" + all.substr(0, all.find('|')) + ",'相同',Null)");
            Run("Insert Into [表] Values (" + all.substr(all.find('|') + 1) + ",'相同',Null)");
            EXPECT_EQ(Write(select, 1, "b", "xyz"), "");
            const RecordsetRef rows = Select("Select b From [表]");
            EXPECT_TRUE(rows->GetCell(0).IsNull());
            rows->MoveNext();
            EXPECT_EQ(rows->GetCell(0).Bytes(), "xyz");
            Run("Drop Table [表]");
        }
    }
}

TEST_F(TdsWrite, HiddenKeysAreReadBehindListsOfEveryForm) {
    Run("Create Table t (a int, b int, p image, q nvarchar(9), Primary Key (a, b))");
    Run("Create Table u (a2 int Primary Key, [from] nvarchar(20))");
    Run("Insert Into u Values (1, ' From x'); Insert Into u Values (2, 'y')");
    static constexpr const char *kSelects[] = {
        "Select p From t Order By a Desc, b Desc",
        "select top 3 p,(Select Max(a2) From u) As m from t Order By 2, a Desc, b Desc",
        "Select p, [from], ' From (' As x From t, u Where a=a2 And b=2",
        "Select b As [From], p As q From t Where b=2",
        "Select p, '癧' As 癧 From t Where b=2",
    };
    for (const char *select : kSelects) {
        SCOPED_TRACE(select);
        Run("Delete From t");
        Run("Insert Into t Values (1,1,Null,'z'); Insert Into t Values (1,2,Null,'z'); Insert Into t Values "
            "(2,2,Null,'z')");
        const RecordsetRef rows = Select(select);
        rows->AppendChunk(rows->FindColumn("p") < 0 ? 1 : 0, "first");
        rows->MoveNext();  // stores it
        rows->AppendChunk(rows->FindColumn("p") < 0 ? 1 : 0, "second");
        rows->Update();
        EXPECT_EQ(Rows("Select Count(0) From t Where p Is Not Null"), "2\n");
        const bool descends = std::string_view(select).find("Desc") != std::string_view::npos;
        EXPECT_EQ(Rows("Select a,b From t Where p=0x6669727374"), descends ? "2|2\n" : "1|2\n");
        EXPECT_EQ(Rows("Select a,b From t Where p=0x7365636F6E64"), descends ? "1|2\n" : "2|2\n");
    }
}

TEST_F(TdsWrite, TableWithoutAKeyIsWrittenOnlyWhereOneRowIsMeant) {
    Run("Create Table t (a int, n nvarchar(9), p image)");
    Run("Insert Into t Values (1,Null,0x01); Insert Into t Values (1,'x',0x01); Insert Into t Values (1,'x',0x02)");
    EXPECT_EQ(Write("Select * From t", 0, "p", "new"), "");
    const std::string alike = "111: The row cannot be told from others in [map].[dbo].[t], which has no key.";
    EXPECT_EQ(Write("Select * From t", 1, "p", "bad"), alike);
    EXPECT_EQ(Write("Select p From t Where n Is Null", 0, "p", "bad"), alike);
    EXPECT_EQ(Rows("Select Count(0) From t Where p=0x6E6577"), "1\n");
    EXPECT_EQ(Rows("Select Count(0) From t Where p=0x626164"), "0\n");
}

TEST_F(TdsWrite, RowThatChangedMeanwhileIsAnErrorAndNothingIsWritten) {
    const std::string gone =
        "3021: The row cannot be found in [map].[dbo].[t]: it was changed or deleted since it was read.";
    for (const char *select : {"Select * From t Order By k", "Select n, p From t Order By k"}) {
        for (const char *change :
             {"Delete From t Where k=1", "Insert Into t Values (0,'zero',Null); Delete From t Where k=1",
              "Update t Set k=7,n='seven' Where k=1"}) {
            SCOPED_TRACE(std::string(select) + " " + change);
            Run("Create Table t (k int Primary Key, n nvarchar(9), p image)");
            Run("Insert Into t Values (1,'one',Null); Insert Into t Values (2,'two',Null)");
            const RecordsetRef rows = Select(select);
            Run(change);
            rows->AppendChunk(rows->FindColumn("p"), "x");
            EXPECT_EQ(FaultOf([&] { rows->Update(); }), gone);
            EXPECT_EQ(Rows("Select Count(0) From t Where p Is Not Null"), "0\n");
            Run("Drop Table t");
        }
    }
    Run("Create Table t (k int Primary Key, p image); Insert Into t Values (1,Null); Insert Into t Values (2,Null)");
    const RecordsetRef rows = Select("Select p From t");
    Run("Delete From t Where k=1");
    rows->AppendChunk(0, "x");
    EXPECT_EQ(FaultOf([&] { rows->Update(); }), gone) << "fewer rows";
    EXPECT_EQ(Rows("Select Count(0) From t Where p Is Not Null"), "0\n");
}

TEST_F(TdsWrite, TextGoesOutOfGbk) {
    Run("Create Table t (k int Primary Key, a nvarchar(9), b ntext, c text, d nvarchar(max))");
    Run("Insert Into t Values (1,Null,Null,Null,Null)");
    std::string text;
    for (int i = 0; i < 5000; ++i) text += "国'";
    EXPECT_EQ(Write("Select * From t", 0, "a", FromUtf8("北京").View()), "");
    for (const char *column : {"b", "c", "d"}) {
        EXPECT_EQ(Write("Select * From t", 0, column, FromUtf8(text).View()), "") << column;
    }
    EXPECT_TRUE(Rows("Select * From t") == "1|北京|" + text + "|" + text + "|" + text + "\n");
}

TEST_F(TdsWrite, WhatNoTableHoldsIsReadOnly) {
    Run("Create Table t (k int Primary Key, p image); Insert Into t Values (1, 0x01)");
    const auto readOnly = [](const std::string &column) {
        return "111: Item \"" + column + "\" is read-only: it is not text or bytes of a table.";
    };
    EXPECT_EQ(Write("Select k, p, 'x' As e From t", 0, "e", "y"), readOnly("e"));
    EXPECT_EQ(Write("Select k, p From t", 0, "k", "y"), readOnly("k"));
    EXPECT_EQ(Write("Select 'x' As e", 0, "e", "y"), readOnly("e"));
    const RecordsetRef rows = Select("Select * From t");
    Link().Close();
    rows->AppendChunk(1, "y");
    EXPECT_EQ(FaultOf([&] { rows->Update(); }), "3704: Operation is not allowed when the object is closed.");
}

}  // namespace
}  // namespace ktl::test
