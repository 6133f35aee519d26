#include "ktl/attributes/fields.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "ktl/attributes/record.h"
#include "ktl/platform/exception.h"
#include "tests/support/application.h"

namespace {

using ktl::test::Application;

CField Field(const char *name, ENUM_DATA type = DATA_INT, int id = -1) {
    return CField(id, name, type, 0);
}

std::string Names(const CFields &fields) {
    CArray<CField, CField> array;
    fields.GetFieldArray(array);
    std::string names;
    for (const CField &field : array) names += std::to_string(field.nID) + field.strName.GetString() + " ";
    return names;
}

CFields Standard() {
    CFields fields;
    fields.InitToDefault();
    return fields;
}

}  // namespace

TEST(Field, TextsOfEveryType) {
    struct Case {
        int type;
        int length;
        const char *name;
        const char *definition;
    };
    const Case cases[] = {
        {-1, 9, "", ""},
        {0, 9, "", ""},
        {DATA_CHAR, 20, "字符型", "[Road] Char(20)"},
        {DATA_CHAR, 254, "字符型", "[Road] Char(254)"},
        {DATA_CHAR, 300, "字符型", "[Road] Char(254)"},
        {DATA_INT, 9, "整型", "[Road] int"},
        {DATA_BIGINT, 9, "长整型", "[Road] bigint"},
        {DATA_NUMERIC, 9, "数字型", "[Road] numeric(20,10)"},
        {DATA_BOOL, 9, "布尔型", "[Road] int"},
        {DATA_DATETIME, 9, "日期型", "[s] datetime"},  // whatever its name
        {DATA_BINARY, 9, "二进制", "[Road] image"},
        {DATA_MEMO, -1, "备注型", "[Road] memo"},
        {9, 9, "", ""},
        {INT_MAX, 9, "", ""},
        {INT_MIN, 9, "", ""},
    };
    for (const Case &c : cases) {
        CField field = Field("Road", static_cast<ENUM_DATA>(c.type));
        field.nLength = c.length;
        EXPECT_EQ(ktl::ToUtf8(field.GetSQLString()), c.definition) << c.type;
        EXPECT_EQ(ktl::ToUtf8(field.GetTypeString()), c.name) << c.type;
    }
    EXPECT_EQ(ktl::ToUtf8(CField::GetTypeString(DATA_MEMO)), "备注型");
}

TEST(Field, EqualityLeavesOutCaseAndSpareWords) {
    CField field(3, "Name", DATA_CHAR, 5);
    EXPECT_EQ(field.bReadOnly, 1);
    CField other = field;
    other.strName = "nAME";
    other.nSpare1 = other.nSpare2 = other.nSpare3 = 9;
    EXPECT_TRUE(field == other && !(field != other));
    const auto differs = [&](auto change) {
        CField changed = field;
        change(changed);
        return field != changed;
    };
    EXPECT_TRUE(differs([](CField &f) { f.strName = "Nam"; }));
    EXPECT_TRUE(differs([](CField &f) { f.nID = 4; }));
    EXPECT_TRUE(differs([](CField &f) { f.nLength = 4; }));
    EXPECT_TRUE(differs([](CField &f) { f.nDecimal = 4; }));
    EXPECT_TRUE(differs([](CField &f) { f.eType = DATA_INT; }));
    EXPECT_TRUE(differs([](CField &f) { f.bReadOnly = 0; }));
    EXPECT_TRUE(differs([](CField &f) { f.bSystem = 1; }));
    const CField copy = other;
    EXPECT_EQ(copy.nSpare2, 9);
}

TEST(Fields, StandardColumns) {
    CFields fields = Standard();
    EXPECT_EQ(Names(fields), "0ID 1ShapeID 2name 3remark ");
    const int lengths[] = {8, 8, 254, -1};
    const ENUM_DATA types[] = {DATA_INT, DATA_INT, DATA_CHAR, DATA_MEMO};
    for (int i = 0; i < 4; ++i) {
        const CField &field = *fields.GetFieldAt(i);
        EXPECT_EQ(field.nLength, lengths[i]) << i;
        EXPECT_EQ(field.eType, types[i]) << i;
        EXPECT_EQ(field.bReadOnly, i < 2) << i;
        EXPECT_EQ(field.bSystem, i < 2) << i;
    }
    fields.InitToDefault();  // every name is there already
    EXPECT_EQ(fields.GetFieldCount(), 4);
}

TEST(Fields, AddRefusesANameThatDiffersInCaseOnly) {
    CFields fields = Standard();
    EXPECT_EQ(fields.AddField(Field("SHAPEID")), 0);
    EXPECT_EQ(fields.AddField(Field("*")), 1);
    EXPECT_EQ(fields.AddField(Field("*")), 1);
    CField given = Field("Road", DATA_INT, 77);
    given.nSpare1 = given.nSpare2 = given.nSpare3 = 5;
    EXPECT_EQ(fields.AddField(given), 1);
    EXPECT_EQ(Names(fields), "0ID 1ShapeID 2name 3remark 4* 5* 77Road ");
    const CField &stored = *fields.GetFieldByName("ROAD");
    EXPECT_TRUE(stored.nSpare1 == 5 && stored.nSpare2 == 0 && stored.nSpare3 == 5);
    EXPECT_EQ(fields.IsExist("*"), 0);
    EXPECT_EQ(fields.IsExist("rEmark"), 1);
}

