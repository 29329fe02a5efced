#include "host/geometry/GK_Curve.h"
#include "output/PDFToVelmo.h"

namespace {

// Below this a curve is a point.
constexpr double kTiny = 2.3283064365386963e-10; // 2^-32

} // namespace

GK_Curve* NormaliseCurve(const GK_Curve& curve) {
    GK_SimpleArray<GK_3dPoint> points;
    const int n = curve.IsPolyline(&points);
    if (n > 0) {
        if (n <= 3 && points[0].DistanceTo(points[n - 1]) < kTiny) {
            if (n < 3)
                return nullptr;
            // A closed three-point polyline is a line drawn there and back: keep it open.
            points.SetCount(2);
        }
        auto* polyline = new GK_PolylineCurve(points);
        polyline->RemoveShortSegments(kTiny);
        polyline->Compact(); // it goes to the model as it is now
        return polyline;
    }
    if (curve.IsLinear(kTiny) && curve.PointAtStart().DistanceTo(curve.PointAtEnd()) < kTiny)
        return nullptr;
    return curve.DuplicateCurve();
}
