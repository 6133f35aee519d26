// A layer's dBASE table through its own operations, beside SQLite and OGR's .dbf driver. The memory counter is what the
// case took beyond what stood before it.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/memory.h"
#include "bench/ratio_reporter.h"
#include "bench/table_peers.h"
#include "ktl/attributes/ado_local_dbf.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/file.h"

namespace {

using namespace ktl::bench;

constexpr int kLargeRows = 1'000'000;
constexpr int kTableVersion = 205;

CFields Columns() {
    CFields fields;
    fields.InitToDefault();
    fields.RemoveFieldAt(3);
    CField name = *fields.GetFieldAt(2);
    name.nLength = 40;
    fields.UpdateField(name);
    CField people(3, "people", DATA_INT, 0);
    people.nLength = 4;
    people.nDecimal = 0;
    fields.AddField(people);
    CField area(4, "area", DATA_NUMERIC, 0);
    area.nLength = 20;
    area.nDecimal = 10;
    fields.AddField(area);
    return fields;
}

std::unique_ptr<CTable_Local_dbf> NewTable(const char *folder) {
    fs::create_directories(Folder() / folder);
    auto table = std::make_unique<CTable_Local_dbf>((Folder() / folder).c_str(), "w001");
    CFields fields = Columns();
    if (table->CreateNewLayerTable(&fields) == 0) std::abort();
    return table;
}

void BufferRows(CTable_Local_dbf &table) {
    CString text;
    for (int row = 0; row < kRows; ++row) {
        auto record = std::make_unique<CRecord>(row);
        text.Format("%d", row);
        record->AddValue(text);
        record->AddValue(text);
        record->AddValue(NameOf(row).c_str());
        text.Format("%d", row % 5000);
        record->AddValue(text);
        text.Format("%.4f", AreaOf(row));
        record->AddValue(text);
        table.AddNewRecord(record.release());
    }
}

void Save(CTable_Local_dbf &table) {
    CFile file((Folder() / "map").c_str(), CFile::modeCreate | CFile::modeReadWrite);
    CArchive archive(&file, CArchive::store);
    table.Serialize(archive, kTableVersion);
    archive.Close();
}

CTable_Local_dbf &FullTable() {
    static const std::unique_ptr<CTable_Local_dbf> table = [] {
        auto made = NewTable("full_table");
        BufferRows(*made);
        Save(*made);
        return made;
    }();
    return *table;
}

/// A million rows, copied together from the full table.
CTable_Local_dbf &LargeTable() {
    static const std::unique_ptr<CTable_Local_dbf> table = [] {
        FullTable();
        NewTable("large_table");
        fs::copy_file(Folder() / "full_table" / "w001.dbf", Folder() / "large_table" / "part.dbf");
        CAdo_Local_dbf store;
        store.ConnDB((Folder() / "large_table").c_str());
        CString sql;
        for (int first = 0; first < kLargeRows; first += kRows) {
            sql.Format("Insert Into w001 Select ID+%d,ShapeID+%d,name,people,area From part", first, first);
            if (store.ExecuteSql(sql) == 0) std::abort();
        }
        // The columns as the file has them.
        return std::make_unique<CTable_Local_dbf>((Folder() / "large_table").c_str(), "w001");
    }();
    return *table;
}

// The save that moves 200,000 buffered rows into the file, copies the live ones and writes them into the document. The
// peers append the rows only.

void SaveKtl(benchmark::State &state) {
    double memory = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto table = NewTable("saved");
        BufferRows(*table);
        const PeakMemory peak;
        state.ResumeTiming();
        Save(*table);
        state.PauseTiming();
        memory = peak.Megabytes();
        table.reset();
        state.ResumeTiming();
    }
    state.counters["MB"] = memory;
    state.SetItemsProcessed(state.iterations() * kRows);
}

