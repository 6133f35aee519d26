#include "ktl/attributes/ado_local_dbf.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "ktl/attributes/column_kind.h"
#include "ktl/attributes/dbf_head.h"
#include "ktl/attributes/fields.h"
#include "ktl/core/log.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/file.h"

namespace {

constexpr int kEntrySize = 32;
constexpr std::size_t kNameSize = 11;
constexpr std::size_t kTypeAt = 11;
constexpr std::size_t kLengthAt = 16;
/// Stands in the place of a name behind the last entry; what follows is no entry.
constexpr char kTerminator = '\r';

struct LetterFacts {
    char letter;
    ENUM_DATA type;
    /// 0: as the file says.
    int forcedLength;
};

constexpr LetterFacts kLetters[] = {
    {'C', DATA_CHAR, 0},    {'I', DATA_INT, 0},         {'B', DATA_NUMERIC, 0},     {'F', DATA_NUMERIC, 0},
    {'N', DATA_NUMERIC, 0}, {'L', DATA_BOOL, 0},        {'D', DATA_DATETIME, 8},    {'T', DATA_DATETIME, 8},
    {'M', DATA_MEMO, 0},    {'G', DATA_UNSUPPORTED, 0}, {'P', DATA_UNSUPPORTED, 0}, {'Y', DATA_UNSUPPORTED, 0},
};

/// Adds the column of an entry, unless its letter is unknown.
void AddEntry(CFields &fields, std::string_view entry, int index) {
    const auto *facts = std::find_if(std::begin(kLetters), std::end(kLetters),
                                     [&](const LetterFacts &row) { return row.letter == entry[kTypeAt]; });
    if (facts == std::end(kLetters)) return;
    const std::string_view name = entry.substr(0, kNameSize);
    CField field;
    field.nID = index;
    field.strName = CString(name.substr(0, name.find('\0')));
    field.nLength = facts->forcedLength != 0 ? facts->forcedLength : static_cast<unsigned char>(entry[kLengthAt]);
    field.eType = facts->type;
    field.bReadOnly = 0;
    field.bSystem = facts->type == DATA_UNSUPPORTED || ktl::IsSystemColumn(field.strName);
    fields.AddField(field);
}

void ReadEntries(CFile &file, CFields &fields) {
    const ktl::DbfHead head = ktl::ReadDbfHead(file);
    const int count = (head.headerLength - ktl::DbfHead::kSize) / kEntrySize;
    std::vector<char> header(static_cast<std::size_t>(head.headerLength));
    if (count > 0) file.Read(header.data(), static_cast<UINT>(head.headerLength - ktl::DbfHead::kSize));
    for (int i = 0; i < count; ++i) {
        const std::string_view entry(header.data() + i * kEntrySize, kEntrySize);
        if (entry[0] == kTerminator) break;
        AddEntry(fields, entry, i);
    }
}

}  // namespace

int CAdo_Local_dbf::ConnDB(CString folder) {
    strDBPath = folder;
    CString settings;
    settings.Format("Provider=VFPOLEDB.1;Data Source=%s;Password=;Collating Sequence=MACHINE", strDBPath.GetString());
    try {
        SetConnection(ktl::ado::Connection::Open(settings));
        return 1;
    } catch (const ktl::ado::Error &error) {
        if (error.GetNumber() != ktl::ado::error_number::kNoProvider) throw;
        return 0;
    }
}

int CAdo_Local_dbf::CreateTable(CString table) {
    CString sql;
    sql.Format("Create Table %s (ID int,ShapeID int)", table.GetString());
    return ExecuteSql(sql);
}

CFields *CAdo_Local_dbf::GetTableFields(CString table) {
    auto fields = std::make_unique<CFields>();
    ReadFieldInfo(fields.get(), table);
    return fields.release();
}

void CAdo_Local_dbf::ReadFieldInfo(CFields *fields, CString table) {
    CString path;
    path.Format("%s\\%s.dbf", strDBPath.GetString(), table.GetString());
    CFile file;
    if (!file.Open(path, CFile::modeReadWrite | CFile::shareDenyNone)) return;
    try {
        ReadEntries(file, *fields);
    } catch (CException &exception) {
        KtlShowException(&exception);
    }
}
