// What a table sends to its store, to the letter: a host may stand between the two.

#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/dbase/folder.h"
#include "ktl/platform/ado/sql/statement_connection.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/mem_file.h"
#include "tests/attributes/table_fixture.h"

namespace {

using ktl::ado::ConnectionRef;

std::string *sent = nullptr;

/// Passes everything on and notes the statements while `sent` is set.
class Watched final : public ktl::ado::Connection {
  public:
    explicit Watched(ConnectionRef behind) : m_behind(std::move(behind)) {}

    long long Execute(const CString &statement) override {
        Note(statement);
        return m_behind->Execute(statement);
    }
    ktl::ado::RecordsetRef OpenRecordset(const CString &statement, bool clientCursor) override {
        Note(statement);
        return m_behind->OpenRecordset(statement, clientCursor);
    }
    ktl::ado::RecordsetRef OpenSchema(int schema) override { return m_behind->OpenSchema(schema); }
    void Close() override { m_behind->Close(); }
    bool IsOpen() const override { return m_behind->IsOpen(); }

  private:
    static void Note(const CString &statement) {
        if (sent != nullptr) *sent += ktl::ToUtf8(statement) + "\n";
    }
    ConnectionRef m_behind;
};

ConnectionRef OpenWatched(const ktl::ado::ConnectionString &settings) {
    using namespace ktl::ado;
    const auto folder = std::make_shared<dbase::Folder>(settings.Get("Data Source"));
    return std::make_shared<Watched>(std::make_shared<sql::StatementConnection>(folder));
}

class TableStatements : public ktl::test::TableTest {
  protected:
    TableStatements() { static const ktl::ado::ProviderRegistration registration("VFPOLEDB.1", OpenWatched); }
    ~TableStatements() override { sent = nullptr; }

    /// What `action` sends, a line each.
    template <class Action>
    std::string During(Action action) {
        m_sent.clear();
        sent = &m_sent;
        action();
        sent = nullptr;
        return m_sent;
    }

    std::unique_ptr<CTable_Local_dbf> Standard() {
        auto table = Open();
        EXPECT_EQ(table->CreateNewLayerTable(nullptr), 1);
        return table;
    }

    std::string m_sent;
};

}  // namespace

TEST_F(TableStatements, OfRows) {
    const auto table = Standard();
    Run("Insert Into w001 (ID,ShapeID) Values (1,1)");
    CArray<CString, CString> values;
    CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> hits;
    const auto set = [&](const char *field, const char *value) {
        auto shapes = Numbers({1});
        auto flags = Numbers({0});
        table->UpdatePropertyValue(shapes, flags, field, value);
    };
    const auto check = [&](auto action, const char *statements) { EXPECT_EQ(During(action), statements); };
    check([&] { table->GetRecordCount(1); }, "Select Count(0) From [w001]\n");
    check([&] { table->GetRecordCount(0); }, "Select Count(0) From [w001] Where ID<>-1\n");
    check([&] { delete table->GetShapeProperty(1, 0); }, "Select * From w001 Where ShapeID=1\n");
    check([&] { table->DeleteRecord(1, 0); }, "Update w001 Set ID = -1 Where ShapeID = 1\n");
    check([&] { table->UpdatePropertyValue(7, "name", "v"); }, "Update [w001] Set [name]='v'\n");
    check([&] { set("name", "v"); }, "Update w001 Set name='v' Where ShapeID=1\n");
    check([&] { set("ID", "12.9"); }, "Update w001 Set ID=12 Where ShapeID=1\n");
    table->GetFieldByName("ID")->nDecimal = 1;
    check([&] { set("ID", "-2"); }, "Update w001 Set ID=-2.000000 Where ShapeID=1\n");
    check([&] { set("remark", "'\t\r\n"); }, "Update w001 Set remark=''''+CHR(9)+CHR(10)+CHR(10)+'' Where ShapeID=1\n");
    check([&] { table->ReadValueArrayBySql("name", values, 0); }, "Select name From w001 Where ID <> -1\n");
    check([&] { table->ReadValueArrayBySql("name", values, 1); }, "Select name From w001\n");
    check([&] { table->SearchByKeyWords(0, "", 2, "a_", hits); },
          "Select Top 200 ShapeID,name From w001 Where name Like '%a_%' And ID <> -1 Order By ShapeID\n");
    CAdo_Local_dbf ado;
    ado.ConnDB(m_path);
    check([&] { ado.GetMaxValue("w001", "ID"); }, "Select Max(ID) From [w001]\n");
    check([&] { ado.GetMinValue("w001", "ID"); }, "Select Min(ID) From [w001]\n");
}

