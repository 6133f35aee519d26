#include "tests/support/tds_server/session.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tests/support/tds_server/login.h"

namespace ktl::test::tds {
namespace {

constexpr std::string_view kTransaction("\x01\x00\x00\x00\x00\x00\x00\x00", 8);
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

/// Messages of clients begin with a list of headers, whose whole length comes first.
void SkipHeaders(ByteReader &reader) {
    const std::uint32_t size = reader.U32();
    if (size < 4) throw ProtocolError("headers too short");
    reader.Bytes(size - 4);
}

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

/// Of "hours:minutes:seconds".
long long MillisecondsOf(const std::string &time) {
    int hours = 0;
    int minutes = 0;
    double seconds = 0;
    if (std::sscanf(time.c_str(), "%d:%d:%lf", &hours, &minutes, &seconds) < 2) {
        throw SqlError(148, "Incorrect time syntax in time string '" + time + "' used with WAITFOR.");
    }
    return (hours * 60LL + minutes) * 60'000 + std::llround(seconds * 1000);
}

}  // namespace

const Session::ProcedureFacts Session::kProcedures[] = {
    {2, "sp_cursoropen", &Session::OpenCursor},
    {7, "sp_cursorfetch", &Session::FetchCursor},
    {8, "sp_cursoroption", &Session::SetCursorOption},
    {9, "sp_cursorclose", &Session::CloseCursor},
    {10, "sp_executesql", &Session::ExecuteSql},
    {11, "sp_prepare", &Session::Prepare},
    {12, "sp_execute", &Session::Execute},
    {13, "sp_prepexec", &Session::PrepareAndExecute},
    {15, "sp_unprepare", &Session::Unprepare},
    // Called by its name only.
    {-2, "sp_tables", &Session::ListTables},
};

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

Session::~Session() {
    if (m_inTransaction && m_server.databases.InTransaction()) m_server.databases.Rollback();
}

std::string Session::Answer(const Message &message) {
    m_hold = 0;
    if (message.kind == MessageKind::Prelogin) return AnswerPrelogin();
    if (message.kind == MessageKind::Login) {
        LogIn(message.body);
        return m_answer.Take();
    }
    if (!m_loggedIn) throw ProtocolError("a request before the login");
    switch (message.kind) {
        case MessageKind::Batch:
            RunBatch(message.body);
            break;
        case MessageKind::Rpc:
            RunCalls(message.body);
            break;
        case MessageKind::Transaction:
            RunTransaction(message.body);
            break;
        case MessageKind::Attention:
            PutDone(m_answer, DoneToken::Done, kDoneAttention);
            break;
        default:
            throw ProtocolError("unknown kind of message");
    }
    return m_answer.Take();
}

void Session::LogIn(std::string_view message) {
    const Login login = ParseLogin(message);
    m_over = true;
    if (login.user != m_server.user || login.password != m_server.password) {
        PutError(m_answer, SqlError(18456, "Login failed for user '" + login.user + "'.", 14));
        return PutDone(m_answer, DoneToken::Done, kDoneError);
    }
    if (!login.database.empty() && !m_server.databases.Has(login.database)) {
        PutError(
            m_answer,
            SqlError(4060, "Cannot open database \"" + login.database + "\" requested by the login. The login failed.",
                     11));
        PutError(m_answer, SqlError(18456, "Login failed for user '" + login.user + "'.", 14));
        return PutDone(m_answer, DoneToken::Done, kDoneError);
    }
    m_over = false;
    m_loggedIn = true;
    UseDatabase(login.database.empty() ? m_database : login.database);
    PutEnvironment(m_answer, Environment::Collation, std::string_view("\x04\x08\xD0\x00\x00", 5), "");
    PutEnvironment(m_answer, Environment::Language, "us_english", "");
    PutEnvironment(m_answer, Environment::PacketSize, std::to_string(kPacketSize), std::to_string(kPacketSize));
    PutLoginAck(m_answer);
    PutDone(m_answer, DoneToken::Done, kDoneFinal);
}

void Session::UseDatabase(const std::string &name) {
    if (!m_server.databases.Has(name)) {
        throw SqlError(911, "Database '" + name + "' does not exist. Make sure that the name is entered correctly.");
    }
    PutEnvironment(m_answer, Environment::Database, name, m_database);
    PutInfo(m_answer, 5701, "Changed database context to '" + name + "'.");
    m_database = name;
}

void Session::RunBatch(std::string_view message) {
    ByteReader reader(message);
    SkipHeaders(reader);
    const std::string batch = reader.Utf16(reader.Left() / 2);
    try {
        PutStatements(batch, {}, DoneToken::Done);
    } catch (const SqlError &error) {
        PutError(m_answer, error);
        PutDone(m_answer, DoneToken::Done, kDoneError);
    }
}

void Session::PutStatements(const std::string &batch, const Parameters &parameters, DoneToken token) {
    m_server.onStatement(batch);
    // A procedure's settings end with it.
    const bool outerNoCount = m_noCount;
    const std::vector<SqlTokens> statements = SplitBatch(batch);
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const Result result = RunStatement(Translate(statements[i], m_database), parameters);
        PutResult(result, token, token != DoneToken::Done || i + 1 < statements.size());
    }
    if (token != DoneToken::Done) m_noCount = outerNoCount;
    if (statements.empty() && token == DoneToken::Done) PutDone(m_answer, token, kDoneFinal);
}

