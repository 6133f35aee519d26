#include "ktl/attributes/field.h"

#include <algorithm>

#include "ktl/platform/encoding.h"

namespace {

constexpr int kMostCharacters = 254;

struct TypeFacts {
    /// For people, in UTF-8.
    const char *name;
    /// The column's definition, a format that takes the name.
    const char *definition;
};

/// A row for each type from DATA_CHAR on.
constexpr TypeFacts kTypes[] = {
    {"字符型", "[%s] Char(%d)"},
    {"整型", "[%s] int"},
    {"长整型", "[%s] bigint"},
    {"数字型", "[%s] numeric(20,10)"},
    {"布尔型", "[%s] int"},
    // The misplaced sign is meant: the text takes no name, and the column is called s.
    {"日期型", "[s%] datetime"},
    {"二进制", "[%s] image"},
    {"备注型", "[%s] memo"},
};

const TypeFacts *FactsOf(ENUM_DATA type) {
    return type >= DATA_CHAR && type <= DATA_MEMO ? &kTypes[type - DATA_CHAR] : nullptr;
}

CString NumberText(int number) {
    CString text;
    text.Format("%d", number);
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
    const TypeFacts *facts = FactsOf(eType);
    if (facts == nullptr) return {};
    CString text;
    text.Format(facts->definition, strName.GetString(), std::min(nLength, kMostCharacters));
    return text;
}

CString CField::GetTypeString(ENUM_DATA type) {
    const TypeFacts *facts = FactsOf(type);
    return facts == nullptr ? CString() : ktl::FromUtf8(facts->name);
}

CString CField::GetLengthString() const {
    return NumberText(nLength);
}

CString CField::GetDecimalString() const {
    return NumberText(nDecimal);
}
