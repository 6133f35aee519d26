#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/string.h"

/// Degrees, minutes and seconds of an angle in degrees; all three negative for a negative one.
KTL_API void KtlDegreeToDMS(double degree, int &d, int &m, double &s);
/// Joins them; the sign of `d` alone is dropped. Negative for the hemispheres "W" and "S", exactly so written.
KTL_API void KtlDMSToDegree(int d, int m, double s, CString hemisphere, double &degree);
