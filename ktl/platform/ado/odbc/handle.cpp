#include "ktl/platform/ado/odbc/handle.h"

#include <string>
#include <string_view>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

constexpr SQLSMALLINT kMostDiagnostics = 16;
constexpr SQLSMALLINT kLongestMessage = 2 * SQL_MAX_MESSAGE_LENGTH;

/// The text without the leading "[driver][server]".
std::string_view Bare(std::string_view message) {
    while (!message.empty() && message.front() == '[') {
        const std::size_t end = message.find(']');
        if (end == std::string_view::npos) break;
        message.remove_prefix(end + 1);
    }
    return message;
}

}  // namespace

Handle::Handle(HandleKind kind, void *parent) : m_kind(kind) {
    if (!SQL_SUCCEEDED(::SQLAllocHandle(static_cast<SQLSMALLINT>(kind), parent, &m_handle))) {
        throw Error("An ODBC handle cannot be made.");
    }
}

Handle::~Handle() {
    ::SQLFreeHandle(static_cast<SQLSMALLINT>(m_kind), m_handle);
}

void Handle::Check(short returnCode) const {
    if (!SQL_SUCCEEDED(returnCode) && returnCode != SQL_NO_DATA) ThrowDiagnostics();
}

void Handle::ThrowDiagnostics() const {
    std::string text;
    int number = 0;
    for (SQLSMALLINT i = 1; i <= kMostDiagnostics; ++i) {
        SQLWCHAR state[6] = {};
        SQLWCHAR message[kLongestMessage] = {};
        SQLINTEGER native = 0;
        SQLSMALLINT size = 0;
        if (!SQL_SUCCEEDED(::SQLGetDiagRecW(static_cast<SQLSMALLINT>(m_kind), m_handle, i, state, &native, message,
                                            kLongestMessage, &size))) {
            break;
        }
        const std::string bare = ToUtf8(Bare(Narrow(message).View()));
        if (text.find(bare) == std::string::npos) text += (text.empty() ? "" : " ") + bare;
        if (number == 0) number = native;
    }
    if (text.empty()) text = "The driver reports a fault without saying which.";
    throw Error(FromUtf8(text), number);
}

}  // namespace ktl::ado::odbc
