#include "ktl/platform/ado/odbc/server.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/driver_string.h"
#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/ado/odbc/result_reader.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

constexpr SQLSMALLINT kNameColumn = 3;
constexpr SQLSMALLINT kTypeColumn = 4;

void *Number(std::intptr_t value) {
    return reinterpret_cast<void *>(value);
}

std::intptr_t Seconds(const ConnectionString &settings, int usual) {
    const int seconds = std::atoi(settings.Get("Connect Timeout").GetString());
    return seconds > 0 ? seconds : usual;
}

/// The manager's states for a driver that is not registered, or whose file is not there.
bool IsMissingDriver(const Handle &connection) {
    SQLCHAR state[6] = {};
    SQLCHAR message[SQL_MAX_MESSAGE_LENGTH] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT size = 0;
    ::SQLGetDiagRec(SQL_HANDLE_DBC, connection.Get(), 1, state, &native, message, sizeof message, &size);
    const std::string_view text = reinterpret_cast<const char *>(state);
    return text == "IM002" || text == "IM003" ||
           std::string_view(reinterpret_cast<const char *>(message)).find("Can't open lib") != std::string_view::npos;
}

SQLRETURN Send(const Handle &statement, const CString &text) {
    std::string utf8 = ToUtf8(text);
    return ::SQLExecDirect(statement.Get(), reinterpret_cast<SQLCHAR *>(utf8.data()),
                           static_cast<SQLINTEGER>(utf8.size()));
}

}  // namespace

Server::Server(const ConnectionString &settings) : m_environment(HandleKind::Environment, nullptr) {
    m_environment.Check(::SQLSetEnvAttr(m_environment.Get(), SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0));
    m_connection = std::make_unique<Handle>(HandleKind::Connection, m_environment.Get());
    const std::intptr_t timeout = Seconds(settings, GetConnectionTimeout());
    ::SQLSetConnectAttr(m_connection->Get(), SQL_ATTR_LOGIN_TIMEOUT, Number(timeout), SQL_IS_UINTEGER);
    std::string text = DriverString(settings);
    const SQLRETURN code =
        ::SQLDriverConnect(m_connection->Get(), nullptr, reinterpret_cast<SQLCHAR *>(text.data()),
                           static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(code) && IsMissingDriver(*m_connection)) {
        throw Error("The ODBC driver \"" + FromUtf8(DriverName(settings)) + "\" is not installed.",
                    error_number::kNoProvider);
    }
    if (!SQL_SUCCEEDED(code)) m_connection->ThrowDiagnostics();
    m_open = true;
}

Server::~Server() {
    Close();
}

void Server::RequireOpen() const {
    if (!m_open) throw Error("Operation is not allowed when the object is closed.", error_number::kClosed);
}

/// A batch may hold several statements: a fault of a later one shows when its result is asked for.
long long Server::Execute(const CString &statement) {
    RequireOpen();
    const Handle handle(HandleKind::Statement, m_connection->Get());
    SQLRETURN code = Send(handle, statement);
    handle.Check(code);
    SQLLEN count = 0;
    if (code == SQL_NO_DATA || !SQL_SUCCEEDED(::SQLRowCount(handle.Get(), &count))) count = 0;
    do {
        code = ::SQLMoreResults(handle.Get());
        handle.Check(code);
    } while (code != SQL_NO_DATA);
    return std::max<long long>(count, 0);
}

RecordsetRef Server::OpenRecordset(const CString &statement, bool) {
    RequireOpen();
    const Handle handle(HandleKind::Statement, m_connection->Get());
    handle.Check(Send(handle, statement));
    return ReadResult(handle);
}

RecordsetRef Server::OpenSchema(int schema) {
    RequireOpen();
    if (schema != kSchemaTables) {
        throw Error("Only the list of tables is known of the schema.", error_number::kUnsupported);
    }
    const Handle handle(HandleKind::Statement, m_connection->Get());
    handle.Check(::SQLTables(handle.Get(), nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0));
    std::vector<TableEntry> tables;
    for (const RecordsetRef rows = ReadResult(handle); !rows->IsEOF(); rows->MoveNext()) {
        tables.push_back(
            {CString(rows->GetCell(kNameColumn - 1).Text()), CString(rows->GetCell(kTypeColumn - 1).Text())});
    }
    return MakeTableSchema(tables);
}

void Server::Close() {
    if (!m_open) return;
    m_open = false;
    ::SQLDisconnect(m_connection->Get());
    m_connection.reset();
}

namespace {

ConnectionRef OpenServer(const ConnectionString &settings) {
    return std::make_shared<Server>(settings);
}

const ProviderRegistration kRegistration("SQLOLEDB.1", OpenServer);

}  // namespace

}  // namespace ktl::ado::odbc

/// Keeps this object file, and with it the registration, in programs that link the static archive.
extern "C" const int ktl_ado_register_odbc = 1;
