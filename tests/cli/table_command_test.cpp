#include <gtest/gtest.h>

#include "tests/cli/command_run.h"
#include "tests/host/scratch_folder.h"

namespace {

class TableCommand : public ::testing::Test {
  protected:
    TableCommand() { setenv("KTL_HOME", m_home.Path("").c_str(), 1); }

    CommandResult Table(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "table");
        return RunCommand(KTL_COMMAND, arguments);
    }
    std::string Sql(const std::string &statement, const std::string &form = {}) {
        std::vector<std::string> arguments = {"sql", m_folder.Path(""), statement};
        if (!form.empty()) arguments.push_back(form);
        const CommandResult result = Table(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }
    std::string MakeTable() {
        EXPECT_EQ(Sql("Create Table w001 (ID int,ShapeID int,name Char(20),size numeric(20,10),note memo)"),
                  "0 rows\n");
        EXPECT_EQ(Sql("Insert Into w001 Values (1,1,'中国',1.5,'a, \"b\"')"), "1 row\n");
        Sql("Insert Into w001 Values (-22,2,'国A',-20.25,'x'+CHR(10)+'y')");
        Sql("Insert Into w001 (ID,ShapeID) Values (3,3)");
        return m_folder.Path("w001.dbf");
    }

    ScratchFolder m_folder;
    ScratchFolder m_home;
};

}  // namespace

TEST_F(TableCommand, RowsComeInEveryForm) {
    const std::string file = MakeTable();
    EXPECT_EQ(Table({"show", file}).out,
              " ID  ShapeID  name    size  note\n"
              "---  -------  ----  ------  ------\n"
              "  1        1  中国     1.5  a, \"b\"\n"
              "-22        2  国A   -20.25  x y\n"
              "  3        3\n");
    EXPECT_EQ(Table({"show", file, "--csv"}).out,
              "ID,ShapeID,name,size,note\n1,1,中国,1.5,\"a, \"\"b\"\"\"\n"
              "-22,2,国A,-20.25,\"x\ny\"\n3,3,,,\n");
    EXPECT_EQ(Sql("Select Top 1 name,size From w001 Where name Like '%国%' Order By ShapeID", "--json"),
              "[\n  {\n    \"name\": \"中国\",\n    \"size\": 1.5\n  }\n]\n");
    EXPECT_EQ(Table({"show", file, "--limit", "1", "--csv"}).out,
              "ID,ShapeID,name,size,note\n1,1,中国,1.5,\"a, \"\"b\"\"\"\n");
}

TEST_F(TableCommand, SearchAndInfo) {
    const std::string file = MakeTable();
    EXPECT_EQ(Table({"search", file, "国A", "--csv"}).out, "ID,ShapeID,name,size,note\n-22,2,国A,-20.25,\"x\ny\"\n");
    EXPECT_EQ(Table({"search", file, "国a", "--csv"}).out, "ID,ShapeID,name,size,note\n");
    EXPECT_EQ(Table({"info", file}).out,
              "column   type     width\n-------  -------  -----\nID       integer      4\n"
              "ShapeID  integer      4\nname     text        20\nsize     number      20\n"
              "note     memo\n\n3 rows\n");
    const std::string map = m_folder.Write("map.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","geometry":null,"properties":{"a long name":"值"}}]})");
    const CommandResult shown = Table({"show", map, "--csv"});
    EXPECT_EQ(shown.out, "a_long_nam\n值\n");
    EXPECT_EQ(shown.err, "ktl table: column 'a long name' is called 'a_long_nam' in the table\n");
}

TEST_F(TableCommand, FaultsAreOneLineAndAStatus) {
    MakeTable();
    struct Case {
        std::vector<std::string> arguments;
        int status;
    };
    const std::string folder = m_folder.Path("");
    const Case cases[] = {
        {{}, 2},
        {{"sql", folder}, 2},
        {{"show", folder + "/w001.dbf", "--limit", "-1"}, 2},
        {{"show", folder + "/w001.dbf", "--csv", "--json"}, 2},
        {{"show", folder + "/none.dbf"}, 1},
        {{"sql", folder, "Select nothing From w001"}, 1},
        {{"sql", folder, "Select '😀' From w001"}, 1},
        {{"sql", folder + "/none", "Select * From w001"}, 1},
        {{"sql", "Provider=Nobody", "Select 1"}, 1},
    };
    for (const Case &row : cases) {
        const CommandResult result = Table(row.arguments);
        EXPECT_EQ(result.status, row.status) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with("ktl table: ") && result.err.find('\n') == result.err.size() - 1)
            << result.err;
    }
}
