#include "ktl/attributes/field.h"

#include <algorithm>
#include <iterator>

#include "ktl/platform/encoding.h"

namespace {

constexpr int kMaxCharWidth = 254;

struct TypeTexts {
    const char *name;
    /// Filled with the column's name, and the width for a char column.
    const char *column;
};

/// By type from DATA_NONE. The misplaced percent sign of the date column is meant: it makes a column named s.
constexpr TypeTexts kTypes[] = {
    {"", ""},
    {"字符型", "[%s] Char(%d)"},
    {"整型", "[%s] int"},
    {"长整型", "[%s] bigint"},
    {"数字型", "[%s] numeric(20,10)"},
    {"布尔型", "[%s] int"},
    {"日期型", "[s%] datetime"},
    {"二进制", "[%s] image"},
    {"备注型", "[%s] memo"},
};

const TypeTexts &TextsOf(ENUM_DATA type) {
    return type > DATA_NONE && type < static_cast<int>(std::size(kTypes)) ? kTypes[type] : kTypes[DATA_NONE];
}

CString Decimal(int value) {
    CString text;
    text.Format("%d", value);
    return text;
}

}  // namespace

CField::CField(int id, CString name, ENUM_DATA type, int readOnly)
    : nID(id), strName(name), eType(type), bReadOnly(readOnly != 0) {}

bool CField::operator==(const CField &other) const {
    return strName.CompareNoCase(other.strName) == 0 && nID == other.nID && nLength == other.nLength &&
           nDecimal == other.nDecimal && eType == other.eType && bReadOnly == other.bReadOnly &&
           bSystem == other.bSystem;
}

CString CField::GetSQLString() const {
    CString text;
    text.Format(TextsOf(eType).column, strName.GetString(), std::min(nLength, kMaxCharWidth));
    return text;
}

CString CField::GetTypeString(ENUM_DATA type) {
    return ktl::FromUtf8(TextsOf(type).name);
}

CString CField::GetLengthString() const {
    return Decimal(nLength);
}

CString CField::GetDecimalString() const {
    return Decimal(nDecimal);
}
