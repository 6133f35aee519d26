// A dBASE table in a document, and the rows that wait for it.

#include <algorithm>
#include <vector>

#include "ktl/attributes/ado_guard.h"
#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/dbf_head.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/attributes/table_text.h"
#include "ktl/core/log.h"
#include "ktl/core/paths.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/parse.h"

namespace {

/// Documents carry memo files from this version on.
constexpr int kMemoVersion = 205;
constexpr ULONGLONG kCopyBytes = 64 * 1024;

CString MemoPath(const CString &path) {
    return path.Left(path.GetLength() - 3) + "fpt";
}

/// A file's length and content; false when it doesn't open. `mark`, when given, goes in front.
bool WriteFile(CArchive &archive, const CString &path, const int *mark) {
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone)) return false;
    if (mark != nullptr) archive << *mark;
    ULONGLONG left = file.GetLength();
    archive << left;
    std::vector<BYTE> buffer(static_cast<std::size_t>(std::min(left, kCopyBytes)));
    while (left > 0) {
        const auto part = static_cast<UINT>(std::min(left, kCopyBytes));
        if (file.Read(buffer.data(), part) != part) throw CFileException(CFileException::endOfFile, -1, path);
        archive.Write(buffer.data(), part);
        left -= part;
    }
    return true;
}

/// Makes a file of the length and the content in the stream.
void ReadFile(CArchive &archive, const CString &path) {
    CFile file(path, CFile::modeCreate | CFile::modeReadWrite);
    ULONGLONG left = 0;
    archive >> left;
    std::vector<BYTE> buffer(kCopyBytes);
    while (left > 0) {
        const auto part = static_cast<UINT>(std::min(left, kCopyBytes));
        if (archive.Read(buffer.data(), part) != part) throw CArchiveException(CArchiveException::endOfFile);
        file.Write(buffer.data(), part);
        left -= part;
    }
    file.Close();
}

/// A document's table lies in the folder of temporary tables and nowhere else.
void RequireBareName(const CString &table) {
    if (ktl::SystemPath(table).find('/') == std::string::npos) return;
    throw CArchiveException(CArchiveException::badSchema);
}

CString NameList(CFields &fields) {
    CString names;
    for (int i = 0; i < fields.GetFieldCount(); ++i) {
        const CField &field = *fields.GetFieldAt(i);
        if (field.eType == DATA_MEMO) continue;
        if (!names.IsEmpty()) names += ",";
        names += field.strName;
    }
    return names;
}

/// Appends the values of the columns that are no memos. Only texts stand in quotes; an empty number leaves a gap: meant
/// so.
void AppendValues(CFields &fields, const CRecord &record, CString &sql) {
    bool isFirst = true;
    const int count = std::min(record.GetValueCount(), fields.GetFieldCount());
    for (int i = 0; i < count; ++i) {
        const ENUM_DATA type = fields.GetFieldAt(i)->eType;
        if (type == DATA_MEMO) continue;
        if (!isFirst) sql += ",";
        isFirst = false;
        const CString &value = record.arrValues[i];
        if (type == DATA_CHAR) {
            sql += "'";
            sql += ktl::DoubleQuotes(value);
            sql += "'";
        } else {
            sql += value;
        }
    }
}

}  // namespace

/// `head` is what every row's statement begins with.
void CTable_Local_dbf::InsertRecord(const CString &table, const CString &head, const CRecord &record) {
    constexpr int kNotInsertedCode = 100099;
    CString sql = head;
    AppendValues(*pFields, record, sql);
    sql += ")";
    if (sql.GetLength() <= ktl::kLongestStatement && Execute(sql) != 0) return;
    KtlWriteLog(kNotInsertedCode, ktl::FromUtf8("添加记录失败，这里将插入一条空记录。"), 0);
    const CField *id = pFields->GetFieldAt(0);
    const CField *shape = pFields->GetFieldAt(1);
    if (id == nullptr || shape == nullptr) throw CInvalidArgException();
    sql.Format("Insert Into [%s] (%s,%s) Values (%s,%s)", table.GetString(), id->strName.GetString(),
               shape->strName.GetString(), record.GetValueAt(0).GetString(), record.GetValueAt(1).GetString());
    Execute(sql);
}

