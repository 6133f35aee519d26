#include "ktl/webmap/dms.h"

#include <cmath>

#include "ktl/platform/numeric.h"

void KtlDegreeToDMS(double degree, int &d, int &m, double &s) {
    if (degree == 0.0) {
        d = 0;
        m = 0;
        s = 0.0;
        return;
    }
    d = ktl::TruncateToInt(degree);
    const double fraction = degree - d;
    m = ktl::TruncateToInt(fraction * 60.0);
    s = (fraction * 60.0 - m) * 60.0;
}

void KtlDMSToDegree(int d, int m, double s, CString hemisphere, double &degree) {
    degree = std::abs(static_cast<double>(d)) + m / 60.0 + s / 3600.0;
    if (hemisphere == "W" || hemisphere == "S") degree = degree * -1.0;
}
