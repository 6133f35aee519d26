#pragma once

#include <cstddef>

#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/export.h"

namespace ktl::ado::odbc {

/// A result column as the driver describes it.
struct ServerColumn {
    CString name;
    /// ODBC's number of the type.
    int type = 0;
    /// Characters, bytes, digits or bits, by the type; 0 where the driver knows no limit.
    std::size_t size = 0;
    int decimals = 0;
    bool nullable = true;
    /// The server's own name of the type, which alone tells money from other decimals.
    CString typeName;
};

/// How a cell is asked of the driver. Padded text loses the blanks at its end.
enum class Transfer { Integer, Single, Double, Decimal, Bit, TimeStamp, Guid, Text, PaddedText, Bytes };

/// The same column in the platform's numbers: a float of 53 bits has 8 bytes, an int of 10 digits has 4.
KTL_API Column ToColumn(const ServerColumn &column);
KTL_API Transfer TransferOf(const ServerColumn &column);

}  // namespace ktl::ado::odbc
