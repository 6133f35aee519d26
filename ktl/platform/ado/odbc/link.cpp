#include "ktl/platform/ado/odbc/link.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/driver_string.h"
#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

constexpr int kUsualCommandSeconds = 30;

int Seconds(const ConnectionString &settings, const char *name, int usual) {
    return settings.Has(name) ? std::max(0, std::atoi(settings.Get(name).GetString())) : usual;
}

/// The manager's states for a driver that is not registered, or whose file is not there.
bool IsMissingDriver(const Handle &connection) {
    SQLWCHAR state[6] = {};
    SQLWCHAR message[SQL_MAX_MESSAGE_LENGTH] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT size = 0;
    ::SQLGetDiagRecW(SQL_HANDLE_DBC, connection.Get(), 1, state, &native, message, SQL_MAX_MESSAGE_LENGTH, &size);
    const CString text = Narrow(state);
    return text == "IM002" || text == "IM003" || Narrow(message).Find("Can't open lib") >= 0;
}

}  // namespace

Link::Environment::Environment() : Handle(HandleKind::Environment, nullptr) {
    Check(::SQLSetEnvAttr(Get(), SQL_ATTR_ODBC_VERSION, AttributeNumber(SQL_OV_ODBC3), SQL_IS_UINTEGER));
}

Link::Link(const ConnectionString &settings, int connectSeconds)
    : m_connection(HandleKind::Connection, m_environment.Get()),
      m_commandSeconds(Seconds(settings, "Command Timeout", kUsualCommandSeconds)) {
    ::SQLSetConnectAttr(m_connection.Get(), SQL_ATTR_LOGIN_TIMEOUT,
                        AttributeNumber(Seconds(settings, "Connect Timeout", connectSeconds)), SQL_IS_UINTEGER);
    std::u16string text = Utf16FromGbk(FromUtf8(DriverString(settings)).View());
    const SQLRETURN code =
        ::SQLDriverConnectW(m_connection.Get(), nullptr, Wide(text), static_cast<SQLSMALLINT>(text.size()), nullptr, 0,
                            nullptr, SQL_DRIVER_NOPROMPT);
    if (SQL_SUCCEEDED(code)) return;
    if (IsMissingDriver(m_connection)) {
        throw Error("The ODBC driver \"" + FromUtf8(DriverName(settings)) + "\" is not installed.",
                    error_number::kNoProvider);
    }
    m_connection.ThrowDiagnostics();
}

Link::~Link() {
    ::SQLDisconnect(m_connection.Get());
}

}  // namespace ktl::ado::odbc
