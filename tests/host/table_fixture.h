#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/table_data.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/mem_file.h"
#include "ktl/platform/system.h"
#include "tests/host/scratch_folder.h"

/// Tables in a folder of their own.
class TableTest : public ::testing::Test {
  protected:
    TableTest() { ktl::SetApplicationFolder(ktl::PlatformPath(m_folder.Path("home"))); }
    ~TableTest() override { ktl::SetApplicationFolder(CString()); }

    /// A GeoJSON file; each line of the text is one feature's properties.
    std::string Source(const std::string &properties) {
        std::string features;
        for (std::size_t start = 0; start < properties.size();) {
            const std::size_t end = std::min(properties.find('\n', start), properties.size());
            features +=
                (start > 0 ? "," : "") +
                (R"({"type":"Feature","geometry":null,"properties":{)" + properties.substr(start, end - start)) + "}}";
            start = end + 1;
        }
        return m_folder.Write("in.geojson", R"({"type":"FeatureCollection","features":[)" + features + "]}");
    }
    std::unique_ptr<CTable_Local_dbf> NewTable() {
        return std::make_unique<CTable_Local_dbf>(ktl::PlatformPath(m_folder.Path("")), "w001");
    }
    static void Save(CTable_Local_dbf &table) {
        CMemFile file;
        CArchive archive(&file, CArchive::store);
        table.Serialize(archive, 205);
        archive.Close();
        EXPECT_GT(file.GetLength(), 300u);
    }
    /// Names, types and rows, with `|` behind each cell and `~` for no value.
    static std::string Text(const std::string &path, const std::string &layer = {}) {
        class Writer : public ktl::host::TableSink {
          public:
            void TakeColumns(const std::vector<ktl::host::TableColumn> &columns) override {
                for (const auto &column : columns) text += column.name + " " + WordFor(column.type) + "|";
                text += "\n";
            }
            bool TakeRow(const ktl::host::TableRow &row) override {
                for (const auto &cell : row) {
                    text += (cell.kind == ktl::host::CellKind::kNull ? "~" : cell.text) + "|";
                }
                text += "\n";
                return true;
            }
            std::string text;
        };
        Writer writer;
        ktl::host::ReadTable({path, layer}, writer);
        return writer.text;
    }

    ScratchFolder m_folder;
};
