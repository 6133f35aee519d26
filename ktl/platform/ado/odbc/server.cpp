#include "ktl/platform/ado/odbc/server.h"

#include <vector>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/command.h"
#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/ado/odbc/result_reader.h"
#include "ktl/platform/ado/odbc/row_writer.h"

namespace ktl::ado::odbc {

namespace {

constexpr int kNameColumn = 2;
constexpr int kTypeColumn = 3;

}  // namespace

Server::Server(const ConnectionString &settings) : m_link(std::make_shared<Link>(settings, GetConnectionTimeout())) {}

const Link &Server::RequireOpen() const {
    if (!m_link) throw Error("Operation is not allowed when the object is closed.", error_number::kClosed);
    return *m_link;
}

long long Server::Execute(const CString &statement) {
    Command command(RequireOpen());
    command.Run(statement);
    const long long touched = command.Touched();
    command.Finish();
    return touched;
}

RecordsetRef Server::OpenRecordset(const CString &statement, bool) {
    Command command(RequireOpen());
    command.Run(statement);
    const std::shared_ptr<StaticRecordset> rows = ReadResult(command.Statement());
    // The recordset holds its writer, so the writer must not hold the recordset.
    rows->SetCellWriter(
        [rowsOf = rows.get(), writer = RowWriter(m_link, statement)](int row, int column, const Value &value) mutable {
            writer.Store(*rowsOf, row, column, value);
        });
    return rows;
}

RecordsetRef Server::OpenSchema(int schema) {
    const Link &link = RequireOpen();
    if (schema != kSchemaTables) {
        throw Error("Only the list of tables is known of the schema.", error_number::kUnsupported);
    }
    const Handle handle(HandleKind::Statement, link.Connection().Get());
    handle.Check(::SQLTablesW(handle.Get(), nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0));
    std::vector<TableEntry> tables;
    for (const RecordsetRef rows = ReadResult(handle); !rows->IsEOF(); rows->MoveNext()) {
        tables.push_back({CString(rows->GetCell(kNameColumn).Text()), CString(rows->GetCell(kTypeColumn).Text())});
    }
    return MakeTableSchema(tables);
}

void Server::Close() {
    m_link.reset();
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
