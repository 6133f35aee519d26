#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"
#include "tests/support/scratch_folder.h"

namespace ktl::test {

/// A connection to the tables of a folder, spoken to in UTF-8.
///
///     Tables tables(folder);
///     tables.Run("Create Table t (ID int, name Char(10))");
///     EXPECT_EQ(tables.Rows("Select * From t"), "1|北京\n");
class Tables {
  public:
    explicit Tables(const ScratchFolder &folder)
        : m_connection(ado::Connection::Open("Provider=VFPOLEDB.1;Data Source=" + folder.Name() +
                                             ";Password=;Collating Sequence=MACHINE")) {}

    long long Run(std::string_view statement) { return m_connection->Execute(FromUtf8(statement)); }
    ado::RecordsetRef Open(std::string_view statement) {
        return m_connection->OpenRecordset(FromUtf8(statement), false);
    }
    /// Cells with `|` between them and a line feed behind each row; a null is `~`, bytes are shown as they are.
    std::string Rows(std::string_view statement) {
        std::string text;
        for (ado::RecordsetRef rows = Open(statement); !rows->IsEOF(); rows->MoveNext()) {
            for (int i = 0; i < rows->GetColumnCount(); ++i) {
                const ado::Value &cell = rows->GetCell(i);
                if (i > 0) text += '|';
                if (cell.IsNull()) {
                    text += '~';
                } else if (cell.GetKind() == ado::Value::Kind::Bytes) {
                    text += cell.Bytes();
                } else {
                    text += ToUtf8(cell.ToText());
                }
            }
            text += '\n';
        }
        return text;
    }
    /// The error of a statement, as "number description"; empty when it has none.
    std::string Fault(std::string_view statement) {
        try {
            Run(statement);
        } catch (const ado::Error &error) {
            return std::to_string(error.GetNumber()) + " " + ToUtf8(error.GetDescription());
        }
        return "";
    }
    ado::Connection &Get() { return *m_connection; }
    void Close() { m_connection->Close(); }

  private:
    ado::ConnectionRef m_connection;
};

}  // namespace ktl::test
