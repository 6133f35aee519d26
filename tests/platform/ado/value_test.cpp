#include "ktl/platform/ado/value.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/static_recordset.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado {
namespace {

TEST(ValueText, DoublesTakeTheShortestPlainFormUpToFifteenPlaces) {
    const struct {
        double value;
        const char *text;
    } cases[] = {
        {0.1, "0.1"},
        {0.00001, "0.00001"},
        {1.0 / 3, "0.333333333333333"},
        {123456789012345.0, "123456789012345"},
        {1e15, "1E+15"},
        {-1234567890123456.0, "-1.23456789012346E+15"},
        {1.0 / 30, "3.33333333333333E-02"},
        {5e-16, "5E-16"},
        {1e-15, "0.000000000000001"},
        {1e300, "1E+300"},
        {0.5, "0.5"},
        {-0.0, "0"},
        {1000000, "1000000"},
        {2.5e-7, "0.00000025"},
        {9.999999999999999e14, "1E+15"},
    };
    for (const auto &row : cases) EXPECT_EQ(DoubleToText(row.value), row.text) << row.value;
}

TEST(ValueText, DecimalsDropTrailingZerosAndNeverTakeAnExponent) {
    const struct {
        const char *number;
        const char *text;
    } cases[] = {
        {"1.5000000000", "1.5"}, {"1.0000000000", "1"},
        {"0.0000000000", "0"},   {"-0.000", "0"},
        {"100", "100"},          {".0000000001", "0.0000000001"},
        {"-.5", "-0.5"},         {"12345678901234567890.1234567890", "12345678901234567890.123456789"},
    };
    for (const auto &row : cases) {
        const auto decimal = DecimalFromText(row.number);
        ASSERT_TRUE(decimal) << row.number;
        EXPECT_STREQ(Value::FromDecimal(*decimal).ToText(), row.text);
    }
    for (const char *bad : {"", "-", ".", "1e5", " 1", "1 ", "1.2.3", "123456789012345678901234567890123456789"}) {
        EXPECT_FALSE(DecimalFromText(bad)) << bad;
    }
}

TEST(ValueText, FixedDecimalsRoundHalvesAwayFromZero) {
    const auto fixed = [](const char *number, int decimals) {
        return DecimalToFixed(*DecimalFromText(number), decimals);
    };
    EXPECT_EQ(fixed("1.25", 1), "1.3");
    EXPECT_EQ(fixed("-1.25", 1), "-1.3");
    EXPECT_EQ(fixed("0.4", 0), "0");
    EXPECT_EQ(fixed("99.996", 2), "100.00");
    EXPECT_EQ(fixed("7", 3), "7.000");
}

TEST(ValueText, DatesLeaveOutMidnightAndTheZeroDay) {
    const auto text = [](int year, int month, int day, int hour, int minute, int second) {
        return Value::FromDateTime(*FromCivil({year, month, day, hour, minute, second})).ToText();
    };
    EXPECT_STREQ(text(1909, 2, 20, 8, 9, 36), "1909/2/20 8:09:36");
    EXPECT_STREQ(text(2024, 2, 29, 0, 0, 0), "2024/2/29");
    EXPECT_STREQ(text(1899, 12, 30, 0, 0, 0), "0:00:00");
    EXPECT_STREQ(text(1899, 12, 30, 23, 5, 0), "23:05:00");
    EXPECT_STREQ(text(1, 1, 1, 0, 0, 0), "1/1/1");
    EXPECT_STREQ(text(9999, 12, 31, 23, 59, 59), "9999/12/31 23:59:59");
    const DateTime nearlyNextDay{43831, 86'399'999};
    EXPECT_STREQ(Value::FromDateTime(nearlyNextDay).ToText(), "2020/1/2");
    EXPECT_FALSE(FromCivil({2023, 2, 29, 0, 0, 0}));
    EXPECT_EQ(FromCivil({2000, 1, 1, 0, 0, 0})->day, 36526);
}

TEST(ValueText, EveryDayOfFourCenturiesComesBack) {
    for (int day = -2000; day < 150'000; ++day) {
        const CivilTime civil = ToCivil({day, 0});
        const auto back = FromCivil(civil);
        ASSERT_TRUE(back) << day;
        ASSERT_EQ(back->day, day);
    }
}

TEST(ValueText, TruthIsMinusOneAndNullHasNoText) {
    EXPECT_STREQ(Value::FromBool(true).ToText(), "-1");
    EXPECT_STREQ(Value::FromBool(false).ToText(), "0");
    EXPECT_THROW(Value().ToText(), Error);
    EXPECT_THROW(Value::FromBytes("x").ToText(), Error);
}

TEST(ConnectionSettings, QuotesBlanksAndCaseAreTakenAsProvidersTakeThem) {
    const ConnectionString settings(
        FromUtf8("Provider=SQLOLEDB.1;Persist Security Info=True;User ID=sa;"
                 "Password='a;b''c';Conect Lifetime=0;Data Source = 服务器|1433 ;x"));
    EXPECT_STREQ(settings.Get("provider"), "SQLOLEDB.1");
    EXPECT_STREQ(settings.Get("PASSWORD"), "a;b'c");
    EXPECT_EQ(settings.Get("Data Source"), FromUtf8("服务器|1433"));
    EXPECT_FALSE(settings.Has("x"));
    EXPECT_STREQ(settings.Get("nothing"), "");
}

TEST(Names, TrailBytesAreNoLetters) {
    EXPECT_TRUE(EqualNames("ShapeID", "shapeid"));
    // Two characters whose trail bytes are A and a.
    EXPECT_FALSE(EqualNames("\x81\x41", "\x81\x61"));
    EXPECT_EQ(CutText("a\x81\x41z", 2), "a");
    EXPECT_EQ(CutText("a\x81\x41z", 3), "a\x81\x41");
    // A lead byte that a quote follows stands alone.
    EXPECT_EQ(GbkLength("\xB0'", 0), 1U);
}

TEST(StaticRows, ChunksGoOnWhereTheyStoppedAndStartAgainForAnotherColumn) {
    StaticRecordset rows({{"a", DataType::LongVarBinary, 100, 0, 0, true}, {"b", DataType::Char, 9, 0, 0, true}});
    rows.AddRow({Value::FromBytes("0123456789"), Value::FromText("text")});
    EXPECT_EQ(rows.GetActualSize(0), 10);
    EXPECT_EQ(rows.GetChunk(0, 4).Bytes(), "0123");
    EXPECT_EQ(rows.GetChunk(0, 4).Bytes(), "4567");
    EXPECT_EQ(rows.GetChunk(0, 4).Bytes(), "89");
    EXPECT_TRUE(rows.GetChunk(0, 4).IsNull());
    EXPECT_EQ(rows.GetChunk(1, 2).Bytes(), "te");
    EXPECT_EQ(rows.GetChunk(0, 1).Bytes(), "0");
    rows.MoveNext();
    EXPECT_THROW(rows.GetCell(0), Error);
    EXPECT_THROW(rows.MoveNext(), Error);
    rows.Close();
    EXPECT_THROW(rows.GetRecordCount(), Error);
}

TEST(StaticRows, EveryKindComesBackFromThePackedRow) {
    StaticRecordset rows(std::vector<Column>(8));
    std::vector<Value> values = {Value(),
                                 Value::FromInteger(-5),
                                 Value::FromDouble(0.25),
                                 Value::FromDecimal({-12345, 3}),
                                 Value::FromBool(true),
                                 Value::FromDateTime({36526, 1000}),
                                 Value::FromText("\xB9\xFA"),
                                 Value::FromBytes(std::string_view("\0x", 2))};
    rows.AddRow(std::vector<Value>(8));
    rows.AddRow(values);
    rows.Reorder({1});
    ASSERT_EQ(rows.GetRecordCount(), 1);
    EXPECT_TRUE(rows.GetCell(0).IsNull());
    EXPECT_EQ(rows.GetCell(1).Integer(), -5);
    EXPECT_EQ(rows.GetCell(2).Double(), 0.25);
    EXPECT_STREQ(rows.GetCell(3).ToText(), "-12.345");
    EXPECT_TRUE(rows.GetCell(4).Bool());
    EXPECT_EQ(rows.GetCell(5).Time(), (DateTime{36526, 1000}));
    EXPECT_EQ(rows.GetCell(6).Text(), "\xB9\xFA");
    EXPECT_EQ(rows.GetCell(7).Bytes(), std::string_view("\0x", 2));
}

}  // namespace
}  // namespace ktl::ado
