#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/point.h"
#include "ktl/platform/array.h"
#include "ktl/platform/export.h"

/// \file
/// Arcs of a circle in whole degrees, counter-clockwise from +x in world space, both ends included.

/// The arc's points, one a degree, after the centre when `withCentre` is not 0. The array has end - start + 2 elements
/// whatever `withCentre` says: without the centre the last one is (0, 0). Callers rely on the size. Empty when that
/// number is not above 0.
KTL_API void GetArcPointArray(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                              CArray<POINTD, POINTD> &points, int withCentre);

/// Grows `extent` by the arc's points. It starts anew at the centre when `withCentre` is not 0, otherwise at the point
/// of degree 0. So without the centre an arc that begins above 0 only adds to what `extent` holds, and one that begins
/// below 0 loses its points before 0: meant so.
KTL_API void GetArcExtent(const POINTD &centre, const double &radius, const int &startDegree, const int &endDegree,
                          EXTENT &extent, int withCentre);
