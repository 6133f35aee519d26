#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"
#include "tests/support/tds_server/server.h"

namespace ktl::test {

/// What an operation reports: "number: description" in UTF-8, empty without a fault.
inline std::string FaultOf(const std::function<void()> &operation) {
    try {
        operation();
    } catch (const ado::Error &error) {
        return std::to_string(error.GetNumber()) + ": " + ToUtf8(error.GetDescription());
    }
    return {};
}

/// A server with the databases "map" and "other", and a connection to the first.
class TdsFixture : public ::testing::Test {
  protected:
    ado::ConnectionRef Open(const std::string &password = "sec'ret;密", const std::string &database = "map",
                            const std::string &user = "sa") const {
        return ado::Connection::Open(FromUtf8("Provider=SQLOLEDB.1;Persist Security Info=True;User ID=" + user +
                                              ";Password=\"" + password +
                                              "\";Conect Lifetime=0;Data Source=127.0.0.1," +
                                              std::to_string(m_server.Port()) + ";Initial Catalog=" + database));
    }
    long long Run(std::string_view statement) { return Link().Execute(FromUtf8(statement)); }
    ado::RecordsetRef Select(std::string_view statement) { return Link().OpenRecordset(FromUtf8(statement), false); }
    /// Cells with `|` between them and a line feed behind each row, in UTF-8; a null is `~`.
    std::string Rows(std::string_view statement) {
        std::string text;
        for (ado::RecordsetRef rows = Select(statement); !rows->IsEOF(); rows->MoveNext()) {
            for (int i = 0; i < rows->GetColumnCount(); ++i) {
                const ado::Value &cell = rows->GetCell(i);
                text += (i ? "|" : "") + (cell.IsNull() ? "~" : ToUtf8(cell.ToText()));
            }
            text += '\n';
        }
        return text;
    }
    ado::Connection &Link() {
        if (!m_connection) m_connection = Open();
        return *m_connection;
    }

    TdsServer m_server{"sa", "sec'ret;密", {"map", "other"}};
    ado::ConnectionRef m_connection;
};

}  // namespace ktl::test
