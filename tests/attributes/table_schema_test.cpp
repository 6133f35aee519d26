#include "ktl/platform/progress_ctrl.h"
#include "tests/attributes/table_fixture.h"

namespace {

class TableSchema : public ktl::test::TableTest {
  protected:
    /// w001b with these definitions behind ID and ShapeID (or in their place) and `rows` numbered rows.
    void MakeSource(const std::string &definitions, const std::string &values, int rows) {
        Run("Create Table w001b (" + definitions + ")");
        for (int i = 0; i < rows; ++i) {
            std::string row = values;
            for (std::size_t at = row.find('#'); at != std::string::npos; at = row.find('#')) {
                row.replace(at, 1, std::to_string(i));
            }
            Run("Insert Into w001b Values (" + row + ")");
        }
    }
};

/// Notes each position that a control shows.
class Watcher : public ktl::WindowPeer {
  public:
    void Invalidate(CWnd &window, bool) override {
        m_seen += std::to_string(static_cast<CProgressCtrl &>(window).GetPos()) + " ";
    }
    const std::string &Seen() const { return m_seen; }

  private:
    std::string m_seen;
};

class Titles : public ktl::WindowPeer {
  public:
    void Invalidate(CWnd &, bool) override {}
    void TextChanged(CWnd &, const CString &text) override { m_seen += ktl::ToUtf8(text) + "\n"; }
    const std::string &Seen() const { return m_seen; }

  private:
    std::string m_seen;
};

}  // namespace

