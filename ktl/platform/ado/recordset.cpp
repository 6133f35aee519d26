#include "ktl/platform/ado/recordset.h"

#include <algorithm>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado {

const Column &Recordset::GetColumn(int column) const {
    const auto &columns = GetColumns();
    if (column < 0 || column >= static_cast<int>(columns.size())) {
        CString text;
        text.Format("Item %d cannot be found: the recordset has %d columns.", column, static_cast<int>(columns.size()));
        throw Error(text, error_number::kColumnNotFound);
    }
    return columns[static_cast<std::size_t>(column)];
}

int Recordset::FindColumn(std::string_view name) const {
    const auto &columns = GetColumns();
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column &column) { return EqualNames(column.name.View(), name); });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

int Recordset::RequireColumn(std::string_view name) const {
    const int column = FindColumn(name);
    if (column < 0) {
        throw Error("Item \"" + CString(name) + "\" cannot be found among the recordset's columns.",
                    error_number::kColumnNotFound);
    }
    return column;
}

const Value &Recordset::GetCell(const CString &name) {
    return GetCell(RequireColumn(name.View()));
}

int Recordset::GetActualSize(int column) {
    const Value &cell = GetCell(column);
    switch (cell.GetKind()) {
        case Value::Kind::Null:
            return 0;
        case Value::Kind::Text:
        case Value::Kind::Bytes:
            return static_cast<int>(cell.Bytes().size());
        default:
            return GetColumn(column).definedSize;
    }
}

Value Recordset::GetChunk(int column, int count) {
    const Value &cell = GetCell(column);
    if (m_chunkColumn != column) m_chunkColumn = column, m_chunkPosition = 0;
    if (cell.GetKind() != Value::Kind::Text && cell.GetKind() != Value::Kind::Bytes) return {};
    const std::string_view bytes = cell.Bytes();
    if (m_chunkPosition >= bytes.size() || count <= 0) return {};
    const std::string_view chunk = bytes.substr(m_chunkPosition, static_cast<std::size_t>(count));
    m_chunkPosition += chunk.size();
    return Value::FromBytes(chunk);
}

void Recordset::AppendChunk(int column, std::string_view bytes) {
    GetCell(column);
    if (m_pendingColumn != column) {
        Update();
        m_pendingColumn = column;
    }
    m_pending += bytes;
}

void Recordset::Update() {
    if (m_pendingColumn < 0) return;
    const int column = m_pendingColumn;
    const Value value = Value::FromBytes(m_pending);
    ResetChunks();
    StoreCell(column, value);
}

void Recordset::ResetChunks() {
    m_chunkColumn = -1;
    m_chunkPosition = 0;
    m_pendingColumn = -1;
    m_pending.clear();
}

}  // namespace ktl::ado
