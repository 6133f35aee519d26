#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/geometry.h"

/// The distance in the plane.
KTL_API double KtlGetP2PLength(double x1, double y1, double x2, double y2);
/// The same in whole pixels, cut toward zero. The squares are 32 bits wide and wrap for differences above 46340; where
/// their sum is negative the result is 0.
KTL_API int KtlGetP2PLength(CPoint a, CPoint b);

/// Metres on the sphere between two places in degrees. The formula takes a sine where the haversine formula has an arc
/// sine, and rounds some steps to single precision: good for short ways only, and kept so since results are compared.
KTL_API double KtlGetDistance(double l1, double b1, double l2, double b2);
