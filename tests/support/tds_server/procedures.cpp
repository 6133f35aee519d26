#include <algorithm>

#include "tests/support/tds_server/session.h"

namespace ktl::test::tds {
namespace {

constexpr std::size_t kMaxCursors = 256;

/// How `sp_cursorfetch` moves.
enum FetchKind {
    kFetchFirst = 0x01,
    kFetchNext = 0x02,
    kFetchPrevious = 0x04,
    kFetchLast = 0x08,
    kFetchAbsolute = 0x10,
    kFetchRelative = 0x20,
    kFetchInfo = 0x100
};

/// The row, counted from 1, that a fetch of `count` rows starts at.
long long FetchStart(const Cursor &cursor, long long kind, long long row, long long count) {
    const auto total = static_cast<long long>(cursor.result.rows.size());
    switch (kind) {
        case kFetchFirst:
            return 1;
        case kFetchNext:
            return cursor.row + std::max(cursor.fetched, cursor.row == 0 ? 1LL : 0LL);
        case kFetchPrevious:
            return cursor.row - count;
        case kFetchLast:
            return std::max(1LL, total - count + 1);
        case kFetchAbsolute:
            return row >= 0 ? row : total + 1 + row;
        case kFetchRelative:
            return cursor.row + row;
        default:
            throw SqlError(16902, "sp_cursorfetch: The value of the parameter 'fetchtype' is invalid.");
    }
}

/// A cursor's rows carry a last column that tells a row's state: 1, it is there.
Result WithRowState(const Result &result) {
    Result shown;
    shown.columns = result.columns;
    shown.columns.push_back({"ROWSTAT", *ParseType("int"), false, ""});
    return shown;
}
constexpr long long kRowIsThere = 1;

}  // namespace

Parameters ProcedureCall::ParametersFrom(std::size_t first) const {
    Parameters parameters;
    for (std::size_t i = first; i < arguments.size(); ++i) {
        // An argument without a name is the statement's parameter of its place.
        const std::string place = "@P" + std::to_string(i - first + 1);
        parameters.emplace_back(arguments[i].name.empty() ? place : arguments[i].name, arguments[i].value);
    }
    return parameters;
}

long long ProcedureCall::Integer(std::size_t position) const {
    const long long *value = position < arguments.size() ? std::get_if<long long>(&arguments[position].value) : nullptr;
    if (!value) throw SqlError(201, "Procedure '" + name + "' expects an integer which was not supplied.");
    return *value;
}

long long ProcedureCall::IntegerOr(std::size_t position, long long usual) const {
    const long long *value = position < arguments.size() ? std::get_if<long long>(&arguments[position].value) : nullptr;
    return value ? *value : usual;
}

std::string ProcedureCall::Text(std::size_t position) const {
    const std::string *value =
        position < arguments.size() ? std::get_if<std::string>(&arguments[position].value) : nullptr;
    if (!value) throw SqlError(214, "Procedure '" + name + "' expects a statement of type 'ntext/nchar/nvarchar'.");
    return *value;
}

void Session::ExecuteSql(const ProcedureCall &call) {
    PutStatements(call.Text(0), call.ParametersFrom(2), DoneToken::DoneInProc);
    PutReturnStatus(m_answer, 0);
}

void Session::Prepare(const ProcedureCall &call) {
    m_prepared[++m_lastHandle] = call.Text(2);
    PutReturnStatus(m_answer, 0);
    PutReturnInteger(m_answer, 0, "", m_lastHandle);
}

void Session::PrepareAndExecute(const ProcedureCall &call) {
    const std::string statement = call.Text(2);
    PutStatements(statement, call.ParametersFrom(3), DoneToken::DoneInProc);
    m_prepared[++m_lastHandle] = statement;
    PutReturnStatus(m_answer, 0);
    PutReturnInteger(m_answer, 0, "", m_lastHandle);
}

void Session::Execute(const ProcedureCall &call) {
    const auto found = m_prepared.find(call.Integer(0));
    if (found == m_prepared.end()) {
        throw SqlError(8179, "Could not find prepared statement with handle " + std::to_string(call.Integer(0)) + ".");
    }
    PutStatements(found->second, call.ParametersFrom(1), DoneToken::DoneInProc);
    PutReturnStatus(m_answer, 0);
}

void Session::Unprepare(const ProcedureCall &call) {
    m_prepared.erase(call.Integer(0));
    PutReturnStatus(m_answer, 0);
}

/// A statement without rows is run at once and gets no cursor.
void Session::OpenCursor(const ProcedureCall &call) {
    const std::string statement = call.Text(1);
    m_server.onStatement(statement);
    if (m_cursors.size() >= kMaxCursors) throw SqlError(701, "There are too many open cursors.");
    const std::vector<SqlTokens> statements = SplitBatch(statement);
    if (statements.size() != 1) {
        throw SqlError(16937, "A server cursor is not allowed on a remote stored procedure or a batch.");
    }
    const SqlStatement translated = Translate(statements[0], m_database);
    Cursor cursor{RunStatement(translated, call.ParametersFrom(6))};
    const bool hasRows = cursor.result.HasRows();
    const int handle = hasRows ? ++m_lastHandle : 0;
    const auto count = static_cast<int>(cursor.result.rows.size());
    if (hasRows) {
        PutColumns(m_answer, WithRowState(cursor.result));
        PutDone(m_answer, DoneToken::DoneInProc, kDoneMore);
        m_cursors.emplace(handle, std::move(cursor));
    } else {
        PutResult(cursor.result, DoneToken::DoneInProc, true);
    }
    PutReturnStatus(m_answer, 0);
    PutReturnInteger(m_answer, 0, "", handle);
    PutReturnInteger(m_answer, 2, "", static_cast<int>(call.Integer(2)));
    PutReturnInteger(m_answer, 3, "", static_cast<int>(call.Integer(3)));
    PutReturnInteger(m_answer, 4, "", count);
}

Cursor &Session::FindCursor(long long handle) {
    const auto found = m_cursors.find(handle);
    if (found == m_cursors.end()) {
        throw SqlError(16909, "The cursor identifier value provided (" + std::to_string(handle) + ") is not valid.");
    }
    return found->second;
}

void Session::FetchCursor(const ProcedureCall &call) {
    Cursor &cursor = FindCursor(call.Integer(0));
    const long long kind = call.Integer(1);
    const auto total = static_cast<long long>(cursor.result.rows.size());
    if (kind == kFetchInfo) {
        PutReturnStatus(m_answer, 0);
        PutReturnInteger(m_answer, 2, "", static_cast<int>(cursor.row));
        return PutReturnInteger(m_answer, 3, "", static_cast<int>(total));
    }
    const long long count = std::clamp(call.IntegerOr(3, 1), 1LL, 1000LL);
    const long long row = call.IntegerOr(2, 0);
    const long long start = FetchStart(cursor, kind, row, count);
    cursor.row = std::clamp(start, 0LL, total + 1);
    cursor.fetched = start >= 1 ? std::clamp(total + 1 - start, 0LL, count) : 0;
    const Result shown = WithRowState(cursor.result);
    PutColumns(m_answer, shown);
    for (long long i = 0; i < cursor.fetched; ++i) {
        std::vector<Cell> cells = cursor.result.rows[static_cast<std::size_t>(cursor.row - 1 + i)];
        cells.emplace_back(kRowIsThere);
        PutRow(m_answer, shown, cells);
    }
    PutDone(m_answer, DoneToken::DoneInProc, kDoneMore | kDoneCount, cursor.fetched);
    PutReturnStatus(m_answer, 0);
}

void Session::ListTables(const ProcedureCall &) {
    const Result tables = m_server.databases.Run(
        "Select TABLE_CATALOG As TABLE_QUALIFIER,TABLE_SCHEMA As TABLE_OWNER,TABLE_NAME,"
        "'TABLE' As TABLE_TYPE,'' As REMARKS From (" +
        Databases::TableList(m_database) + ") Order By TABLE_NAME");
    PutResult(tables, DoneToken::DoneInProc, true);
    PutReturnStatus(m_answer, 0);
}

/// Options name the cursor or choose its text columns: nothing that shows in its rows.
void Session::SetCursorOption(const ProcedureCall &call) {
    FindCursor(call.Integer(0));
    PutReturnStatus(m_answer, 0);
}

void Session::CloseCursor(const ProcedureCall &call) {
    FindCursor(call.Integer(0));
    m_cursors.erase(call.Integer(0));
    PutReturnStatus(m_answer, 0);
}

}  // namespace ktl::test::tds
