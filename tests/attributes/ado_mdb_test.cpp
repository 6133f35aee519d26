#include "ktl/attributes/ado_local_mdb.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_mdb.h"
#include "tests/support/application.h"

namespace {

/// A copy of the sample file, opened. Texts are UTF-8.
class AdoMdb : public ::testing::Test {
  protected:
    AdoMdb() : m_content(Sample()) {
        m_app.Folder().Write("sample.mdb", m_content);
        EXPECT_EQ(m_ado.ConnDB(m_app.Folder().Name("sample.mdb")), 1);
    }

    static std::string Sample() {
        std::ifstream file(KTL_SOURCE_DIR "/tests/platform/ado/data/sample.mdb", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    ktl::ado::RecordsetRef Open(const char *sql) { return m_ado.GetRecordset(ktl::FromUtf8(sql), 1, 0); }
    std::string Cell(const ktl::ado::RecordsetRef &rows, const char *field) {
        return ktl::ToUtf8(m_ado.GetItemValue(rows, ktl::FromUtf8(field)));
    }

    ktl::test::Application m_app;
    std::string m_content;
    CAdo_Local_mdb m_ado;
};

}  // namespace

TEST_F(AdoMdb, ConnectionIsMadeOnceAndAnewWhenClosed) {
    EXPECT_EQ(m_ado.GetConnection()->GetConnectionTimeout(), 5000);
    const CString path = m_ado.GetDBPath();
    EXPECT_EQ(m_ado.ConnDB("elsewhere.mdb"), 1) << "connected already";
    EXPECT_EQ(m_ado.GetDBPath(), path);
    m_ado.DisConnection();
    EXPECT_FALSE(Open("Select * From Users"));
    EXPECT_EQ(m_ado.ConnDB("elsewhere.mdb"), 0);
    EXPECT_EQ(m_app.Logged(2), 2);
    EXPECT_EQ(m_app.Questions().size(), 2u);
    EXPECT_EQ(m_ado.ConnDB(path), 1) << "a failure leaves no half connection";
    EXPECT_TRUE(Open("Select * From Users"));
}

TEST_F(AdoMdb, TablesAreCountedAndMeasured) {
    for (const char *table : {"users", "ALLTYPES", "点位表"}) EXPECT_EQ(m_ado.IsExistTable(ktl::FromUtf8(table)), 1);
    for (const char *table : {"user", "MSysObjects", ""}) EXPECT_EQ(m_ado.IsExistTable(table), 0) << table;
    EXPECT_EQ(m_ado.IsExist("Select * From Users Where UserSex = 'Male'"), 1);
    EXPECT_EQ(m_ado.IsExist("Select * From Users Where UserSex = 'none'"), 0);
    CAdo_Local &local = m_ado;
    EXPECT_EQ(local.GetRecordCount("AllTypes", ""), 500);
    EXPECT_EQ(local.GetRecordCount("AllTypes", "NameA Is Null"), 71);
    EXPECT_EQ(local.GetRecordCount(ktl::FromUtf8("点位表"), ktl::FromUtf8("名称 Like '%海'")), 1);
    EXPECT_EQ(m_ado.GetMaxValue("AllTypes", "MoneyV"), 6172.8);
    EXPECT_EQ(m_ado.GetMinValue("AllTypes", "DoubleV"), -198.9);
    EXPECT_EQ(m_app.Log(), "");
    EXPECT_EQ(m_ado.GetMaxValue("nowhere", "ID"), -1.0);
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(AdoMdb, CellsOfEveryTypeBecomeTexts) {
    const ktl::ado::RecordsetRef rows = Open("Select * From AllTypes Where ID In (1, 10) Order By ID");
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->GetRecordCount(), 2);
    const char *expected[][2] = {
        {"ID", "1"},           {"ByteN", "1"},        {"SmallN", "-249"},     {"Flag", "0"},
        {"SingleV", "0.25"},   {"DoubleV", "-198.9"}, {"MoneyV", "12.3456"},  {"DateV", "2000/1/2 12:59:30"},
        {"NAMEA", "item-001"}, {"NameCN", "关村"},    {"Note", "备注1 关村"}, {"Pic", ""}};
    for (const auto &[field, text] : expected) EXPECT_EQ(Cell(rows, field), text) << field;
    EXPECT_EQ(ktl::ToUtf8(m_ado.GetItemValue(rows, 9)), "关村");
    rows->MoveNext();
    EXPECT_EQ(Cell(rows, "NameCN"), "") << "a null cell";
    EXPECT_EQ(Cell(Open("Select * From Users Where UserId = 1"), "UserMarried"), "-1");
    EXPECT_EQ(m_app.Log(), "");
    EXPECT_EQ(m_ado.GetItemValue(rows, "none"), "");
    EXPECT_EQ(m_ado.GetItemValue(rows, 99), "");
    EXPECT_EQ(m_app.Logged(2), 2);
}

TEST_F(AdoMdb, ByteBlocksAreRead) {
    const ktl::ado::RecordsetRef rows = Open("Select * From AllTypes Where ID = 500");
    long size = 0;
    std::unique_ptr<unsigned char[]> block(m_ado.GetBLOBValue(rows, "Pic", size));
    ASSERT_TRUE(block);
    ASSERT_EQ(size, 9000);
    EXPECT_EQ(std::string(block.get(), block.get() + 4), "\xF4\xF5\xF8\xFD");
    block.reset(m_ado.GetBLOBValue(rows, "Note", size));
    EXPECT_FALSE(block) << "a memo is a text";
    block.reset(m_ado.GetBLOBValue(Open("Select * From AllTypes Where ID = 1"), "Pic", size));
    EXPECT_TRUE(!block && size == 0);
    EXPECT_EQ(m_app.Log(), "");
}

TEST_F(AdoMdb, WritingIsALoggedErrorAndChangesNothing) {
    const char *statements[] = {
        "Update w001 Set Name = 'x'",
        "Insert Into w001 (ID) Values (9)",
        "Delete From w001",
        "Create Table made (ID int)",
        "Alter Table w001 Add more int",
        "Alter Table w001 Rename Name To Title",
        "Drop Table w001",
    };
    int logged = 0;
    for (const char *sql : statements) {
        EXPECT_EQ(m_ado.ExecuteSql(sql), 0) << sql;
        EXPECT_EQ(m_app.Logged(2), ++logged) << sql;
        EXPECT_NE(m_app.Log().find(std::string("can only be read.\n") + sql + "\n"), std::string::npos) << m_app.Log();
    }
    unsigned char bytes[] = {1, 2, 3};
    m_ado.AddBLOBValue("Select Pic From AllTypes Where ID = 500", "Pic", bytes, 3, 0);
    EXPECT_EQ(m_app.Logged(2), ++logged);
    EXPECT_EQ(m_ado.CreateTable("made"), 1) << "nothing of its own";
    EXPECT_EQ(Cell(Open("Select * From w001 Where ID = 3"), "Name"), "pt3");
    EXPECT_TRUE(m_app.Folder().Read("sample.mdb") == m_content);
}

TEST_F(AdoMdb, TableHasItsKindAndABufferOnly) {
    CTable_Local_mdb table;
    EXPECT_EQ(table.GetTableKind(), 2);
    auto record = std::make_unique<CRecord>(7);
    record->AddValue("7");
    table.AddNewRecord(record.release());
    EXPECT_EQ(table.GetNewRecordCount(), 1);
    EXPECT_EQ(table.GetRecordCount(1), 0) << "the base class counts nothing";
    EXPECT_EQ(table.GetShapeProperty(7, 1), nullptr);
    EXPECT_FALSE(table.GetRecordset("Select * From w001"));
    EXPECT_EQ(m_app.Log(), "");
}
