// Whole columns of a dBASE table, and the search over one.

#include <algorithm>
#include <string_view>
#include <vector>

#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/dbf_head.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/core/log.h"
#include "ktl/platform/file.h"
#include "ktl/platform/parse.h"

namespace {

using SearchResults = CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT>;

constexpr int kMostHits = 200;
/// The width of every DATA_NUMERIC column.
constexpr int kNumericWidth = 20;
/// How much of the file is read at a time.
constexpr int kBlockBytes = 256 * 1024;

/// Up to the first zero byte, trimmed at both ends.
CString CellText(std::string_view bytes) {
    constexpr std::string_view kBlanks = "\t\n\v\f\r ";
    bytes = bytes.substr(0, bytes.find('\0'));
    const std::size_t first = bytes.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return CString(bytes.substr(first, bytes.find_last_not_of(kBlanks) - first + 1));
}

/// Reads `width` bytes at `offset` of every record, some records at a time; what the file lacks is empty.
void ReadCells(CFile &file, const ktl::DbfHead &head, int offset, int width, CArray<CString, CString> &values) {
    const int atOnce = std::max(1, kBlockBytes / std::max(head.recordLength, 1));
    std::vector<char> block;
    for (int first = 0; first < values.GetSize() && width > 0; first += atOnce) {
        const int count = std::min(atOnce, values.GetSize() - first);
        block.assign(static_cast<std::size_t>(head.recordLength) * (count - 1) + width, '\0');
        file.Seek(head.PositionOf(first, offset), CFile::begin);
        file.Read(block.data(), static_cast<UINT>(block.size()));
        for (int i = 0; i < count; ++i) {
            values[first + i] = CellText(
                {block.data() + static_cast<std::size_t>(head.recordLength) * i, static_cast<std::size_t>(width)});
        }
    }
}

/// The keywords stand in the pattern as they are.
CString SearchStatement(const CString &table, const CString &column, const CString &keyWords) {
    CString sql;
    sql.Format("Select Top %d ShapeID,%s From %s Where %s Like '%%%s%%' And ID <> -1 Order By ShapeID", kMostHits,
               column.GetString(), table.GetString(), column.GetString(), keyWords.GetString());
    return sql;
}

/// False when the array is full.
bool AddHit(const STRUCT_SEARCH_RESULT &hit, SearchResults &results) {
    results.Add(hit);
    return results.GetSize() < kMostHits;
}

}  // namespace

int CTable_Local_dbf::GetFieldOffsetAndLen(CString field, int &offset, int &length) {
    const CField *column = pFields->GetFieldByName(field);
    if (column == nullptr) return -1;
    length = column->nLength;
    offset = 1;
    for (int i = 0; i < column->nID; ++i) {
        const CField *before = pFields->GetFieldAt(i);
        if (before == nullptr) throw CInvalidArgException();
        offset += before->eType == DATA_NUMERIC ? kNumericWidth : before->nLength;
    }
    return column->nID;
}

/// The column's position, or -1 when the file or the column cannot be had.
int CTable_Local_dbf::ReadColumn(const CString &field, CArray<CString, CString> &values) {
    CFile file;
    if (!pAdo || !file.Open(PathOf(strTableName), CFile::modeReadWrite | CFile::shareDenyNone)) return -1;
    const ktl::DbfHead head = ktl::ReadDbfHead(file);
    if (GetTableFields() == nullptr) throw CInvalidArgException();
    int offset = 0;
    int length = 0;
    const int position = GetFieldOffsetAndLen(field, offset, length);
    if (position < 0) return -1;
    values.RemoveAll();
    values.SetSize(head.RecordsIn(file));
    // The last byte of the column is never read: meant so.
    ReadCells(file, head, offset, length - 1, values);
    return position;
}

void CTable_Local_dbf::ReadValueArray(CString field, CArray<CString, CString> &values) {
    constexpr int kErrorCode = 100097;
    try {
        const int position = ReadColumn(field, values);
        if (position < 0) return;
        for (const CRecord *record : arrNewRecords) values.Add(record->GetValueAt(position));
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

void CTable_Local_dbf::ReadValueArrayBySql(CString field, CArray<CString, CString> &values, int all) {
    CFields *fields = GetTableFields();
    const CField *column = fields != nullptr ? fields->GetFieldByName(field) : nullptr;
    if (column == nullptr) return;
    CString sql;
    sql.Format(all == 0 ? "Select %s From %s Where ID <> -1" : "Select %s From %s", field.GetString(),
               strTableName.GetString());
    if (const ktl::ado::RecordsetRef rows = GetRecordset(sql)) {
        values.SetSize(rows->GetRecordCount());
        for (int i = 0; !rows->IsEOF(); ++i, rows->MoveNext()) {
            CString value = GetItemValue(rows, field);
            if (column->eType == DATA_MEMO) value.Replace('\r', '\n');
            values.SetAtGrow(i, value);
        }
        rows->Close();
    }
    for (const CRecord *record : arrNewRecords) {
        if (all != 0 || record->bDeleted == 0) values.Add(record->GetValueAt(column->nID));
    }
}

bool CTable_Local_dbf::SearchNewRecords(const STRUCT_SEARCH_RESULT &layer, int field, const CString &keyWords,
                                        SearchResults &results) {
    for (const CRecord *record : arrNewRecords) {
        if (record->bDeleted != 0) continue;
        STRUCT_SEARCH_RESULT hit = layer;
        hit.nShapeID = record->nShapeID;
        hit.strValue = record->GetValueAt(field);
        if (hit.strValue.Find(keyWords) >= 0 && !AddHit(hit, results)) return false;
    }
    return true;
}

void CTable_Local_dbf::SearchByKeyWords(int layerIndex, CString layerName, int field, CString keyWords,
                                        SearchResults &results) {
    if (field < 0 || results.GetSize() >= kMostHits) return;
    STRUCT_SEARCH_RESULT hit;
    hit.nLayerIndex = layerIndex;
    hit.strLayerName = layerName;
    if (!SearchNewRecords(hit, field, keyWords, results)) return;
    CFields *fields = GetTableFields();
    const CField *column = fields != nullptr ? fields->GetFieldAt(field) : nullptr;
    if (column == nullptr) return;
    const CString sql = SearchStatement(strTableName, column->strName, keyWords);
    const ktl::ado::RecordsetRef rows = pAdo ? pAdo->GetRecordset(sql, 1, 0) : nullptr;
    if (!rows) return;
    for (; !rows->IsEOF(); rows->MoveNext()) {
        hit.nShapeID = ktl::ParseInt(pAdo->GetItemValue(rows, 0).View());
        hit.strValue = pAdo->GetItemValue(rows, 1);
        if (!AddHit(hit, results)) break;
    }
    rows->Close();
}
