// Path elements to curves, clipped against the clip path: lines become line and polyline
// curves, Béziers cubic NURBS curves.
#include "host/geometry/GK_Curve.h"
#include "output/PDFToVelmo.h"

namespace {

double Lerp(double a, double b, double t) {
    return (1.0 - t) * a + t * b;
}

struct Point2 {
    double x, y;
};

Point2 Lerp(const Point2& a, const Point2& b, double t) {
    return {Lerp(a.x, b.x, t), Lerp(a.y, b.y, t)};
}

// The part of the cubic between t0 and t1: the left part at t1, then the right part of that
// at t0 / t1.
void CutBezier(Point2 (&p)[4], double t0, double t1) {
    {
        const Point2 p01 = Lerp(p[0], p[1], t1);
        const Point2 p12 = Lerp(p[1], p[2], t1);
        const Point2 p23 = Lerp(p[2], p[3], t1);
        const Point2 p012 = Lerp(p01, p12, t1);
        const Point2 p123 = Lerp(p12, p23, t1);
        p[1] = p01;
        p[2] = p012;
        p[3] = Lerp(p012, p123, t1);
    }
    if (t0 == 0.0)
        return;
    const double t = t0 / t1;
    const Point2 p01 = Lerp(p[0], p[1], t);
    const Point2 p12 = Lerp(p[1], p[2], t);
    const Point2 p23 = Lerp(p[2], p[3], t);
    const Point2 p012 = Lerp(p01, p12, t);
    const Point2 p123 = Lerp(p12, p23, t);
    p[0] = Lerp(p012, p123, t);
    p[1] = p123;
    p[2] = p23;
}

// End point of a curve built here, read without evaluating it.
GK_3dPoint EndOf(const GK_Curve& curve) {
    if (const auto* polyline = GK_CurveCast<GK_PolylineCurve>(&curve))
        return *polyline->m_pline.Last();
    if (const auto* line = GK_CurveCast<GK_LineCurve>(&curve))
        return line->m_line.to;
    return curve.PointAtEnd();
}

} // namespace

// A page's clip usually serves many painting operations, and a clip of thousands of vertices
// costs more to index than to use once; the version tells when it is another one. The size is
// checked as well, for code that fills clipElements by hand.
void PDFToVelmo::PrepareClip() {
    if (clipPrepared && clipPreparedVersion == clipVersion &&
        clipPreparedSize == clipElements.size())
        return;
    clip = PathClip(&clipElements.Elements());
    clipPrepared = true;
    clipPreparedVersion = clipVersion;
    clipPreparedSize = clipElements.size();
}

void PDFToVelmo::AddPathElement(const PathElement& element) {
    switch (element.kind) {
    case 'a':
        control1 = element;
        return; // control points do not become the previous element
    case 'b':
        control2 = element;
        return;
    case 'l':
        AddLine(element);
        break;
    case 'c':
        AddBezier(element);
        break;
    default:
        break;
    }
    previousElement = element;
}

void PDFToVelmo::AddLine(const PathElement& element) {
    const PathElement& from = previousElement;
    if ((clip.Outcode(from.x, from.y) & clip.Outcode(element.x, element.y)) == 0) {
        clip.ClipSegment(from.x, from.y, element.x, element.y, clipPairs);
        for (std::size_t k = 0; k + 1 < clipPairs.size(); k += 2) {
            const double t0 = clipPairs[k];
            const double t1 = clipPairs[k + 1];
            const GK_3dPoint p(Lerp(from.x, element.x, t0), Lerp(from.y, element.y, t0), 0.0);
            const GK_3dPoint q(Lerp(from.x, element.x, t1), Lerp(from.y, element.y, t1), 0.0);
            GK_Curve** last = segmentCurves.Last();
            if (last && EndOf(**last) == p) {
                // Continue the curve that ends here rather than start a new one.
                if (auto* polyline = GK_CurveCast<GK_PolylineCurve>(*last)) {
                    const int count = polyline->m_pline.Count();
                    polyline->m_pline.Append(q);
                    polyline->m_t.Append(static_cast<double>(count));
                    continue;
                }
                if (auto* line = GK_CurveCast<GK_LineCurve>(*last)) {
                    GK_SimpleArray<GK_3dPoint> points;
                    points.Append(line->m_line.from);
                    points.Append(line->m_line.to);
                    points.Append(q);
                    *last = new GK_PolylineCurve(points);
                    delete line;
                    continue;
                }
            }
            segmentCurves.Append(new GK_LineCurve(p, q));
        }
    }
    // One entry per line element, whether or not it made a curve.
    segmentDashes.push_back(currentDash);
}

void PDFToVelmo::AddBezier(const PathElement& element) {
    const PathElement& from = previousElement;
    if ((clip.Outcode(from.x, from.y) & clip.Outcode(control1.x, control1.y) &
         clip.Outcode(control2.x, control2.y) & clip.Outcode(element.x, element.y)) != 0)
        return;
    // The Bézier is clipped as its chord: cheap, and right for the flat curves of drawings.
    clip.ClipSegment(from.x, from.y, element.x, element.y, clipPairs);
    for (std::size_t k = 0; k + 1 < clipPairs.size(); k += 2) {
        Point2 p[4] = {{from.x, from.y},
                       {control1.x, control1.y},
                       {control2.x, control2.y},
                       {element.x, element.y}};
        CutBezier(p, clipPairs[k], clipPairs[k + 1]);
        auto* nurbs = new GK_NurbsCurve(3, false, 4, 4);
        const double knots[] = {0.0, 0.0, 0.0, 1.0, 1.0, 1.0};
        for (int i = 0; i < 6; ++i)
            nurbs->SetKnot(i, knots[i]);
        for (int i = 0; i < 4; ++i)
            nurbs->SetCV(i, GK_3dPoint(p[i].x, p[i].y, 0.0));
        segmentCurves.Append(nurbs);
        segmentDashes.push_back(currentDash);
    }
}
