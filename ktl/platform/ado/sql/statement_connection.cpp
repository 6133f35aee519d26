#include "ktl/platform/ado/sql/statement_connection.h"

#include "ktl/platform/ado/error.h"

namespace ktl::ado::sql {

StatementConnection::StatementConnection(std::shared_ptr<Store> store)
    : m_store(std::move(store)), m_executor(std::make_unique<Executor>(m_store)) {}

StatementConnection::~StatementConnection() {
    Close();
}

void StatementConnection::RequireOpen() const {
    if (!m_store) throw Error("Operation is not allowed when the object is closed.", error_number::kClosed);
}

long long StatementConnection::Execute(const CString &statement) {
    RequireOpen();
    return m_executor->Execute(statement.View());
}

RecordsetRef StatementConnection::OpenRecordset(const CString &statement, bool) {
    RequireOpen();
    return m_executor->Select(statement.View());
}

void StatementConnection::ReadPages(const CString &statement, const std::function<bool(const RecordsetRef &)> &use) {
    RequireOpen();
    m_executor->ReadPages(statement.View(), use);
}

RecordsetRef StatementConnection::OpenSchema(int schema) {
    RequireOpen();
    if (schema != kSchemaTables) {
        throw Error("Only the list of tables is known of the schema.", error_number::kUnsupported);
    }
    return MakeTableSchema(m_store->ListTables());
}

std::shared_ptr<void> StatementConnection::HoldTable(const CString &table) {
    RequireOpen();
    try {
        return m_store->HoldTable(table);
    } catch (const Error &) {
        return nullptr;
    }
}

void StatementConnection::Close() {
    if (!m_store) return;
    m_executor.reset();
    m_store->Close();
    m_store.reset();
}

}  // namespace ktl::ado::sql
