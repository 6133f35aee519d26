#include "ktl/platform/progress_ctrl.h"
#include "tests/attributes/table_fixture.h"

namespace ktl::test {
namespace {

class TableSchema : public TableTest {
  protected:
    /// w001b with these columns and rows, in whose values # is the row's number.
    void MakeSource(const std::string &definitions, const std::string &values, int rows) {
        Run("Create Table w001b (" + definitions + ")");
        for (int i = 0; i < rows; ++i) {
            CString row(values);
            row.Replace("#", std::to_string(i).c_str());
            Run("Insert Into w001b Values (" + std::string(row.View()) + ")");
        }
    }
};

/// Notes a window's texts and a control's positions.
class Watcher : public WindowPeer {
  public:
    void Invalidate(CWnd &window, bool) override {
        const auto *control = dynamic_cast<CProgressCtrl *>(&window);
        if (control != nullptr) m_seen += std::to_string(control->GetPos()) + " ";
    }
    void TextChanged(CWnd &, const CString &text) override { m_seen += ToUtf8(text) + "\n"; }
    const std::string &Seen() const { return m_seen; }

  private:
    std::string m_seen;
};

TEST_F(TableSchema, NewTableReplacesAnOlderFile) {
    auto table = Standard();
    const std::string standard = "0 ID 2 8 system\n1 ShapeID 2 8 system\n2 name 1 254\n3 remark 8 -1\n";
    EXPECT_EQ(ListOf(table->GetTableFields()), standard);
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    const CFields *former = table->GetTableFields();
    ASSERT_EQ(table->CreateNewLayerTable(table->GetTableFields()), 1);
    EXPECT_EQ(ListOf(table->GetTableFields()), standard);
    EXPECT_EQ(ListOf(former), standard) << "the former list lives on";
    EXPECT_EQ(table->GetRecordCount(1), 0);
    EXPECT_EQ(ListOf(Open()->GetTableFields()), "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 254\n3 remark 8 4\n");
    EXPECT_EQ(m_app.Log(), "");
    CFile held(m_path + "\\w001.dbf", CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(table->CreateNewLayerTable(nullptr), 0) << "the file is in use";
    held.Close();
    EXPECT_EQ(table->CreateNewLayerTable(nullptr), 1);
    EXPECT_EQ(CTable_Local_dbf().CreateNewLayerTable(nullptr), 0);
    // Two date columns are one name twice.
    EXPECT_EQ(Open()->CreateNewLayerTable(Columns({Field("a", DATA_DATETIME), Field("b", DATA_DATETIME)}).get()), 0);
}

TEST_F(TableSchema, ForeignTableGetsNumberedRows) {
    MakeSource("[ID] int,[name] Char(10),[size] numeric(20,10),[note] memo", "7,'n#',#.25,'memo #'", 300);
    auto table = Open();
    EXPECT_EQ(During([&] { EXPECT_EQ(table->CreateDBFTable("label", "w001", nullptr, nullptr), 1); }),
              "Create Table w001 ([ID] int,[ShapeID] int,[name] Char(10),[size] numeric(20,10),[note] memo)\n"
              "Insert Into w001(name,size,note) Select name,size,note From w001b\nUpdate w001 Set ID=0,ShapeID=0\n");
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const std::string n = std::to_string(i);
        expected.append(n).append("|" + n).append("|n" + n).append("|" + n + ".25").append("|memo " + n + "\n");
    }
    EXPECT_EQ(Rows("Select * From w001"), expected);
    EXPECT_EQ(ListOf(table->GetTableFields()),
              "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 name 1 10\n3 size 4 20\n4 note 8 4\n");
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(TableSchema, ForeignTableWithoutColumnsOfItsOwn) {
    MakeSource("[ID] int,[ShapeID] int", "9,9", 5);
    EXPECT_EQ(During([&] { EXPECT_EQ(Open()->CreateDBFTable("", "w001", nullptr, nullptr), 1); }),
              "Create Table w001 ([ID] int,[ShapeID] int)\nSelect Count(0) From [w001b]\n"
              "Insert Into w001 (ShapeID) Values (4)\nUpdate w001 Set ID=0,ShapeID=0\n");
    EXPECT_EQ(Rows("Select * From w001"), "0|0\n");
    MakeSource("[ID] int,[ShapeID] int", "9,9", 0);
    EXPECT_EQ(Open()->CreateDBFTable("", "w001", nullptr, nullptr), 0);
    EXPECT_EQ(Open("w005")->CreateDBFTable("", "w005", nullptr, nullptr), 0) << "no source";
}

TEST_F(TableSchema, ProgressComesEvery50Rows) {
    MakeSource("[name] Char(5)", "'n#'", 120);
    CProgressCtrl control;
    control.SetRange(5, 50);
    CWnd window;
    Watcher seen;
    control.SetPeer(&seen);
    window.SetPeer(&seen);
    ASSERT_EQ(Open()->CreateDBFTable(FromUtf8("道路"), "w001", &control, &window), 1);
    EXPECT_TRUE(
        seen.Seen().ends_with("0 41 [道路]属性导入进度 50 / 120 = 41%\n83 [道路]属性导入进度 100 / 120 = 83%\n"
                              "100 [道路]属性导入进度 120 / 120 = 100%\n"))
        << seen.Seen();
    int lower = -1;
    int upper = -1;
    control.GetRange(lower, upper);
    EXPECT_TRUE(lower == 0 && upper == 100);
    ASSERT_EQ(Open()->CreateDBFTable("", "w001", &control, nullptr), 1) << "without a window";
    EXPECT_TRUE(seen.Seen().ends_with("0 41 83 100 ")) << seen.Seen();
}

TEST_F(TableSchema, AddedColumnReachesFileListAndBuffer) {
    auto table = Make({Field("name", DATA_CHAR, 5), Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID,name,note) Values (1,1,'one','memo one')");
    table->AddNewRecord(2);
    EXPECT_EQ(During([&] { table->AddField(Field("size", DATA_NUMERIC)); }),
              "USE IN SELECT ('w001')\nUSE w001 EXCLUSIVE\nAlter Table w001 Add [size] numeric(20,10)\n");
    EXPECT_EQ(Rows("Select * From w001"), "1|1|one|memo one|\n");
    EXPECT_EQ(table->GetFieldByName("size")->nID, 4);
    EXPECT_EQ(m_app.Log(), "");
    table->AddField(Field("SIZE", DATA_INT));
    EXPECT_EQ(m_app.Logged(2), 1) << "there is one of that name";
    EXPECT_EQ(table->GetFieldCount(), 5);
    EXPECT_EQ(RowOf(*table, 2, 1), "2|2||||");
    table.reset();
    // A table that was not asked for its columns has no list to change.
    Open()->AddField(Field("more", DATA_INT));
    EXPECT_EQ(m_app.Logged(100070), 1);
    EXPECT_EQ(Open()->DeleteField(Field("more", DATA_INT)), 0);
    EXPECT_EQ(m_app.Logged(100069), 1);
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
    for (const char *name : {"2d", "from", "路"}) table->AddField(Field(FromUtf8(name).GetString(), DATA_INT));
    EXPECT_EQ(table->GetFieldCount(), 6);
    EXPECT_EQ(m_app.Logged(2), logged);
}

TEST_F(TableSchema, DroppedColumnStaysInTheBuffer) {
    auto table = Make({Field("name", DATA_CHAR, 5), Field("size", DATA_INT), Field("note", DATA_MEMO, -1)});
    Run("Insert Into w001 (ID,ShapeID,name,size,note) Values (1,1,'one',5,'memo one')");
    table->AddNewRecord(2);
    EXPECT_EQ(During([&] { EXPECT_EQ(table->DeleteField(*table->GetFieldByName("size")), 1); }),
              "USE IN SELECT ('w001')\nALTER TABLE [w001] DROP COLUMN [size]\n");
    EXPECT_EQ(Rows("Select * From w001"), "1|1|one|memo one\n");
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 id 2 4 system\n1 shapeid 2 4 system\n2 name 1 5\n4 note 8 -1\n");
    EXPECT_EQ(RowOf(*table, 2, 1), "2|2||0||");
    EXPECT_EQ(During([&] { EXPECT_EQ(table->DeleteField(Field("none", DATA_INT)), 1); }), "USE IN SELECT ('w001')\n");
    EXPECT_EQ(m_app.Log(), "");
    // An identifier that is there twice takes the other column's value too.
    const CField twice = Field("twin", DATA_INT, 8, 2);
    table->AddField(twice);
    EXPECT_EQ(table->DeleteField(twice), 1);
    EXPECT_EQ(RowOf(*table, 2, 1), "2|2|0|||");
    EXPECT_EQ(table->GetFieldByName("name"), nullptr);
    // The list loses what the file never had.
    const CField missing = Field("missing", DATA_INT, 8, 9);
    table->GetTableFields()->AddField(missing);
    EXPECT_EQ(table->DeleteField(missing), 1);
    EXPECT_EQ(m_app.Logged(2), 1);
    EXPECT_EQ(table->GetFieldByName("missing"), nullptr);
}

TEST_F(TableSchema, ChangedColumnKeepsItsValues) {
    auto table = Make({Field("name", DATA_CHAR, 10), Field("size", DATA_INT)});
    Run("Insert Into w001 Values (1,1,'abcdefghij',42)");
    CField field = *table->GetFieldByName("name");
    field.strName = "Name";
    EXPECT_EQ(During([&] { table->UpdateField(field); }),
              "USE IN SELECT ('w001')\nAlter Table w001 Rename name to Name\n");
    field.strName = "title";
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select title From w001"), "abcdefghij\n");
    field.nLength = 4;
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select title From w001"), "abcd\n");
    field.nDecimal = 2;
    EXPECT_EQ(During([&] { table->UpdateField(field); }),
              "USE IN SELECT ('w001')\nALTER TABLE [w001] ALTER COLUMN [title] Char(4)\n");
    EXPECT_EQ(During([&] { table->UpdateField(field); }), "USE IN SELECT ('w001')\n");
    field = *table->GetFieldByName("size");
    field.eType = DATA_CHAR;
    table->UpdateField(field);
    EXPECT_EQ(Rows("Select * From w001"), "1|1|abcd|42\n");
    EXPECT_EQ(ListOf(table->GetTableFields()), "0 ID 2 4 system\n1 ShapeID 2 4 system\n2 title 1 4\n3 size 1 8\n");
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

}  // namespace
}  // namespace ktl::test