TEST_F(TableSchema, NewTableReplacesAnOlderFile) {
    auto table = Open();
    ASSERT_EQ(table->CreateNewLayerTable(nullptr), 1);
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 ID 2 8 system\n1 ShapeID 2 8 system\n2 name 1 254\n3 remark 8 -1\n");
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    const CFields *former = table->GetTableFields();
    ASSERT_EQ(table->CreateNewLayerTable(table->GetTableFields()), 1);
    EXPECT_EQ(ListOf(former), ListOf(table->GetTableFields())) << "the former list lives on";
    EXPECT_EQ(table->GetRecordCount(1), 0);
    const auto opened = Open();
    EXPECT_EQ(ListOf(opened->GetTableFields()), "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 254\n3 remark 8 4\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableSchema, NewTableFailsOverAFileInUse) {
    auto table = Open();
    ASSERT_EQ(table->CreateNewLayerTable(nullptr), 1);
    CFile held(m_path + "\\w001.dbf", CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(table->CreateNewLayerTable(nullptr), 0);
    held.Close();
    EXPECT_EQ(table->CreateNewLayerTable(nullptr), 1);
    CTable_Local_dbf unconnected;
    EXPECT_EQ(unconnected.CreateNewLayerTable(nullptr), 0);
    // Two date columns are one name twice.
    EXPECT_EQ(Open()->CreateNewLayerTable(Columns({Field("a", DATA_DATETIME), Field("b", DATA_DATETIME)}).get()), 0);
}

TEST_F(TableSchema, ForeignTableGetsNumberedRows) {
    MakeSource("[name] Char(10),[size] numeric(20,10),[note] memo", "'n#',#.25,'memo #'", 1000);
    auto table = Open();
    ASSERT_EQ(table->CreateDBFTable("label", "w001", nullptr, nullptr), 1);
    EXPECT_EQ(table->GetRecordCount(1), 1000);
    const ktl::ado::RecordsetRef rows = m_ado.GetRecordset("Select * From w001", 1, 0);
    ASSERT_TRUE(rows);
    for (int i = 0; i < 1000; ++i, rows->MoveNext()) {
        const std::string n = std::to_string(i);
        const std::string want[] = {n, n, "n" + n, n + ".25", "memo " + n};
        for (int c = 0; c < 5; ++c) ASSERT_EQ(m_ado.GetItemValue(rows, c), want[c].c_str()) << i;
    }
    EXPECT_EQ(ListOf(table->GetTableFields()),
              "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 10\n3 size 4 20\n4 note 8 4\n");
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(777, 0));
    EXPECT_EQ(ValuesOf(row.get()), "777|777|n777|777.25|memo 777|");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableSchema, SystemColumnsOfAForeignTableAreMadeAnew) {
    MakeSource("[ID] int,[ShapeID] int,[name] Char(5)", "7,8,'n#'", 3);
    ASSERT_EQ(Open()->CreateDBFTable("", "w001", nullptr, nullptr), 1);
    EXPECT_EQ(Rows("Select * From w001"), "0|0|n0\n1|1|n1\n2|2|n2\n");
}

TEST_F(TableSchema, ForeignTableWithoutColumnsOfItsOwn) {
    MakeSource("[ID] int,[ShapeID] int", "9,9", 5);
    EXPECT_EQ(Open()->CreateDBFTable("", "w001", nullptr, nullptr), 1);
    EXPECT_EQ(Rows("Select * From w001"), "0|0\n") << "only the last insert is sent";
    MakeSource("[ID] int,[ShapeID] int", "9,9", 0);
    EXPECT_EQ(Open()->CreateDBFTable("", "w001", nullptr, nullptr), 0);
    EXPECT_EQ(Open("w005")->CreateDBFTable("", "w005", nullptr, nullptr), 0) << "no source";
}

TEST_F(TableSchema, ProgressComesEvery50Rows) {
    MakeSource("[name] Char(5)", "'n#'", 120);
    CProgressCtrl control;
    CWnd window;
    Watcher watcher;
    Titles titles;
    control.SetPeer(&watcher);
    window.SetPeer(&titles);
    ASSERT_EQ(Open()->CreateDBFTable(ktl::FromUtf8("道路"), "w001", &control, &window), 1);
    EXPECT_EQ(titles.Seen(),
              "[道路]属性导入进度 50 / 120 = 41%\n[道路]属性导入进度 100 / 120 = 83%\n"
              "[道路]属性导入进度 120 / 120 = 100%\n");
    EXPECT_TRUE(watcher.Seen().ends_with("0 41 83 100 ")) << watcher.Seen();
    int lower = -1;
    int upper = -1;
    control.GetRange(lower, upper);
    EXPECT_TRUE(lower == 0 && upper == 100);
    ASSERT_EQ(Open()->CreateDBFTable("", "w001", &control, nullptr), 1) << "without a window";
    EXPECT_TRUE(watcher.Seen().ends_with("100 0 41 83 100 ")) << watcher.Seen();
}

TEST_F(TableSchema, AddedColumnReachesFileListAndBuffer) {
    auto table = Make({Field("name", DATA_CHAR, 5), Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID,name,note) Values (1,1,'one','memo one')");
    table->AddNewRecord(2);
    table->AddField(Field("size", DATA_NUMERIC));
    EXPECT_EQ(Rows("Select * From w001"), "1|1|one|memo one|\n");
    EXPECT_EQ(table->GetFieldByName("size")->nID, 4);
    const std::unique_ptr<CRecord> row(table->GetShapeProperty(2, 1));
    EXPECT_EQ(ValuesOf(row.get()), "2|2||||");
    EXPECT_EQ(m_app.Log(), "");
    table->AddField(Field("SIZE", DATA_INT));
    EXPECT_EQ(m_app.Logged(2), 1) << "there is one of that name";
    EXPECT_EQ(table->GetFieldCount(), 5);
    const std::unique_ptr<CRecord> same(table->GetShapeProperty(2, 1));
    EXPECT_EQ(same->GetValueCount(), 5);
}

TEST_F(TableSchema, ColumnThatStatementsCannotNameIsRefused) {
    // Otherwise no row of the table could be stored any more.
    auto table = Make({Field("order", DATA_CHAR, 5)});
    int logged = 0;
    for (const char *name : {"a b", "a-b", "12", "1e5", "Null", "true", "not", ""}) {
        EXPECT_EQ(Open("w002")->CreateNewLayerTable(Columns({Field(name, DATA_INT)}).get()), 0) << name;
        table->AddField(Field(name, DATA_INT));
        EXPECT_EQ(m_app.Logged(2), logged += 2) << name;
    }
    EXPECT_EQ(table->GetFieldCount(), 3);
    for (const char *name : {"2d", "from", "路"}) table->AddField(Field(ktl::FromUtf8(name).GetString(), DATA_INT));
    EXPECT_EQ(table->GetFieldCount(), 6);
    EXPECT_EQ(m_app.Logged(2), logged);
}

TEST_F(TableSchema, AddedColumnWithoutAListIsLogged) {
    Make({});
    Open()->AddField(Field("more", DATA_INT));
    EXPECT_EQ(m_app.Logged(100070), 1);
    EXPECT_EQ(Open()->DeleteField(Field("more", DATA_INT)), 0);
    EXPECT_EQ(m_app.Logged(100069), 1);
}

TEST_F(TableSchema, DroppedColumnStaysInTheBuffer) {
    auto table = Make({Field("name", DATA_CHAR, 5), Field("size", DATA_INT), Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID,name,size,note) Values (1,1,'one',5,'memo one')");
    table->AddNewRecord(2);
    EXPECT_EQ(table->DeleteField(*table->GetFieldByName("size")), 1);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|one|memo one\n");
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 id 2 4 system\n1 shapeid 2 4 system\n2 name 1 5\n4 note 8 -1\n");
    std::unique_ptr<CRecord> row(table->GetShapeProperty(2, 1));
    EXPECT_EQ(ValuesOf(row.get()), "2|2||0||");
    EXPECT_EQ(table->DeleteField(Field("none", DATA_INT)), 1) << "nothing to do is no failure";
    EXPECT_EQ(m_app.Log(), "");
    // An identifier that is there twice takes the other column's value too.
    CField twice = Field("twin", DATA_INT);
    twice.nID = 2;
    table->AddField(twice);
    EXPECT_EQ(table->DeleteField(twice), 1);
    row.reset(table->GetShapeProperty(2, 1));
    EXPECT_EQ(ValuesOf(row.get()), "2|2|0|||");
    EXPECT_EQ(table->GetFieldByName("name"), nullptr);
}

TEST_F(TableSchema, ListLosesAColumnThatTheFileKeeps) {
    auto table = Make({Field("name", DATA_CHAR, 5)});
    CField missing = Field("missing", DATA_INT);
    missing.nID = 9;
    table->GetTableFields()->AddField(missing);
    EXPECT_EQ(table->DeleteField(missing), 1);
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_EQ(table->GetFieldByName("missing"), nullptr);
}

TEST_F(TableSchema, ChangedColumnKeepsItsValues) {
    auto table = Make({Field("name", DATA_CHAR, 10), Field("size", DATA_INT)});
    Run("Insert Into w001 Values (1,1,'abcdefghij',42)");
    CField field = *table->GetFieldByName("name");
    field.strName = "title";
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select title From w001"), "abcdefghij\n");
    field.nLength = 4;
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select title From w001"), "abcd\n");
    field = *table->GetFieldByName("size");
    field.eType = DATA_CHAR;
    field.nLength = 12;
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|abcd|42\n");
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 title 1 4\n3 size 1 12\n");
    EXPECT_EQ(m_app.Log(), "");
    // A table that was not asked for its columns yet reads them.
    field.strName = "length";
    Open()->UpdateField(field);
    EXPECT_EQ(Rows("Select length From w001"), "42\n");
    // The list follows even when the store refuses.
    field.strName = "ID";
    table->UpdateField(field);
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_EQ(table->GetFieldAt(3)->strName, "ID");
}
