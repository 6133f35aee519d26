// The statements over real files: what they change and what they give back.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/platform/ado/tables.h"

namespace ktl::test {
namespace {

class Statement : public testing::Test {
  protected:
    void SetUp() override {
        tables.Run("Create Table t (ID int,ShapeID int,name Char(10),v numeric(20,10),b L,d date,s datetime,m memo)");
        tables.Run("Insert Into t (ID,ShapeID,name,v) Values (1,1,'Tom',1.5)");
        tables.Run("Insert Into t (ID,ShapeID,name,v) Values (2,2,'Tommy',-2)");
        tables.Run("Insert Into t (ID,ShapeID,name) Values (-1,3,'中国')");
        tables.Run("Insert Into t Values (4,4,'国中',0,.T.,{^2020-01-31},{^2020-01-31 17:13:05},'memo')");
    }
    ScratchFolder folder;
    Tables tables{folder};
};

TEST_F(Statement, ConditionsFollowTheProvidersRules) {
    const struct {
        const char *condition;
        const char *shapes;
    } cases[] = {
        {"name='Tom'", "1"},
        {"name='Tom       '", "1"},
        {"name=='Tom'", "1"},
        {"name='tom'", ""},
        {"name Like 'Tom%'", "12"},
        {"name Like '%国%'", "34"},
        {"name Like '国_'", "4"},
        {"name Not Like '%国%'", "12"},
        {"v < 0", "2"},
        {"v = 1.50", "1"},
        {"v Is Null", "3"},
        {"Not v Is Null And v <> 0", "12"},
        {"v <> 0", "12"},
        {"ID <> -1", "124"},
        {"ShapeID In (4,2,9,2)", "24"},
        {"ShapeID Not In (4,2)", "13"},
        {"ShapeID Between 2 And 3", "23"},
        {"3 = ShapeID", "3"},
        {"ShapeID=2 And name='Tom'", ""},
        {"ShapeID=2 Or name='Tom'", "12"},
        {"ShapeID=2.5", ""},
        {"ShapeID=99999999999", ""},
        {"b", "4"},
        {"b = .T.", "4"},
        {"b = 1", "4"},
        {"Not b", ""},
        {"b Is Null", "123"},
        {"d = {^2020-01-31}", "4"},
        {"s > {^2020-01-31} And s < {^2020-02-01}", "4"},
        {"ShapeID*2+1 = 5", "2"},
        {"ShapeID % 2 = 0", "24"},
        {"name+'x' = 'Tom       x'", "1"},
        {"Upper(name) = 'TOM' Or Len(name) = 9", "1"},
        {"name = 'T'+CHR(111)+'m'", "1"},
        {"NULL = NULL", ""},
        {"ShapeID = 1 Or v = NULL", "1"},
        {"m = 'memo'", "4"},
        {"name > 'Tom' And name < 'a'", "2"},
    };
    for (const auto &row : cases) {
        std::string shapes = tables.Rows(std::string("Select ShapeID From t Where ") + row.condition);
        std::erase(shapes, '\n');
        EXPECT_EQ(shapes, row.shapes) << row.condition;
    }
}

TEST_F(Statement, CellsReadAsTheProviderGivesThem) {
    EXPECT_EQ(tables.Rows("Select * From t Where ShapeID=4"), "4|4|国中|0|-1|2020/1/31|2020/1/31 17:13:05|memo\n");
    // A blank cell of a table without null marks is null; a text is never null there.
    EXPECT_EQ(tables.Rows("Select * From t Where ShapeID=3"), "-1|3|中国|~|~|~|~|\n");
    EXPECT_EQ(tables.Rows("Select v From t Order By v"), "~\n-2\n0\n1.5\n");
}

TEST_F(Statement, OrderLimitsAndNamesOfResults) {
    EXPECT_EQ(tables.Rows("Select Top 2 ShapeID From t Order By v Desc"), "1\n4\n");
    EXPECT_EQ(tables.Rows("Select Top 3 ShapeID,v*2 As w From t Where ID<>-1 Order By w"), "2|-4\n4|0\n1|3\n");
    EXPECT_EQ(tables.Rows("Select Top 50 Percent ShapeID From t Order By 1 Desc"), "4\n3\n");
    EXPECT_EQ(tables.Rows("Select Top 0 ShapeID From t"), "");
    EXPECT_EQ(tables.Rows("Select Top 2 ShapeID From t"), "1\n2\n");
    EXPECT_EQ(tables.Rows("Select Distinct Left_.b From t Left_ Order By b"), "~\n-1\n");
    const ado::RecordsetRef rows = tables.Open("Select name,name,ID+1,Count_.ID As x From t Count_ Where ID=99");
    EXPECT_EQ(rows->GetRecordCount(), 0);
    EXPECT_STREQ(rows->GetColumn(1).name, "name_a");
    EXPECT_STREQ(rows->GetColumn(2).name, "Exp_1");
    EXPECT_EQ(rows->FindColumn("X"), 3);
}

TEST_F(Statement, SumsOverRowsGiveOneRowEvenWithoutAny) {
    EXPECT_EQ(tables.Rows("Select Count(0) From [t] Where ID<>-1"), "3\n");
    EXPECT_EQ(tables.Rows("Select Count(v),Count(*),Max(v),Min(name),Sum(v),Avg(ShapeID) From t"),
              "3|4|1.5|Tom|-0.5|2.5\n");
    EXPECT_EQ(tables.Rows("Select Max(v),Count(0),Sum(v) From t Where ID=99"), "~|0|~\n");
    EXPECT_EQ(tables.Open("Select Max(v) From t")->GetColumn(0).type, ado::DataType::Numeric);
}

TEST_F(Statement, GroupsAreToldApartAndSummed) {
    tables.Run("Create Table g (k Char(4), n int, v numeric(5,1))");
    for (const char *row : {"'b',1,1.5", "'a',1,2", "'b',2,Null", "'a',1,3", "'c',5,7", "'b',1,1.50"}) {
        tables.Run(std::string("Insert Into g Values (") + row + ")");
    }
    const struct {
        const char *statement;
        const char *rows;
    } cases[] = {
        {"Select k,Count(*),Sum(v) From g Group By k", "a|2|5\nb|3|3\nc|1|7\n"},
        {"Select v,Count(*) From g Group By v", "~|1\n1.5|2\n2|1\n3|1\n7|1\n"},
        {"Select k,n,Avg(v) From g Group By k,n", "a|1|2.5\nb|1|1.5\nb|2|~\nc|5|7\n"},
        {"Select Upper(k) As u,Max(n)*2 From g Where v > 1.5 Group By u", "A|2\nC|10\n"},
        {"Select n+1,Count(*) From g Group By 1 Order By 2 Desc", "2|4\n3|1\n6|1\n"},
        {"Select k From g Group By k Having Count(*) > 1 And k <> 'a'", "b\n"},
        {"Select Top 1 k From g Group By k Order By Sum(v) Desc", "c\n"},
        {"Select Distinct Count(*) From g Group By n Order By 1", "1\n4\n"},
        {"Select k,Count(*) From g Where n=99 Group By k", ""},
    };
    for (const auto &row : cases) EXPECT_EQ(tables.Rows(row.statement), row.rows) << row.statement;
    tables.Run("Create Table h (k Char(4), n int)");
    EXPECT_EQ(tables.Run("Insert Into h Select k,Count(*) From g Group By k"), 3);
    EXPECT_EQ(tables.Rows("Select * From h Where k='b'"), "b|3\n");
}

TEST_F(Statement, AValueThatFailsAtALaterRowLeavesEveryRow) {
    // More rows than are held at a time.
    tables.Run("Create Table w (ID int, ShapeID int, v numeric(4,1), name Char(250), m memo)");
    tables.Run("Insert Into w Values (0,1,1,'n','1')");
    for (int rows = 1; rows < 2048; rows *= 2) {
        tables.Run("Insert Into w Select ID,ShapeID+" + std::to_string(rows) + ",v,name,m From w");
    }
    const char *const failing[] = {
        "Update w Set v=1/(ShapeID-2000)",
        "Update w Set ID=7,v=ShapeID*6",
        "Update w Set v=2,ID=ShapeID*2000000",
        "Update w Set v=1/(ShapeID-5) Where ShapeID In (1,2,5)",
        "Update w Set v=2 Where 1/(ShapeID-2000) > 0",
        "Update w Set m='0',v=1/Val(m)",
        "Delete From w Where 1/(ShapeID-2000) < 5",
        "Replace All v With 1/(ShapeID-2000)",
        "Replace All m With 'x' Additive, v With 1/(ShapeID-2000)",
    };
    tables.Run("Use w");
    const auto memoSize = std::filesystem::file_size(folder.Path("w.fpt"));
    for (const char *statement : failing) {
        EXPECT_EQ(tables.Fault(statement).substr(0, 3), "39 ") << statement;
        EXPECT_EQ(tables.Rows("Select Count(0),Sum(v),Sum(ID) From w Where m='1'"), "2048|2048|0\n") << statement;
    }
    EXPECT_EQ(std::filesystem::file_size(folder.Path("w.fpt")), memoSize) << "nothing was written to be forgotten";
    // What a row has been given is what the next value sees, in the check as in the change.
    EXPECT_EQ(tables.Run("Update w Set m='2',v=1/Val(m),name=m,ID=Len(name) Where ShapeID > 2000"), 48);
    EXPECT_EQ(tables.Rows("Select Distinct v,name,ID,m From w Where ShapeID > 2000"), "0.5|2|250|2\n");
}

TEST_F(Statement, AssignmentsRunFromLeftToRight) {
    EXPECT_EQ(tables.Run("Update t Set ID=ID+10, ShapeID=ID Where ShapeID=1"), 1);
    EXPECT_EQ(tables.Rows("Select ID,ShapeID From t Where ShapeID=11"), "11|11\n");
    EXPECT_EQ(tables.Rows("Select ID From t Where ShapeID=1"), "");
}

TEST_F(Statement, UpdateWithoutConditionHitsEveryRow) {
    EXPECT_EQ(tables.Run("Update [t] Set [name]='all'"), 4);
    EXPECT_EQ(tables.Rows("Select Count(0) From t Where name='all'"), "4\n");
}

TEST_F(Statement, DeletedRowsVanishFromEveryStatement) {
    EXPECT_EQ(tables.Run("Delete From t Where ShapeID=2"), 1);
    EXPECT_EQ(tables.Run("Delete From t Where ShapeID=2"), 0);
    EXPECT_EQ(tables.Run("Update t Set v=9"), 3);
    EXPECT_EQ(tables.Rows("Select ShapeID From t"), "1\n3\n4\n");
    EXPECT_EQ(tables.Rows("Select ShapeID From t Where ShapeID=2"), "");
}

TEST_F(Statement, FaultsAreFoundBeforeAnyRowIsTouched) {
    const struct {
        const char *statement;
        const char *fault;
    } cases[] = {
        {"Update t Set v='5'", "107 Column \"v\" takes a number, not a text, at byte 16 near \"'5'\"."},
        {"Update t Set name=5", "107 Column \"name\" takes a text, not a number, at byte 19 near \"5\"."},
        {"Update t Set d='2020-01-31'", "107 Column \"d\" takes a date, not a text, at byte 16 near \"'2020-01-31'\"."},
        {"Update t Set nope=5", "12 Column \"nope\" is not found at byte 14 near \"nope=5\"."},
        {"Update t Set v=5 Where name=7", "107 Operand types do not fit (number and text) at byte 28 near \"=7\"."},
        {"Update t Set v=5 Where name", "107 The condition is not a logical value at byte 24 near \"name\"."},
        {"Select v+name From t", "107 Operand types do not fit (text and number) at byte 9 near \"+name From t\"."},
        {"Select [nope] From t", "12 Column \"nope\" is not found at byte 8 near \"[nope] From t\"."},
        {"Insert Into t (ID,v) Values (1)", "10 1 values stand for 2 columns at byte 30 near \"1)\"."},
        {"Insert Into t (ID,id) Values (1,2)",
         "10 Column \"id\" stands twice in the list at byte 19 near \"id) Values (1,2)\"."},
        {"Insert Into t (ID) Values (abc)",
         "12 A constant was expected, not the name \"abc\", at byte 28 near \"abc)\"."},
        {"Insert Into t (ID,s) Values (1,2020-1-2)",
         "107 Column \"s\" takes a date, not a number, at byte 38 near \"-2)\"."},
        {"Select ID,Max(v) From t",
         "10 Syntax error: a column beside sums over rows needs its Group By at byte 8 near \"ID,Max(v) From t\"."},
        {"Select Max(v)+v From t Where ID=99",
         "10 Syntax error: a column beside sums over rows needs its Group By at byte 15 near \"v From t Where "
         "ID=99\"."},
        {"Select name,v,Count(*) From t Group By name",
         "10 Syntax error: a column beside sums over rows needs its Group By at byte 13 near \"v,Count(*) From t "
         "Group \"."},
        {"Select * From t Group By 1",
         "10 Syntax error: there is no result column of this number at byte 26 near \"1\"."},
        {"Select Count(*) As n From t Group By n",
         "10 Syntax error: a sum over rows cannot stand here at byte 8 near \"Count(*) As n From t Gro\"."},
        {"Select ID From t Order By 2", "12 Order By names a result column that there is not at byte 27 near \"2\"."},
        {"Select ID From t Where v In (Select v From t)",
         "10 Syntax error: a Select within a statement is not supported at byte 30 near \"Select v From t)\"."},
        {"Update t Set v=1 Where Max(v)=1",
         "10 Syntax error: a sum over rows cannot stand here at byte 24 near \"Max(v)=1\"."},
        {"Alter Table t Drop Column nope", "12 Column \"nope\" at byte 27 is not found."},
        {"Alter Table t Add NAME int", "1712 Column \"NAME\" at byte 19 is there already."},
        {"Create Table u (elevenbytes int)",
         "1712 Column \"elevenbytes\" at byte 17: a column's name has at most 10 bytes."},
        {"Create Table u (a Char(255))", "10 Column \"a\" at byte 17: a text is 1 to 254 bytes wide."},
        {"Create Table u (a numeric(21,2))", "10 Column \"a\" at byte 17: a number is 1 to 20 digits wide."},
        {"Replace v With 1", "13 No table is open in the current work area."},
        {"Insert Into t (v) Select 1/(ShapeID-2) From t", "39 Cannot divide by 0 in record 2 of table \"t\"."},
        {"Update t Set v=1/(ShapeID-1)", "39 Cannot divide by 0 in record 1 of table \"t\"."},
    };
    const std::string before = tables.Rows("Select * From t");
    for (const auto &row : cases) EXPECT_EQ(tables.Fault(row.statement), row.fault) << row.statement;
    EXPECT_EQ(tables.Rows("Select * From t"), before);
    EXPECT_FALSE(folder.Has("u.dbf"));
}

TEST_F(Statement, AFaultIsToldWithItsOwnTextThoughTheShapeIsKnown) {
    tables.Run("Update t Set v=1 Where ShapeID=1");
    tables.Run("Insert Into t (v) Select 1 From t Where ID=99");
    tables.Run("Alter Table t Drop Column v");
    EXPECT_EQ(tables.Fault("Insert Into t (v) Select 22222 From t Where ID=99"),
              "12 Column \"v\" is not found at byte 16 near \"v) Select 22222 From t W\".");
    EXPECT_EQ(tables.Fault("Update t Set v=22222 Where ShapeID=1"),
              "12 Column \"v\" is not found at byte 14 near \"v=22222 Where ShapeID=1\".");
}

TEST_F(Statement, NumbersKeepWhatTheirWidthHolds) {
    const struct {
        const char *number;
        const char *read;
    } cases[] = {
        {"123456789.1234567891", "123456789.1234567891"},
        {"-12345678.1234567891", "-12345678.1234567891"},
        {"-123456789.123456789", "-123456789.123456789"},
        {"12345678901234567890", "12345678901234567890"},
        {"0.00000000005", "0.0000000001"},
        {"999999999.99999999999", "1000000000"},
        {"1e15", "1000000000000000"},
        {"123456789012345678901234", "1.23456789012346E+23"},
        {"1e300", "1E+300"},
        {"-0.0", "0"},
        {"5", "5"},
    };
    for (const auto &row : cases) {
        tables.Run(std::string("Update t Set v=") + row.number + " Where ShapeID=1");
        EXPECT_EQ(tables.Rows("Select v From t Where ShapeID=1"), std::string(row.read) + "\n") << row.number;
    }
    tables.Run("Create Table n (i int, y currency, f double, n numeric(3,1), big bigint)");
    tables.Run("Insert Into n Values (-2147483648, -0.0001, 0.1, 99.96, 99999999999999999999)");
    EXPECT_EQ(tables.Rows("Select * From n"), "-2147483648|-0.0001|0.1|100|99999999999999999999\n");
    EXPECT_EQ(tables.Fault("Insert Into n (i) Values (2147483648)"),
              "39 Numeric overflow: a number is too large for column \"i\".");
    EXPECT_EQ(tables.Fault("Insert Into n (n) Values (1000)"),
              "39 Numeric overflow: a number is too large for column \"n\".");
    EXPECT_EQ(tables.Rows("Select Count(0) From n"), "1\n");
}

TEST_F(Statement, LongTextIsCutBetweenCharacters) {
    tables.Run("Update t Set name='九个字节多一点' Where ShapeID=1");
    tables.Run("Update t Set name='x九个字节多' Where ShapeID=2");
    EXPECT_EQ(tables.Rows("Select name From t Where ShapeID<3"), "九个字节多\nx九个字节\n");
}

TEST_F(Statement, SelectedRowsAreConvertedToTheTargetsTypes) {
    tables.Run("Create Table u (a Char(6), b int, c numeric(20,10), e memo)");
    EXPECT_EQ(tables.Run("Insert Into u (a,b,c,e) Select v,b,name,name From t Where ShapeID <> 3"), 3);
    EXPECT_EQ(tables.Rows("Select * From u"), "1.5|0|0|Tom\n-2|0|0|Tommy\n0|1|0|国中\n");
    EXPECT_EQ(tables.Run("Insert Into u Select a,b,c,e From u"), 3);
    EXPECT_EQ(tables.Rows("Select Count(0) From u"), "6\n");
}

TEST_F(Statement, MemosOfAnyLengthComeBackWhole) {
    for (const std::size_t size : {0U, 1U, 55U, 56U, 57U, 8000U, 100'000U}) {
        std::string text;
        while (text.size() < size) text += static_cast<char>('a' + text.size() % 26);
        tables.Run("Update t Set m='" + text + "' Where ShapeID=1");
        EXPECT_EQ(tables.Rows("Select m From t Where ShapeID=1"), text + "\n");
    }
    tables.Run("Update t Set m='第一行'+CHR(10)+'二''行' Where ShapeID=2");
    EXPECT_EQ(tables.Rows("Select m From t Where ShapeID=2"), "第一行\n二'行\n");
}

TEST_F(Statement, ReplaceWalksFromTheCurrentRecord) {
    EXPECT_EQ(tables.Run("Replace m With 'a' While ShapeID=1 In t"), 1);
    EXPECT_EQ(tables.Run("Replace m With 'b' Additive While ShapeID=1 In t"), 0) << "the walk before ended at record 2";
    tables.Run("Use t");
    EXPECT_EQ(tables.Run("Replace m With 'b' Additive While ShapeID=1"), 1);
    EXPECT_EQ(tables.Rows("Select m From t Where ShapeID=1"), "ab\n");
    tables.Run("Use t");
    EXPECT_EQ(tables.Run("Replace v With 7 While ShapeID=2"), 0) << "record 1 fails the condition";
    EXPECT_EQ(tables.Run("Replace v With 7"), 1);
    EXPECT_EQ(tables.Run("Replace v With v+1, name With 'f' For ShapeID > 2"), 2);
    EXPECT_EQ(tables.Run("Replace All v With 0"), 4);
    EXPECT_EQ(tables.Run("Replace Record 3 v With 5 In t"), 1);
    EXPECT_EQ(tables.Rows("Select v From t"), "0\n0\n5\n0\n");
    EXPECT_NE(tables.Fault("Replace name With 'x' Additive In t"), "");
}

TEST_F(Statement, ColumnsAreAddedDroppedChangedAndRenamed) {
    tables.Run("USE IN SELECT ('t')");
    tables.Run("USE t EXCLUSIVE");
    tables.Run("Alter Table t Add [地址] Char(6)");
    tables.Run("ALTER TABLE [t] DROP COLUMN [s]");
    tables.Run("Alter Table t Rename name to 名称");
    tables.Run("ALTER TABLE [t] ALTER COLUMN [v] Char(4)");
    tables.Run("ALTER TABLE [t] ALTER COLUMN [名称] Char(3)");
    tables.Run("Update t Set 地址='北京' Where ShapeID=2");
    EXPECT_EQ(tables.Rows("Select * From t"),
              "1|1|Tom|1.5|~|~||\n2|2|Tom|-2|~|~||北京\n-1|3|中||~|~||\n4|4|国|0|-1|2020/1/31|memo|\n");
    tables.Run("ALTER TABLE [t] ALTER COLUMN [v] numeric(3,1)");
    tables.Run("ALTER TABLE [t] ALTER COLUMN [m] Char(2)");
    EXPECT_EQ(tables.Rows("Select v,m From t"), "1.5|\n-2|\n~|\n0|me\n");
    EXPECT_FALSE(folder.Has("t.fpt")) << "no memo column is left";
    tables.Run("ALTER TABLE [t] ALTER COLUMN [m] memo");
    tables.Run("Update t Set m='again' Where ShapeID=1");
    EXPECT_EQ(tables.Rows("Select m From t"), "again\n\n\nme\n");
    tables.Run("Delete From t Where ShapeID=1");
    tables.Run("Alter Table t Add x int");
    EXPECT_EQ(tables.Rows("Select ShapeID,m,x From t"), "2||0\n3||0\n4|me|0\n");
}

TEST_F(Statement, CreateReplacesATableWithRowsAndItsMemos) {
    tables.Run("Create Table t (ID int, ShapeID int)");
    EXPECT_EQ(tables.Rows("Select Count(0) From t"), "0\n");
    EXPECT_FALSE(folder.Has("t.fpt"));
    // The statement sent again at once fails: the table is still held by its making.
    tables.Run("Create Table u (ID int)");
    EXPECT_EQ(tables.Fault("Create Table u (ID int)"), "3 Table \"u\" is in use: it has just been made.");
    tables.Run("Create Table u (ID int, x int)");
    tables.Run("Insert Into u Values (1,2)");
    tables.Run("Create Table u (ID int, x int)");
    EXPECT_EQ(tables.Rows("Select * From u"), "");
}

TEST_F(Statement, TablesAreListedAndDropped) {
    tables.Run("Create Table [表] (ID int)");
    std::string names;
    for (auto rows = tables.Get().OpenSchema(20); !rows->IsEOF(); rows->MoveNext()) {
        names +=
            ToUtf8(rows->GetCell("TABLE_NAME").ToText()) + "/" + ToUtf8(rows->GetCell("TABLE_TYPE").ToText()) + " ";
    }
    EXPECT_EQ(names, "t/TABLE 表/TABLE ");
    tables.Run("Drop Table t");
    EXPECT_FALSE(folder.Has("t.dbf"));
    EXPECT_FALSE(folder.Has("t.fpt"));
    EXPECT_EQ(tables.Fault("Drop Table t").substr(0, 2), "1 ");
    EXPECT_NE(tables.Fault("Select * From [../t]"), "");
}

TEST_F(Statement, ByteBlocksGoThroughTheRecordset) {
    tables.Run("Create Table g (ID int, ShapeID int, img image, m memo)");
    tables.Run("Insert Into g (ID,ShapeID) Values (1,1)");
    tables.Run("Insert Into g (ID,ShapeID) Values (2,2)");
    std::string bytes;
    for (int i = 0; i < 1000; ++i) bytes += static_cast<char>(i);
    ado::RecordsetRef rows = tables.Open("Select * From g Where ShapeID=2");
    const int image = rows->FindColumn("IMG");
    rows->AppendChunk(image, bytes);
    rows->AppendChunk(image, "end");
    rows->Update();
    EXPECT_EQ(rows->GetActualSize(image), 1003);
    rows = tables.Open("Select img,ID From g");
    EXPECT_EQ(rows->GetActualSize(0), 0);
    EXPECT_TRUE(rows->GetChunk(0, 10).IsNull());
    rows->MoveNext();
    EXPECT_EQ(rows->GetChunk(0, 2000).Bytes(), bytes + "end");
    rows = tables.Open("Select ShapeID+1 From g");
    rows->AppendChunk(0, "x");
    EXPECT_THROW(rows->Update(), ado::Error);
}

TEST_F(Statement, ARecordsetShowsTheRowsAsTheyWere) {
    const ado::RecordsetRef rows = tables.Open("Select name From t");
    tables.Run("Update t Set name='new'");
    tables.Run("Drop Table t");
    tables.Close();
    EXPECT_EQ(rows->GetRecordCount(), 4);
    rows->MoveNext();
    EXPECT_EQ(rows->GetCell(0).Text(), "Tommy");
}

// Rows come once each however they are found, and between two pages the table is free for a writer of its own.
TEST_F(Statement, PagesGiveEveryRowAndLetWritersIn) {
    constexpr int kRows = 2500;
    tables.Run("Create Table p (ID int,ShapeID int)");
    for (int i = 0; i < kRows; ++i) {
        tables.Run("Insert Into p Values (" + std::to_string(i % 2) + "," + std::to_string(i) + ")");
    }
    const auto walk = [&](const char *statement, int pagesWanted) {
        Tables writer(folder);
        std::string rows;
        int pages = 0;
        tables.Get().ReadPages(statement, [&](const ado::RecordsetRef &page) {
            EXPECT_EQ(writer.Run("Update p Set ID=ID Where ShapeID=2400"), 1);
            for (; !page->IsEOF(); page->MoveNext()) rows += ToUtf8(page->GetCell("ShapeID").ToText()) + "\n";
            return ++pages < pagesWanted;
        });
        EXPECT_EQ(pages, pagesWanted) << statement;
        return rows;
    };
    for (const auto &[statement, pages] : {std::pair("Select ShapeID From p", 3),
                                           {"Select ShapeID From p Where ID=1", 2},
                                           {"Select ShapeID From p Order By ShapeID Desc", 1},
                                           {"Select Top 2 ShapeID From p", 1},
                                           {"Select ShapeID From p Where ShapeID=-1", 1}}) {
        EXPECT_EQ(walk(statement, pages), tables.Rows(statement)) << statement;
    }
    EXPECT_EQ(walk("Select ShapeID From p", 1).size(), 10U + 2 * 90 + 3 * 900 + 1000) << "stopped behind a page";
    EXPECT_THROW(tables.Get().ReadPages("Select ShapeID From p",
                                        [&](const ado::RecordsetRef &) { return tables.Run("Drop Table p") == 0; }),
                 ado::Error);
}

TEST_F(Statement, AStatementWithoutRowsGivesAClosedRecordset) {
    const ado::RecordsetRef rows = tables.Open("Update t Set v=3 Where ShapeID=1");
    EXPECT_FALSE(rows->IsOpen());
    EXPECT_THROW(rows->GetRecordCount(), ado::Error);
    EXPECT_EQ(tables.Rows("Select v From t Where ShapeID=1"), "3\n");
}

TEST(Providers, AnUnknownOneAndAMissingFolderAreErrors) {
    EXPECT_THROW(ado::Connection::Open("Provider=NOTHING.1;Data Source=/tmp"), ado::Error);
    EXPECT_THROW(ado::Connection::Open("Provider=VFPOLEDB.1;Data Source=/no/such/folder"), ado::Error);
}

}  // namespace
}  // namespace ktl::test
