// The test server against the driver's other roads: server cursors, parameters and transactions.
#include <gtest/gtest.h>
#include <sql.h>
#include <sqlext.h>

#include <string>

#include "tests/support/tds_server/server.h"

namespace ktl::test {
namespace {

SQLCHAR *Chars(std::string &text) {
    return reinterpret_cast<SQLCHAR *>(text.data());
}
SQLPOINTER Number(std::uintptr_t value) {
    return reinterpret_cast<SQLPOINTER>(value);
}

class TdsServerDriver : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(::SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_environment), SQL_SUCCESS);
        ::SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0);
        ::SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection);
        std::string text = "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(m_server.Port()) +
                           ";UID=sa;PWD=x;Database=map;TDS_Version=7.4;ClientCharset=UTF-8";
        ASSERT_TRUE(SQL_SUCCEEDED(
            ::SQLDriverConnect(m_connection, nullptr, Chars(text), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)));
        NewStatement();
    }
    void TearDown() override {
        ::SQLFreeHandle(SQL_HANDLE_STMT, m_statement);
        ::SQLDisconnect(m_connection);
        ::SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
        ::SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
    }
    void NewStatement() {
        if (m_statement) ::SQLFreeHandle(SQL_HANDLE_STMT, m_statement);
        ASSERT_EQ(::SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &m_statement), SQL_SUCCESS);
    }
    bool Run(std::string text) {
        const SQLRETURN code = ::SQLExecDirect(m_statement, Chars(text), SQL_NTS);
        return SQL_SUCCEEDED(code) || code == SQL_NO_DATA;
    }
    std::string Cell(SQLUSMALLINT column) {
        char text[64] = {};
        SQLLEN size = 0;
        if (!SQL_SUCCEEDED(::SQLGetData(m_statement, column, SQL_C_CHAR, text, sizeof text, &size))) return "fault";
        return size == SQL_NULL_DATA ? "~" : text;
    }
    /// The first cell of a statement that gives one.
    std::string One(const std::string &text) {
        NewStatement();
        return Run(text) && SQL_SUCCEEDED(::SQLFetch(m_statement)) ? Cell(1) : "fault";
    }

    TdsServer m_server{"sa", "x", {"map"}};
    SQLHENV m_environment = nullptr;
    SQLHDBC m_connection = nullptr;
    SQLHSTMT m_statement = nullptr;
};

TEST_F(TdsServerDriver, StaticCursorMovesAndTellsItsRow) {
    ASSERT_TRUE(Run("Create Table t (a int, b nvarchar(9))"));
    for (int i = 1; i <= 5; ++i) ASSERT_TRUE(Run("Insert Into t Values (" + std::to_string(i) + ",'国')"));
    NewStatement();
    ::SQLSetStmtAttr(m_statement, SQL_ATTR_CURSOR_TYPE, Number(SQL_CURSOR_STATIC), 0);
    ASSERT_TRUE(Run("Select a, b From t Order By a"));
    ASSERT_TRUE(SQL_SUCCEEDED(::SQLFetchScroll(m_statement, SQL_FETCH_LAST, 0)));
    SQLULEN row = 0;
    ::SQLGetStmtAttr(m_statement, SQL_ATTR_ROW_NUMBER, &row, 0, nullptr);
    EXPECT_EQ(row, 5u);
    struct Move {
        SQLSMALLINT kind;
        SQLLEN offset;
        const char *cell;
    };
    static constexpr Move kMoves[] = {{SQL_FETCH_FIRST, 0, "1"},    {SQL_FETCH_NEXT, 0, "2"},
                                      {SQL_FETCH_ABSOLUTE, 4, "4"}, {SQL_FETCH_PRIOR, 0, "3"},
                                      {SQL_FETCH_RELATIVE, 2, "5"}, {SQL_FETCH_ABSOLUTE, -2, "4"}};
    for (const Move &move : kMoves) {
        ASSERT_TRUE(SQL_SUCCEEDED(::SQLFetchScroll(m_statement, move.kind, move.offset))) << move.cell;
        EXPECT_EQ(Cell(1), move.cell);
        EXPECT_EQ(Cell(2), "国");
    }
    ::SQLFetchScroll(m_statement, SQL_FETCH_LAST, 0);
    EXPECT_EQ(::SQLFetchScroll(m_statement, SQL_FETCH_NEXT, 0), SQL_NO_DATA);
    NewStatement();
    ::SQLSetStmtAttr(m_statement, SQL_ATTR_CURSOR_TYPE, Number(SQL_CURSOR_STATIC), 0);
    ASSERT_TRUE(Run("Select a From t Where a > 9"));
    EXPECT_EQ(::SQLFetchScroll(m_statement, SQL_FETCH_LAST, 0), SQL_NO_DATA);
}

TEST_F(TdsServerDriver, ParametersOfAPreparedStatementAreBoundEachTime) {
    ASSERT_TRUE(Run("Create Table t (a int, b nvarchar(9), c float, d image)"));
    NewStatement();
    std::string text = "Insert Into t Values (?,?,?,?)";
    ASSERT_TRUE(SQL_SUCCEEDED(::SQLPrepare(m_statement, Chars(text), SQL_NTS)));
    SQLINTEGER a = 0;
    char b[] = "北京";
    double c = -2.5;
    char d[] = "\x01\x00\xFF";
    SQLLEN whole = 0;
    SQLLEN textSize = SQL_NTS;
    SQLLEN blobSize = 3;
    ::SQLBindParameter(m_statement, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, &a, 0, &whole);
    ::SQLBindParameter(m_statement, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_WVARCHAR, 9, 0, b, sizeof b, &textSize);
    ::SQLBindParameter(m_statement, 3, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &c, 0, &whole);
    ::SQLBindParameter(m_statement, 4, SQL_PARAM_INPUT, SQL_C_BINARY, SQL_LONGVARBINARY, 3, 0, d, 3, &blobSize);
    for (a = 1; a <= 3; ++a) {
        textSize = a == 2 ? SQL_NULL_DATA : SQL_NTS;
        ASSERT_TRUE(SQL_SUCCEEDED(::SQLExecute(m_statement))) << a;
    }
    EXPECT_EQ(One("Select Count(0) From t Where b = '北京' And c = -2.5 And d = 0x0100FF"), "2");
    EXPECT_EQ(One("Select a From t Where b Is Null"), "2");
}

TEST_F(TdsServerDriver, TransactionsEndAsAsked) {
    ASSERT_TRUE(Run("Create Table t (a int)"));
    ::SQLSetConnectAttr(m_connection, SQL_ATTR_AUTOCOMMIT, Number(SQL_AUTOCOMMIT_OFF), 0);
    ASSERT_TRUE(Run("Insert Into t Values (1)"));
    ASSERT_TRUE(SQL_SUCCEEDED(::SQLEndTran(SQL_HANDLE_DBC, m_connection, SQL_ROLLBACK)));
    ASSERT_TRUE(Run("Insert Into t Values (2)"));
    ASSERT_TRUE(SQL_SUCCEEDED(::SQLEndTran(SQL_HANDLE_DBC, m_connection, SQL_COMMIT)));
    ::SQLSetConnectAttr(m_connection, SQL_ATTR_AUTOCOMMIT, Number(SQL_AUTOCOMMIT_ON), 0);
    EXPECT_EQ(One("Select Max(a) From t"), "2");
    EXPECT_EQ(One("Select Count(0) From t"), "1");
}

}  // namespace
}  // namespace ktl::test
