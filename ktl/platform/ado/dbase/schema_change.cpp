#include "ktl/platform/ado/dbase/schema_change.h"

#include <algorithm>
#include <cstring>

#include "ktl/platform/ado/dbase/beside.h"
#include "ktl/platform/ado/dbase/cell.h"
#include "ktl/platform/ado/dbase/new_file.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/sql/arithmetic.h"

namespace ktl::ado::dbase {

namespace {

using Change = sql::AlterTableStatement::Change;

constexpr std::size_t kWriteBytes = 256 * 1024;

/// A field of the new table and where its values come from.
struct NewField {
    Field field;
    /// The old table's field and column, or -1 for a new one.
    int oldField = -1;
    int oldColumn = -1;
    /// The bytes can be taken over as they are.
    bool same = false;
};

int ColumnOfField(const Header &header, int field) {
    return static_cast<int>(std::count_if(header.fields.begin(), header.fields.begin() + field,
                                          [](const Field &other) { return !other.IsHidden(); }));
}

[[noreturn]] void ThrowColumn(const sql::Name &name, const char *what, int number) {
    CString text;
    text.Format("Column \"%s\" at byte %u %s.", name.text.GetString(), name.position + 1, what);
    throw Error(text, number);
}

int RequireField(const Header &header, const sql::Name &name) {
    const int field = header.FindField(name.text.View());
    if (field < 0) ThrowColumn(name, "is not found", error_number::kColumnNotFound);
    return field;
}

void RequireFree(const Header &header, const sql::Name &name) {
    if (header.FindField(name.text.View()) >= 0) ThrowColumn(name, "is there already", error_number::kColumnName);
}

sql::Name NameOf(const sql::ColumnDefinition &definition) {
    return {definition.name, definition.position};
}

/// The fields as the new file holds them: memo pointers are four bytes wide.
std::vector<NewField> TakeOver(const Header &header) {
    std::vector<NewField> fields;
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        NewField taken{header.fields[i], static_cast<int>(i), -1, true};
        if (!taken.field.IsHidden()) taken.oldColumn = ColumnOfField(header, static_cast<int>(i));
        if (taken.field.IsMemo() && taken.field.width != 4) {
            if (taken.field.type == 'B') taken.field.type = 'G';
            taken.field.width = 4;
            taken.same = false;
        }
        fields.push_back(taken);
    }
    return fields;
}

using NewFields = std::vector<NewField>;

NewField &PlaceOf(NewFields &fields, const Header &header, const sql::Name &name) {
    return fields[static_cast<std::size_t>(RequireField(header, name))];
}

void AddColumn(NewFields &fields, const Header &header, const sql::ColumnDefinition &definition) {
    RequireFree(header, NameOf(definition));
    if (fields.size() >= kMaxColumns) throw Error("A table has at most 255 columns.", error_number::kSyntax);
    const auto end =
        std::find_if(fields.begin(), fields.end(), [](const NewField &field) { return field.field.type == '0'; });
    fields.insert(end, {MakeField(definition), -1, -1, false});
}

void DropColumn(NewFields &fields, const Header &header, const sql::Name &name) {
    fields.erase(fields.begin() + RequireField(header, name));
    if (std::all_of(fields.begin(), fields.end(), [](const NewField &field) { return field.field.IsHidden(); })) {
        throw Error("The last column cannot be dropped.", error_number::kSyntax);
    }
}

/// The column keeps its name as it was written, and may be null where it could be before.
void AlterColumn(NewFields &fields, const Header &header, const sql::ColumnDefinition &definition) {
    NewField &changed = PlaceOf(fields, header, NameOf(definition));
    const Field old = changed.field;
    changed.field = MakeField(definition);
    changed.same = changed.same && old.type == changed.field.type && old.width == changed.field.width &&
                   old.decimals == changed.field.decimals;
    changed.field.name = old.name;
    changed.field.flags |= old.flags & kColumnNullable;
}

void RenameColumn(NewFields &fields, const Header &header, const sql::AlterTableStatement &change) {
    NewField &renamed = PlaceOf(fields, header, change.column);
    // A definition of any kind with the new name: it has to be a name that a column can have.
    sql::ColumnDefinition checked;
    checked.name = change.newName.text;
    checked.position = change.newName.position;
    checked.width = 1;
    MakeField(checked);
    if (!EqualNames(change.newName.text.View(), change.column.text.View())) RequireFree(header, change.newName);
    renamed.field.name = change.newName.text;
}

NewFields ApplyChange(const Header &header, const sql::AlterTableStatement &change) {
    NewFields fields = TakeOver(header);
    switch (change.change) {
        case Change::Add:
            AddColumn(fields, header, change.definition);
            break;
        case Change::Drop:
            DropColumn(fields, header, change.column);
            break;
        case Change::Alter:
            AlterColumn(fields, header, change.definition);
            break;
        case Change::Rename:
            RenameColumn(fields, header, change);
            break;
    }
    return fields;
}

/// Writes the new table's rows from the old one's.
class Copier : private MemoSource {
  public:
    Copier(Table &table, NewFields fields, bool keepsDeleted)
        : m_table(table),
          m_fields(std::move(fields)),
          m_keepsDeleted(keepsDeleted),
          m_tableFile(table.GetPath()),
          m_codec(m_header, table.GetCodePage(), *this) {
        const Header &old = table.GetHeader();
        m_header.codePageMark = table.GetCodePage().IsGbk() ? kCodePageGbk : old.codePageMark;
        m_header.backlink = old.backlink;
        m_header.recordCount = keepsDeleted ? table.GetRowCount() : CountLive(table);
        for (const NewField &field : m_fields) m_header.fields.push_back(field.field);
        m_header.Arrange();
    }