Result Session::RunStatement(const SqlStatement &statement, const Parameters &parameters) {
    switch (statement.kind) {
        case SqlStatement::Kind::Use:
            UseDatabase(statement.text);
            return {};
        case SqlStatement::Kind::CreateDatabase:
            m_server.databases.Add(statement.text);
            return {};
        case SqlStatement::Kind::NoCount:
            m_noCount = strcasecmp(statement.text.c_str(), "ON") == 0;
            return {};
        case SqlStatement::Kind::Wait:
            m_hold += MillisecondsOf(statement.text);
            return {};
        case SqlStatement::Kind::Ignore:
            return {};
        case SqlStatement::Kind::Sql:
            break;
    }
    if (!statement.described.empty()) DescribeStatement(statement, parameters);
    return m_server.databases.Run(statement.text, parameters);
}

void Session::DescribeStatement(const SqlStatement &asking, const Parameters &parameters) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const auto &parameter) { return parameter.first == asking.described; });
    const std::string *text = found == parameters.end() ? nullptr : std::get_if<std::string>(&found->second);
    if (!text) throw SqlError(137, "Must declare the scalar variable \"" + asking.described + "\".");
    const std::vector<SqlTokens> statements = SplitBatch(*text);
    m_server.databases.Describe(statements.empty() ? "" : Translate(statements[0], m_database).text);
}

void Session::PutResult(const Result &result, DoneToken token, bool more) {
    const unsigned flags = more ? kDoneMore : kDoneFinal;
    if (result.HasRows()) {
        PutColumns(m_answer, result);
        for (const std::vector<Cell> &row : result.rows) PutRow(m_answer, result, row);
        return PutDone(m_answer, token, flags | kDoneCount, static_cast<long long>(result.rows.size()));
    }
    if (result.changes < 0 || m_noCount) return PutDone(m_answer, token, flags);
    PutDone(m_answer, token, flags | kDoneCount, result.changes);
}

void Session::RunTransaction(std::string_view message) {
    enum Request { kBegin = 5, kCommit = 7, kRollback = 8 };
    ByteReader reader(message);
    SkipHeaders(reader);
    const int request = reader.U16();
    try {
        if (request == kBegin) {
            m_server.databases.Begin();
            PutEnvironment(m_answer, Environment::Begin, kTransaction, "");
        } else if (request == kCommit || request == kRollback) {
            if (!m_inTransaction) throw SqlError(3902, "The request has no corresponding BEGIN TRANSACTION.");
            const bool commit = request == kCommit;
            commit ? m_server.databases.Commit() : m_server.databases.Rollback();
            PutEnvironment(m_answer, commit ? Environment::Commit : Environment::Rollback, "", kTransaction);
        } else {
            throw ProtocolError("unknown request of the transaction manager");
        }
        m_inTransaction = request == kBegin;
        // The end of a transaction may begin the next one.
        if (!m_inTransaction && reader.Left() > 1) {
            reader.Utf16(reader.U8());
            if (!reader.AtEnd() && (reader.U8() & 1)) {
                m_server.databases.Begin();
                m_inTransaction = true;
                PutEnvironment(m_answer, Environment::Begin, kTransaction, "");
            }
        }
        PutDone(m_answer, DoneToken::Done, kDoneFinal);
    } catch (const SqlError &error) {
        PutError(m_answer, error);
        PutDone(m_answer, DoneToken::Done, kDoneError);
    }
}

const Session::ProcedureFacts *Session::FindProcedure(int number, std::string_view name) {
    for (const ProcedureFacts &facts : kProcedures) {
        if (facts.number == number || facts.name == name) return &facts;
    }
    return nullptr;
}

ProcedureCall Session::ReadCall(ByteReader &reader) {
    constexpr std::uint16_t kByNumber = 0xFFFF;
    ProcedureCall call;
    const std::uint16_t units = reader.U16();
    if (units == kByNumber) {
        const int number = reader.U16();
        const ProcedureFacts *facts = FindProcedure(number, "");
        call.name = facts ? facts->name : "#" + std::to_string(number);
    } else {
        call.name = reader.Utf16(units);
    }
    reader.U16();
    const auto isNextCall = [&] { return reader.Peek() == 0x80 || reader.Peek() == 0xFF; };
    while (!reader.AtEnd() && !isNextCall()) {
        std::string name = reader.Utf16(reader.U8());
        reader.U8();
        call.arguments.push_back({std::move(name), ReadTypedValue(reader)});
    }
    if (!reader.AtEnd()) reader.U8();
    return call;
}

void Session::RunCalls(std::string_view message) {
    ByteReader reader(message);
    SkipHeaders(reader);
    while (!reader.AtEnd()) {
        const ProcedureCall call = ReadCall(reader);
        unsigned flags = reader.AtEnd() ? kDoneFinal : kDoneMore;
        try {
            RunCall(call);
        } catch (const SqlError &error) {
            flags |= kDoneError;
            PutError(m_answer, error);
            PutReturnStatus(m_answer, error.number);
        }
        PutDone(m_answer, DoneToken::DoneProc, flags);
    }
}

void Session::RunCall(const ProcedureCall &call) {
    const ProcedureFacts *facts = FindProcedure(-1, call.name);
    if (!facts) throw SqlError(2812, "Could not find stored procedure '" + call.name + "'.");
    (this->*facts->run)(call);
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
