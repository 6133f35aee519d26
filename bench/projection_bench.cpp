// Projecting a million places: the library's functions against the bare formula written into the loop and against
// PROJ's spherical Mercator.

#include <benchmark/benchmark.h>
#if __has_include(<proj.h>)
#include <proj.h>
#endif

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio_reporter.h"
#include "ktl/core/point.h"
#include "ktl/core/transform.h"
#include "ktl/webmap/projection.h"

namespace {

constexpr std::size_t kCount = 1000000;

std::vector<POINTD> Places() {
    std::mt19937 random(20240131);
    std::uniform_real_distribution<double> longitude(-180, 180);
    std::uniform_real_distribution<double> latitude(-85, 85);
    std::vector<POINTD> places(kCount);
    for (POINTD &place : places) {
        place.x = longitude(random);
        place.y = latitude(random);
    }
    return places;
}

const std::vector<POINTD> &Degrees() {
    static const std::vector<POINTD> places = Places();
    return places;
}

std::vector<POINTD> Projected() {
    std::vector<POINTD> places = Degrees();
    for (POINTD &place : places) KtlGetXY(place.x, place.y, place.x, place.y);
    return places;
}

const std::vector<POINTD> &Square() {
    static const std::vector<POINTD> places = Projected();
    return places;
}

template <class Project>
void Run(benchmark::State &state, const std::vector<POINTD> &from, Project project) {
    std::vector<POINTD> to(from.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < from.size(); ++i) project(from[i], to[i]);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(from.size()));
}

void ToSquareKtl(benchmark::State &state) {
    Run(state, Degrees(), [](const POINTD &a, POINTD &b) { KtlGetXY(a.x, a.y, b.x, b.y); });
}

void ToSquareBare(benchmark::State &state) {
    Run(state, Degrees(), [](const POINTD &a, POINTD &b) {
        b.x = a.x / 360.0;
        const double sine = std::sin(a.y * ktl::PI / 180.0);
        b.y = std::log((1 + sine) / (1 - sine)) * 0.5 * ktl::INV_TWO_PI;
    });
}

void ToDegreesKtl(benchmark::State &state) {
    Run(state, Square(), [](const POINTD &a, POINTD &b) { KtlGetLB(a.x, a.y, b.x, b.y); });
}

void ToDegreesBare(benchmark::State &state) {
    Run(state, Square(), [](const POINTD &a, POINTD &b) {
        b.x = a.x * 360.0;
        const double e = std::exp(a.y / ktl::INV_TWO_PI / 0.5);
        b.y = std::asin((e - 1) / (1 + e)) / ktl::RAD_PER_DEGREE;
    });
}

void ToMetresKtl(benchmark::State &state) {
    Run(state, Degrees(), [](const POINTD &a, POINTD &b) {
        double l = a.x;
        double latitude = a.y;
        KtlGetProjectXY(l, latitude, b.x, b.y, 1);
    });
}

void ToMetresBare(benchmark::State &state) {
    Run(state, Degrees(), [](const POINTD &a, POINTD &b) {
        b.x = ktl::EARTH_RADIUS * a.x * ktl::PI_SINGLE / 180.0;
        const auto u = static_cast<float>(a.y * ktl::PI_SINGLE / 180.0 * 0.5 + ktl::QUARTER_PI_SINGLE);
        const auto tangent = static_cast<float>(std::tan(static_cast<double>(u)));
        b.y = std::log(static_cast<double>(tangent)) * ktl::EARTH_RADIUS;
    });
}

void ToClientKtl(benchmark::State &state) {
    const CExtent view(-0.5, -0.5, 0.5, 0.5);
    std::vector<Gdiplus::Point> to(kCount);
    for (auto _ : state) {
        const std::vector<POINTD> &from = Square();
        for (std::size_t i = 0; i < from.size(); ++i) to[i] = World2Client(view, 2048.0, from[i]);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

// Without the guard against numbers that no int holds.
void ToClientBare(benchmark::State &state) {
    const CExtent view(-0.5, -0.5, 0.5, 0.5);
    std::vector<Gdiplus::Point> to(kCount);
    for (auto _ : state) {
        const std::vector<POINTD> &from = Square();
        for (std::size_t i = 0; i < from.size(); ++i) {
            to[i].X = static_cast<int>((from[i].x - view.left) * 2048.0);
            to[i].Y = static_cast<int>(((view.top - view.bottom) - (from[i].y - view.bottom)) * 2048.0);
        }
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

#ifdef PROJ_VERSION_MAJOR
void RunProj(benchmark::State &state, const std::vector<POINTD> &from, PJ_DIRECTION direction) {
    PJ *mercator = proj_create(PJ_DEFAULT_CTX, "+proj=webmerc +a=6378137 +b=6378137");
    if (mercator == nullptr) {
        state.SkipWithError("PROJ has no web Mercator");
        return;
    }
    std::vector<PJ_COORD> coordinates(from.size());
    const bool forward = direction == PJ_FWD;
    for (auto _ : state) {
        for (std::size_t i = 0; i < from.size(); ++i) {
            const double scale = forward ? ktl::RAD_PER_DEGREE : 2.0 * ktl::PI * ktl::EARTH_RADIUS;
            coordinates[i] = proj_coord(from[i].x * scale, from[i].y * scale, 0, 0);
        }
        proj_trans_array(mercator, direction, coordinates.size(), coordinates.data());
        benchmark::DoNotOptimize(coordinates.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(from.size()));
    proj_destroy(mercator);
}

void ToMetresProj(benchmark::State &state) {
    RunProj(state, Degrees(), PJ_FWD);
}

void ToDegreesProj(benchmark::State &state) {
    RunProj(state, Square(), PJ_INV);
}
#endif

}  // namespace

int main(int argc, char **argv) {
    benchmark::RegisterBenchmark("to_square/ktl", ToSquareKtl);
    benchmark::RegisterBenchmark("to_square/bare_loop", ToSquareBare);
    benchmark::RegisterBenchmark("to_degrees/ktl", ToDegreesKtl);
    benchmark::RegisterBenchmark("to_degrees/bare_loop", ToDegreesBare);
    benchmark::RegisterBenchmark("to_metres/ktl", ToMetresKtl);
    benchmark::RegisterBenchmark("to_metres/bare_loop", ToMetresBare);
    benchmark::RegisterBenchmark("to_client/ktl", ToClientKtl);
    benchmark::RegisterBenchmark("to_client/bare_loop", ToClientBare);
#ifdef PROJ_VERSION_MAJOR
    benchmark::RegisterBenchmark("to_degrees/proj", ToDegreesProj);
    benchmark::RegisterBenchmark("to_metres/proj", ToMetresProj);
#endif
    benchmark::Initialize(&argc, argv);
    ktl::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
}
