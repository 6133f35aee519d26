#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/point.h"
#include "ktl/platform/array.h"
#include "ktl/platform/gdiplus/forward.h"

class CArchive;
class OGRSimpleCurve;

/// \file
/// What lines and rings do alike with their vertices and the extent around them.

namespace ktl {

using VertexArray = CArray<POINTD, POINTD>;

/// Makes the extent the rectangle without area on the point.
void CollapseTo(CExtent &extent, const POINTD &point);
/// Widens the extent to hold the point.
void GrowTo(CExtent &extent, const POINTD &point);

/// The contracts of these are told at the shapes' operations of the same names.
/// The point comes by value: it may be one of the array's own, which moves when it grows.
void AddVertex(VertexArray &vertices, CExtent &extent, POINTD point);
void SetVertexAt(VertexArray &vertices, CExtent &extent, int index, const POINTD &point);
void SetLastVertex(VertexArray &vertices, CExtent &extent, const POINTD &point);
void CalcExtentOf(const VertexArray &vertices, CExtent &extent);
void OffsetVertices(VertexArray &vertices, CExtent &extent, double dx, double dy);

/// True when the points differ by less than `tolerance` on both axes.
bool IsNear(const POINTD &a, const POINTD &b, double tolerance);
/// How near a vertex must be to the point that the node tool has in hand.
constexpr double kSamePoint = 1e-10;
/// The number of the first vertex nearer than `tolerance`; -1 without one.
int FindVertex(const VertexArray &vertices, const POINTD &point, double tolerance);
int SnapToVertex(const VertexArray &vertices, const POINTD &point, POINTD &snapped, double tolerance);
int MoveVertex(const VertexArray &vertices, const POINTD &point, int &index, VertexArray &points);

/// An int count and the vertices. A count takes no more memory than the file it comes from has bytes for.
void SerializeVertices(CArchive &archive, VertexArray &vertices);

/// Puts the vertices into the curve in degrees.
void CopyToCurve(const VertexArray &vertices, OGRSimpleCurve &curve);

}  // namespace ktl
