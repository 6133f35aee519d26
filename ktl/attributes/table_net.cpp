#include "ktl/attributes/table_net.h"

#include <algorithm>
#include <array>

#include "ktl/attributes/ado_guard.h"
#include "ktl/attributes/ado_net.h"
#include "ktl/attributes/column_kind.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"

namespace {

using ktl::ado::DataType;

ENUM_DATA TypeOf(DataType type) {
    switch (type) {
        case DataType::SmallInt:
        case DataType::Integer:
        case DataType::TinyInt:
        case DataType::UnsignedTinyInt:
        case DataType::UnsignedSmallInt:
        case DataType::UnsignedInt:
            return DATA_INT;
        case DataType::BigInt:
        case DataType::UnsignedBigInt:
            return DATA_BIGINT;
        case DataType::Double:
        case DataType::Decimal:
        case DataType::Numeric:
        case DataType::VarNumeric:
            return DATA_NUMERIC;
        case DataType::Boolean:
            return DATA_BOOL;
        case DataType::Date:
        case DataType::FileTime:
        case DataType::DBDate:
        case DataType::DBTime:
            return DATA_DATETIME;
        case DataType::BSTR:
        case DataType::Char:
        case DataType::WChar:
        case DataType::VarChar:
        case DataType::LongVarChar:
        case DataType::VarWChar:
        case DataType::LongVarWChar:
            return DATA_CHAR;
        case DataType::Binary:
        case DataType::VarBinary:
        case DataType::LongVarBinary:
            return DATA_BINARY;
        // The usual date column of a server, DBTimeStamp, is among these.
        case DataType::Single:
        case DataType::Currency:
        case DataType::IDispatch:
        case DataType::Error:
        case DataType::Variant:
        case DataType::IUnknown:
        case DataType::GUID:
        case DataType::UserDefined:
        case DataType::DBTimeStamp:
        case DataType::Chapter:
        case DataType::PropVariant:
        case DataType::Array:
            return DATA_UNSUPPORTED;
        default:
            return DATA_NONE;
    }
}

CField MakeField(const ktl::ado::Column &column, int id) {
    CField field;
    field.nID = id;
    field.strName = column.name;
    field.nLength = column.definedSize;
    field.eType = TypeOf(column.type);
    field.bReadOnly = 0;
    field.bSystem = ktl::IsSystemColumn(column.name) ? 1 : 0;
    return field;
}

/// The column's definition as the server takes it; a format that takes the name, and the length for a text.
const char *ServerDefinition(ENUM_DATA type) {
    switch (type) {
        case DATA_CHAR:
            return "[%s] [nvarChar](%d)";
        case DATA_INT:
        case DATA_BOOL:
            return "[%s] [int]";
        case DATA_BIGINT:
            return "[%s] [bigint]";
        case DATA_NUMERIC:
            return "[%s][numeric](31,15)";
        // The misplaced sign is meant, as in CField.
        case DATA_DATETIME:
            return "[s%] [datetime]";
        case DATA_BINARY:
            return "[%s][image]";
        default:
            return "";
    }
}

struct ColumnLists {
    CString names = "[ShapeID],";
    /// Formed along with the names; no statement uses it.
    CString definitions;
};

ColumnLists ListColumns(CFields &fields) {
    ColumnLists lists;
    for (int i = 0; i < fields.GetFieldCount(); ++i) {
        const CField &field = *fields.GetFieldAt(i);
        lists.names += "[" + field.strName + "],";
        CString definition;
        definition.Format(ServerDefinition(field.eType), field.strName.GetString(), field.nLength);
        lists.definitions += definition + ",";
    }
    lists.names.Trim(',');
    lists.definitions.Trim(',');
    return lists;
}

CString ListValues(CFields &fields, const CRecord &record) {
    CString list;
    list.Format("%d,'", record.nShapeID);
    for (int i = 0; i < fields.GetFieldCount(); ++i) {
        if (fields.GetFieldAt(i)->bSystem == 1) continue;
        list += record.GetValueAt(i).Trim() + "','";
    }
    return list.Left(list.GetLength() - 2);
}

}  // namespace

CTable_Net::CTable_Net() {
    nTableKind = 3;
}

CTable_Net::~CTable_Net() = default;

void CTable_Net::InitTable(CAdo_Net *ado, CString table) {
    pAdo = ado;
    strTableName = table;
    GetTableFields();
}

CFields *CTable_Net::GetTableFields() {
    ReplaceFields(std::make_unique<CFields>());
    if (pAdo == nullptr) return pFields.get();
    CString sql;
    sql.Format("Select Top 1 * From [map].dbo.[%s]", strTableName.GetString());
    const ktl::ado::RecordsetRef rows = pAdo->GetRecordset(sql, 1, 0);
    if (!rows) return pFields.get();
    ktl::GuardStore(sql, 0, [&] {
        for (const ktl::ado::Column &column : rows->GetColumns()) {
            pFields->AddField(MakeField(column, pFields->GetFieldCount()));
        }
        rows->Close();
        return 1;
    });
    return pFields.get();
}

void CTable_Net::UpdatePropertyToDB() {
    CFields *fields = GetTableFields();
    if (fields == nullptr) return;
    const ColumnLists columns = ListColumns(*fields);
    for (CRecord *&record : arrNewRecords) {
        CString sql;
        sql.Format("Insert Into [Map].dbo.[%s](%s) Values (%s)", strTableName.GetString(), columns.names.GetString(),
                   ListValues(*fields, *record).GetString());
        if (pAdo != nullptr) pAdo->ExecuteSql(sql);
        delete record;
        record = nullptr;
    }
    arrNewRecords.RemoveAll();
}
