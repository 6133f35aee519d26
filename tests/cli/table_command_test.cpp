#include <gtest/gtest.h>

#include "tests/cli/command_run.h"
#include "tests/host/scratch_folder.h"
#include "tests/support/tds_server/server.h"

namespace {

class TableCommand : public ::testing::Test {
  protected:
    TableCommand() { setenv("KTL_HOME", m_home.Path("").c_str(), 1); }

    CommandResult Table(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "table");
        return RunCommand(KTL_COMMAND, arguments);
    }
    /// The command with a shell's redirections behind it.
    static CommandResult Shell(const std::string &redirected) {
        return RunCommand("/bin/sh", {"-c", std::string(KTL_COMMAND) + " table " + redirected});
    }
    std::string Sql(const std::string &statement, const std::string &form = {}) {
        std::vector<std::string> arguments = {"sql", m_folder.Path(""), statement};
        if (!form.empty()) arguments.push_back(form);
        const CommandResult result = Table(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }
    std::string MakeTable() {
        EXPECT_EQ(
            Sql("Create Table w001 (ID int,ShapeID int,name Char(20),size numeric(20,10),note memo,yes L,b image)"),
            "0 rows\n");
        EXPECT_EQ(Sql("Insert Into w001 Values (1,1,'中国',1.5,'a, \"b\"',.T.,'abcd')"), "1 row\n");
        Sql("Insert Into w001 Values (-22,2,'国A',-20.25,'x'+CHR(10)+'y',.F.,Null)");
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
              " ID  ShapeID  name    size  note    yes    b\n"
              "---  -------  ----  ------  ------  -----  ---------\n"
              "  1        1  中国     1.5  a, \"b\"  true   (4 bytes)\n"
              "-22        2  国A   -20.25  x y     false\n"
              "  3        3\n");
    EXPECT_EQ(Table({"show", file, "--csv"}).out,
              "ID,ShapeID,name,size,note,yes,b\r\n1,1,中国,1.5,\"a, \"\"b\"\"\",true,YWJjZA==\r\n"
              "-22,2,国A,-20.25,\"x\ny\",false,\r\n3,3,,,,,\r\n");
    EXPECT_EQ(Sql("Select Top 1 name,size,yes From w001 Where name Like '%国%' Order By ShapeID", "--json"),
              "[\n  {\n    \"name\": \"中国\",\n    \"size\": 1.5,\n    \"yes\": true\n  }\n]\n");
    EXPECT_EQ(Sql("Select size From w001 Where ID=3", "--json"), "[\n  {\n    \"size\": null\n  }\n]\n");
    EXPECT_EQ(Sql("Select size From w001 Where ID=3", "--csv"), "size\r\n\"\"\r\n")
        << "a line without anything is none";
    EXPECT_EQ(Sql("Select size From w001 Where ID=9", "--json"), "[]\n");
    EXPECT_EQ(Sql("Update w001 Set ID=ID Where ID>0", "--json"), "[\n  {\n    \"rows\": 2\n  }\n]\n");
    EXPECT_EQ(Table({"show", file, "--limit", "0", "--csv"}).out, "ID,ShapeID,name,size,note,yes,b\r\n");
}

TEST_F(TableCommand, SearchAndInfo) {
    const std::string file = MakeTable();
    EXPECT_EQ(Table({"search", file, "国A", "--csv"}).out,
              "ID,ShapeID,name,size,note,yes,b\r\n-22,2,国A,-20.25,\"x\ny\",false,\r\n");
    EXPECT_EQ(Table({"search", file, "国a", "--csv"}).out, "ID,ShapeID,name,size,note,yes,b\r\n");
    EXPECT_EQ(Table({"info", file}).out,
              "column   type     width  decimals\n-------  -------  -----  --------\nID       integer      4\n"
              "ShapeID  integer      4\nname     text        20\nsize     number      20        10\n"
              "note     memo\nyes      yes/no\nb        bytes\n\n3 rows\n");
    const std::string map = m_folder.Write("map.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","geometry":null,"properties":{"a long name":"誠\u001b[31m","n":null}}]})");
    EXPECT_EQ(Table({"show", map}).out, "a long name  n\n-----------  -\n誠 [31m\n") << "no control characters";
    EXPECT_EQ(Table({"show", map, "--csv"}).out, "a long name,n\r\n誠\x1b[31m,\r\n");
}