TEST_F(TableStatements, OfSaving) {
    const auto table = Standard();
    for (const int shape : {3, 4}) table->AddNewRecord(shape);
    table->UpdateNewRecordPropertyValue(3, 2, "it's");
    table->UpdateNewRecordPropertyValue(3, 3, "a\t'\r\nb");
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    EXPECT_EQ(During([&] { table->Serialize(archive, 205); }),
              "Insert Into [w001] (ID,ShapeID,name) Values (3,3,'it''s')\n"
              "Update w001 Set remark='a    '''+CHR(10)+''+CHR(10)+'b'+CHR(10)+'' Where ShapeID=3\n"
              "Insert Into [w001] (ID,ShapeID,name) Values (4,4,'')\n"
              "Update w001 Set remark=''+CHR(10)+'' Where ShapeID=4\n"
              "Create Table w001b ([ID] int,[ShapeID] int,[name] Char(254),[remark] memo)\n"
              "Insert Into [w001b] Select ID,ShapeID,name,remark From [w001] Where ID <> -1\n");
}

TEST_F(TableStatements, OfColumns) {
    const auto table = Standard();
    EXPECT_EQ(During([&] { table->AddField(Field("size", DATA_NUMERIC)); }),
              "USE IN SELECT ('w001')\nUSE w001 EXCLUSIVE\nAlter Table w001 Add [size] numeric(20,10)\n");
    CField field = *table->GetFieldByName("size");
    field.strName = "Size";
    field.nDecimal = 2;
    EXPECT_EQ(During([&] { table->UpdateField(field); }),
              "USE IN SELECT ('w001')\nAlter Table w001 Rename size to Size\n"
              "ALTER TABLE [w001] ALTER COLUMN [Size] numeric(20,10)\n");
    EXPECT_EQ(During([&] { table->UpdateField(field); }), "USE IN SELECT ('w001')\n");
    EXPECT_EQ(During([&] { table->DeleteField(field); }),
              "USE IN SELECT ('w001')\nALTER TABLE [w001] DROP COLUMN [Size]\n");
    EXPECT_EQ(During([&] { table->DeleteField(field); }), "USE IN SELECT ('w001')\n");
}

TEST_F(TableStatements, OfForeignTables) {
    Run("Create Table w002b ([name] Char(5),[note] memo)");
    EXPECT_EQ(During([&] { Open("w002")->CreateDBFTable("", "w002", nullptr, nullptr); }),
              "Create Table w002 ([ID] int,[ShapeID] int,[name] Char(5),[note] memo)\n"
              "Insert Into w002(name,note) Select name,note From w002b\nUpdate w002 Set ID=0,ShapeID=0\n");
    Run("Create Table w003b ([ID] int)");
    Run("Insert Into w003b Values (5)");
    Run("Insert Into w003b Values (6)");
    EXPECT_EQ(During([&] { Open("w003")->CreateDBFTable("", "w003", nullptr, nullptr); }),
              "Create Table w003 ([ID] int,[ShapeID] int)\nSelect Count(0) From [w003b]\n"
              "Insert Into w003 (ShapeID) Values (1)\nUpdate w003 Set ID=0,ShapeID=0\n");
}
