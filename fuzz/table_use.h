#pragma once

#include <cstdint>
#include <string>

#include "fuzz/memory_filesystem.h"
#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/error.h"

namespace ktl::fuzz {

inline ado::ConnectionRef OpenMemory() {
    return ado::Connection::Open("Provider=VFPOLEDB.1;Data Source=/m");
}

/// Runs a statement and reads all that it gives; Error is the only fault that may come.
inline void Try(ado::Connection &connection, const std::string &statement) {
    try {
        const ado::RecordsetRef rows = connection.OpenRecordset(CString(statement), false);
        if (!rows->IsOpen()) return;
        for (; !rows->IsEOF(); rows->MoveNext()) {
            for (int i = 0; i < rows->GetColumnCount(); ++i) {
                const ado::Value &cell = rows->GetCell(i);
                if (!cell.IsNull() && cell.GetKind() != ado::Value::Kind::Bytes) cell.ToText();
            }
        }
    } catch (const ado::Error &) {
    }
}

/// Uses table t in every way.
inline void UseTable() {
    try {
        const ado::ConnectionRef connection = OpenMemory();
        for (const char *statement :
             {"Select * From t", "Select Count(0) From t Where ShapeID=3 And ID<>-1",
              "Select Top 5 * From t Order By 1", "Update t Set M='new memo' Where ID=1", "Update t Set ID=7",
              "Insert Into t (ID) Values (9)", "Delete From t Where ID=9", "Update t Set ID=ID+1,M=M",
              "Select ID,Count(*),Max(M) From t Group By ID", "Pack t", "Alter Table t Add zz Char(3)",
              "Select * From t", "Alter Table t Alter Column M Char(5)", "Select * From t"}) {
            Try(*connection, statement);
        }
    } catch (const ado::Error &) {
    }
}

}  // namespace ktl::fuzz