// 1000 rows are measured; what comes behind is not held.
TEST_F(TableCommand, AServerAndAnAccessFileAreStores) {
    const ktl::test::TdsServer server("sa", "密'码", {"map"});
    const std::string store = "Provider=SQLOLEDB.1;User ID=sa;Password=\"密'码\";Data Source=127.0.0.1," +
                              std::to_string(server.Port()) + ";Initial Catalog=map";
    const auto sql = [&](const std::string &statement) { return Table({"sql", store, statement, "--csv"}); };
    EXPECT_EQ(sql("Create Table w001 (ID int, name nvarchar(20), b image)").status, 0);
    EXPECT_EQ(sql("Insert Into w001 Values (1,N'中国',0x61626364)").out, "rows\r\n1\r\n");
    EXPECT_EQ(sql("Select * From w001 Where name Like N'%国%'").out, "ID,name,b\r\n1,中国,YWJjZA==\r\n");
    const CommandResult fault = sql("Select * From missing");
    EXPECT_EQ(fault.status, 1);
    EXPECT_NE(fault.err.find("missing"), std::string::npos) << fault.err;

    const std::string file = KTL_SOURCE_DIR "/tests/platform/ado/data/sample.mdb";
    EXPECT_EQ(Table({"sql", file, "Select UserId,UserName From Users Where UserName Like '%三%'", "--csv"}).out,
              "UserId,UserName\r\n3,张三\r\n");
    EXPECT_EQ(Table({"sql", file, "Delete From Users"}).status, 1);
}

TEST_F(TableCommand, RowsBehindTheMeasuredOnesComeToo) {
    std::string rows = "name,\n";
    for (int i = 0; i < 2500; ++i) rows += i == 2400 ? std::string(200, 'x') + ",\n" : "r,\n";
    const std::string file = m_folder.Write("long.csv", rows);
    const std::string out = Table({"show", file}).out;
    EXPECT_EQ(out.substr(0, 12), "name\n----\nr\n");
    EXPECT_EQ(out.size(), 10U + 2499 * 2 + 79 + std::string("…\n").size()) << "a long text is cut";
    EXPECT_EQ(Table({"show", file, "--csv"}).out.size(), rows.size()) << "a line end of two bytes, no comma";
}

TEST_F(TableCommand, TablesComeInAndGoOut) {
    const std::string name = "表-ñ-🗺";
    const std::string map = m_folder.Write("map.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","geometry":null,"properties":{"a long name":"值😀","n":7}}]})");
    const std::string table = m_folder.Path("w001.dbf");
    CommandResult result = Table({"import", map, table});
    EXPECT_EQ(result.out, "wrote " + table + ": 1 row\n");
    EXPECT_EQ(result.err,
              "ktl table: column 'a long name' is called 'a_long_nam' in the table\n"
              "ktl table: characters replaced that GBK lacks: 1\n");
    const std::string target = m_folder.Path(name + ".gpkg");
    EXPECT_EQ(Table({"export", table, target}).status, 0);
    EXPECT_EQ(Table({"export", table, target}).status, 1) << "it is there already";
    EXPECT_EQ(Table({"export", table, target, "--overwrite"}).status, 0);
    EXPECT_EQ(Table({"show", target, "--csv"}).out, "a_long_nam,n\r\n值?,7\r\n");
    EXPECT_EQ(m_folder.Count(), 3) << "nothing else is left";
}

