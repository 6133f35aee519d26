#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/core/paths.h"
#include "ktl/platform/ado/connection_string.h"
#include "ktl/platform/ado/dbase/folder.h"
#include "ktl/platform/ado/sql/statement_connection.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "tests/support/application.h"

namespace ktl::test {

inline std::string ListOf(const CFields *fields) {
    CArray<CField, CField> array;
    fields->GetFieldArray(array);
    std::string text;
    for (const CField &field : array) {
        text += std::to_string(field.nID) + " " + ToUtf8(field.strName) + " " + std::to_string(field.eType) + " " +
                std::to_string(field.nLength) + (field.bSystem != 0 ? " system\n" : "\n");
    }
    return text;
}
inline std::string ListOf(const CArray<CString, CString> &values) {
    std::string text;
    for (const CString &value : values) text += ToUtf8(value) + "|";
    return text;
}

/// The statements that went to the stores, a line each.
inline std::string sent;

/// Passes everything on and notes the statements: a host may stand between a table and its store.
class Watched final : public ado::Connection {
  public:
    explicit Watched(ado::ConnectionRef behind) : m_behind(std::move(behind)) {}
    static ado::ConnectionRef Open(const ado::ConnectionString &settings) {
        const auto folder = std::make_shared<ado::dbase::Folder>(settings.Get("Data Source"));
        return std::make_shared<Watched>(std::make_shared<ado::sql::StatementConnection>(folder));
    }

    long long Execute(const CString &statement) override {
        sent += ToUtf8(statement) + "\n";
        return m_behind->Execute(statement);
    }
    ado::RecordsetRef OpenRecordset(const CString &statement, bool clientCursor) override {
        sent += ToUtf8(statement) + "\n";
        return m_behind->OpenRecordset(statement, clientCursor);
    }
    std::shared_ptr<void> HoldTable(const CString &table) override {
        sent += "(held: " + ToUtf8(table) + ")\n";
        return m_behind->HoldTable(table);
    }
    ado::RecordsetRef OpenSchema(int schema) override { return m_behind->OpenSchema(schema); }
    void Close() override { m_behind->Close(); }
    bool IsOpen() const override { return m_behind->IsOpen(); }

  private:
    ado::ConnectionRef m_behind;
};

/// A folder of temporary tables, with a connection of its own to look into them. Texts are UTF-8.
class TableTest : public ::testing::Test {
  protected:
    TableTest() : m_path(KtlGetTempDBFolderPath()) {
        static const ado::ProviderRegistration registration("VFPOLEDB.1", Watched::Open);
        m_ado.ConnDB(m_path);
    }

    static CField Field(const char *name, ENUM_DATA type, int length = 8, int id = -1) {
        CField field(id, name, type, 0);
        field.nLength = length;
        return field;
    }
    /// ID, ShapeID and these.
    static std::unique_ptr<CFields> Columns(const std::vector<CField> &more) {
        auto fields = std::make_unique<CFields>();
        CField field = Field("ID", DATA_INT, 4);
        field.bSystem = 1;
        fields->AddField(field);
        field.strName = "ShapeID";
        fields->AddField(field);
        for (const CField &column : more) fields->AddField(column);
        return fields;
    }

    using Table = std::unique_ptr<CTable_Local_dbf>;
    Table Open(const char *name = "w001") { return std::make_unique<CTable_Local_dbf>(m_path, name); }
    /// A new table of ID, ShapeID and these columns.
    Table Make(const std::vector<CField> &more, const char *name = "w001") {
        auto table = Open(name);
        EXPECT_EQ(table->CreateNewLayerTable(Columns(more).get()), 1);
        return table;
    }
    /// A new table of the standard columns.
    Table Standard() {
        auto table = Open();
        EXPECT_EQ(table->CreateNewLayerTable(nullptr), 1);
        return table;
    }

    /// What `action` sends.
    template <class Action>
    static std::string During(Action action) {
        sent.clear();
        action();
        return sent;
    }
    /// Runs statements.
    template <class... Text>
    void Run(const Text &...statements) {
        for (const std::string &sql : {std::string(statements)...}) {
            EXPECT_EQ(m_ado.ExecuteSql(FromUtf8(sql)), 1) << sql << "\n" << m_app.Log();
        }
    }
    /// Cells with "|" between them, a "\n" behind each row.
    std::string Rows(const std::string &sql) {
        std::string text;
        const ado::RecordsetRef rows = m_ado.GetRecordset(FromUtf8(sql), 1, 0);
        for (; rows && !rows->IsEOF(); rows->MoveNext()) {
            for (int i = 0; i < rows->GetColumnCount(); ++i) {
                text += (i > 0 ? "|" : "") + ToUtf8(m_ado.GetItemValue(rows, i));
            }
            text += "\n";
        }
        return text;
    }
    /// The first cell of the first row as it is stored, its right end not trimmed.
    std::string RawCell(const std::string &sql) {
        const ado::RecordsetRef rows = m_ado.GetRecordset(FromUtf8(sql), 1, 0);
        return rows ? std::string(rows->GetCell(0).Text()) : "(no row)";
    }

    static std::string RowOf(CTable_Local_dbf &table, int shape, int isNew) {
        const std::unique_ptr<CRecord> row(table.GetShapeProperty(shape, isNew));
        return row ? ListOf(row->arrValues) + (row->bDeleted != 0 ? " deleted" : "") : "(none)";
    }
    /// Numbers as the table's operations take them.
    static CArray<int, int> Numbers(const std::vector<int> &numbers) {
        CArray<int, int> array;
        for (const int number : numbers) array.Add(number);
        return array;
    }
    static void Set(CTable_Local_dbf &table, const std::vector<int> &shapes, const std::vector<int> &isNew,
                    const char *field, const CString &value) {
        auto numbers = Numbers(shapes);
        auto flags = Numbers(isNew);
        table.UpdatePropertyValue(numbers, flags, field, value);
    }
    /// Appends a row to the buffer, with these values behind the numbers.
    static void Buffer(CTable_Local_dbf &table, int shape, const std::vector<std::string> &values) {
        table.AddNewRecord(shape);
        for (int i = 0; const std::string &value : values) {
            table.UpdateNewRecordPropertyValue(shape, i++ + 2, FromUtf8(value));
        }
    }

    std::string FileOf(const std::string &name) const { return m_app.Folder().Read("TempDB/" + name); }
    void WriteFile(const std::string &name, const std::string &content) const {
        m_app.Folder().Write("TempDB/" + name, content);
    }

    Application m_app;
    CString m_path;
    CAdo_Local_dbf m_ado;
};

}  // namespace ktl::test
