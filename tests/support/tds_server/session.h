#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "tests/support/tds_server/message.h"
#include "tests/support/tds_server/token.h"
#include "tests/support/tds_server/translate.h"

namespace ktl::test::tds {

/// What all sessions of a server share.
struct ServerState {
    std::string user;
    std::string password;
    Databases databases;
    /// Told of each statement's text as it came.
    std::function<void(const std::string &)> onStatement;
};

/// A static cursor on rows that are held here.
struct Cursor {
    Result result;
    /// The first row of the last fetch, counted from 1; 0 in front of the rows, their count plus 1 behind them.
    long long row = 0;
    long long fetched = 0;
};

/// A call of a stored procedure.
struct ProcedureCall {
    struct Argument {
        std::string name;
        Cell value;
    };
    std::string name;
    std::vector<Argument> arguments;

    /// Arguments from `first` on, by name, for a statement.
    Parameters ParametersFrom(std::size_t first) const;
    /// Throw SqlError when it is missing.
    long long Integer(std::size_t position) const;
    std::string Text(std::size_t position) const;
    /// `usual` when it is null or missing.
    long long IntegerOr(std::size_t position, long long usual) const;
};

/// One connection's state and its answers.
class Session {
  public:
    explicit Session(ServerState &server) : m_server(server) {}
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// The answer to a message. Throws ProtocolError, which ends the connection. `IsOver` is true behind an answer
    /// that is the last one.
    std::string Answer(const Message &message);
    bool IsOver() const { return m_over; }
    /// How long the last answer is to be held back.
    long long HoldMilliseconds() const { return m_hold; }

  private:
    using Procedure = void (Session::*)(const ProcedureCall &);
    struct ProcedureFacts {
        int number;
        const char *name;
        Procedure run;
    };
    static const ProcedureFacts kProcedures[];
    static const ProcedureFacts *FindProcedure(int number, std::string_view name);

    void LogIn(std::string_view message);
    void RunBatch(std::string_view message);
    void RunCalls(std::string_view message);
    void RunTransaction(std::string_view message);

    ProcedureCall ReadCall(ByteReader &reader);
    void RunCall(const ProcedureCall &call);
    void ExecuteSql(const ProcedureCall &call);
    void Prepare(const ProcedureCall &call);
    void PrepareAndExecute(const ProcedureCall &call);
    void Execute(const ProcedureCall &call);
    void Unprepare(const ProcedureCall &call);
    void OpenCursor(const ProcedureCall &call);
    void FetchCursor(const ProcedureCall &call);
    void SetCursorOption(const ProcedureCall &call);
    void CloseCursor(const ProcedureCall &call);
    void ListTables(const ProcedureCall &call);

    /// Runs a batch's statements and puts the result of each, ended by `token`.
    void PutStatements(const std::string &batch, const Parameters &parameters, DoneToken token);
    Result RunStatement(const SqlStatement &statement, const Parameters &parameters);
    void PutResult(const Result &result, DoneToken token, bool more);
    void UseDatabase(const std::string &name);
    void DescribeStatement(const SqlStatement &asking, const Parameters &parameters);
    Cursor &FindCursor(long long handle);

    ServerState &m_server;
    ByteWriter m_answer;
    bool m_loggedIn = false;
    bool m_over = false;
    bool m_inTransaction = false;
    bool m_noCount = false;
    long long m_hold = 0;
    std::string m_database = "master";
    int m_lastHandle = 0;
    std::map<long long, std::string> m_prepared;
    std::map<long long, Cursor> m_cursors;
};

}  // namespace ktl::test::tds
