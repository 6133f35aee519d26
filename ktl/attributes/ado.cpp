#include "ktl/attributes/ado.h"

#include <algorithm>
#include <memory>

#include "ktl/attributes/ado_guard.h"
#include "ktl/core/log.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl {

CString FaultText(const std::exception &fault) {
    if (const auto *error = dynamic_cast<const ado::Error *>(&fault)) return error->GetDescription();
    return FromUtf8(fault.what());
}

void LogStoreFault(const std::exception &fault, const CString &sent) {
    KtlWriteLog(kStoreFaultCode, FaultText(fault) + "\n" + sent, 1);
}

}  // namespace ktl

namespace {

using ktl::GuardStore;
using ktl::ado::ConnectionRef;
using ktl::ado::RecordsetRef;
using ktl::ado::Value;

CString NotConnected() {
    return ktl::FromUtf8("数据库未连接。");
}

ktl::ado::Connection &Require(const ConnectionRef &connection) {
    if (!connection) throw ktl::ado::Error(NotConnected(), ktl::ado::error_number::kClosed);
    return *connection;
}

CString CellText(const Value &cell) {
    const bool hasText = !cell.IsNull() && cell.GetKind() != Value::Kind::Bytes;
    return hasText ? cell.ToText().TrimRight() : CString();
}

bool IsTableNamed(const RecordsetRef &schema, const CString &lowerName) {
    return CellText(schema->GetCell("TABLE_TYPE")) == "TABLE" &&
           CellText(schema->GetCell("TABLE_NAME")).MakeLower() == lowerName;
}

std::string_view AsText(const unsigned char *bytes, long size) {
    return {reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(size)};
}

}  // namespace

int CAdo::CreateDB(CString, CString) {
    return 1;
}

int CAdo::ConnDB(CString) {
    return 1;
}

int CAdo::CreateTable(CString) {
    return 1;
}

int CAdo::GetRecordCount(CString) {
    return 0;
}

int CAdo::ExecuteSql(CString sql) {
    constexpr int kTooLongCode = 100098;
    if (sql.IsEmpty()) return 0;
    if (sql.GetLength() > ktl::kLongestStatement) {
        KtlWriteLog(kTooLongCode, ktl::FromUtf8("查询语句长度不能超过8192字节"), 1);
        return 0;
    }
    return GuardStore(sql, 0, [&] {
        Require(m_connection).Execute(sql);
        return 1;
    });
}

RecordsetRef CAdo::GetRecordset(CString sql, int nullIfEmpty, int clientCursor) {
    if (!m_connection) {
        KtlWriteLog(ktl::kStoreFaultCode, NotConnected(), 1);
        return {};
    }
    return GuardStore(sql, RecordsetRef(), [&] {
        RecordsetRef rows = m_connection->OpenRecordset(sql, clientCursor != 0);
        if (nullIfEmpty == 1 && rows->IsEOF()) {
            rows->Close();
            rows.reset();
        }
        return rows;
    });
}

CString CAdo::GetItemValue(const RecordsetRef &rows, CString field) {
    return GuardStore(field, CString(), [&] { return rows ? CellText(rows->GetCell(field)) : CString(); });
}

CString CAdo::GetItemValue(const RecordsetRef &rows, int field) {
    return GuardStore(CString(), CString(), [&] { return rows ? CellText(rows->GetCell(field)) : CString(); });
}

int CAdo::IsExist(CString sql) {
    const RecordsetRef rows = GetRecordset(sql, 1, 0);
    if (!rows) return 0;
    rows->Close();
    return 1;
}

int CAdo::IsExistTable(CString table) {
    const CString name = CString(table).MakeLower();
    return GuardStore(table, 0, [&] {
        const RecordsetRef schema = Require(m_connection).OpenSchema(ktl::ado::Connection::kSchemaTables);
        while (!schema->IsEOF() && !IsTableNamed(schema, name)) schema->MoveNext();
        const int found = schema->IsEOF() ? 0 : 1;
        schema->Close();
        return found;
    });
}

void CAdo::AddBLOBValue(CString sql, CString field, unsigned char *bytes, long size, int) {
    if (bytes == nullptr || size <= 0) return;
    GuardStore(sql, 0, [&] {
        const RecordsetRef rows = Require(m_connection).OpenRecordset(sql, false);
        rows->AppendChunk(rows->RequireColumn(field.View()), AsText(bytes, size));
        rows->Update();
        rows->Close();
        return 1;
    });
}

void CAdo::AddBLOBValue(const RecordsetRef &rows, CString field, unsigned char *bytes, long size, int) {
    if (!rows || bytes == nullptr || size <= 0) return;
    GuardStore(field, 0, [&] {
        rows->AppendChunk(rows->RequireColumn(field.View()), AsText(bytes, size));
        return 1;
    });
}

unsigned char *CAdo::GetBLOBValue(const RecordsetRef &rows, CString field, long &size) {
    size = 0;
    if (!rows) return nullptr;
    auto *none = static_cast<unsigned char *>(nullptr);
    return GuardStore(field, none, [&]() -> unsigned char * {
        const int column = rows->RequireColumn(field.View());
        size = rows->GetActualSize(column);
        if (size <= 0 || rows->GetCell(column).GetKind() != Value::Kind::Bytes) return nullptr;
        const Value chunk = rows->GetChunk(column, static_cast<int>(size));
        auto block = std::make_unique<unsigned char[]>(static_cast<std::size_t>(size));
        const std::string_view bytes = chunk.Bytes();
        std::copy_n(bytes.begin(), std::min(bytes.size(), static_cast<std::size_t>(size)), block.get());
        return block.release();
    });
}

void CAdo::DisConnection() {
    GuardStore(CString(), 0, [&] {
        const ConnectionRef open = std::move(m_connection);
        m_connection.reset();
        bConnected = 0;
        if (open && open->IsOpen()) open->Close();
        return 1;
    });
}

void CAdo::SetConnection(ConnectionRef connection) {
    m_connection = std::move(connection);
    bConnected = m_connection ? 1 : 0;
}
