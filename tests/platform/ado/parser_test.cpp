#include "ktl/platform/ado/sql/parser.h"

#include <gtest/gtest.h>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/sql/like.h"
#include "ktl/platform/ado/sql/statement_cache.h"
#include "ktl/platform/ado/sql/token.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::sql {
namespace {

std::string FaultOf(std::string_view utf8) {
    try {
        ParseStatement(FromUtf8(utf8).View());
    } catch (const Error &error) {
        return ToUtf8(error.GetDescription());
    }
    return "";
}

TEST(Parser, WhatTheTablesSendIsUnderstood) {
    const char *const statements[] = {
        "Create Table w001 ([ID] int,[ShapeID] int,[name] Char(254),[remark] memo)",
        "Create Table 表 (ID int,ShapeID int)",
        "Create Table t ([a] bigint,[b] numeric(20,10),[s] datetime,[c] image, d Double(4), e int Not Null)",
        "Insert Into [w001] (ID,ShapeID,名称) Values (1,1,'x')",
        "Insert Into [w001b] Select ID,ShapeID,name From [w001] Where ID <> -1",
        "Insert Into w001(a,b) Select a,b From w001b",
        "Update w001 Set ID = -1 Where ShapeID = 7",
        "Update [w001] Set [name]='x'",
        "Update w001 Set a=1.500000 Where ShapeID=-3",
        "Update w001 Set remark='a'+CHR(10)+'b' Where ShapeID=3",
        "Delete From w001 Where ID = 3",
        "Select Top 200 ShapeID,name From w001 Where name Like '%x%' And ID <> -1 Order By ShapeID",
        "Select Count(0) From [w001] Where ID<>-1",
        "Select Max(a) From [w001]",
        "Select [name] From [sysdatabases] Where [name] = 'map'",
        "Select Top 1 * From [map].dbo.[t]",
        "Select a+b*2 As c, -d, (e) From t x Where x.a In (1,2) Or Not b Is Null Order By c Desc, 2",
        "Replace remark With 'x' While ShapeID=1 In w001",
        "Replace remark With 'x' Additive While ShapeID=1 In w001",
        "Replace All a With a+1, b With 2 For c > 1",
        "USE IN SELECT ('w001')",
        "USE w001 EXCLUSIVE",
        "use",
        "Alter Table w001 Add [x] Char(10)",
        "Alter Table w001 Add Column x int",
        "ALTER TABLE [w001] DROP COLUMN [x]",
        "Alter Table w001 Rename a to b",
        "Alter Table w001 Rename Column a To b",
        "ALTER TABLE [w001] ALTER COLUMN [x] numeric(20,10)",
        "Select ID,order,from,like,values From w001 Where order Like '%x%' And is = 1 Order By order Desc",
        "Select distinct From w001",
        "Update w001 Set where='x' Where where='y'",
        "Drop Table w001",
        "Select * From [w001.dbf]",
        "Select * From w001.dbf && the rest is a remark",
        "Select *;\n From w001;",
        "sele * from w001 wher a = 1",
        "Select * From t Where 2010POP = 5 And d >= {^2020-01-31} And .Not. f = .T.",
    };
    for (const char *statement : statements) EXPECT_EQ(FaultOf(statement), "") << statement;
}

TEST(Parser, FaultsSayWhatAndWhere) {
    const struct {
        const char *statement;
        const char *fault;
    } cases[] = {
        {"", "Syntax error: the statement is empty at the end of the statement."},
        {"Create Table t (ID int,,name Char(10))",
         "Syntax error: the definition of a column was expected at byte 24 near \",name Char(10))\"."},
        {"Create Table t (ID int,)", "Syntax error: the definition of a column was expected at byte 24 near \")\"."},
        {"Create Table t (a int, A int)", "Two columns have one name at byte 24 near \"A int)\"."},
        {"Create Table t ([s] datetime,[s] datetime)", "Two columns have one name at byte 30 near \"[s] datetime)\"."},
        {"Create Table t (a frob)", "Syntax error: no column type has this name at byte 19 near \"frob)\"."},
        {"Insert Into t (a,b,c,d) Values (1,2,,'x')",
         "Syntax error: a value is missing in the list at byte 37 near \",'x')\"."},
        {"Insert Into t Values (1,)", "Syntax error: a value is missing in the list at byte 25 near \")\"."},
        {"Update t Set a='it's' Where b=1",
         "Syntax error: something stands behind the statement's end at byte 20 near \"s' Where b=1\"."},
        {"Update t Set a='it''s Where b=1",
         "Syntax error: a quoted text is not closed at byte 16 near \"'it''s Where b=1\"."},
        {"Update t Set a= Where b=1", "Syntax error: a value or a column was expected at byte 17 near \"Where b=1\"."},
        {"Update t Set a= Where (b=1)",
         "Syntax error: a value or a column was expected at byte 17 near \"Where (b=1)\"."},
        {"Select a From t, u",
         "Syntax error: a statement reads one table; joins are not supported at byte 16 near "
         "\", u\"."},
        {"Select Frob(a) From t", "Syntax error: no function has this name at byte 8 near \"Frob(a) From t\"."},
        {"Replace m With 国 国 While a=1 In t",
         "Syntax error: For, While, In or a scope was expected at byte 19 near \"国 While a=1 In t\"."},
        {"Alter Table t Add ", "Syntax error: the definition of a column was expected at the end of the statement."},
        {"Select * From [t", "Syntax error: a square bracket is not closed at byte 15 near \"[t\"."},
        {"Select * From t Where a ~ 1", "Syntax error: a character that begins nothing at byte 25 near \"~ 1\"."},
    };
    for (const auto &row : cases) EXPECT_EQ(FaultOf(row.statement), row.fault) << row.statement;
}

TEST(Parser, TrailBytesAreNoQuotesBracketsOrOperators) {
    // The trail bytes 5C | 7C | 5B | 5D | 41 of five characters.
    const std::string text = "\x81\x5C\x81\x7C\x81\x5B\x81\x5D\x81\x41";
    const auto parsed = ParseStatement("Update [" + text + "] Set " + text + "='" + text + "' Where [" + text + "]=1");
    const auto &update = std::get<UpdateStatement>(parsed->statement);
    EXPECT_EQ(update.table.text.View(), text);
    EXPECT_EQ(update.assignments[0].column.text.View(), text);
    EXPECT_EQ(parsed->literals[0].Text(), text);
    // A cut-off character before the closing quote does not swallow it.
    EXPECT_EQ(ParseStatement("Update t Set a='\xB0' Where b=1")->literals[0].Text(), "\xB0");
}

TEST(Parser, NestingAndLongChainsDoNotExhaustTheStack) {
    const std::string deep(100'000, '(');
    EXPECT_THROW(ParseStatement("Select " + deep), Error);
    std::string minus = "Select 1";
    for (int i = 0; i < 100'000; ++i) minus += "-1";
    EXPECT_THROW(ParseStatement(minus + " From t"), Error);
    std::string joined = "Update t Set a='x'";
    for (int i = 0; i < 100'000; ++i) joined += "+CHR(10)+'x'";
    EXPECT_EQ(ParseStatement(joined)->literals.size(), 200'001U);
}

TEST(StatementCacheShape, OneShapeIsParsedOnceAndOtherLiteralsAreReadIn) {
    StatementCache cache;
    const ParsedStatement *first = cache.Get("Insert Into t Values (1,'a',2.5)").parsed.get();
    PreparedStatement &second = cache.Get("Insert Into t Values (-20,'it''s ,)',.25)");
    EXPECT_EQ(second.parsed.get(), first);
    EXPECT_EQ(second.parsed->literals[0].Integer(), -20);
    EXPECT_EQ(second.parsed->literals[1].Text(), "it's ,)");
    EXPECT_STREQ(second.parsed->literals[2].ToText(), "0.25");
    const char *const others[] = {
        "Insert Into t Values ('1','a',2.5)",   "Insert Into t Values (1,'a',NULL)",
        "Insert Into u Values (1,'a',2.5)",     "Insert Into t Values (1,'a',2.5) ",
        "Insert Into t Values (1,'a'+'b',2.5)",
    };
    for (const char *other : others) EXPECT_NE(cache.Get(other).parsed.get(), first) << other;
    EXPECT_NE(cache.Get("Insert Into t Values (1x,'a',2.5)").parsed.get(), first);
    EXPECT_THROW(cache.Get("Insert Into t Values (1,'a,2.5)"), Error);
    EXPECT_THROW(cache.Get("Insert Into t Values (,'a',2.5)"), Error);
    EXPECT_EQ(cache.Get("Insert Into t Values (7,'',0)").parsed.get(), first);
}

TEST(StatementCacheShape, NumbersThatShapeTheStatementAreNotLifted) {
    StatementCache cache;
    EXPECT_EQ(std::get<SelectStatement>(cache.Get("Select Top 5 a From t").parsed->statement).top, 5);
    EXPECT_EQ(std::get<SelectStatement>(cache.Get("Select Top 6 a From t").parsed->statement).top, 6);
    EXPECT_EQ(std::get<SelectStatement>(cache.Get("Select a From t Order By 1").parsed->statement).order[0].number, 1);
    const auto &parsed = *cache.Get("Select a - 5 From t").parsed;
    EXPECT_EQ(parsed.literals[0].Integer(), 5);
    EXPECT_EQ(cache.Get("Select a - -7 From t").parsed->literals[0].Integer(), -7);
}

TEST(Like, CharactersAreComparedWhole) {
    const struct {
        const char *pattern;
        const char *text;
        bool matches;
    } cases[] = {
        {"%国%", "中国人", true}, {"国%", "中国", false},   {"中_人", "中国人", true}, {"中_人", "中人", false},
        {"_", "国", true},        {"__", "国", false},      {"%", "", true},           {"", "", true},
        {"", "a", false},         {"a%b%c", "aXbYc", true}, {"a%b%c", "aXcYb", false}, {"%ab", "aab", true},
        {"%a_", "xaab", true},    {"%a_", "xa", false},     {"A%", "abc", false},      {"a ", "a", false},
        {"%%", "x", true},        {"%_%", "", false},       {"a%a", "a", false},       {"%b%b%", "abab", true},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(LikePattern(FromUtf8(row.pattern).View()).Matches(FromUtf8(row.text).View()), row.matches)
            << row.pattern << " " << row.text;
    }
    // The trail byte 61 is no letter, and no character begins in the middle of another.
    EXPECT_FALSE(LikePattern("%a%").Matches("\x81\x61"));
    EXPECT_TRUE(
        LikePattern("%a%").Matches("\x81\x61"
                                   "a"));
    EXPECT_FALSE(LikePattern("%\xA1\xB0%").Matches("\xB0\xA1\xB0\xA1"));
    EXPECT_TRUE(LikePattern("10!%", '!').Matches("10%"));
    EXPECT_FALSE(LikePattern("10!%", '!').Matches("100"));
}

}  // namespace
}  // namespace ktl::ado::sql
