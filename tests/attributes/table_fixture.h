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
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "tests/support/application.h"

namespace ktl::test {

/// A folder of temporary tables, with a connection of its own to look into them. Texts are UTF-8.
class TableTest : public ::testing::Test {
  protected:
    TableTest() : m_path(KtlGetTempDBFolderPath()) { m_ado.ConnDB(m_path); }

    static CField Field(const char *name, ENUM_DATA type, int length = 8) {
        CField field(-1, name, type, 0);
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

    std::unique_ptr<CTable_Local_dbf> Open(const char *name = "w001") {
        return std::make_unique<CTable_Local_dbf>(m_path, name);
    }
    /// A new table of ID, ShapeID and these columns.
    std::unique_ptr<CTable_Local_dbf> Make(const std::vector<CField> &more, const char *name = "w001") {
        auto table = Open(name);
        EXPECT_EQ(table->CreateNewLayerTable(Columns(more).get()), 1);
        return table;
    }

    void Run(const std::string &sql) { EXPECT_EQ(m_ado.ExecuteSql(FromUtf8(sql)), 1) << sql << "\n" << m_app.Log(); }

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

    static std::string ListOf(const CFields *fields) {
        CArray<CField, CField> array;
        fields->GetFieldArray(array);
        std::string text;
        for (const CField &field : array) {
            text += std::to_string(field.nID) + " " + ToUtf8(field.strName) + " " + std::to_string(field.eType) + " " +
                    std::to_string(field.nLength) + (field.bSystem != 0 ? " system\n" : "\n");
        }
        return text;
    }
    static std::string ListOf(const CArray<CString, CString> &values) {
        std::string text;
        for (const CString &value : values) text += ToUtf8(value) + "|";
        return text;
    }
    static std::string ValuesOf(const CRecord *record) {
        return record != nullptr ? ListOf(record->arrValues) : "(none)";
    }
    /// Numbers as the table's operations take them.
    static CArray<int, int> Numbers(const std::vector<int> &numbers) {
        CArray<int, int> array;
        for (const int number : numbers) array.Add(number);
        return array;
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