    void Run() {
        ChooseMemo();
        WriteRows();
        if (m_newMemoFile) {
            m_newMemo.reset();
            m_newMemoFile->Place();
        }
        m_tableFile.Place();
        RemoveOldMemo();
    }

  private:
    static std::uint32_t CountLive(Table &table) {
        std::uint32_t count = 0;
        for (table.Rewind(); table.Next();) ++count;
        return count;
    }

    /// An .fpt stays and is added to; a .dbt is copied into a new .fpt, which has pointers of its own.
    void ChooseMemo() {
        if (!m_header.HasMemo()) return;
        m_keepsMemo = m_table.FindMemo() && m_table.FindMemo()->GetKind() == MemoKind::Fpt;
        if (m_keepsMemo) return;
        m_newMemoFile.emplace(WithExtension(m_table.GetPath(), ".fpt"));
        MemoFile::Create(m_newMemoFile->GetPath());
        m_newMemo = std::make_unique<MemoFile>(m_newMemoFile->GetPath(), MemoKind::Fpt);
    }

    MemoFile *FindMemo() override { return m_keepsMemo ? m_table.FindMemo() : m_newMemo.get(); }

    void WriteRows() {
        DataFile file;
        file.Create(m_tableFile.GetPath());
        std::string buffer = BuildHeader(m_header, m_table.GetCodePage());
        std::uint64_t written = 0;
        std::string blank(m_header.recordLength, kLiveMark);
        for (const Field &field : m_header.fields) BlankCell(field, blank.data());
        for (m_table.Rewind(); m_keepsDeleted ? m_table.NextOfAll() : m_table.Next();) {
            const std::size_t start = buffer.size();
            buffer += blank;
            ConvertRecord(buffer.data() + start);
            if (buffer.size() < kWriteBytes) continue;
            file.Write(written, buffer);
            written += buffer.size();
            buffer.clear();
        }
        if (MemoFile *memo = FindMemo()) memo->FlushHeader();
        buffer += kEndMark;
        file.Write(written, buffer);
        file.Flush();
        FileInfo info;
        if (FileSystem::Current().Stat(m_table.GetPath(), info) == 0) {
            FileSystem::Current().SetMode(m_tableFile.GetPath(), info.mode);
        }
    }

