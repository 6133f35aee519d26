// Drawing countries-10m through Gdiplus::Graphics into a bitmap of 2048 by 1024, against QPainter without antialiasing
// and Mapnik with clipping and simplification. Each takes the rings in degrees and projects them in every frame. The
// rings are filled and outlined; the views are the world and East Asia, the outlines 1 and 3 pixels wide. Further cases
// draw what maps have many of: small ellipses, lines with round joins, transparent and hatched areas.
//
//     drawing_bench [countries-10m.json]

#include "bench/countries.h"

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#ifdef KTL_BENCH_QT
#include <QImage>
#include <QPainter>
#endif
#ifdef KTL_BENCH_MAPNIK
#include <mapnik/agg_renderer.hpp>
#include <mapnik/feature_factory.hpp>
#include <mapnik/feature_type_style.hpp>
#include <mapnik/image.hpp>
#include <mapnik/layer.hpp>
#include <mapnik/map.hpp>
#include <mapnik/memory_datasource.hpp>
#include <mapnik/rule.hpp>
#include <mapnik/symbolizer.hpp>
#endif

namespace {

using ktl::bench::Degrees;
using ktl::bench::kHeight;
using ktl::bench::kWidth;
using ktl::bench::Ring;

/// Degrees of the bitmap's upper left corner, and pixels per degree.
struct View {
    double west;
    double north;
    double scale;
};

constexpr View kWorld{-180, 90, kWidth / 360.0};
constexpr View kEastAsia{90, 50, kWidth / 60.0};

/// Read once, before the first case runs.
std::vector<Ring> &TheRings() {
    static std::vector<Ring> rings;
    return rings;
}

template <class P>
void Project(const Ring &ring, const View &view, std::vector<P> &pixels) {
    pixels.resize(ring.size());
    for (std::size_t i = 0; i < ring.size(); ++i) {
        pixels[i] = P(static_cast<int>((ring[i].longitude - view.west) * view.scale),
                      static_cast<int>((view.north - ring[i].latitude) * view.scale));
    }
}

/// What a case draws for each ring.
enum class Content { Areas, Lines, SeeThrough, Hatched };

struct Case {
    const char *name;
    View view;
    Content content;
    int penWidth;
    bool mapnik;
};

constexpr Case kCases[] = {
    {"world_1px", kWorld, Content::Areas, 1, true},
    {"east_asia_1px", kEastAsia, Content::Areas, 1, true},
    {"world_3px", kWorld, Content::Areas, 3, true},
    {"east_asia_3px", kEastAsia, Content::Areas, 3, true},
    {"world_lines_3px", kWorld, Content::Lines, 3, false},
    {"world_alpha", kWorld, Content::SeeThrough, 1, false},
    {"world_alpha_3px", kWorld, Content::SeeThrough, 3, false},
    {"world_hatched", kWorld, Content::Hatched, 1, false},
};

void DrawByKtl(benchmark::State &state, const Case &test) {
    using namespace Gdiplus;
    Bitmap bitmap(kWidth, kHeight, PixelFormat32bppPARGB);
    Graphics graphics(&bitmap);
    const BYTE alpha = test.content == Content::SeeThrough ? 128 : 255;
    const SolidBrush solid(Color(alpha, 180, 220, 200));
    const HatchBrush hatch(HatchStyleDiagonalBrick, Color(180, 220, 200), Color(255, 255, 255));
    const Brush *const brush = test.content == Content::Hatched ? static_cast<const Brush *>(&hatch) : &solid;
    Pen pen(Color(alpha, 60, 60, 60), static_cast<REAL>(test.penWidth));
    if (test.content == Content::Lines) {
        pen.SetLineJoin(LineJoinRound);
        pen.SetLineCap(LineCapRound, LineCapRound, DashCapFlat);
    }
    std::vector<Point> pixels;
    for (auto _ : state) {
        graphics.Clear(Color(255, 255, 255));
        for (const Ring &ring : TheRings()) {
            Project(ring, test.view, pixels);
            const INT count = static_cast<INT>(pixels.size());
            if (test.content == Content::Lines) {
                graphics.DrawLines(&pen, pixels.data(), count);
            } else {
                graphics.FillPolygon(brush, pixels.data(), count);
                graphics.DrawPolygon(&pen, pixels.data(), count);
            }
        }
        graphics.Flush();
    }
}

#ifdef KTL_BENCH_QT
void DrawByQt(benchmark::State &state, const Case &test) {
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    const int alpha = test.content == Content::SeeThrough ? 128 : 255;
    QPen pen(QColor(60, 60, 60, alpha), test.penWidth);
    pen.setJoinStyle(test.content == Content::Lines ? Qt::RoundJoin : Qt::MiterJoin);
    pen.setCapStyle(test.content == Content::Lines ? Qt::RoundCap : Qt::FlatCap);
    painter.setPen(pen);
    painter.setBrush(test.content == Content::Lines     ? QBrush(Qt::NoBrush)
                     : test.content == Content::Hatched ? QBrush(QColor(180, 220, 200), Qt::BDiagPattern)
                                                        : QBrush(QColor(180, 220, 200, alpha)));
    std::vector<QPoint> pixels;
    for (auto _ : state) {
        image.fill(Qt::white);
        for (const Ring &ring : TheRings()) {
            Project(ring, test.view, pixels);
            if (test.content == Content::Lines) {
                painter.drawPolyline(pixels.data(), static_cast<int>(pixels.size()));
            } else {
                painter.drawPolygon(pixels.data(), static_cast<int>(pixels.size()));
            }
        }
    }
}
#endif

#ifdef KTL_BENCH_MAPNIK
std::shared_ptr<mapnik::memory_datasource> RingSource() {
    mapnik::parameters parameters;
    auto source = std::make_shared<mapnik::memory_datasource>(parameters);
    const auto context = std::make_shared<mapnik::context_type>();
    mapnik::value_integer id = 0;
    for (const Ring &ring : TheRings()) {
        mapnik::geometry::polygon<double> polygon;
        mapnik::geometry::linear_ring<double> outline;
        for (const Degrees &d : ring) outline.emplace_back(d.longitude, d.latitude);
        polygon.exterior_ring = std::move(outline);
        const mapnik::feature_ptr feature = mapnik::feature_factory::create(context, ++id);
        feature->set_geometry(std::move(polygon));
        source->push(feature);
    }
    return source;
}

template <class Symbolizer>
Symbolizer Clipped(Symbolizer symbolizer) {
    mapnik::put(symbolizer, mapnik::keys::clip, true);
    mapnik::put(symbolizer, mapnik::keys::simplify_tolerance, 1.0);
    return symbolizer;
}

void DrawByMapnik(benchmark::State &state, const Case &test) {
    mapnik::Map map(kWidth, kHeight, "epsg:4326");
    map.set_background(mapnik::color(255, 255, 255));
    mapnik::polygon_symbolizer fill;
    mapnik::put(fill, mapnik::keys::fill, mapnik::color(180, 220, 200));
    mapnik::line_symbolizer outline;
    mapnik::put(outline, mapnik::keys::stroke, mapnik::color(60, 60, 60));
    mapnik::put(outline, mapnik::keys::stroke_width, static_cast<double>(test.penWidth));
    mapnik::rule rule;
    rule.append(Clipped(std::move(fill)));
    rule.append(Clipped(std::move(outline)));
    mapnik::feature_type_style style;
    style.add_rule(std::move(rule));
    map.insert_style("countries", std::move(style));
    mapnik::layer layer("countries", "epsg:4326");
    layer.set_datasource(RingSource());
    layer.add_style("countries");
    map.add_layer(std::move(layer));
    const View &view = test.view;
    map.zoom_to_box(mapnik::box2d<double>(view.west, view.north - kHeight / view.scale, view.west + kWidth / view.scale,
                                          view.north));
    for (auto _ : state) {
        mapnik::image_rgba8 image(kWidth, kHeight);
        mapnik::agg_renderer<mapnik::image_rgba8> renderer(map, image);
        renderer.apply();
    }
}
#endif

/// 100,000 small filled ellipses with an outline, as points are drawn.
std::vector<Gdiplus::Point> Spots() {
    std::mt19937 random(1);
    std::vector<Gdiplus::Point> spots;
    for (int i = 0; i < 100000; ++i) {
        const int x = static_cast<int>(random() % kWidth);
        spots.emplace_back(x, static_cast<int>(random() % kHeight));
    }
    return spots;
}

void SpotsByKtl(benchmark::State &state) {
    using namespace Gdiplus;
    Bitmap bitmap(kWidth, kHeight, PixelFormat32bppPARGB);
    Graphics graphics(&bitmap);
    const SolidBrush brush(Color(200, 30, 30));
    const Pen pen(Color(0, 0, 0));
    const std::vector<Point> spots = Spots();
    for (auto _ : state) {
        for (const Point &p : spots) {
            graphics.FillEllipse(&brush, p.X - 2, p.Y - 2, 5, 5);
            graphics.DrawEllipse(&pen, p.X - 2, p.Y - 2, 5, 5);
        }
    }
}

#ifdef KTL_BENCH_QT
void SpotsByQt(benchmark::State &state) {
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(QColor(200, 30, 30));
    const std::vector<Gdiplus::Point> spots = Spots();
    for (auto _ : state) {
        for (const Gdiplus::Point &p : spots) painter.drawEllipse(p.X - 2, p.Y - 2, 5, 5);
    }
}
#endif

void Register(const std::string &name, const std::function<void(benchmark::State &)> &run) {
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

void RegisterAll() {
    for (const Case &test : kCases) {
        const std::string name = test.name;
        Register(name + "/ktl", [&test](benchmark::State &state) { DrawByKtl(state, test); });
#ifdef KTL_BENCH_QT
        Register(name + "/qpainter", [&test](benchmark::State &state) { DrawByQt(state, test); });
#endif
#ifdef KTL_BENCH_MAPNIK
        if (test.mapnik) Register(name + "/mapnik", [&test](benchmark::State &state) { DrawByMapnik(state, test); });
#endif
    }
    Register("spots/ktl", SpotsByKtl);
#ifdef KTL_BENCH_QT
    Register("spots/qpainter", SpotsByQt);
#endif
}

}  // namespace

int main(int argc, char **argv) {
    return ktl::bench::DrawCountries(
        argc, argv,
        [](const std::vector<Ring> &rings) {
            TheRings() = rings;
            RegisterAll();
        },
        [] {});
}
