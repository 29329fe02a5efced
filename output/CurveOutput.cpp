// Stroked paths to curves. Many producers write a dashed line as a row of separate two-point
// subpaths along one straight line; such a row comes back as one segment with its dash
// pattern, so that the model gets one curve with a linetype instead of thousands of lines.
// The dash that the content stream sets with `d` is not used: only recognised dashes count.
#include "host/doc/CVelmoDoc.h"
#include "host/geometry/VelmoMergeCurves.h"
#include "output/PDFToVelmo.h"

#include <cmath>

namespace {

// Tolerance of equal lengths and gaps in a dash row, in page units.
constexpr double kDashTolerance = 0.001;

} // namespace

void PDFToVelmo::Stroke() {
    if (!paintingEnabled)
        return;
    for (GK_Curve* curve : segmentCurves)
        delete curve;
    segmentCurves.Empty();
    segmentDashes.clear();
    operationLabel = "stroke";
    PrepareClip();

    BuildStrokeSegments();

    GK_SimpleArray<GK_Curve*> merged;
    bool mergeOk = VelmoMergeCurves(segmentCurves, merged, doc->AbsoluteTolerance(), 0, nullptr);
    if (mergeOk) {
        for (GK_Curve* curve : merged) {
            if (!curve->IsValid(nullptr)) {
                mergeOk = false;
                break;
            }
        }
        if (!mergeOk) {
            for (GK_Curve* curve : merged)
                delete curve;
            merged.Empty();
        }
    }

    if (mergeOk) {
        // Anything joined: the whole stroke goes without a dash.
        for (GK_Curve* curve : merged) {
            if (GK_Curve* normal = NormaliseCurve(*curve))
                pendingObjects.push_back(
                    {normal, strokeColour, lineWidth, layerIndex, currentDash});
            delete curve;
        }
        for (GK_Curve* curve : segmentCurves)
            delete curve;
    } else if (segmentCurves.Count() == 0 ||
               static_cast<std::size_t>(segmentCurves.Count()) > segmentDashes.size()) {
        for (GK_Curve* curve : segmentCurves)
            delete curve;
    } else {
        // The dash list has an entry per line element and the curve list one per curve, so
        // they pair up by index only where no polyline formed; a recognised dash row is made
        // of two-point curves, which is the case this serves.
        for (int i = 0; i < segmentCurves.Count(); ++i) {
            GK_Curve* curve = segmentCurves[i];
            if (GK_Curve* normal = NormaliseCurve(*curve))
                pendingObjects.push_back(
                    {normal, strokeColour, lineWidth, layerIndex, segmentDashes[i]});
            delete curve;
        }
    }
    segmentCurves.Empty();
}

void PDFToVelmo::BuildStrokeSegments() {
    SegmentRun run;
    const std::size_t n = pathElements.size();
    std::size_t i = 0;
    while (i < n) {
        const PathElement& e0 = pathElements[i];
        if (i + 1 < n && e0.kind == 'm' && pathElements[i + 1].kind == 'l') {
            const PathElement& e1 = pathElements[i + 1];
            const LineKey key = MakeLineKey(e0.x, e0.y, e1.x, e1.y);
            if (key.degenerate || run.empty || !key.SameLine(run.key)) {
                FlushRun(run, false);
                if (key.degenerate) {
                    AddPathElement(e0);
                    AddPathElement(e1);
                    i += 2;
                    continue;
                }
                run.key = key;
                run.empty = false;
            }
            run.pairs.emplace_back(run.Position(e0.x, e0.y), run.Position(e1.x, e1.y));
            i += 2;
            continue;
        }
        FlushRun(run, false);
        AddPathElement(e0);
        ++i;
    }
    FlushRun(run, false);
}

void PDFToVelmo::EmitSegment(const SegmentRun& run, double from, double to) {
    AddPathElement({run.X(from), run.Y(from), 'm'});
    AddPathElement({run.X(to), run.Y(to), 'l'});
}

void PDFToVelmo::FlushRun(SegmentRun& run, bool merge) {
    const auto& pairs = run.pairs;
    const std::size_t n = pairs.size();
    if (merge) {
        if (!run.empty && n > 0)
            EmitSegment(run, pairs.front().first, pairs.back().second);
        run.Clear();
        return;
    }

    const auto len = [&](std::size_t k) { return pairs[k].second - pairs[k].first; };
    const auto gap = [&](std::size_t k) { return pairs[k + 1].first - pairs[k].second; };
    std::size_t i = 0;
    while (i < n) {
        if (i + 1 == n) {
            EmitSegment(run, pairs[i].first, pairs[i].second);
            ++i;
            continue;
        }
        // A fixed sample of the first two dashes and gaps; later pairs must repeat it.
        const double p[4] = {len(i), gap(i), len(i + 1), i + 2 < n ? gap(i + 1) : 0.0};
        std::size_t count = 1;
        std::size_t k = 0;
        for (std::size_t j = i + 1; j < n; ++j) {
            const double g = gap(j - 1);
            if (g < 0.0) // overlap
                break;
            if (std::fabs(p[k % 4] - len(j - 1)) > kDashTolerance)
                break;
            if (std::fabs(p[(k + 1) % 4] - g) > kDashTolerance)
                break;
            k += 2;
            // The last dash of a row may be shorter than the pattern, never longer.
            if (len(j) > p[k % 4] + kDegenerateLength)
                break;
            ++count;
        }
        if (count < 4) {
            EmitSegment(run, pairs[i].first, pairs[i].second);
            ++i;
            continue;
        }
        if (std::fabs(p[0] - p[2]) <= kDashTolerance && std::fabs(p[1] - p[3]) <= kDashTolerance)
            currentDash = {p[0], p[1]};
        else
            currentDash = {p[0], p[1], p[2], p[3]};
        EmitSegment(run, pairs[i].first, pairs[i + count - 1].second);
        currentDash.clear();
        i += count;
    }
    run.Clear();
}