void SaveSqlite(benchmark::State &state) {
    for (auto _ : state) {
        Sqlite database(Folder() / "saved.sqlite");
        database.Fill();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void SaveOgr(benchmark::State &state) {
    for (auto _ : state) {
        Ogr data(Folder() / "saved_ogr");
        data.Fill();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

/// The part of it that comes after the appending.
void SaveAgainKtl(benchmark::State &state) {
    CTable_Local_dbf &table = FullTable();
    for (auto _ : state) Save(table);
    state.SetItemsProcessed(state.iterations() * kRows);
}

// Rows by the number of their shape.

void UpdateKtl(benchmark::State &state) {
    CTable_Local_dbf &table = FullTable();
    CArray<int, int> shape;
    CArray<int, int> isNew;
    shape.Add(0);
    isNew.Add(0);
    CString value;
    const PeakMemory peak;
    for (auto _ : state) {
        for (const int key : Keys()) {
            shape[0] = key;
            value.Format("%d", key % 977);
            table.UpdatePropertyValue(shape, isNew, "people", value);
        }
    }
    state.counters["MB"] = peak.Megabytes();
    state.SetItemsProcessed(state.iterations() * kKeys);
}

/// The same rows in one call.
void UpdateTogetherKtl(benchmark::State &state) {
    CTable_Local_dbf &table = FullTable();
    CArray<int, int> shapes;
    CArray<int, int> isNew;
    for (const int key : Keys()) {
        shapes.Add(key);
        isNew.Add(0);
    }
    for (auto _ : state) table.UpdatePropertyValue(shapes, isNew, "people", "77");
    state.SetItemsProcessed(state.iterations() * kKeys);
}

void RowKtl(benchmark::State &state) {
    CTable_Local_dbf &table = FullTable();
    const PeakMemory peak;
    for (auto _ : state) {
        for (const int key : Keys()) {
            const std::unique_ptr<CRecord> row(table.GetShapeProperty(key, 0));
            benchmark::DoNotOptimize(row->GetValueCount());
        }
    }
    state.counters["MB"] = peak.Megabytes();
    state.SetItemsProcessed(state.iterations() * kKeys);
}

/// Every cell as text, as the table's own rows are.
void RowSqlite(benchmark::State &state) {
    sqlite3_stmt *select = FullSqlite().Prepare("SELECT * FROM w001 WHERE ShapeID=?");
    for (auto _ : state) {
        FullSqlite().Run("BEGIN");
        for (const int key : Keys()) {
            sqlite3_bind_int(select, 1, key);
            std::vector<std::string> row;
            while (sqlite3_step(select) == SQLITE_ROW) {
                for (int i = 0; i < 5; ++i) {
                    row.emplace_back(reinterpret_cast<const char *>(sqlite3_column_text(select, i)));
                }
            }
            sqlite3_reset(select);
            benchmark::DoNotOptimize(row.size());
        }
        FullSqlite().Run("COMMIT");
    }
    sqlite3_finalize(select);
    state.SetItemsProcessed(state.iterations() * kKeys);
}

// A column of a million rows as the file holds it. The bytes are the file's.

void ValueArrayKtl(benchmark::State &state) {
    CTable_Local_dbf &table = LargeTable();
    // The array itself is the caller's: memory is measured beyond it.
    CArray<CString, CString> values;
    table.ReadValueArray("name", values);
    const PeakMemory peak;
    for (auto _ : state) table.ReadValueArray("name", values);
    state.counters["MB"] = peak.Megabytes();
    if (values.GetSize() != kLargeRows || values[77].Left(7) != "Quetzal") state.SkipWithError("wrong values");
    state.SetBytesProcessed(state.iterations() *
                            static_cast<std::int64_t>(fs::file_size(Folder() / "large_table" / "w001.dbf")));
}

// The search of up to 200 hits: a common word ends early, a rare one looks at all rows.

void SearchKtl(benchmark::State &state, const char *word) {
    CTable_Local_dbf &table = FullTable();
    const PeakMemory peak;
    for (auto _ : state) {
        CArray<STRUCT_SEARCH_RESULT, STRUCT_SEARCH_RESULT> hits;
        table.SearchByKeyWords(0, "layer", 2, word, hits);
        benchmark::DoNotOptimize(hits.GetSize());
    }
    state.counters["MB"] = peak.Megabytes();
}

BENCHMARK(SaveKtl)->Name("save_200k/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(SaveAgainKtl)->Name("save_200k_nothing_new")->Unit(benchmark::kMillisecond);
BENCHMARK(SaveSqlite)->Name("save_200k/sqlite_append_only")->Unit(benchmark::kMillisecond);
BENCHMARK(SaveOgr)->Name("save_200k/ogr_append_only")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateKtl)->Name("update_property_10k/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateTogetherKtl)->Name("update_property_10k_together/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateSqlite)->Name("update_property_10k_together/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateSqlite)->Name("update_property_10k/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(RowKtl)->Name("shape_property_10k/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(RowSqlite)->Name("shape_property_10k/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(ValueArrayKtl)->Name("value_array_1m/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchKtl, , "Harbour")->Name("keyword_common/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchSqlite, , "Harbour")->Name("keyword_common/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchKtl, , "Quetzal")->Name("keyword_rare/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchSqlite, , "Quetzal")->Name("keyword_rare/sqlite")->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    GDALAllRegister();
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
