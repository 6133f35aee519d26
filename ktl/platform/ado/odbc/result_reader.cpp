#include "ktl/platform/ado/odbc/result_reader.h"

#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/odbc/library.h"
#include "ktl/platform/ado/odbc/server_column.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

constexpr std::size_t kPieceSize = 16384;
constexpr SQLSMALLINT kNameSize = 1024;
constexpr int kNanosecondsOfMillisecond = 1000000;
constexpr int kMillisecondsOfDay = 86400000;

ServerColumn Describe(const Handle &statement, SQLUSMALLINT position) {
    SQLWCHAR name[kNameSize] = {};
    SQLSMALLINT nameSize = 0;
    SQLSMALLINT type = 0;
    SQLULEN size = 0;
    SQLSMALLINT decimals = 0;
    SQLSMALLINT nullable = SQL_NULLABLE;
    statement.Check(
        ::SQLDescribeColW(statement.Get(), position, name, kNameSize, &nameSize, &type, &size, &decimals, &nullable));
    SQLWCHAR typeName[kNameSize] = {};
    SQLLEN unused = 0;
    ::SQLColAttributeW(statement.Get(), position, SQL_DESC_TYPE_NAME, typeName, sizeof typeName, &nameSize, &unused);
    return {Narrow(name), type, static_cast<std::size_t>(size), decimals, nullable != SQL_NO_NULLS, Narrow(typeName)};
}

/// Reads the cells of a statement's current row, from the first column on.
class RowReader {
  public:
    explicit RowReader(const Handle &statement) : m_statement(statement) {}

    void Read(SQLUSMALLINT position, Transfer transfer, Value &value) {
        switch (transfer) {
            case Transfer::Integer: {
                SQLBIGINT number = 0;
                return GetFixed(position, SQL_C_SBIGINT, number) ? value.SetInteger(number) : value.SetNull();
            }
            case Transfer::Bit: {
                unsigned char bit = 0;
                return GetFixed(position, SQL_C_BIT, bit) ? value.SetBool(bit != 0) : value.SetNull();
            }
            case Transfer::Single: {
                float number = 0;
                return GetFixed(position, SQL_C_FLOAT, number) ? SetSingle(number, value) : value.SetNull();
            }
            case Transfer::Double: {
                double number = 0;
                return GetFixed(position, SQL_C_DOUBLE, number) ? value.SetDouble(number) : value.SetNull();
            }
            case Transfer::TimeStamp: {
                SQL_TIMESTAMP_STRUCT stamp = {};
                return GetFixed(position, SQL_C_TYPE_TIMESTAMP, stamp) ? SetTime(stamp, value) : value.SetNull();
            }
            case Transfer::Bytes:
                return GetLong(position, SQL_C_BINARY) ? value.SetBytes(m_content) : value.SetNull();
            case Transfer::Decimal:
            case Transfer::Guid:
            case Transfer::Text:
            case Transfer::PaddedText:
                return GetLong(position, SQL_C_CHAR) ? SetText(transfer, value) : value.SetNull();
        }
    }

  private:
    /// False for a null.
    template <class T>
    bool GetFixed(SQLUSMALLINT position, SQLSMALLINT type, T &target) {
        SQLLEN size = 0;
        m_statement.Check(::SQLGetData(m_statement.Get(), position, type, &target, sizeof target, &size));
        return size != SQL_NULL_DATA;
    }

    /// Piece by piece: of a truncated piece the driver may not know what remains.
    bool GetLong(SQLUSMALLINT position, SQLSMALLINT type) {
        m_content.clear();
        m_piece.resize(kPieceSize);
        const std::size_t room = type == SQL_C_CHAR ? kPieceSize - 1 : kPieceSize;
        for (;;) {
            SQLLEN size = 0;
            const SQLRETURN code = ::SQLGetData(m_statement.Get(), position, type, m_piece.data(), kPieceSize, &size);
            if (code == SQL_NO_DATA) return true;
            m_statement.Check(code);
            if (size == SQL_NULL_DATA) return false;
            const bool whole = size != SQL_NO_TOTAL && static_cast<std::size_t>(size) <= room;
            if (whole) {
                m_content.append(m_piece.data(), static_cast<std::size_t>(size));
            } else if (type == SQL_C_CHAR) {
                // A piece of text may end before the room does, in front of a character that is too long for the rest.
                m_content.append(m_piece.c_str());
            } else {
                m_content.append(m_piece.data(), room);
            }
            if (whole || code == SQL_SUCCESS) return true;
        }
    }

    void SetText(Transfer transfer, Value &value) {
        if (transfer == Transfer::Guid)
            return value.SetText(m_content.starts_with('{') ? m_content : "{" + m_content + "}");
        if (transfer == Transfer::PaddedText) m_content.resize(m_content.find_last_not_of(' ') + 1);
        if (transfer != Transfer::Decimal) return value.SetText(FromUtf8(m_content).View());
        if (const std::optional<Decimal> number = DecimalFromText(m_content)) return value.SetDecimal(*number);
        throw Error("The driver gives \"" + FromUtf8(m_content) + "\" for a number.", error_number::kTypeMismatch);
    }

    /// The digits that are seen of the float: 0.1f is 0.1.
    static void SetSingle(float number, Value &value) {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, number).ptr;
        double wide = number;
        std::from_chars(text, end, wide);
        value.SetDouble(wide);
    }

    static void SetTime(const SQL_TIMESTAMP_STRUCT &stamp, Value &value) {
        std::optional<DateTime> time =
            FromCivil({stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second});
        if (!time) return value.SetNull();
        time->milliseconds += static_cast<int>(stamp.fraction) / kNanosecondsOfMillisecond;
        if (time->milliseconds >= kMillisecondsOfDay) time->milliseconds = kMillisecondsOfDay - 1;
        value.SetDateTime(*time);
    }

    const Handle &m_statement;
    std::string m_piece;
    std::string m_content;
};

}  // namespace

std::shared_ptr<StaticRecordset> ReadResult(const Handle &statement) {
    SQLSMALLINT count = 0;
    statement.Check(::SQLNumResultCols(statement.Get(), &count));
    std::vector<Column> columns;
    std::vector<Transfer> transfers;
    for (SQLSMALLINT i = 1; i <= count; ++i) {
        const ServerColumn column = Describe(statement, static_cast<SQLUSMALLINT>(i));
        columns.push_back(ToColumn(column));
        transfers.push_back(TransferOf(column));
    }
    auto rows = std::make_shared<StaticRecordset>(std::move(columns));
    if (count <= 0) {
        rows->Close();
        return rows;
    }
    RowReader reader(statement);
    std::vector<Value> cells(transfers.size());
    for (;;) {
        const SQLRETURN code = ::SQLFetch(statement.Get());
        statement.Check(code);
        if (code == SQL_NO_DATA) return rows;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            reader.Read(static_cast<SQLUSMALLINT>(i + 1), transfers[i], cells[i]);
        }
        rows->AddRow(cells);
    }
}

}  // namespace ktl::ado::odbc
