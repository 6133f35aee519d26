#include "host/shape_set.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/error.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/shape_point.h"
#include "ktl/shapes/shape_polygon.h"
#include "ktl/shapes/shape_polyline.h"
#include "ktl/webmap/projection.h"

namespace ktl::host {

namespace {

constexpr int kShapesPerNode = 20;
constexpr std::size_t kShapesBetweenReports = 1000;

template <class Shape>
void SetPath(Shape &shape, const Path &path, WorldUnits units) {
    CArray<POINTD, POINTD> &points = shape.GetPointArray();
    points.Reserve(static_cast<int>(path.size()));
    for (const LonLat &place : path) points.Add(WorldFromDegrees(place, units));
    shape.CalcExtent();
}

// One ring through all rings: out along a bridge from the first ring's start, round the ring, and back.
Path Bridged(const std::vector<Path> &rings) {
    Path path = rings.front();
    const LonLat start = path.front();
    for (std::size_t i = 1; i < rings.size(); ++i) {
        path.insert(path.end(), rings[i].begin(), rings[i].end());
        path.push_back(start);
    }
    return path;
}

CExtent Grown(const CExtent &extent, double margin) {
    return {extent.left - margin, extent.bottom - margin, extent.right + margin, extent.top + margin};
}

}  // namespace

const MapArea &AreaOf(WorldUnits units) {
    return units == WorldUnits::kDegrees ? kDegreeArea : kNormalisedArea;
}

CPointD WorldFromDegrees(LonLat place, WorldUnits units) {
    if (units == WorldUnits::kDegrees) return {place.l, place.b};
    CPointD world(0.0, 0.0);
    KtlGetXY(place.l, place.b, world.x, world.y);
    return world;
}

CExtent WorldFromDegrees(const CExtent &degrees, WorldUnits units) {
    const CPointD southWest = WorldFromDegrees(LonLat{degrees.left, degrees.bottom}, units);
    const CPointD northEast = WorldFromDegrees(LonLat{degrees.right, degrees.top}, units);
    return {southWest.x, southWest.y, northEast.x, northEast.y};
}

CExtent DegreesFromWorld(const CExtent &world, WorldUnits units) {
    CExtent degrees = world;
    if (units == WorldUnits::kDegrees) return degrees;
    KtlGetLB(world.left, world.bottom, degrees.left, degrees.bottom);
    KtlGetLB(world.right, world.top, degrees.right, degrees.top);
    return degrees;
}

CExtent MetresFromWorld(const CExtent &world) {
    CExtent from = world;
    CExtent metres;
    KtlGetProjectXY(from.left, from.bottom, metres.left, metres.bottom, 0);
    KtlGetProjectXY(from.right, from.top, metres.right, metres.top, 0);
    return metres;
}

ShapeSet::ShapeSet(const Style &style, WorldUnits units) : m_style(style), m_units(units), m_legends(style) {}

ShapeSet::~ShapeSet() = default;

void ShapeSet::AddPoint(LonLat point) {
    auto shape = std::make_unique<CShape_Point>();
    shape->SetPoint(World(point));
    AddItem(kPoints, std::move(shape), m_legends.point);
}

void ShapeSet::AddLine(Path &&line) {
    auto shape = std::make_unique<CShape_Polyline>();
    SetPath(*shape, line, m_units);
    AddItem(kLines, std::move(shape), m_legends.line);
}

void ShapeSet::AddArea(std::vector<Path> &&rings) {
    if (rings.size() == 1) {
        AddItem(kAreas, MakePolygon(rings.front()), m_legends.area);
        return;
    }
    AddItem(kAreas, MakePolygon(Bridged(rings)), m_legends.fillOnly);
    for (const Path &ring : rings) AddItem(kAreas, MakePolygon(ring), m_legends.outlineOnly, false);
}

std::unique_ptr<CShape_Object> ShapeSet::MakePolygon(const Path &ring) const {
    auto shape = std::make_unique<CShape_Polygon>();
    SetPath(*shape, ring, m_units);
    return shape;
}

void ShapeSet::AddItem(Kind kind, std::unique_ptr<CShape_Object> shape, CLegend &legend, bool counts) {
    m_byKind[kind].push_back({std::move(shape), &legend, counts});
}

void ShapeSet::BuildIndex() {
    for (std::vector<Item> &items : m_byKind) {
        m_items.insert(m_items.end(), std::move_iterator(items.begin()), std::move_iterator(items.end()));
        items.clear();
    }
    if (m_items.empty()) return;
    m_extent = m_items.front().shape->GetExtent();
    for (const Item &item : m_items) m_extent += item.shape->GetExtent();
    m_tree.InitTree(m_extent, static_cast<int>(m_items.size()), kShapesPerNode);
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        m_tree.AddToTreeNode(m_items[i].shape->GetExtent(), static_cast<int>(i));
    }
    m_tree.TrimNullTreeNode();
}

// How far a shape's drawing reaches beyond its extent.
double ShapeSet::MarginPixels() {
    return std::max<double>(m_legends.point.GetSize(), m_style.lineWidth + 2) / 2.0 + 1.0;
}

long long ShapeSet::Draw(Gdiplus::Graphics &graphics, double ratio, const CExtent &view,
                         const ProgressCallback &progress) {
    const CExtent reach = Grown(view, MarginPixels() / ratio);
    CArray<int, int> found;
    m_tree.FindShapeID(reach, found);
    std::sort(found.begin(), found.end());
    long long drawn = 0;
    std::size_t visited = 0;
    for (const int index : found) {
        Item &item = m_items[static_cast<std::size_t>(index)];
        if (!reach.Intersect(item.shape->GetExtent())) continue;
        item.shape->Draw(&graphics, item.legend, ratio, view, 0, 0, 0);
        if (item.counts) ++drawn;
        if (progress && ++visited % kShapesBetweenReports == 0 &&
            !progress({"drawing", drawn, static_cast<long long>(found.GetSize())})) {
            throw Interrupted();
        }
    }
    return drawn;
}

}  // namespace ktl::host
