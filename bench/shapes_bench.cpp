// Drawing countries-10m into a bitmap of 2048 by 1024, the world and East Asia, against QPainter without antialiasing.
// All take the same rings in world units and project them anew in every frame. "areas" fills them through
// CShape_Polygon::Draw and outlines them with 3 pixels, as a polygon legend of size 1 does; "lines" draws them 1 pixel
// wide through CShape_Polyline::Draw, whose filter leaves out vertices nearer than 2 pixels. QPainter gets every
// vertex, and as "qpainter_thinned" only those that leave the pixel of the one before.
//
//     shapes_bench [countries-10m.json]

#include "bench/countries.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#ifdef KTL_BENCH_QT
#include <QImage>
#include <QPainter>
#endif

#include "ktl/core/transform.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/shapes/shape_polygon.h"
#include "ktl/shapes/shape_polyline.h"
#include "ktl/webmap/projection.h"

namespace {

using ktl::bench::kHeight;
using ktl::bench::kWidth;

constexpr COLORREF kFill = RGB(200, 220, 180);
constexpr COLORREF kLine = RGB(60, 60, 60);

struct View {
    CExtent extent;
    double ratio;
};

/// The view of the bitmap's shape around a middle in degrees, `degrees` of longitude wide.
View Around(double longitude, double latitude, double degrees) {
    const double half = degrees / 360.0 / 2.0;
    const double x = KtlGetX(longitude);
    const double y = KtlGetY(latitude);
    const double halfHeight = half * kHeight / kWidth;
    return {CExtent(x - half, y - halfHeight, x + half, y + halfHeight), kWidth / (2.0 * half)};
}

const View kWorld = Around(0.0, 20.0, 360.0);
const View kEastAsia = Around(115.0, 35.0, 60.0);

struct Map {
    std::vector<CShape_Polygon> areas;
    std::vector<CShape_Polyline> lines;
    std::size_t vertexCount = 0;
};

void AddRing(Map &map, const ktl::bench::Ring &ring) {
    CShape_Polygon area;
    CShape_Polyline line;
    for (const auto &[longitude, latitude] : ring) {
        // Latitude 90 has no place on the map.
        const CPointD vertex(KtlGetX(longitude), KtlGetY(std::clamp(latitude, -85.0, 85.0)));
        area.AddPoint(vertex);
        line.AddPoint(vertex);
    }
    map.vertexCount += ring.size();
    map.areas.push_back(area);
    map.lines.push_back(line);
}

/// Read once, before the first case runs.
Map &TheMap() {
    static Map map;
    return map;
}

void Finish(benchmark::State &state) {
    state.counters["vertices"] = static_cast<double>(TheMap().vertexCount);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(TheMap().vertexCount));
}

template <class Shape>
void DrawByKtl(benchmark::State &state, const View &view, CLegend &legend, std::vector<Shape> &shapes) {
    Gdiplus::Bitmap bitmap(kWidth, kHeight, Gdiplus::PixelFormat32bppPARGB);
    Gdiplus::Graphics graphics(&bitmap);
    legend.SetSize(1);
    legend.SetForeColor(kFill);
    legend.SetBackColor(kLine);
    for (auto _ : state) {
        graphics.Clear(Gdiplus::Color(255, 255, 255));
        for (Shape &shape : shapes) shape.Draw(&graphics, &legend, view.ratio, view.extent, 0, 0, 0);
        graphics.Flush();
    }
    Finish(state);
}

void DrawAreasByKtl(benchmark::State &state, const View &view) {
    CLegend_Polygon legend;
    DrawByKtl(state, view, legend, TheMap().areas);
}

void DrawLinesByKtl(benchmark::State &state, const View &view) {
    CLegend_Polyline legend;
    DrawByKtl(state, view, legend, TheMap().lines);
}

#ifdef KTL_BENCH_QT
QColor ColorOf(COLORREF color) {
    return QColor(GetRValue(color), GetGValue(color), GetBValue(color));
}

void DrawByQt(benchmark::State &state, const View &view, bool isArea, bool isThinned) {
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setPen(QPen(ColorOf(isArea ? kLine : kFill), isArea ? 3 : 1));
    painter.setBrush(isArea ? QBrush(ColorOf(kFill)) : QBrush(Qt::NoBrush));
    std::vector<QPoint> pixels;
    for (auto _ : state) {
        image.fill(Qt::white);
        for (CShape_Polygon &area : TheMap().areas) {
            const auto &vertices = area.GetPointArray();
            pixels.clear();
            for (const POINTD &vertex : vertices) {
                const QPoint pixel(World2ClientX(view.extent, view.ratio, vertex.x),
                                   World2ClientY(view.extent, view.ratio, vertex.y));
                if (!isThinned || pixels.empty() || pixel != pixels.back()) pixels.push_back(pixel);
            }
            if (isArea) {
                painter.drawPolygon(pixels.data(), static_cast<int>(pixels.size()));
            } else {
                painter.drawPolyline(pixels.data(), static_cast<int>(pixels.size()));
            }
        }
    }
    Finish(state);
}
#endif

void Register(const std::string &name, const View &view, bool isArea) {
    benchmark::RegisterBenchmark((name + "/ktl").c_str(), [=](benchmark::State &state) {
        if (isArea) {
            DrawAreasByKtl(state, view);
        } else {
            DrawLinesByKtl(state, view);
        }
    })->Unit(benchmark::kMillisecond);
#ifdef KTL_BENCH_QT
    for (const bool isThinned : {false, true}) {
        benchmark::RegisterBenchmark((name + (isThinned ? "/qpainter_thinned" : "/qpainter")).c_str(),
                                     [=](benchmark::State &state) { DrawByQt(state, view, isArea, isThinned); })
            ->Unit(benchmark::kMillisecond);
    }
#endif
}

}  // namespace

int main(int argc, char **argv) {
    return ktl::bench::DrawCountries(
        argc, argv,
        [](const std::vector<ktl::bench::Ring> &rings) {
            for (const ktl::bench::Ring &ring : rings) AddRing(TheMap(), ring);
            Register("areas_world", kWorld, true);
            Register("areas_east_asia", kEastAsia, true);
            Register("lines_world", kWorld, false);
            Register("lines_east_asia", kEastAsia, false);
        },
        [] { TheMap() = Map(); });
}