    void ConvertRecord(char *record) {
        const char *old = m_table.GetRecord();
        const Header &oldHeader = m_table.GetHeader();
        record[0] = old[0];
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            const NewField &source = m_fields[i];
            const Field &field = m_header.fields[i];
            if (source.oldField < 0 || field.type == '0') continue;
            const Field &oldField = oldHeader.fields[static_cast<std::size_t>(source.oldField)];
            if (IsMarkedNull(oldHeader, oldField, old)) {
                MarkNull(m_header, field, true, record);
            } else if (field.IsMemo() && oldField.IsMemo() && m_keepsMemo) {
                SetMemoPointer(field, MemoPointer(oldField, old), record);
            } else if (source.same && !field.IsMemo() && oldField.lengthBit < 0) {
                std::memcpy(record + field.offset, old + oldField.offset, field.width);
            } else if (source.oldColumn >= 0) {
                m_table.ReadCell(source.oldColumn, m_value);
                sql::ConvertTo(sql::ClassOf(field.Describe().type), m_value);
                m_codec.Write(field, m_value, true, record);
            }
        }
    }

    void RemoveOldMemo() {
        if (m_header.HasMemo() && m_keepsMemo) return;
        for (const char *extension : {".dbt", ".fpt"}) {
            const std::string path = FindBeside(m_table.GetPath(), extension);
            const bool isNew = m_newMemoFile && extension == std::string_view(".fpt");
            if (!path.empty() && !isNew && m_table.GetHeader().HasMemo()) FileSystem::Current().Remove(path);
        }
    }

    Table &m_table;
    NewFields m_fields;
    bool m_keepsDeleted;
    Header m_header;
    NewFile m_tableFile;
    std::optional<NewFile> m_newMemoFile;
    std::unique_ptr<MemoFile> m_newMemo;
    bool m_keepsMemo = false;
    RecordCodec m_codec;
    Value m_value;
};

}  // namespace

void ChangeTable(Table &table, const sql::AlterTableStatement &change) {
    Copier(table, ApplyChange(table.GetHeader(), change), true).Run();
}

void PackTable(Table &table) {
    Copier(table, TakeOver(table.GetHeader()), false).Run();
}

void MakeTable(const std::string &systemPath, const std::vector<sql::ColumnDefinition> &columns) {
    Header header;
    for (const sql::ColumnDefinition &definition : columns) header.fields.push_back(MakeField(definition));
    header.Arrange();

    const std::string oldMemo = FindBeside(systemPath, ".fpt");
    NewFile tableFile(systemPath);
    std::optional<NewFile> memoFile;
    if (header.HasMemo()) {
        memoFile.emplace(oldMemo.empty() ? WithExtension(systemPath, ".fpt") : oldMemo);
        MemoFile::Create(memoFile->GetPath());
    }
    {
        DataFile file;
        file.Create(tableFile.GetPath());
        file.Write(0, BuildHeader(header, CodePage()) + kEndMark);
        file.Flush();
    }
    // Whatever happens between the two steps, a table that opens lies there: an empty one does with any memo file,
    // and a table that had no memo file is not hurt by one.
    if (memoFile && oldMemo.empty()) memoFile->Place();
    tableFile.Place();
    if (memoFile && !oldMemo.empty()) memoFile->Place();
    if (!memoFile && !oldMemo.empty()) FileSystem::Current().Remove(oldMemo);
    for (const char *extension : {".cpg", ".dbt"}) {
        const std::string stale = FindBeside(systemPath, extension);
        if (!stale.empty()) FileSystem::Current().Remove(stale);
    }
}

}  // namespace ktl::ado::dbase