void CTable_Local_dbf::SaveMemos(const CRecord &record) {
    const int shapeID = ktl::ParseInt(record.GetValueAt(1).View());
    const int count = std::min(record.GetValueCount(), pFields->GetFieldCount());
    for (int i = 0; i < count; ++i) {
        const CField &field = *pFields->GetFieldAt(i);
        const CString &text = record.arrValues[i];
        if (field.eType != DATA_MEMO || text.GetLength() > ktl::kMemoBytes) continue;
        CString sql;
        sql.Format("Update %s Set %s='%s' Where ShapeID=%d", strTableName.GetString(), field.strName.GetString(),
                   ktl::MemoLines(text).GetString(), shapeID);
        Execute(sql);
    }
}

/// New rows go into `table`, their memos into the table's own name.
void CTable_Local_dbf::SaveNewRecord(CString table) {
    constexpr int kErrorCode = 100101;
    try {
        if (GetTableFields() == nullptr) throw CInvalidArgException();
        CString head;
        const std::shared_ptr<void> hold = Hold(table);
        head.Format("Insert Into [%s] (%s) Values (", table.GetString(), NameList(*pFields).GetString());
        for (const CRecord *record : arrNewRecords) {
            if (record->bDeleted == 1) continue;
            InsertRecord(table, head, *record);
            SaveMemos(*record);
        }
        ForgetNewRecords();
    } catch (const std::exception &) {
        KtlWriteLog(kErrorCode, CString(), 1);
    }
}

void CTable_Local_dbf::Serialize(CArchive &archive, int version) {
    if (archive.IsStoring()) {
        Store(archive, version);
    } else {
        Load(archive, version);
    }
}

/// Copies the rows that are not deleted into another table. The copy stays when the document is written.
int CTable_Local_dbf::MakeCompactTable(const CString &compact) {
    CString definitions;
    CString names;
    GetAllFieldName(strTableName, definitions, names, 0);
    CString sql;
    sql.Format("Create Table %s (%s)", compact.GetString(), definitions.GetString());
    if (Execute(sql) == 0) return 0;
    sql.Format("Insert Into [%s] Select %s From [%s] Where ID <> -1", compact.GetString(), names.GetString(),
               strTableName.GetString());
    return Execute(sql);
}

void CTable_Local_dbf::Store(CArchive &archive, int version) {
    const CString compact = strTableName + "b";
    const CString path = PathOf(compact);
    if (GetNewRecordCount() > 0) SaveNewRecord(strTableName);
    if (MakeCompactTable(compact) == 0) return;
    archive << strTableName;
    WriteFile(archive, path, nullptr);
    if (version < kMemoVersion) return;
    const CString memo = MemoPath(path);
    const int isThere = KtlIsValidFilePath(memo);
    if (isThere == 0) {
        archive << isThere;
    } else {
        WriteFile(archive, memo, &isThere);
    }
}

void CTable_Local_dbf::Load(CArchive &archive, int version) {
    const CString folder = KtlGetTempDBFolderPath();
    pAdo = std::make_unique<CAdo_Local_dbf>();
    ktl::GuardStore(folder, 0, [&] { return pAdo->ConnDB(folder); });
    CString name;
    archive >> name;
    RequireBareName(name);
    strTableName = name;
    const CString path = PathOf(strTableName);
    if (!ktl::RemoveIfThere(path)) return;
    ReadFile(archive, path);
    ReplaceFields(nullptr);
    GetTableFields();
    int hasMemo = 0;
    if (version >= kMemoVersion) archive >> hasMemo;
    // The memo file of an older table of this name would give this one foreign texts.
    if (!ktl::RemoveIfThere(MemoPath(path))) return;
    if (hasMemo == 1) ReadFile(archive, MemoPath(path));
}
