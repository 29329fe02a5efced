#include "host/geometry/GK_Curve.h"

#include "host/geometry/GK_CurvePoints.h"

#include <cmath>
#include <vector>

GK_Geometry::~GK_Geometry() = default;

namespace {

// Grows `box` by points that the curve's own box is sure to hold, because they are among the
// points that box is made of: vertices, and the end points of single Bezier spans. The
// curve's box is then at least as large.
void AddPointsOfTheBox(const GK_Curve& curve, GK_BoundingBox& box) {
    if (const auto* polyline = GK_CurveCast<GK_PolylineCurve>(&curve)) {
        for (const GK_3dPoint& p : polyline->m_pline)
            box.Set(p, true);
    } else if (const auto* line = GK_CurveCast<GK_LineCurve>(&curve)) {
        box.Set(line->m_line.from, true);
        box.Set(line->m_line.to, true);
    } else if (const auto* chain = GK_CurveCast<GK_PolyCurve>(&curve)) {
        for (int i = 0; i < chain->Count(); ++i)
            if (const GK_Curve* segment = chain->SegmentCurve(i))
                AddPointsOfTheBox(*segment, box);
    } else if (const auto* nurbs = GK_CurveCast<GK_NurbsCurve>(&curve)) {
        // One span whose ends are its first and last control points (up to the sign of a
        // zero, which no size sees).
        const int last = nurbs->CVCount() - 1;
        if (nurbs->IsRational() || last + 1 != nurbs->Order() || nurbs->KnotCount() < 2 ||
            nurbs->Knot(0) != nurbs->Knot(nurbs->Degree() - 1) ||
            nurbs->Knot(nurbs->Degree()) != nurbs->Knot(nurbs->KnotCount() - 1))
            return;
        GK_3dPoint p;
        if (nurbs->GetCV(0, p))
            box.Set(p, true);
        if (nurbs->GetCV(last, p))
            box.Set(p, true);
    }
}

} // namespace

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
    // A curve that never leaves its start point is a point, not a loop. When the ends meet
    // exactly, any part of the box that has a size is enough to tell; the whole box, which
    // is costly for splines, is worked out only when that part has none.
    if (a == b) {
        GK_BoundingBox part;
        AddPointsOfTheBox(*this, part);
        if (part.Diagonal().Length() > 0.0)
            return true;
    }
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
