#include "ktl/platform/ado/odbc/server_column.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/odbc/library.h"

namespace ktl::ado::odbc {

namespace {

constexpr int kLongSize = std::numeric_limits<int>::max();
/// In characters of two bytes.
constexpr int kLongWideSize = kLongSize / 2;
constexpr int kMoneySize = 8;
/// Types of the server that ODBC's own headers lack.
constexpr int kServerVariant = -150;
constexpr int kServerXml = -152;
constexpr int kServerTime = -154;
constexpr int kServerTimeOffset = -155;

struct TypeFacts {
    int type;
    DataType shown;
    Transfer transfer;
    /// Bytes of a value; 0: the driver's size counts.
    int size;
    /// What it becomes without a limit of its size.
    DataType unlimited;
};
constexpr TypeFacts kTypes[] = {
    {SQL_BIT, DataType::Boolean, Transfer::Bit, 2, DataType::Boolean},
    {SQL_TINYINT, DataType::UnsignedTinyInt, Transfer::Integer, 1, DataType::UnsignedTinyInt},
    {SQL_SMALLINT, DataType::SmallInt, Transfer::Integer, 2, DataType::SmallInt},
    {SQL_INTEGER, DataType::Integer, Transfer::Integer, 4, DataType::Integer},
    {SQL_BIGINT, DataType::BigInt, Transfer::Integer, 8, DataType::BigInt},
    {SQL_REAL, DataType::Single, Transfer::Single, 4, DataType::Single},
    {SQL_FLOAT, DataType::Double, Transfer::Double, 8, DataType::Double},
    {SQL_DOUBLE, DataType::Double, Transfer::Double, 8, DataType::Double},
    {SQL_NUMERIC, DataType::Numeric, Transfer::Decimal, 19, DataType::Numeric},
    {SQL_DECIMAL, DataType::Numeric, Transfer::Decimal, 19, DataType::Numeric},
    {SQL_TYPE_TIMESTAMP, DataType::DBTimeStamp, Transfer::TimeStamp, 16, DataType::DBTimeStamp},
    {SQL_TYPE_DATE, DataType::DBDate, Transfer::TimeStamp, 6, DataType::DBDate},
    {SQL_TYPE_TIME, DataType::VarWChar, Transfer::Text, 0, DataType::VarWChar},
    {kServerTime, DataType::VarWChar, Transfer::Text, 0, DataType::VarWChar},
    {kServerTimeOffset, DataType::VarWChar, Transfer::Text, 0, DataType::VarWChar},
    {SQL_GUID, DataType::GUID, Transfer::Guid, 16, DataType::GUID},
    {SQL_CHAR, DataType::Char, Transfer::PaddedText, 0, DataType::LongVarChar},
    {SQL_VARCHAR, DataType::VarChar, Transfer::Text, 0, DataType::LongVarChar},
    {SQL_LONGVARCHAR, DataType::LongVarChar, Transfer::Text, kLongSize, DataType::LongVarChar},
    {SQL_WCHAR, DataType::WChar, Transfer::PaddedText, 0, DataType::LongVarWChar},
    {SQL_WVARCHAR, DataType::VarWChar, Transfer::Text, 0, DataType::LongVarWChar},
    {SQL_WLONGVARCHAR, DataType::LongVarWChar, Transfer::Text, kLongWideSize, DataType::LongVarWChar},
    {kServerXml, DataType::LongVarWChar, Transfer::Text, kLongWideSize, DataType::LongVarWChar},
    {kServerVariant, DataType::VarWChar, Transfer::Text, 0, DataType::VarWChar},
    {SQL_BINARY, DataType::Binary, Transfer::Bytes, 0, DataType::LongVarBinary},
    {SQL_VARBINARY, DataType::VarBinary, Transfer::Bytes, 0, DataType::LongVarBinary},
    {SQL_LONGVARBINARY, DataType::LongVarBinary, Transfer::Bytes, kLongSize, DataType::LongVarBinary},
};
/// Any other type is shown by its text.
constexpr TypeFacts kUnknown{0, DataType::VarWChar, Transfer::Text, 0, DataType::LongVarWChar};
/// More than a row can hold: nvarchar(max) and its like.
constexpr std::size_t kLargestSize = 8000;

const TypeFacts &FactsOf(int type) {
    const auto *found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeFacts &facts) { return facts.type == type; });
    return found == std::end(kTypes) ? kUnknown : *found;
}

bool IsMoney(const ServerColumn &column) {
    return EqualNames(column.typeName.View(), "money") || EqualNames(column.typeName.View(), "smallmoney");
}

}  // namespace

Column ToColumn(const ServerColumn &column) {
    const TypeFacts &facts = FactsOf(column.type);
    const bool unlimited = facts.size == 0 && (column.size == 0 || column.size > kLargestSize);
    Column shown;
    shown.name = column.name;
    shown.type = unlimited ? facts.unlimited : facts.shown;
    shown.nullable = column.nullable;
    if (facts.size > 0) {
        shown.definedSize = facts.size;
    } else {
        const int longest = shown.type == DataType::LongVarWChar ? kLongWideSize : kLongSize;
        shown.definedSize = unlimited ? longest : static_cast<int>(column.size);
    }
    if (IsMoney(column)) {
        shown.type = DataType::Currency;
        shown.definedSize = kMoneySize;
    } else if (shown.type == DataType::Numeric) {
        shown.precision = static_cast<int>(std::min<std::size_t>(column.size, std::numeric_limits<int>::max()));
        shown.scale = column.decimals;
    }
    return shown;
}

Transfer TransferOf(const ServerColumn &column) {
    return FactsOf(column.type).transfer;
}

}  // namespace ktl::ado::odbc
