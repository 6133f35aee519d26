#include "ktl/attributes/table_net.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ktl/attributes/ado_net.h"
#include "ktl/attributes/fields.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/static_recordset.h"
#include "tests/support/application.h"

namespace {

using ktl::ado::Column;
using ktl::ado::DataType;
using ktl::ado::RecordsetRef;
using ktl::ado::Value;

/// Stands in for the server: what was opened and sent, and the columns that every recordset has.
struct Server {
    std::vector<std::string> opened;
    std::vector<std::string> sent;
    std::vector<Column> columns;
    int rows = 1;
    bool refuses = false;
};
Server *server = nullptr;

class FakeConnection final : public ktl::ado::Connection {
  public:
    long long Execute(const CString &statement) override {
        server->sent.push_back(ktl::ToUtf8(statement));
        if (server->refuses) throw ktl::ado::Error("refused");
        return 1;
    }
    RecordsetRef OpenRecordset(const CString &statement, bool) override {
        server->sent.push_back(ktl::ToUtf8(statement));
        auto rows = std::make_shared<ktl::ado::StaticRecordset>(server->columns);
        for (int i = 0; i < server->rows; ++i) rows->AddRow(std::vector<Value>(server->columns.size()));
        return rows;
    }
    RecordsetRef OpenSchema(int) override { return ktl::ado::MakeTableSchema({}); }
    void Close() override { m_isOpen = false; }
    bool IsOpen() const override { return m_isOpen; }

  private:
    bool m_isOpen = true;
};

ktl::ado::ConnectionRef OpenFake(const ktl::ado::ConnectionString &settings) {
    std::string text;
    for (const char *name : {"Persist Security Info", "Integrated Security", "User ID", "Password", "Conect Lifetime",
                             "Data Source", "Initial Catalog"}) {
        text += ktl::ToUtf8(settings.Get(name)) + "|";
    }
    server->opened.push_back(text);
    if (server->refuses) throw ktl::ado::Error("no server");
    return std::make_shared<FakeConnection>();
}

class TableNet : public ::testing::Test {
  protected:
    TableNet() {
        server = &m_server;
        static const ktl::ado::ProviderRegistration registration("SQLOLEDB.1", OpenFake);
        m_ado.InitAdo("host,1433", "sa", "pass;word", "map", 0);
    }

    static Column Of(const char *name, DataType type, int size = 4) { return {name, type, size, 0, 0, true}; }

    ktl::test::Application m_app;
    Server m_server;
    CAdo_Net m_ado;
};

}  // namespace

TEST_F(TableNet, ConnectsByPasswordOrByTheSystemsUser) {
    EXPECT_EQ(m_ado.Connection(""), 1);
    m_ado.InitAdo("host", "sa", "p", "map", 1);
    EXPECT_EQ(m_ado.Connection("other"), 1);
    EXPECT_EQ(m_ado.Connection(""), 1);
    EXPECT_EQ(m_server.opened, (std::vector<std::string>{"True||sa|pass;word|0|host,1433|map|",
                                                         "False|SSPI|||0|host|other|", "False|SSPI|||0|host|other|"}));
    EXPECT_EQ(m_ado.GetUserNameA(), "sa");
    m_server.refuses = true;
    EXPECT_EQ(m_ado.Connection(""), 0);
    EXPECT_FALSE(m_ado.GetConnection());
    EXPECT_EQ(m_app.Logged(2), 1);
}

TEST_F(TableNet, ColumnTypesFollowTheTable) {
    struct Case {
        ENUM_DATA type;
        std::vector<int> numbers;
    };
    const Case cases[] = {
        {DATA_INT, {2, 3, 16, 17, 18, 19}}, {DATA_BIGINT, {20, 21}},
        {DATA_NUMERIC, {5, 14, 131, 139}},  {DATA_BOOL, {11}},
        {DATA_DATETIME, {7, 64, 133, 134}}, {DATA_CHAR, {8, 129, 130, 200, 201, 202, 203}},
        {DATA_BINARY, {128, 204, 205}},     {DATA_UNSUPPORTED, {4, 6, 9, 10, 12, 13, 72, 132, 135, 136, 138, 8192}},
        {DATA_NONE, {0, 1, 15, 137, 999}},
    };
    for (const Case &row : cases) {
        for (const int number : row.numbers) {
            m_server.columns.push_back(Of(("c" + std::to_string(number)).c_str(), static_cast<DataType>(number), 7));
        }
    }
    m_ado.Connection("");
    CTable_Net table;
    EXPECT_EQ(table.GetTableKind(), 3);
    table.InitTable(&m_ado, "roads");
    EXPECT_EQ(m_server.sent, std::vector<std::string>{"Select Top 1 * From [map].dbo.[roads]"});
    int position = 0;
    for (const Case &row : cases) {
        for (const int number : row.numbers) {
            const CField *field = table.GetFieldAt(position);
            ASSERT_NE(field, nullptr);
            EXPECT_EQ(field->eType, row.type) << number;
            EXPECT_TRUE(field->nID == position && field->nLength == 7 && field->bReadOnly == 0);
            ++position;
        }
    }
    EXPECT_EQ(table.GetFieldCount(), position);
}
