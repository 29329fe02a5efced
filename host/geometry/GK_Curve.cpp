#include "host/geometry/GK_Curve.h"

#include "host/geometry/GK_CurvePoints.h"

#include <cmath>
#include <vector>

GK_Geometry::~GK_Geometry() = default;

bool GK_Curve::IsClosed() const {
    if (!IsValid())
        return false;
    const GK_3dPoint a = PointAtStart();
    const GK_3dPoint b = PointAtEnd();
    if (!a.IsValid() || !b.IsValid())
        return false;
    if (a != b) {
        // The control points hold the curve, so their box is at least as large as the
        // curve's: ends too far apart for it need no exact box, which is the costly part.
        std::vector<GK_3dPoint> hull;
        GK_CurveControlPoints(*this, hull);
        GK_BoundingBox hullBox;
        for (const GK_3dPoint& p : hull)
            hullBox.Set(p, true);
        const double hullSize = hullBox.Diagonal().Length();
        if (std::isfinite(hullSize) && a.DistanceTo(b) > 1e-12 * hullSize)
            return false;
    }
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

bool GK_Curve::IsLinear(double tolerance) const {
    if (!IsValid())
        return false;
    return StaysNearLine(PointAtStart(), PointAtEnd(), tolerance);
}

// Curves that are chains of straight segments are judged by their vertices; anything else
// cannot be bounded here, so the answer is the conservative one.
bool GK_Curve::StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to, double tolerance) const {
    if (!(tolerance >= 0.0) || !from.IsValid() || !to.IsValid())
        return false;
    GK_SimpleArray<GK_3dPoint> points;
    if (IsPolyline(&points) <= 0)
        return false;
    for (const GK_3dPoint& p : points)
        if (!(GK_DistanceFromLine(p, from, to, tolerance) <= tolerance))
            return false;
    return true;
}