// In GBK the second byte of 丄 is that of 'A'; folding its case would make it another character.
TEST(Fields, CaseIsFoldedByCharacters) {
    CFields fields;
    ASSERT_EQ(ktl::FromUtf8("丄").View().back(), 'A');
    EXPECT_EQ(fields.AddField(Field(ktl::FromUtf8("丄"))), 1);
    EXPECT_EQ(fields.AddField(Field(ktl::FromUtf8("乤"))), 1);
    EXPECT_EQ(fields.DeleteFieldByName("none"), 0);
    EXPECT_NE(fields.GetFieldByName(ktl::FromUtf8("丄")), nullptr);
}

TEST(Fields, ByIDGivesTheLastWithoutAMatch) {
    CFields fields;
    EXPECT_EQ(fields.GetFieldByID(0), nullptr);
    fields.InitToDefault();
    EXPECT_EQ(fields.GetFieldByID(1), fields.GetFieldAt(1));
    EXPECT_EQ(fields.GetFieldByID(99), fields.GetFieldAt(3));
    EXPECT_EQ(fields.GetFieldByName("none"), nullptr);
}

TEST(Fields, IndexPastTheEndIsLoggedAndANegativeOneThrows) {
    const Application application;
    CFields fields = Standard();
    EXPECT_EQ(fields.GetFieldAt(4), nullptr);
    EXPECT_NE(application.Log().find("异常:100100\n超出索引范围\n"), std::string::npos);
    EXPECT_EQ(application.Questions().size(), 1u);
    EXPECT_THROW(fields.GetFieldAt(-1), CInvalidArgException);
    EXPECT_THROW(fields.RemoveFieldAt(4), CInvalidArgException);
    EXPECT_EQ(fields.GetFieldCount(), 4);
}

TEST(Fields, UpdateFindsByID) {
    CFields fields = Standard();
    CField field = Field("Renamed", DATA_NUMERIC, 2);
    field.nSpare2 = field.nSpare3 = 5;
    EXPECT_EQ(fields.UpdateField(field), 1);
    EXPECT_EQ(Names(fields), "0ID 1ShapeID 2Renamed 3remark ");
    EXPECT_TRUE(fields.GetFieldAt(2)->nSpare2 == 5 && fields.GetFieldAt(2)->nSpare3 == 0);
    EXPECT_EQ(fields.UpdateField(Field("x", DATA_INT, 9)), 0);
}

TEST(Fields, DeletionLeavesLowerCaseBehind) {
    CFields fields = Standard();
    fields.AddField(Field("After"));
    EXPECT_EQ(fields.DeleteFieldByName("REMARK"), 1);
    EXPECT_EQ(Names(fields), "0id 1shapeid 2name 4After ");
    EXPECT_EQ(fields.DeleteFieldByName("none"), 0);
    EXPECT_EQ(Names(fields), "0id 1shapeid 2name 4after ");
    // Positions and identifiers have parted: the new column takes the position.
    EXPECT_EQ(fields.AddField(Field("next")), 1);
    EXPECT_EQ(Names(fields), "0id 1shapeid 2name 4after 4next ");
}

TEST(Fields, CopiesReplace) {
    CFields fields = Standard();
    CFields other;
    other.AddField(Field("one"));
    fields.Copy(&other);
    EXPECT_EQ(Names(fields), "0one ");
    fields.Copy(&fields);
    fields.Copy(nullptr);
    EXPECT_EQ(Names(fields), "0one ");
}

namespace {

std::string Values(const CRecord &record) {
    std::string text = std::to_string(record.nShapeID) + (record.bDeleted ? "!" : ":");
    for (int i = 0; i < record.GetValueCount(); ++i) text += std::string(record.GetValueAt(i).GetString()) + ",";
    return text;
}

}  // namespace

TEST(Record, ValuesOutOfRange) {
    const Application application;
    CRecord record(7);
    for (const char *value : {"a", "b", "c"}) record.AddValue(value);
    for (const int index : {-1, 3, 5, INT_MAX}) record.SetValueAt(index, "x");
    EXPECT_EQ(application.Logged(100067), 0);
    EXPECT_EQ(record.GetValueAt(5), CString());
    EXPECT_EQ(record.GetValueAt(-1), CString());
    EXPECT_EQ(application.Logged(100066), 2);
    EXPECT_THROW(record.RemoveValueAt(3), CInvalidArgException);
    record.SetValueAt(2, "z");
    record.RemoveValueAt(1);
    record.SetValueCount(3);
    EXPECT_EQ(Values(record), "7:a,z,,");
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
    EXPECT_EQ(Values(*clone), "7!a,");
    EXPECT_EQ(Values(other), "7!a,");

    other.Copy(&other);
    EXPECT_EQ(application.Logged(100064), 0);
    other.Copy(nullptr);
    EXPECT_EQ(application.Logged(100064), 1);
    EXPECT_EQ(Values(other), "7!a,");

    CArray<CString, CString> values;
    values.Add("v");
    values.Add("w");
    other.CopyValueArray(values);
    EXPECT_EQ(Values(other), "7!v,w,");
}
