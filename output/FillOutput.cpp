// Filled paths to hatches. Every subpath is closed, near-straight edges are joined, open
// pieces are chained in their order into closed boundaries, and the host makes the hatches.
// When it makes none, the boundaries themselves are kept, in the stroke colour: a fill that
// could not become a hatch comes out as an outline, as users of the importer expect.
#include "host/doc/CVelmoDoc.h"
#include "host/geometry/VelmoCreateHatches.h"
#include "output/PDFToVelmo.h"

#include <cmath>

namespace {

double Distance(const GK_3dPoint& a, const GK_3dPoint& b) {
    return a.DistanceTo(b);
}

bool IsLine(const GK_Curve* curve) {
    return GK_CurveCast<GK_LineCurve>(curve) != nullptr;
}

} // namespace

void PDFToVelmo::Fill() {
    if (!paintingEnabled)
        return;
    const double tolerance = doc->AbsoluteTolerance() / 100.0;
    for (GK_Curve* curve : segmentCurves)
        delete curve;
    segmentCurves.Empty();
    segmentDashes.clear();
    operationLabel = "fill";
    PrepareClip();

    BuildFillSegments(tolerance);

    GK_SimpleArray<GK_Curve*> closed; // owned
    GK_SimpleArray<GK_Curve*> open;   // borrowed from segmentCurves
    for (GK_Curve* curve : segmentCurves) {
        if (curve->IsClosed())
            closed.Append(curve->DuplicateCurve());
        else if (IsLine(curve) && Distance(curve->PointAtStart(), curve->PointAtEnd()) < tolerance)
            continue;
        else
            open.Append(curve);
    }
    GK_SimpleArray<int> used;
    const int closedCount = ChainOpenCurves(open, closed, tolerance, used);
    for (GK_Curve* curve : segmentCurves)
        delete curve;
    segmentCurves.Empty();
    if (closedCount == 0)
        return;

    CArgsVelmoHatch args;
    args.CurveList().Reserve(closed.Count());
    for (const GK_Curve* curve : closed)
        if (curve)
            args.CurveList().Append(curve);
    args.SetPatternIndex(hatchPatternIndex);
    args.SetPatternRotation(0.0);
    args.SetPatternScale(1.0);
    args.SetBoundarySource(0);

    GK_SimpleArray<GK_Hatch*> hatches;
    int queued = 0;
    if (VelmoCreateHatches(args, doc->AbsoluteTolerance(), hatches)) {
        for (GK_Hatch* hatch : hatches) {
            if (!hatch->IsValid(nullptr)) {
                delete hatch;
                continue;
            }
            pendingObjects.push_back({hatch, fillColour, 0.0, layerIndex, {}});
            ++queued;
        }
    }
    if (queued > 0) {
        for (GK_Curve* curve : closed)
            delete curve;
        return;
    }
    for (GK_Curve* curve : closed) {
        if (!curve)
            continue;
        curve->Compact(); // it goes to the model as it is now
        pendingObjects.push_back({curve, strokeColour, 0.0, layerIndex, {}});
    }
}

void PDFToVelmo::BuildFillSegments(double tolerance) {
    SegmentRun run;
    PathElement previous{0.0, 0.0, 'x'};
    PathElement subpathStart{0.0, 0.0, 'l'};
    if (!pathElements.empty())
        subpathStart = {pathElements.front().x, pathElements.front().y, 'l'};
    const auto differs = [](const PathElement& a, const PathElement& b) {
        return a.x != b.x || a.y != b.y;
    };
    // Closes the subpath with a line from the last element back to its start. The last
    // element keeps its kind: a subpath left open on a Bézier is closed by that Bézier once
    // more, from its end through the same control points, then by the line.
    const auto closeSubpath = [&] {
        AddPathElement(previous);
        AddPathElement({subpathStart.x, subpathStart.y, 'l'});
    };

    for (std::size_t index = 0; index < pathElements.size(); ++index) {
        const PathElement& e = pathElements[index];
        if (e.kind == 'm') {
            if (index != 0 && differs(previous, subpathStart)) {
                FlushRun(run, true);
                closeSubpath();
            }
            subpathStart = {e.x, e.y, 'l'};
        } else if (e.kind == 'l') {
            if (!differs(e, previous))
                continue;
            const LineKey key = MakeLineKey(previous.x, previous.y, e.x, e.y);
            bool joins = false;
            if (!run.empty) {
                if (!key.degenerate && key.SameLine(run.key))
                    joins = true;
                else // distance from the run's line, along its normal
                    joins = std::fabs(-run.key.uy * e.x + run.key.ux * e.y - run.key.offset) <=
                            tolerance;
            }
            if (!joins) {
                FlushRun(run, true);
                if (key.degenerate) {
                    AddPathElement(previous);
                    AddPathElement(e);
                    previous = e;
                    continue;
                }
                run.key = key;
                run.empty = false;
            }
            run.pairs.emplace_back(run.Position(previous.x, previous.y), run.Position(e.x, e.y));
            previous = e;
            continue;
        }
        FlushRun(run, true);
        previous = e;
        AddPathElement(e);
    }
    FlushRun(run, true);
    if (differs(previous, subpathStart))
        closeSubpath();
}

int PDFToVelmo::ChainOpenCurves(const GK_SimpleArray<GK_Curve*>& open,
                                GK_SimpleArray<GK_Curve*>& closed, double tolerance,
                                GK_SimpleArray<int>& used) {
    // Strictly in order, with no search for a matching end: pieces out of order get
    // straight bridges.
    const int n = open.Count();
    int i = 0;
    while (i < n) {
        auto* poly = new GK_PolyCurve;
        int pieces = 0;
        const GK_3dPoint start = open[i]->PointAtStart();
        GK_3dPoint current = start;
        while (i < n) {
            const GK_Curve* curve = open[i];
            const GK_3dPoint p = curve->PointAtStart();
            if (Distance(p, current) > tolerance)
                poly->Append(new GK_LineCurve(current, p));
            current = curve->PointAtEnd();
            if (IsLine(curve) && Distance(p, current) < tolerance) {
                ++i; // a short line adds nothing
                continue;
            }
            used.Append(i);
            poly->Append(curve->DuplicateCurve());
            ++pieces;
            if (Distance(start, current) <= tolerance)
                break;
            if (i == n - 1) {
                poly->Append(new GK_LineCurve(current, start));
                break;
            }
            ++i;
        }
        // A lone curve is a boundary only when it is a polyline, closed by its bridge.
        const bool polyline = i < n && GK_CurveCast<GK_PolylineCurve>(open[i]) != nullptr;
        if (pieces >= 2 || (pieces == 1 && polyline))
            closed.Append(poly);
        else
            delete poly;
        ++i;
    }
    return closed.Count();
}
