#pragma once

#include "ktl/platform/types.h"

namespace ktl::ado {

/// The column types of recordsets, with the numbers of the platform's data access interface.
enum class DataType : std::int32_t {
    Empty = 0,
    SmallInt = 2,
    Integer = 3,
    Single = 4,
    Double = 5,
    Currency = 6,
    Date = 7,
    BSTR = 8,
    IDispatch = 9,
    Error = 10,
    Boolean = 11,
    Variant = 12,
    IUnknown = 13,
    Decimal = 14,
    TinyInt = 16,
    UnsignedTinyInt = 17,
    UnsignedSmallInt = 18,
    UnsignedInt = 19,
    BigInt = 20,
    UnsignedBigInt = 21,
    FileTime = 64,
    GUID = 72,
    Binary = 128,
    Char = 129,
    WChar = 130,
    Numeric = 131,
    UserDefined = 132,
    DBDate = 133,
    DBTime = 134,
    DBTimeStamp = 135,
    Chapter = 136,
    PropVariant = 138,
    VarNumeric = 139,
    VarChar = 200,
    LongVarChar = 201,
    VarWChar = 202,
    LongVarWChar = 203,
    VarBinary = 204,
    LongVarBinary = 205,
    Array = 8192,
};

}  // namespace ktl::ado
