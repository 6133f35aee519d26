// The spatial index of a shape layer against GEOS STRtree, a million boxes each.
//
// GEOS tests the boxes of its items and answers exactly; the quadtree tests its nodes and gives candidates, which its
// owner then tests. So each window is asked twice: for what the index gives ("find"), and for the exact answer
// ("exact"), where the quadtree's caller tests the box of each candidate. `results` is the mean count of a query.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "ktl/layers/tree.h"

namespace {

constexpr int kCount = 1000000;
constexpr int kMaxPerNode = 20;
constexpr std::size_t kGeosNodeCapacity = 10;
const CExtent kArea(-0.5, -0.5, 0.5, 0.5);

struct GeometryDeleter {
    void operator()(GEOSGeometry *geometry) const { GEOSGeom_destroy(geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, GeometryDeleter>;

struct GeosTreeDeleter {
    void operator()(GEOSSTRtree *tree) const { GEOSSTRtree_destroy(tree); }
};
using GeosTree = std::unique_ptr<GEOSSTRtree, GeosTreeDeleter>;

/// Boxes of which each knows its envelope already, so that no time goes to that.
std::vector<Geometry> ToGeometries(const std::vector<CExtent> &extents) {
    std::vector<Geometry> geometries;
    geometries.reserve(extents.size());
    for (const CExtent &e : extents) {
        geometries.emplace_back(GEOSGeom_createRectangle(e.left, e.bottom, e.right, e.top));
        double x = 0;
        GEOSGeom_getXMin(geometries.back().get(), &x);
    }
    return geometries;
}

std::vector<CExtent> RandomBoxes(int count, double largestSide, double smallestSide, unsigned seed) {
    std::mt19937 engine(seed);
    std::vector<CExtent> boxes;
    boxes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double w = std::uniform_real_distribution<double>(smallestSide, largestSide)(engine);
        const double h = std::uniform_real_distribution<double>(smallestSide, largestSide)(engine);
        const double x = std::uniform_real_distribution<double>(kArea.left, kArea.right - w)(engine);
        const double y = std::uniform_real_distribution<double>(kArea.bottom, kArea.top - h)(engine);
        boxes.emplace_back(x, y, x + w, y + h);
    }
    return boxes;
}

struct Boxes {
    std::vector<CExtent> extents = RandomBoxes(kCount, 0.0005, 0, 1);
    std::vector<Geometry> geometries = ToGeometries(extents);
};

const Boxes &GetBoxes() {
    static const Boxes boxes;
    return boxes;
}

void Collect(void *item, void *ids) {
    static_cast<std::vector<int> *>(ids)->push_back(static_cast<int>(reinterpret_cast<std::intptr_t>(item)));
}

std::unique_ptr<CTree> BuildTree() {
    auto tree = std::make_unique<CTree>();
    tree->InitTree(kArea, kCount, kMaxPerNode);
    int id = 0;
    for (const CExtent &extent : GetBoxes().extents) tree->AddToTreeNode(extent, id++);
    tree->TrimNullTreeNode();
    return tree;
}

GeosTree BuildGeos() {
    GeosTree tree(GEOSSTRtree_create(kGeosNodeCapacity));
    std::intptr_t id = 0;
    for (const Geometry &geometry : GetBoxes().geometries) {
        GEOSSTRtree_insert(tree.get(), geometry.get(), reinterpret_cast<void *>(id++));
    }
    // The first query packs the tree.
    const std::vector<Geometry> outside = ToGeometries({CExtent(2, 2, 2, 2)});
    std::vector<int> ids;
    GEOSSTRtree_query(tree.get(), outside[0].get(), Collect, &ids);
    return tree;
}

void BuildWithKtl(benchmark::State &state) {
    GetBoxes();
    for (auto _ : state) {
        auto tree = BuildTree();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

void BuildWithGeos(benchmark::State &state) {
    GetBoxes();
    for (auto _ : state) {
        GeosTree tree = BuildGeos();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

/// Windows of one size at many places, asked in turn.
struct Windows {
    explicit Windows(double areaShare)
        : extents(RandomBoxes(512, std::sqrt(areaShare), std::sqrt(areaShare), 2)), geometries(ToGeometries(extents)) {}
    std::vector<CExtent> extents;
    std::vector<Geometry> geometries;
};

void CountResults(benchmark::State &state, std::size_t results) {
    state.SetItemsProcessed(state.iterations());
    state.counters["results"] = static_cast<double>(results) / static_cast<double>(state.iterations());
}

int KeepHits(const CArray<int, int> &candidates, const CExtent &window, std::vector<int> &hits) {
    const std::vector<CExtent> &extents = GetBoxes().extents;
    for (const int id : candidates) {
        if (window.Intersect(extents[static_cast<std::size_t>(id)])) hits.push_back(id);
    }
    return static_cast<int>(hits.size());
}

void QueryWithKtl(benchmark::State &state, double areaShare, bool exact) {
    static const std::unique_ptr<CTree> tree = BuildTree();
    const Windows windows(areaShare);
    std::size_t results = 0;
    std::size_t next = 0;
    for (auto _ : state) {
        const CExtent &window = windows.extents[next++ % windows.extents.size()];
        CArray<int, int> candidates;
        tree->FindShapeID(window, candidates);
        std::vector<int> hits;
        results += static_cast<std::size_t>(exact ? KeepHits(candidates, window, hits) : candidates.GetSize());
    }
    CountResults(state, results);
}

void QueryWithGeos(benchmark::State &state, double areaShare) {
    static const GeosTree tree = BuildGeos();
    const Windows windows(areaShare);
    std::size_t results = 0;
    std::size_t next = 0;
    for (auto _ : state) {
        std::vector<int> ids;
        GEOSSTRtree_query(tree.get(), windows.geometries[next++ % windows.geometries.size()].get(), Collect, &ids);
        results += ids.size();
    }
    CountResults(state, results);
}

void RegisterAll() {
    benchmark::RegisterBenchmark("build 1M/ktl", BuildWithKtl)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("build 1M/GEOS", BuildWithGeos)->Unit(benchmark::kMillisecond);
    const struct {
        const char *name;
        double areaShare;
    } sizes[] = {{"0.01 %", 0.0001}, {"1 %", 0.01}, {"25 %", 0.25}};
    for (const bool exact : {false, true}) {
        for (const auto &size : sizes) {
            const std::string name = std::string(exact ? "exact " : "find ") + size.name;
            benchmark::RegisterBenchmark((name + "/ktl").c_str(), QueryWithKtl, size.areaShare, exact)
                ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark((name + "/GEOS").c_str(), QueryWithGeos, size.areaShare)
                ->Unit(benchmark::kMicrosecond);
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    initGEOS(nullptr, nullptr);
    RegisterAll();
    ktl::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    finishGEOS();
}
