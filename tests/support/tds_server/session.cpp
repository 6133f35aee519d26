#include "tests/support/tds_server/session.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tests/support/tds_server/login.h"

namespace ktl::test::tds {
namespace {

constexpr std::string_view kTransaction("\x01\x00\x00\x00\x00\x00\x00\x00", 8);

/// Messages of clients begin with a list of headers, whose whole length comes first.
void SkipHeaders(ByteReader &reader) {
    const std::uint32_t size = reader.U32();
    if (size < 4) throw ProtocolError("headers too short");
    reader.Bytes(size - 4);
}

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

}  // namespace ktl::test::tds
