#pragma once

#include <benchmark/benchmark.h>
#include <gdal.h>
#include <ogr_api.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

// The rows that the programs on attribute tables work on, and the peers filled with them: SQLite with prepared
// statements in one transaction and an index, and OGR's .dbf driver.

namespace ktl::bench {

namespace fs = std::filesystem;

inline constexpr int kRows = 200'000;
/// Rows looked for by key.
inline constexpr int kKeys = 10'000;

/// A folder that lives as long as the program.
inline const fs::path &Folder() {
    static const fs::path folder = [] {
        std::string pattern = (fs::temp_directory_path() / "ktl-table-bench-XXXXXX").string();
        fs::path made = mkdtemp(pattern.data());
        std::atexit([] { fs::remove_all(Folder()); });
        return made;
    }();
    return folder;
}

inline std::string NameOf(int row) {
    // One in a hundred holds the common word, one in ten thousand the rare one.
    const char *word = row % 10'000 == 77 ? "Quetzal" : row % 100 == 50 ? "Harbour" : "Town";
    return std::string(word) + " number " + std::to_string(row * 7919 % 1'000'003);
}

inline double AreaOf(int row) {
    return row * 0.25 + 0.125;
}

inline const std::vector<int> &Keys() {
    static const std::vector<int> keys = [] {
        std::mt19937 random(7);
        std::uniform_int_distribution<int> any(0, kRows - 1);
        std::vector<int> made;
        for (int i = 0; i < kKeys; ++i) made.push_back(any(random));
        return made;
    }();
    return keys;
}

class Sqlite {
  public:
    explicit Sqlite(const fs::path &file) {
        fs::remove(file);
        sqlite3_open(file.c_str(), &m_database);
        Run("CREATE TABLE w001 (ID INTEGER, ShapeID INTEGER, name TEXT, people INTEGER, area REAL)");
        Run("CREATE INDEX shape ON w001 (ShapeID)");
    }
    Sqlite(const Sqlite &) = delete;
    Sqlite &operator=(const Sqlite &) = delete;
    ~Sqlite() { sqlite3_close(m_database); }

    void Run(const char *statement) { sqlite3_exec(m_database, statement, nullptr, nullptr, nullptr); }
    sqlite3_stmt *Prepare(const char *statement) {
        sqlite3_stmt *prepared = nullptr;
        sqlite3_prepare_v2(m_database, statement, -1, &prepared, nullptr);
        return prepared;
    }
    void Fill() {
        Run("BEGIN");
        sqlite3_stmt *insert = Prepare("INSERT INTO w001 VALUES (?,?,?,?,?)");
        for (int row = 0; row < kRows; ++row) {
            const std::string name = NameOf(row);
            sqlite3_bind_int(insert, 1, row);
            sqlite3_bind_int(insert, 2, row);
            sqlite3_bind_text(insert, 3, name.data(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
            sqlite3_bind_int(insert, 4, row % 5000);
            sqlite3_bind_double(insert, 5, AreaOf(row));
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        Run("COMMIT");
    }

  private:
    sqlite3 *m_database = nullptr;
};

/// The full table, made once.
inline Sqlite &FullSqlite() {
    static Sqlite database(Folder() / "full.sqlite");
    static const bool filled = [] {
        database.Fill();
        return true;
    }();
    (void)filled;
    return database;
}

class Ogr {
  public:
    explicit Ogr(const fs::path &folder) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        GDALDriverH driver = GDALGetDriverByName("ESRI Shapefile");
        m_data = GDALCreate(driver, folder.c_str(), 0, 0, 0, GDT_Unknown, nullptr);
        m_layer = GDALDatasetCreateLayer(m_data, "w001", nullptr, wkbNone, nullptr);
        AddField("ID", OFTInteger, 10, 0);
        AddField("ShapeID", OFTInteger, 10, 0);
        AddField("name", OFTString, 40, 0);
        AddField("people", OFTInteger, 10, 0);
        AddField("area", OFTReal, 20, 10);
    }
    Ogr(const Ogr &) = delete;
    Ogr &operator=(const Ogr &) = delete;
    ~Ogr() { GDALClose(m_data); }

    OGRLayerH Layer() { return m_layer; }
    void Fill() {
        OGRFeatureH feature = OGR_F_Create(OGR_L_GetLayerDefn(m_layer));
        for (int row = 0; row < kRows; ++row) {
            OGR_F_SetFID(feature, OGRNullFID);
            OGR_F_SetFieldInteger(feature, 0, row);
            OGR_F_SetFieldInteger(feature, 1, row);
            OGR_F_SetFieldString(feature, 2, NameOf(row).c_str());
            OGR_F_SetFieldInteger(feature, 3, row % 5000);
            OGR_F_SetFieldDouble(feature, 4, AreaOf(row));
            if (OGR_L_CreateFeature(m_layer, feature) != OGRERR_NONE) std::abort();
        }
        OGR_F_Destroy(feature);
        GDALFlushCache(m_data);
    }

  private:
    void AddField(const char *name, OGRFieldType type, int width, int precision) {
        OGRFieldDefnH field = OGR_Fld_Create(name, type);
        OGR_Fld_SetWidth(field, width);
        OGR_Fld_SetPrecision(field, precision);
        OGR_L_CreateField(m_layer, field, 0);
        OGR_Fld_Destroy(field);
    }

    GDALDatasetH m_data = nullptr;
    OGRLayerH m_layer = nullptr;
};

inline Ogr &FullOgr() {
    static Ogr data(Folder() / "full_ogr");
    static const bool filled = [] {
        data.Fill();
        return true;
    }();
    (void)filled;
    return data;
}

/// `kKeys` rows changed by key.
inline void UpdateSqlite(benchmark::State &state) {
    sqlite3_stmt *update = FullSqlite().Prepare("UPDATE w001 SET people=? WHERE ShapeID=?");
    for (auto _ : state) {
        FullSqlite().Run("BEGIN");
        for (const int key : Keys()) {
            sqlite3_bind_int(update, 1, key % 977);
            sqlite3_bind_int(update, 2, key);
            sqlite3_step(update);
            sqlite3_reset(update);
        }
        FullSqlite().Run("COMMIT");
    }
    sqlite3_finalize(update);
    state.SetItemsProcessed(state.iterations() * kKeys);
}

/// The first 200 rows whose name holds the word.
inline void SearchSqlite(benchmark::State &state, const char *word) {
    const std::string statement = std::string("SELECT ShapeID,name FROM w001 WHERE name LIKE '%") + word +
                                  "%' AND ID <> -1 ORDER BY ShapeID LIMIT 200";
    sqlite3_stmt *select = FullSqlite().Prepare(statement.c_str());
    for (auto _ : state) {
        while (sqlite3_step(select) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_text(select, 1));
        sqlite3_reset(select);
    }
    sqlite3_finalize(select);
}

}  // namespace ktl::bench