// The signal must arrive while the run lasts, however fast the machine is: each try waits longer.
TEST_F(TableCommand, AStoppedRunSaysSoAndLeavesNothing) {
    std::string rows = "name,n\n";
    for (int i = 0; i < 60000; ++i) rows += "row," + std::to_string(i) + "\n";
    const std::string file = m_folder.Write("rows.csv", rows);
    const std::string target = m_folder.Path("out.dbf");
    for (const std::vector<std::string> &arguments : std::vector<std::vector<std::string>>{
             {"import", file, target}, {"export", file, m_folder.Path("out.gpkg")}, {"search", file, "nothing"}}) {
        CommandResult result;
        for (double seconds = 0.02; seconds < 20 && result.err.empty(); seconds *= 1.3) {
            std::vector<std::string> all = {"--preserve-status",     "-s",        "INT",
                                            std::to_string(seconds), KTL_COMMAND, "table"};
            all.insert(all.end(), arguments.begin(), arguments.end());
            result = RunCommand("/usr/bin/timeout", all);
            if (result.status == 0) break;
        }
        EXPECT_EQ(result.status, 130) << arguments[0];
        EXPECT_EQ(result.err, "ktl table: interrupted\n") << arguments[0];
        EXPECT_EQ(m_folder.Count(), 1) << arguments[0];
    }
}

TEST_F(TableCommand, FaultsAreOneLineAndAStatus) {
    MakeTable();
    struct Case {
        std::vector<std::string> arguments;
        int status;
    };
    const std::string folder = m_folder.Path("");
    m_folder.Write("broken.dbf", "hello");
    const Case cases[] = {
        {{}, 2},
        {{"paint"}, 2},
        {{"sql", folder}, 2},
        {{"show", folder + "/w001.dbf", "--limit", "-1"}, 2},
        {{"show", folder + "/w001.dbf", "--csv", "--json"}, 2},
        {{"show", folder + "/none.dbf"}, 1},
        {{"show", folder + "/none.mdb"}, 1},
        {{"show", folder + "/broken.dbf"}, 1},
        {{"show", folder, "--layer", "none"}, 1},
        {{"show", folder + "/w001.dbf", "--layer", "none"}, 1},
        {{"sql", folder, "Select nothing From w001"}, 1},
        {{"sql", folder, "Select '😀' From w001"}, 1},
        {{"sql", folder + "/none", "Select * From w001"}, 1},
        {{"sql", "Provider=Nobody", "Select 1"}, 1},
        {{"import", folder + "/w001.dbf", folder + "/w001.dbf"}, 1},
        {{"import", folder + "/w001.dbf", folder + "/w002.csv"}, 1},
        {{"export", folder + "/w001.dbf", folder + "/none/a.csv"}, 1},
        {{"export", folder + "/w001.dbf", folder + "/a.shp"}, 1},
    };
    for (const Case &row : cases) {
        const CommandResult result = Table(row.arguments);
        EXPECT_EQ(result.status, row.status) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with("ktl table: ") && result.err.find('\n') == result.err.size() - 1)
            << result.err;
    }
}

// With standard output closed the next file that is opened would take its number, and the rows would go into it.
TEST_F(TableCommand, OutputThatCannotBeWrittenIsAFaultAndHarmsNothing) {
    const std::string file = MakeTable();
    const std::string bytes = m_folder.Read("w001.dbf");
    for (const char *redirection : {" >/dev/full", " >&-", " 2>&1 >/dev/full", " >&- 2>&-"}) {
        for (const char *form : {"show ", "show --csv ", "show --json ", "info "}) {
            EXPECT_EQ(Shell(form + file + redirection).status, 1) << form << redirection;
        }
    }
    EXPECT_EQ(Shell("show " + file + " >/dev/full").err,
              "ktl table: cannot write to standard output: No space left on device\n");
    EXPECT_EQ(m_folder.Read("w001.dbf"), bytes);
    EXPECT_EQ(Shell("show " + file + " | head -n 1").err, "");
}
