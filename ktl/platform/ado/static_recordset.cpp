#include "ktl/platform/ado/static_recordset.h"

#include <cstring>

#include "ktl/platform/ado/error.h"

namespace ktl::ado {

namespace {

template <class T>
void PutRaw(std::string &out, const T &value) {
    out.append(reinterpret_cast<const char *>(&value), sizeof value);
}

template <class T>
T TakeRaw(const char *&in) {
    T value;
    std::memcpy(&value, in, sizeof value);
    in += sizeof value;
    return value;
}

void PackCell(std::string &out, const Value &value) {
    out.push_back(static_cast<char>(value.GetKind()));
    switch (value.GetKind()) {
        case Value::Kind::Null:
            break;
        case Value::Kind::Integer:
            PutRaw(out, value.Integer());
            break;
        case Value::Kind::Double:
            PutRaw(out, value.Double());
            break;
        case Value::Kind::Decimal: {
            const Decimal decimal = value.AsDecimal();
            PutRaw(out, decimal.units);
            out.push_back(static_cast<char>(decimal.scale));
            break;
        }
        case Value::Kind::Bool:
            out.push_back(value.Bool() ? 1 : 0);
            break;
        case Value::Kind::DateTime:
            PutRaw(out, value.Time());
            break;
        case Value::Kind::Text:
        case Value::Kind::Bytes:
            PutRaw(out, static_cast<std::uint32_t>(value.Bytes().size()));
            out.append(value.Bytes());
            break;
    }
}

void UnpackCell(const char *&in, Value &value) {
    const auto kind = static_cast<Value::Kind>(*in++);
    switch (kind) {
        case Value::Kind::Null:
            value.SetNull();
            break;
        case Value::Kind::Integer:
            value.SetInteger(TakeRaw<long long>(in));
            break;
        case Value::Kind::Double:
            value.SetDouble(TakeRaw<double>(in));
            break;
        case Value::Kind::Decimal: {
            Decimal decimal;
            decimal.units = TakeRaw<Int128>(in);
            decimal.scale = *in++;
            value.SetDecimal(decimal);
            break;
        }
        case Value::Kind::Bool:
            value.SetBool(*in++ != 0);
            break;
        case Value::Kind::DateTime:
            value.SetDateTime(TakeRaw<DateTime>(in));
            break;
        case Value::Kind::Text:
        case Value::Kind::Bytes: {
            const auto size = TakeRaw<std::uint32_t>(in);
            const std::string_view bytes(in, size);
            in += size;
            if (kind == Value::Kind::Text) {
                value.SetText(bytes);
            } else {
                value.SetBytes(bytes);
            }
            break;
        }
    }
}

}  // namespace

StaticRecordset::StaticRecordset(std::vector<Column> columns)
    : StaticRecordset(std::make_shared<const std::vector<Column>>(std::move(columns))) {}

StaticRecordset::StaticRecordset(std::shared_ptr<const std::vector<Column>> columns)
    : m_columns(std::move(columns)), m_current(m_columns->size()) {}

void StaticRecordset::AddRow(const Value *const *values) {
    m_rows.push_back({m_cells.size(), static_cast<std::uint32_t>(m_rows.size())});
    for (std::size_t i = 0; i < m_columns->size(); ++i) PackCell(m_cells, *values[i]);
}

void StaticRecordset::AddRow(const std::vector<Value> &values) {
    m_rows.push_back({m_cells.size(), static_cast<std::uint32_t>(m_rows.size())});
    for (const Value &value : values) PackCell(m_cells, value);
}

void StaticRecordset::Reorder(const std::vector<std::uint32_t> &order) {
    std::vector<Row> rows;
    rows.reserve(order.size());
    for (const std::uint32_t index : order) rows.push_back(m_rows[index]);
    m_rows = std::move(rows);
    m_position = 0;
    m_currentLoaded = false;
}

void StaticRecordset::RequireOpen() const {
    if (!m_open) throw Error("Operation is not allowed when the object is closed.", error_number::kClosed);
}

int StaticRecordset::GetRecordCount() const {
    RequireOpen();
    return static_cast<int>(m_rows.size());
}

bool StaticRecordset::IsEOF() const {
    RequireOpen();
    return m_position >= m_rows.size();
}

void StaticRecordset::MoveNext() {
    if (IsEOF()) throw Error("There is no current row: the recordset is at its end.", error_number::kNoCurrentRow);
    Update();
    ++m_position;
    m_currentLoaded = false;
    ResetChunks();
}

void StaticRecordset::MoveFirst() {
    RequireOpen();
    Update();
    m_position = 0;
    m_currentLoaded = false;
    ResetChunks();
}

const std::vector<Column> &StaticRecordset::GetColumns() const {
    RequireOpen();
    return *m_columns;
}

void StaticRecordset::LoadRow() {
    if (IsEOF()) throw Error("There is no current row: the recordset is at its end.", error_number::kNoCurrentRow);
    if (m_currentLoaded) return;
    const char *in = m_cells.data() + m_rows[m_position].offset;
    for (Value &value : m_current) UnpackCell(in, value);
    m_currentLoaded = true;
}

const Value &StaticRecordset::GetCell(int column) {
    GetColumn(column);
    LoadRow();
    return m_current[static_cast<std::size_t>(column)];
}

void StaticRecordset::StoreCell(int column, const Value &value) {
    if (!m_writer) throw Error("The recordset is read-only.", error_number::kReadOnly);
    LoadRow();
    m_writer(static_cast<int>(m_rows[m_position].index), column, value);
    m_current[static_cast<std::size_t>(column)] = value;
}

void StaticRecordset::Close() {
    m_open = false;
    std::string().swap(m_cells);
    std::vector<Row>().swap(m_rows);
}

}  // namespace ktl::ado
