#pragma once

#include <benchmark/benchmark.h>
#include <ogrsf_frmts.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#if __has_include(<QPainter>)
#include <QGuiApplication>
#define KTL_BENCH_QT 1
#endif

#include "bench/ratio_reporter.h"
#include "ktl/platform/gdiplus/gdiplus.h"

namespace ktl::bench {

struct Degrees {
    double longitude;
    double latitude;
};
using Ring = std::vector<Degrees>;

/// The bitmap that the drawing programs draw into.
inline constexpr int kWidth = 2048;
inline constexpr int kHeight = 1024;

inline void AddRings(const OGRGeometry &geometry, std::vector<Ring> &rings) {
    if (const auto *parts = dynamic_cast<const OGRGeometryCollection *>(&geometry)) {
        for (const OGRGeometry *part : *parts) AddRings(*part, rings);
    } else if (const auto *polygon = dynamic_cast<const OGRPolygon *>(&geometry)) {
        for (const OGRLinearRing *ring : *polygon) {
            Ring &own = rings.emplace_back();
            for (int i = 0; i < ring->getNumPoints(); ++i) own.push_back({ring->getX(i), ring->getY(i)});
        }
    }
}

/// Every ring of the layer "countries"; none when the file cannot be read.
inline std::vector<Ring> ReadCountries(const std::string &path) {
    std::vector<Ring> rings;
    GDALAllRegister();
    const GDALDatasetUniquePtr dataset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR));
    OGRLayer *layer = dataset ? dataset->GetLayerByName("countries") : nullptr;
    if (layer == nullptr) return rings;
    for (const auto &feature : *layer) {
        if (feature->GetGeometryRef() != nullptr) AddRings(*feature->GetGeometryRef(), rings);
    }
    return rings;
}

/// The main function of a program that draws the countries: starts what drawing needs, hands the rings to `prepare`,
/// which registers the cases, runs these, and calls `finish` while drawing is still possible. The first argument that
/// is not an option names the data file.
template <class Prepare, class Finish>
int DrawCountries(int argc, char **argv, Prepare &&prepare, Finish &&finish) {
    benchmark::Initialize(&argc, argv);
    const std::string path = argc > 1 ? argv[1] : "build/bench-data/countries-10m.json";
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) return 1;
#ifdef KTL_BENCH_QT
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const QGuiApplication application(argc, argv);
#endif
    const std::vector<Ring> rings = ReadCountries(path);
    if (rings.empty()) {
        std::fprintf(stderr, "no countries in %s: run bench/fetch_data.sh first\n", path.c_str());
        return 1;
    }
    prepare(rings);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    finish();
    Gdiplus::GdiplusShutdown(token);
    return 0;
}

}  // namespace ktl::bench
