#include <climits>

#include "tests/attributes/table_fixture.h"

namespace ktl::test {
namespace {

CField Field(const char *name, ENUM_DATA type = DATA_INT, int id = -1) {
    return CField(id, name, type, 0);
}

/// Each field's number and name.
std::string Names(CFields &fields) {
    std::string names;
    for (int i = 0; i < fields.GetFieldCount(); ++i) {
        names += std::to_string(fields.GetFieldAt(i)->nID) + fields.GetFieldAt(i)->strName.GetString() + " ";
    }
    return names;
}

struct Fields : ::testing::Test {
    Fields() { m_fields.InitToDefault(); }
    CFields m_fields;
};

TEST(Field, TextsOfEveryType) {
    const struct {
        int type;
        int length;
        const char *name;
        const char *definition;
    } cases[] = {{-1, 9, "", ""},
                 {0, 9, "", ""},
                 {DATA_CHAR, 254, "字符型", "[Road] Char(254)"},
                 {DATA_CHAR, 255, "字符型", "[Road] Char(254)"},
                 {DATA_INT, 9, "整型", "[Road] int"},
                 {DATA_BIGINT, 9, "长整型", "[Road] bigint"},
                 {DATA_NUMERIC, 9, "数字型", "[Road] numeric(20,10)"},
                 {DATA_BOOL, 9, "布尔型", "[Road] int"},
                 {DATA_DATETIME, 9, "日期型", "[s] datetime"},  // whatever its name
                 {DATA_BINARY, 9, "二进制", "[Road] image"},
                 {DATA_MEMO, -1, "备注型", "[Road] memo"},
                 {9, 9, "", ""},
                 {INT_MIN, 9, "", ""}};
    for (const auto &c : cases) {
        CField field = Field("Road", static_cast<ENUM_DATA>(c.type));
        field.nLength = c.length;
        EXPECT_EQ(ToUtf8(field.GetSQLString()), c.definition) << c.type;
        EXPECT_EQ(ToUtf8(field.GetTypeString()), c.name) << c.type;
    }
}

TEST(Field, EqualityLeavesOutCaseAndSpareWords) {
    const CField field(3, "Name", DATA_CHAR, 5);
    EXPECT_EQ(field.bReadOnly, 1);
    CField same = field;
    same.strName = "nAME";
    same.nSpare1 = same.nSpare2 = same.nSpare3 = 9;
    EXPECT_TRUE(field == same && !(field != same));
    std::vector<CField> others(7, field);
    others[0].strName = "Nam";
    others[1].nID = others[2].nLength = others[3].nDecimal = 4;
    others[4].eType = DATA_INT;
    others[5].bReadOnly = 0;
    others[6].bSystem = 1;
    for (const CField &other : others) EXPECT_TRUE(field != other) << &other - others.data();
}

TEST_F(Fields, StandardColumns) {
    m_fields.InitToDefault();  // every name is there already
    EXPECT_EQ(Names(m_fields), "0ID 1ShapeID 2name 3remark ");
    const int lengths[] = {8, 8, 254, -1};
    const ENUM_DATA types[] = {DATA_INT, DATA_INT, DATA_CHAR, DATA_MEMO};
    for (int i = 0; i < 4; ++i) {
        const CField &field = *m_fields.GetFieldAt(i);
        EXPECT_TRUE(field.nLength == lengths[i] && field.eType == types[i]) << i;
        EXPECT_TRUE(field.bReadOnly == (i < 2) && field.bSystem == (i < 2)) << i;
    }
}

TEST_F(Fields, AddRefusesANameThatDiffersInCaseOnly) {
    EXPECT_EQ(m_fields.AddField(Field("SHAPEID")), 0);
    EXPECT_EQ(m_fields.AddField(Field("*")), 1);
    EXPECT_EQ(m_fields.AddField(Field("*", DATA_INT, 0)), 1);
    CField given = Field("Road", DATA_INT, 77);
    given.nSpare1 = given.nSpare2 = given.nSpare3 = 5;
    EXPECT_EQ(m_fields.AddField(given), 1);
    EXPECT_EQ(Names(m_fields), "0ID 1ShapeID 2name 3remark 4* 0* 77Road ");
    const CField &stored = *m_fields.GetFieldByName("ROAD");
    EXPECT_TRUE(stored.nSpare1 == 5 && stored.nSpare2 == 0 && stored.nSpare3 == 5);
    EXPECT_EQ(m_fields.IsExist("*"), 0);
    EXPECT_EQ(m_fields.IsExist("rEmark"), 1);
    CFields copy;
    copy.AddField(Field("old"));
    copy.Copy(&m_fields);
    copy.Copy(&copy);
    copy.Copy(nullptr);
    EXPECT_EQ(Names(copy), Names(m_fields));
}

// In GBK the second byte of 丄 is that of 'A'; folding its case would make it 乤.
TEST_F(Fields, CaseIsFoldedByCharacters) {
    for (const char *name : {"丄", "乤"}) EXPECT_EQ(m_fields.AddField(Field(FromUtf8(name))), 1);
    EXPECT_EQ(m_fields.DeleteFieldByName("none"), 0);
    EXPECT_NE(m_fields.GetFieldByName(FromUtf8("丄")), nullptr);
}

TEST_F(Fields, LookingPastTheEnd) {
    const Application application;
    EXPECT_EQ(CFields().GetFieldByID(0), nullptr);
    EXPECT_EQ(m_fields.GetFieldByID(1), m_fields.GetFieldAt(1));
    EXPECT_EQ(m_fields.GetFieldByID(99), m_fields.GetFieldAt(3)) << "the last for an unknown one";
    EXPECT_EQ(m_fields.GetFieldByName("none"), nullptr);
    EXPECT_EQ(application.Log(), "");
    EXPECT_EQ(m_fields.GetFieldAt(4), nullptr);
    EXPECT_NE(application.Log().find("异常:100100\n超出索引范围\n"), std::string::npos);
    EXPECT_EQ(application.Questions().size(), 1u);
    EXPECT_THROW(m_fields.GetFieldAt(-1), CInvalidArgException);
    EXPECT_THROW(m_fields.RemoveFieldAt(4), CInvalidArgException);
}

TEST_F(Fields, UpdateFindsByIDAndDeletionLeavesLowerCaseBehind) {
    CField field = Field("Renamed", DATA_NUMERIC, 2);
    field.nSpare2 = field.nSpare3 = 5;
    EXPECT_EQ(m_fields.UpdateField(field), 1);
    EXPECT_TRUE(m_fields.GetFieldAt(2)->nSpare2 == 5 && m_fields.GetFieldAt(2)->nSpare3 == 0);
    EXPECT_EQ(m_fields.UpdateField(Field("x", DATA_INT, 9)), 0);
    EXPECT_EQ(Names(m_fields), "0ID 1ShapeID 2Renamed 3remark ");
    m_fields.AddField(Field("After"));
    EXPECT_EQ(m_fields.DeleteFieldByName("REMARK"), 1);
    EXPECT_EQ(Names(m_fields), "0id 1shapeid 2renamed 4After ");
    EXPECT_EQ(m_fields.DeleteFieldByName("none"), 0);
    // Positions and identifiers have parted: the new column takes the position.
    EXPECT_EQ(m_fields.AddField(Field("next")), 1);
    EXPECT_EQ(Names(m_fields), "0id 1shapeid 2renamed 4after 4next ");
}

TEST(Record, ValuesOutOfRange) {
    const Application application;
    CRecord record(7);
    for (const char *value : {"a", "b", "c"}) record.AddValue(value);
    for (const int index : {-1, 3, INT_MAX}) record.SetValueAt(index, "x");
    EXPECT_EQ(application.Log(), "");
    EXPECT_EQ(record.GetValueAt(3), CString());
    EXPECT_EQ(record.GetValueAt(-1), CString());
    EXPECT_EQ(application.Logged(100066), 2);
    EXPECT_THROW(record.RemoveValueAt(3), CInvalidArgException);
    record.SetValueAt(2, "z");
    record.RemoveValueAt(1);
    record.SetValueCount(3);
    EXPECT_EQ(ListOf(record.arrValues), "a|z||");
}

TEST(Record, CopiesAndClones) {
    const Application application;
    CRecord record(7);
    record.AddValue("a");
    record.bDeleted = 1;
    const std::unique_ptr<CRecord> clone(record.Clone());
    CRecord other(1);
    other.AddValue("old");
    other.Copy(&record);
    record.SetValueAt(0, "changed");
    other.Copy(&other);
    EXPECT_EQ(application.Log(), "");
    other.Copy(nullptr);
    EXPECT_EQ(application.Logged(100064), 1);
    for (const CRecord *copy : {clone.get(), &other}) {
        EXPECT_TRUE(copy->nShapeID == 7 && copy->bDeleted == 1 && ListOf(copy->arrValues) == "a|");
    }
    record.AddValue("w");
    other.CopyValueArray(record.arrValues);
    EXPECT_TRUE(other.nShapeID == 7 && ListOf(other.arrValues) == "changed|w|");
}

}  // namespace
}  // namespace ktl::test
