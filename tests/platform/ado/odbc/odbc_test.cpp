#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/driver_string.h"
#include "ktl/platform/ado/odbc/server_column.h"
#include "ktl/platform/encoding.h"
#include "tests/support/tds_server/mute_port.h"

namespace ktl::ado {
namespace {

TEST(OdbcDriverString, TellsTheDriverWhatThePlatformsStringSays) {
    const struct {
        const char *settings;
        const char *text;
    } cases[] = {
        {"Provider=SQLOLEDB.1;Persist Security Info=True;User ID=sa;Password='a;b}c';Conect Lifetime=0;"
         "Data Source=db.example.org,1500;Initial Catalog=map",
         "Driver=FreeTDS;Server=db.example.org;Port=1500;UID=sa;PWD={a;b}}c};Database=map"},
        {"Provider=SQLOLEDB.1;Persist Security Info=False;Integrated Security=SSPI;Conect Lifetime=0;"
         "Data Source=HOST\\SQLEXPRESS;Initial Catalog=master",
         "Driver=FreeTDS;Server=HOST\\SQLEXPRESS;Trusted_Connection=Yes;Database=master"},
        {"Data Source=(local);User ID=u;Password=p", "Driver=FreeTDS;Server=127.0.0.1;Port=1433;UID=u;PWD=p"},
        {"Data Source=tcp:h\\name , 99;User ID=u;Password=", "Driver=FreeTDS;Server=h;Port=99;UID=u;PWD="},
        {"Driver=Another Driver;Data Source=.;User ID=u;Password=密码",
         "Driver={Another Driver};Server=127.0.0.1;Port=1433;UID=u;PWD=密码"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(odbc::DriverString(ConnectionString(FromUtf8(row.settings))),
                  std::string(row.text) + ";TDS_Version=7.4;ClientCharset=UTF-8");
    }
}

TEST(OdbcColumn, TypesAndSizesAreThePlatforms) {
    constexpr int kLong = 2147483647;
    const struct {
        odbc::ServerColumn column;
        DataType type;
        int size;
        int precision;
        int scale;
    } cases[] = {
        {{"a", 4, 10, 0, true, "int"}, DataType::Integer, 4, 0, 0},
        {{"a", -5, 19, 0, true, "bigint"}, DataType::BigInt, 8, 0, 0},
        {{"a", -6, 3, 0, true, "tinyint"}, DataType::UnsignedTinyInt, 1, 0, 0},
        {{"a", -7, 1, 0, true, "bit"}, DataType::Boolean, 2, 0, 0},
        {{"a", 6, 53, 0, true, "float"}, DataType::Double, 8, 0, 0},
        {{"a", 7, 24, 0, true, "real"}, DataType::Single, 4, 0, 0},
        {{"a", 2, 20, 10, true, "numeric"}, DataType::Numeric, 19, 20, 10},
        {{"a", 3, 19, 4, true, "money"}, DataType::Currency, 8, 0, 0},
        {{"a", 93, 23, 3, true, "datetime"}, DataType::DBTimeStamp, 16, 0, 0},
        {{"a", -9, 40, 0, true, "nvarchar"}, DataType::VarWChar, 40, 0, 0},
        {{"a", -9, 0, 0, true, "nvarchar"}, DataType::LongVarWChar, kLong / 2, 0, 0},
        {{"a", 1, 12, 0, true, "char"}, DataType::Char, 12, 0, 0},
        {{"a", -10, 1073741823, 0, true, "ntext"}, DataType::LongVarWChar, kLong / 2, 0, 0},
        {{"a", -4, 2147483647, 0, true, "image"}, DataType::LongVarBinary, kLong, 0, 0},
        {{"a", -3, 2147483647, 0, true, "varbinary"}, DataType::LongVarBinary, kLong, 0, 0},
        {{"a", -2, 8, 0, true, "timestamp"}, DataType::Binary, 8, 0, 0},
        {{"a", -11, 36, 0, true, "uniqueidentifier"}, DataType::GUID, 16, 0, 0},
    };
    for (const auto &row : cases) {
        const Column column = odbc::ToColumn(row.column);
        EXPECT_EQ(column.type, row.type) << row.column.typeName;
        EXPECT_EQ(column.definedSize, row.size) << row.column.typeName;
        EXPECT_EQ(column.precision, row.precision) << row.column.typeName;
        EXPECT_EQ(column.scale, row.scale) << row.column.typeName;
    }
}

/// The error of an opening, as "number description".
std::string OpeningFault(const std::string &settings) {
    try {
        Connection::Open(FromUtf8("Provider=SQLOLEDB.1;" + settings));
    } catch (const Error &error) {
        return std::to_string(error.GetNumber()) + " " + ToUtf8(error.GetDescription());
    }
    return "";
}

TEST(OdbcConnection, MissingDriverIsNamed) {
    const std::string start = std::to_string(error_number::kNoProvider) + " The ODBC driver ";
    EXPECT_EQ(OpeningFault("Driver=No such driver;Data Source=127.0.0.1"),
              start + "\"No such driver\" is not installed.");
    EXPECT_EQ(OpeningFault("Driver=/nowhere/libtdsodbc.so;Data Source=127.0.0.1"),
              start + "\"/nowhere/libtdsodbc.so\" is not installed.");
}

TEST(OdbcConnection, ServerThatDoesNotAnswerIsReportedInTime) {
    // One that refuses, and one that takes the connection and stays silent.
    for (const bool listens : {false, true}) {
        const test::MutePort port(listens);
        const auto start = std::chrono::steady_clock::now();
        const std::string fault = OpeningFault("User ID=sa;Password=x;Connect Timeout=1;Data Source=" + port.Server() +
                                               ";Initial Catalog=map");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        EXPECT_NE(fault.find("Unable to connect"), std::string::npos) << fault;
        EXPECT_EQ(fault.find('['), std::string::npos) << fault;
    }
}

}  // namespace
}  // namespace ktl::ado
