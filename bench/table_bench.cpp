// Attribute tables beside SQLite (prepared statements in one transaction) and OGR's .dbf driver: the statements that
// a layer's table sends, on rows of two key columns, a text of 40 bytes, a whole number and a numeric(20,10).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "bench/table_peers.h"
#include "ktl/platform/ado/connection.h"

namespace {

using namespace ktl::bench;
using ktl::ado::Connection;
using ktl::ado::ConnectionRef;
using ktl::ado::RecordsetRef;

std::string InsertStatement(int row) {
    char text[256];
    std::snprintf(text, sizeof text, "Insert Into [w001] (ID,ShapeID,name,people,area) Values (%d,%d,'%s',%d,%.4f)",
                  row, row, NameOf(row).c_str(), row % 5000, AreaOf(row));
    return text;
}

const std::vector<CString> &InsertStatements() {
    static const std::vector<CString> statements = [] {
        std::vector<CString> made;
        made.reserve(kRows);
        for (int row = 0; row < kRows; ++row) made.emplace_back(InsertStatement(row));
        return made;
    }();
    return statements;
}

ConnectionRef OpenKtl(const fs::path &folder) {
    fs::create_directories(folder);
    return Connection::Open(CString("Provider=VFPOLEDB.1;Data Source=") + folder.c_str());
}

void CreateKtl(Connection &connection) {
    connection.Execute("Create Table w001 ([ID] int,[ShapeID] int,[name] Char(40),[people] int,[area] numeric(20,10))");
}

/// The full table, made once.
Connection &FullKtl() {
    static const ConnectionRef connection = [] {
        ConnectionRef made = OpenKtl(Folder() / "full");
        CreateKtl(*made);
        for (const CString &statement : InsertStatements()) made->Execute(statement);
        return made;
    }();
    return *connection;
}

// Appending 200,000 rows, a statement a row.

void AppendKtl(benchmark::State &state) {
    InsertStatements();
    for (auto _ : state) {
        state.PauseTiming();
        const ConnectionRef connection = OpenKtl(Folder() / "append");
        CreateKtl(*connection);
        state.ResumeTiming();
        for (const CString &statement : InsertStatements()) connection->Execute(statement);
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void AppendSqlite(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        Sqlite database(Folder() / "append.sqlite");
        state.ResumeTiming();
        database.Fill();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void AppendOgr(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto data = std::make_unique<Ogr>(Folder() / "append_ogr");
        state.ResumeTiming();
        data->Fill();
        state.PauseTiming();
        data.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

// One more row on tables of two sizes.

void AppendAt(benchmark::State &state) {
    const ConnectionRef connection = OpenKtl(Folder() / ("at" + std::to_string(state.range(0))));
    CreateKtl(*connection);
    // The whole table doubles a few times faster than a million statements would run.
    for (int row = 0; row < 1000; ++row) connection->Execute(InsertStatements()[static_cast<std::size_t>(row)]);
    for (int rows = 1000; rows < state.range(0);) {
        rows += static_cast<int>(
            connection->Execute("Insert Into w001 Select Top 100000 ID,ShapeID+1000,name,people,area From w001"));
    }
    connection->OpenRecordset("Select * From w001 Where ShapeID = 5", false);
    std::size_t row = 0;
    for (auto _ : state) connection->Execute(InsertStatements()[row++ % kRows]);
    state.SetItemsProcessed(state.iterations());
}

// Rows by key.

void UpdateKtl(benchmark::State &state) {
    Connection &connection = FullKtl();
    connection.OpenRecordset("Select ID From w001 Where ShapeID=1", false);
    std::vector<CString> statements;
    for (const int key : Keys()) {
        CString statement;
        statement.Format("Update w001 Set people=%d Where ShapeID=%d", key % 977, key);
        statements.push_back(statement);
    }
    for (auto _ : state) {
        for (const CString &statement : statements) connection.Execute(statement);
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}

void UpdateOgr(benchmark::State &state) {
    OGRLayerH layer = FullOgr().Layer();
    for (auto _ : state) {
        for (const int key : Keys()) {
            OGRFeatureH feature = OGR_L_GetFeature(layer, key);
            OGR_F_SetFieldInteger(feature, 3, key % 977);
            if (OGR_L_SetFeature(layer, feature) != OGRERR_NONE) std::abort();
            OGR_F_Destroy(feature);
        }
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}

void SelectKtl(benchmark::State &state) {
    Connection &connection = FullKtl();
    std::vector<CString> statements;
    for (const int key : Keys()) {
        CString statement;
        statement.Format("Select * From w001 Where ShapeID=%d", key);
        statements.push_back(statement);
    }
    connection.OpenRecordset(statements[0], false);
    for (auto _ : state) {
        for (const CString &statement : statements) {
            const RecordsetRef rows = connection.OpenRecordset(statement, false);
            for (int i = 0; i < 5; ++i) benchmark::DoNotOptimize(rows->GetCell(i));
            rows->Close();
        }
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}

void SelectSqlite(benchmark::State &state) {
    sqlite3_stmt *select = FullSqlite().Prepare("SELECT * FROM w001 WHERE ShapeID=?");
    for (auto _ : state) {
        FullSqlite().Run("BEGIN");
        for (const int key : Keys()) {
            sqlite3_bind_int(select, 1, key);
            while (sqlite3_step(select) == SQLITE_ROW) {
                benchmark::DoNotOptimize(sqlite3_column_int(select, 0));
                benchmark::DoNotOptimize(sqlite3_column_int(select, 1));
                benchmark::DoNotOptimize(sqlite3_column_text(select, 2));
                benchmark::DoNotOptimize(sqlite3_column_int(select, 3));
                benchmark::DoNotOptimize(sqlite3_column_double(select, 4));
            }
            sqlite3_reset(select);
        }
        FullSqlite().Run("COMMIT");
    }
    sqlite3_finalize(select);
    state.SetItemsProcessed(state.iterations() * kKeys);
}

// The keyword search: a common word (the 200th hit ends it early) and a rare one (all rows are looked at).

void SearchKtl(benchmark::State &state, const char *word) {
    Connection &connection = FullKtl();
    const CString statement =
        CString("Select Top 200 ShapeID,name From w001 Where name Like '%") + word + "%' And ID <> -1 Order By ShapeID";
    connection.OpenRecordset(statement, false);
    for (auto _ : state) {
        const RecordsetRef rows = connection.OpenRecordset(statement, false);
        for (; !rows->IsEOF(); rows->MoveNext()) benchmark::DoNotOptimize(rows->GetCell(1));
    }
}

void SearchOgr(benchmark::State &state, const char *word) {
    OGRLayerH layer = FullOgr().Layer();
    OGR_L_SetAttributeFilter(layer, (std::string("name LIKE '%") + word + "%' AND ID <> -1").c_str());
    for (auto _ : state) {
        OGR_L_ResetReading(layer);
        for (int hits = 0; hits < 200; ++hits) {
            OGRFeatureH feature = OGR_L_GetNextFeature(layer);
            if (!feature) break;
            OGR_F_Destroy(feature);
        }
    }
    OGR_L_SetAttributeFilter(layer, nullptr);
}

// The copy that saving makes.

void CompactKtl(benchmark::State &state) {
    Connection &connection = FullKtl();
    for (auto _ : state) {
        connection.Execute(
            "Create Table w001b ([ID] int,[ShapeID] int,[name] Char(40),[people] int,[area] numeric(20,10))");
        connection.Execute("Insert Into [w001b] Select ID,ShapeID,name,people,area From [w001] Where ID <> -1");
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void CompactSqlite(benchmark::State &state) {
    for (auto _ : state) {
        FullSqlite().Run("DROP TABLE IF EXISTS w001b");
        FullSqlite().Run("BEGIN");
        FullSqlite().Run("CREATE TABLE w001b (ID INTEGER, ShapeID INTEGER, name TEXT, people INTEGER, area REAL)");
        FullSqlite().Run("INSERT INTO w001b SELECT * FROM w001 WHERE ID <> -1");
        FullSqlite().Run("COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

/// A column of all rows through a recordset.
void ColumnKtl(benchmark::State &state) {
    Connection &connection = FullKtl();
    for (auto _ : state) {
        const RecordsetRef rows = connection.OpenRecordset("Select name From w001 Where ID <> -1", false);
        for (; !rows->IsEOF(); rows->MoveNext()) benchmark::DoNotOptimize(rows->GetCell(0));
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void ColumnSqlite(benchmark::State &state) {
    sqlite3_stmt *select = FullSqlite().Prepare("SELECT name FROM w001 WHERE ID <> -1");
    for (auto _ : state) {
        while (sqlite3_step(select) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_text(select, 0));
        sqlite3_reset(select);
    }
    sqlite3_finalize(select);
    state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(AppendKtl)->Name("append_200k/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(AppendSqlite)->Name("append_200k/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(AppendOgr)->Name("append_200k/ogr")->Unit(benchmark::kMillisecond);
BENCHMARK(AppendAt)->Name("append_one_row")->Arg(1000)->Arg(1'000'000)->Iterations(50'000);
BENCHMARK(UpdateKtl)->Name("update_10k_by_key/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateSqlite)->Name("update_10k_by_key/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateOgr)->Name("update_10k_by_key/ogr")->Unit(benchmark::kMillisecond);
BENCHMARK(SelectKtl)->Name("select_10k_by_key/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(SelectSqlite)->Name("select_10k_by_key/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchKtl, , "Harbour")->Name("search_common_word/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchSqlite, , "Harbour")->Name("search_common_word/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchOgr, , "Harbour")->Name("search_common_word/ogr")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchKtl, , "Quetzal")->Name("search_rare_word/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchSqlite, , "Quetzal")->Name("search_rare_word/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SearchOgr, , "Quetzal")->Name("search_rare_word/ogr")->Unit(benchmark::kMillisecond);
BENCHMARK(CompactKtl)->Name("compact_copy/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(CompactSqlite)->Name("compact_copy/sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(ColumnKtl)->Name("read_column/ktl")->Unit(benchmark::kMillisecond);
BENCHMARK(ColumnSqlite)->Name("read_column/sqlite")->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    GDALAllRegister();
    benchmark::Initialize(&argc, argv);
    ktl::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
