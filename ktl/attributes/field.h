#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// The type of a column.
enum ENUM_DATA : int {
    /// A column of a file that cannot be represented: listed, never written.
    DATA_UNSUPPORTED = -1,
    DATA_NONE = 0,
    DATA_CHAR = 1,
    DATA_INT = 2,
    DATA_BIGINT = 3,
    DATA_NUMERIC = 4,
    /// Made as an integer column.
    DATA_BOOL = 5,
    DATA_DATETIME = 6,
    DATA_BINARY = 7,
    DATA_MEMO = 8,
};

/// One column of a table.
class KTL_API CField {
  public:
    /// Unnamed, read-only. Neither form sets length or decimals: the creator does.
    CField() = default;
    CField(int id, CString name, ENUM_DATA type, int readOnly);
    CField(const CField &) = default;
    CField &operator=(const CField &) = default;
    virtual ~CField() = default;

    /// Equal in all but the case of the name and the spare words.
    bool operator==(const CField &other) const;
    bool operator!=(const CField &other) const { return !(*this == other); }

    /// The column's definition in a CREATE or ALTER TABLE statement; empty for a type without one. A char column has at
    /// most 254 characters. A date column is always named s: meant so.
    CString GetSQLString() const;
    /// The type's name for people, in Chinese; empty for a type without one.
    CString GetTypeString() const { return GetTypeString(eType); }
    static CString GetTypeString(ENUM_DATA type);
    CString GetLengthString() const;
    CString GetDecimalString() const;

    /// Position in the table from 0; -1 is not yet assigned.
    int nID = -1;
    /// Width in characters; -1 where that has no meaning.
    int nLength = 0;
    /// Digits after the point.
    int nDecimal = 0;
    CString strName;
    ENUM_DATA eType = DATA_NONE;
    /// 1: shown but not edited.
    BYTE bReadOnly = 1;
    /// 1: the system's own, left out of copies of the user's columns.
    BYTE bSystem = 0;
    /// Copied, never compared.
    int nSpare1 = 0;
    int nSpare2 = 0;
    int nSpare3 = 0;
};
