#include "host/geometry/GK_Curve.h"

#include <cmath>

bool GK_Curve::IsClosed() const {
    if (!IsValid())
        return false;
    const GK_3dPoint a = PointAtStart();
    const GK_3dPoint b = PointAtEnd();
    if (!a.IsValid() || !b.IsValid())
        return false;
    // A curve that never leaves its start point is a point, not a loop.
    const double size = BoundingBox().Diagonal().Length();
    if (!(size > 0.0))
        return false;
    if (a == b)
        return true;
    // Rational evaluation and transformations round; ends that differ only by that
    // rounding still meet. The allowance is far below any drawing tolerance.
    return std::isfinite(size) && a.DistanceTo(b) <= 1e-12 * size;
}
