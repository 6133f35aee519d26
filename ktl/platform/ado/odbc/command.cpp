#include "ktl/platform/ado/odbc/command.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>

#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

/// What a parameter holds that is no long one, in bytes and in characters.
constexpr std::size_t kShortBytes = 8000;
constexpr std::size_t kShortText = 4000;

std::string DigitsOf(double number) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

std::string TextOf(DateTime time) {
    const int fraction = time.milliseconds % 1000;
    const CivilTime civil = ToCivil({time.day, time.milliseconds - fraction});
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", civil.year, civil.month, civil.day,
                  civil.hour, civil.minute, civil.second, fraction);
    return text;
}

}  // namespace

Parameter Parameter::Text(const CString &gbk) {
    return {Utf16FromGbk(gbk.View()), {}, false};
}

Parameter Parameter::Bytes(std::string_view bytes) {
    return {{}, std::string(bytes), true};
}

Parameter Parameter::Of(const Value &value) {
    switch (value.GetKind()) {
        case Value::Kind::Bytes:
            return Bytes(value.Bytes());
        case Value::Kind::Bool:
            return Text(value.Bool() ? "1" : "0");
        case Value::Kind::Double:
            return Text(DigitsOf(value.Double()));
        case Value::Kind::DateTime:
            return Text(TextOf(value.Time()));
        default:
            return Text(value.ToText());
    }
}

Command::Command(const Link &link) : m_statement(HandleKind::Statement, link.Connection().Get()) {
    ::SQLSetStmtAttr(m_statement.Get(), SQL_ATTR_QUERY_TIMEOUT, AttributeNumber(link.CommandSeconds()),
                     SQL_IS_UINTEGER);
}

void Command::Bind(std::size_t position) {
    Parameter &parameter = m_parameters[position];
    const std::size_t units = parameter.isBytes ? parameter.bytes.size() : parameter.text.size();
    SQLSMALLINT type = units > kShortText ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
    if (parameter.isBytes) type = units > kShortBytes ? SQL_LONGVARBINARY : SQL_VARBINARY;
    void *content = parameter.isBytes ? static_cast<void *>(parameter.bytes.data()) : parameter.text.data();
    m_sizes[position] = static_cast<SQLLEN>(parameter.isBytes ? units : units * sizeof(SQLWCHAR));
    m_statement.Check(::SQLBindParameter(m_statement.Get(), static_cast<SQLUSMALLINT>(position + 1), SQL_PARAM_INPUT,
                                         parameter.isBytes ? SQL_C_BINARY : SQL_C_WCHAR, type,
                                         std::max<std::size_t>(units, 1), 0, content, m_sizes[position],
                                         &m_sizes[position]));
}

void Command::Run(const CString &statement, std::vector<Parameter> parameters) {
    m_parameters = std::move(parameters);
    m_sizes.resize(m_parameters.size());
    for (std::size_t i = 0; i < m_parameters.size(); ++i) Bind(i);
    std::u16string text = Utf16FromGbk(statement.View());
    const SQLRETURN code = ::SQLExecDirectW(m_statement.Get(), Wide(text), static_cast<SQLINTEGER>(text.size()));
    m_statement.Check(code);
    m_isEmpty = code == SQL_NO_DATA;
}

long long Command::Touched() const {
    SQLLEN count = 0;
    if (m_isEmpty || !SQL_SUCCEEDED(::SQLRowCount(m_statement.Get(), &count))) return 0;
    return std::max<long long>(count, 0);
}

bool Command::FindRows() {
    for (;;) {
        SQLSMALLINT columns = 0;
        if (!m_isEmpty) m_statement.Check(::SQLNumResultCols(m_statement.Get(), &columns));
        if (columns > 0) return true;
        const SQLRETURN code = ::SQLMoreResults(m_statement.Get());
        m_statement.Check(code);
        if (code == SQL_NO_DATA) return false;
        m_isEmpty = false;
    }
}

void Command::Finish() {
    for (SQLRETURN code = SQL_SUCCESS; code != SQL_NO_DATA;) {
        code = ::SQLMoreResults(m_statement.Get());
        m_statement.Check(code);
    }
}

}  // namespace ktl::ado::odbc
