#include "ktl/shapes/vertex_list.h"

#include <ogr_geometry.h>

#include <algorithm>
#include <cmath>

#include "ktl/platform/archive.h"
#include "ktl/platform/file.h"
#include "ktl/webmap/projection.h"

namespace ktl {

namespace {

constexpr int kVertexBytes = 16;
/// So many vertices get their memory on the word of a count alone.
constexpr int kUncheckedCount = 4096;

void StoreVertices(CArchive &archive, const VertexArray &vertices) {
    archive << vertices.GetSize();
    for (const POINTD &vertex : vertices) archive << vertex.x << vertex.y;
}

/// The count, held at what the file under the archive can hold.
int PlausibleCount(const CArchive &archive, int count) {
    if (count <= kUncheckedCount) return std::max(count, 0);
    const ULONGLONG limit = archive.GetFile()->GetLength() / kVertexBytes;
    return static_cast<int>(std::min<ULONGLONG>(static_cast<ULONGLONG>(count), limit));
}

void LoadVertices(CArchive &archive, VertexArray &vertices) {
    int count = 0;
    archive >> count;
    vertices.RemoveAll();
    vertices.Reserve(PlausibleCount(archive, count));
    for (int i = 0; i < count; ++i) {
        double x = 0.0;
        double y = 0.0;
        archive >> x >> y;
        vertices.Add(POINTD(x, y));
    }
}

}  // namespace

void CollapseTo(CExtent &extent, const POINTD &point) {
    extent.SetExtent(point.x, point.y, point.x, point.y);
}

void GrowTo(CExtent &extent, const POINTD &point) {
    if (point.x < extent.left) extent.left = point.x;
    if (point.x > extent.right) extent.right = point.x;
    if (point.y < extent.bottom) extent.bottom = point.y;
    if (point.y > extent.top) extent.top = point.y;
}

void AddVertex(VertexArray &vertices, CExtent &extent, POINTD point) {
    if (vertices.Add(point) == 0) {
        CollapseTo(extent, point);
    } else {
        GrowTo(extent, point);
    }
}

void SetVertexAt(VertexArray &vertices, CExtent &extent, int index, const POINTD &point) {
    vertices.SetAt(index, point);
    if (index == 0) {
        CollapseTo(extent, point);
    } else {
        GrowTo(extent, point);
    }
}

void SetLastVertex(VertexArray &vertices, CExtent &extent, const POINTD &point) {
    vertices.SetAt(vertices.GetUpperBound(), point);
    GrowTo(extent, point);
}

void CalcExtentOf(const VertexArray &vertices, CExtent &extent) {
    if (vertices.IsEmpty()) return;
    CollapseTo(extent, vertices[0]);
    for (const POINTD &vertex : vertices) GrowTo(extent, vertex);
}

void OffsetVertices(VertexArray &vertices, CExtent &extent, double dx, double dy) {
    for (POINTD &vertex : vertices) {
        vertex.x += dx;
        vertex.y += dy;
    }
    extent.Offset(dx, dy);
}

bool IsNear(const POINTD &a, const POINTD &b, double tolerance) {
    return std::fabs(a.x - b.x) < tolerance && std::fabs(a.y - b.y) < tolerance;
}

int FindVertex(const VertexArray &vertices, const POINTD &point, double tolerance) {
    for (int i = 0; i < vertices.GetSize(); ++i) {
        if (IsNear(point, vertices[i], tolerance)) return i;
    }
    return -1;
}

int SnapToVertex(const VertexArray &vertices, const POINTD &point, POINTD &snapped, double tolerance) {
    const int found = FindVertex(vertices, point, tolerance);
    if (found < 0) return 0;
    snapped = vertices[found];
    return 1;
}

int MoveVertex(const VertexArray &vertices, const POINTD &point, int &index, VertexArray &points) {
    const int found = FindVertex(vertices, point, kSamePoint);
    if (found < 0) return 0;
    index = found;
    points.Add(vertices[found]);
    if (found > 0) points.Add(vertices[found - 1]);
    if (found < vertices.GetUpperBound()) points.Add(vertices[found + 1]);
    return 1;
}

void SerializeVertices(CArchive &archive, VertexArray &vertices) {
    if (archive.IsStoring()) {
        StoreVertices(archive, vertices);
    } else {
        LoadVertices(archive, vertices);
    }
}

void CopyToCurve(const VertexArray &vertices, OGRSimpleCurve &curve) {
    curve.setNumPoints(vertices.GetSize(), FALSE);
    for (int i = 0; i < vertices.GetSize(); ++i) {
        curve.setPoint(i, KtlGetL(vertices[i].x), KtlGetB(vertices[i].y));
    }
}

}  // namespace ktl
