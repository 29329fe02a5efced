#include "host/geometry/GK_CurvePoints.h"

#include <algorithm>
#include <cmath>

namespace {

// Curves of unknown classes are sampled at this many pieces, then refined.
constexpr int kGenericPieces = 16;
// At most 2^12 pieces per span or domain: enough for any drawing and a bound on the work.
constexpr int kMaxDepth = 12;

void AppendPoint(std::vector<GK_3dPoint>& points, const GK_3dPoint& p) {
    if (!p.IsValid())
        return;
    if (points.empty() || !(points.back() == p))
        points.push_back(p);
}

// Whether `p` lies within `tolerance` of the segment from `a` to `b`.
bool NearSegment(const GK_3dPoint& p, const GK_3dPoint& a, const GK_3dPoint& b, double tolerance) {
    const GK_3dVector d = b - a;
    const GK_3dVector w = p - a;
    const double dd = d.x * d.x + d.y * d.y + d.z * d.z;
    double s = dd > 0.0 ? (w.x * d.x + w.y * d.y + w.z * d.z) / dd : 0.0;
    s = std::clamp(s, 0.0, 1.0);
    const GK_3dVector e = w - d * s;
    return e.x * e.x + e.y * e.y + e.z * e.z <= tolerance * tolerance;
}

// Adaptive halving of [t0, t1]: a piece is flat when its midpoint and quarter points lie
// within the tolerance of its chord. The quarter points catch S-shaped pieces whose midpoint
// happens to sit on the chord. `minDepth` halvings are always made.
void FlattenRange(const GK_Curve& curve, double t0, double t1, double tolerance, int minDepth,
                  std::vector<GK_3dPoint>& points) {
    struct Piece {
        double t0, t1;
        GK_3dPoint p0, p1;
        int depth;
    };
    // Kept from call to call: a drawing flattens many small pieces, and the heap would
    // otherwise cost more than the arithmetic. No call is nested in another.
    static thread_local std::vector<Piece> stack;
    stack.assign(1, {t0, t1, curve.PointAt(t0), curve.PointAt(t1), 0});
    AppendPoint(points, stack.back().p0);
    while (!stack.empty()) {
        const Piece piece = stack.back();
        stack.pop_back();
        const double tm = 0.5 * (piece.t0 + piece.t1);
        const GK_3dPoint pm = curve.PointAt(tm);
        bool flat = piece.depth >= minDepth || piece.depth >= kMaxDepth;
        if (flat && piece.depth < kMaxDepth) {
            const GK_3dPoint q1 = curve.PointAt(0.5 * (piece.t0 + tm));
            const GK_3dPoint q3 = curve.PointAt(0.5 * (tm + piece.t1));
            flat = NearSegment(pm, piece.p0, piece.p1, tolerance) &&
                   NearSegment(q1, piece.p0, piece.p1, tolerance) &&
                   NearSegment(q3, piece.p0, piece.p1, tolerance);
        }
        if (flat) {
            AppendPoint(points, piece.p1);
            continue;
        }
        // Right half first on the stack, so the left half comes out first.
        stack.push_back({tm, piece.t1, pm, piece.p1, piece.depth + 1});
        stack.push_back({piece.t0, tm, piece.p0, pm, piece.depth + 1});
    }
}

// A single clamped span: the control points are those of a Bezier.
bool IsBezier(const GK_NurbsCurve& c) {
    if (c.CVCount() != c.Order())
        return false;
    const int last = c.KnotCount() - 1;
    for (int i = 1; i < c.Order() - 1; ++i)
        if (c.Knot(i) != c.Knot(0) || c.Knot(last - i) != c.Knot(last))
            return false;
    return true;
}

GK_3dPoint Euclidean(const GK_4dPoint& h) {
    return h.w == 1.0 ? GK_3dPoint(h.x, h.y, h.z) : GK_3dPoint(h.x / h.w, h.y / h.w, h.z / h.w);
}

GK_4dPoint Mid(const GK_4dPoint& a, const GK_4dPoint& b) {
    return {0.5 * (a.x + b.x), 0.5 * (a.y + b.y), 0.5 * (a.z + b.z), 0.5 * (a.w + b.w)};
}

// The control points of the two halves of the Bezier `piece` of `n` points, by de Casteljau;
// `work` is room for n points.
void Halve(const GK_4dPoint* piece, int n, GK_4dPoint* work, GK_4dPoint* left, GK_4dPoint* right) {
    for (int i = 0; i < n; ++i)
        work[i] = piece[i];
    left[0] = work[0];
    right[n - 1] = work[n - 1];
    for (int r = 1; r < n; ++r) {
        for (int j = 0; j + r < n; ++j)
            work[j] = Mid(work[j], work[j + 1]);
        left[r] = work[0];
        right[n - 1 - r] = work[n - 1 - r];
    }
}

// Halving by de Casteljau until the control points of a piece lie within the tolerance of
// its chord; with positive weights the piece lies in their hull, so the chord is then
// within the tolerance of the curve. Much cheaper than evaluating points one by one. The
// pieces wait on a stack in place: a halving adds one, and halving stops at kMaxDepth.
template <int N>
void FlattenBezierPieces(const GK_NurbsCurve& c, double tolerance,
                         std::vector<GK_3dPoint>& points) {
    struct Piece {
        GK_4dPoint p[N];
        int depth = 0;
    };
    const int n = c.Order();
    Piece stack[kMaxDepth + 1];
    int size = 1;
    for (int i = 0; i < n; ++i)
        c.GetCV(i, stack[0].p[i]);
    AppendPoint(points, Euclidean(stack[0].p[0]));
    GK_4dPoint work[N], left[N], right[N];
    while (size > 0) {
        const Piece& piece = stack[size - 1];
        const int d = piece.depth;
        const GK_3dPoint a = Euclidean(piece.p[0]);
        const GK_3dPoint b = Euclidean(piece.p[n - 1]);
        bool flat = d >= kMaxDepth;
        if (!flat) {
            flat = true;
            for (int i = 1; i < n - 1 && flat; ++i)
                flat = NearSegment(Euclidean(piece.p[i]), a, b, tolerance);
        }
        if (flat) {
            AppendPoint(points, b);
            --size;
            continue;
        }
        Halve(piece.p, n, work, left, right);
        // Right half below the left, so the left half comes out first.
        Piece& lower = stack[size - 1];
        Piece& upper = stack[size++];
        for (int i = 0; i < n; ++i) {
            lower.p[i] = right[i];
            upper.p[i] = left[i];
        }
        lower.depth = upper.depth = d + 1;
    }
}

// The same for any order, on the heap.
void FlattenBezierAnyOrder(const GK_NurbsCurve& c, double tolerance,
                           std::vector<GK_3dPoint>& points) {
    const int n = c.Order();
    static thread_local std::vector<GK_4dPoint> stack, work, left, right; // as in FlattenRange
    static thread_local std::vector<int> depth;
    stack.assign(static_cast<std::size_t>(n), GK_4dPoint{});
    for (int i = 0; i < n; ++i)
        c.GetCV(i, stack[i]);
    depth.assign(1, 0);
    work.resize(n);
    left.resize(n);
    right.resize(n);
    AppendPoint(points, Euclidean(stack[0]));
    while (!depth.empty()) {
        const int d = depth.back();
        depth.pop_back();
        const GK_4dPoint* piece = stack.data() + stack.size() - n;
        const GK_3dPoint a = Euclidean(piece[0]);
        const GK_3dPoint b = Euclidean(piece[n - 1]);
        bool flat = d >= kMaxDepth;
        if (!flat) {
            flat = true;
            for (int i = 1; i < n - 1 && flat; ++i)
                flat = NearSegment(Euclidean(piece[i]), a, b, tolerance);
        }
        if (flat) {
            AppendPoint(points, b);
            stack.resize(stack.size() - n);
            continue;
        }
        Halve(piece, n, work.data(), left.data(), right.data());
        stack.resize(stack.size() - n);
        stack.insert(stack.end(), right.begin(), right.end());
        depth.push_back(d + 1);
        stack.insert(stack.end(), left.begin(), left.end());
        depth.push_back(d + 1);
    }
}

void FlattenBezier(const GK_NurbsCurve& c, double tolerance, std::vector<GK_3dPoint>& points) {
    if (c.Order() <= 4)
        FlattenBezierPieces<4>(c, tolerance, points);
    else
        FlattenBezierAnyOrder(c, tolerance, points);
}

// Hands the vertices of the straight classes to `visit`, read in place rather than through
// the copy IsPolyline makes; false, with nothing visited, for other classes. Polylines of
// fewer than two points are not chains of segments.
template <class Visit> bool ForEachVertex(const GK_Curve& curve, Visit&& visit) {
    if (const auto* polyline = GK_CurveCast<GK_PolylineCurve>(&curve)) {
        if (polyline->PointCount() < 2)
            return false;
        for (const GK_3dPoint& p : polyline->m_pline)
            visit(p);
        return true;
    }
    if (const auto* line = GK_CurveCast<GK_LineCurve>(&curve)) {
        visit(line->m_line.from);
        visit(line->m_line.to);
        return true;
    }
    return false;
}

} // namespace

void GK_CurveControlPoints(const GK_Curve& curve, std::vector<GK_3dPoint>& points) {
    if (ForEachVertex(curve, [&](const GK_3dPoint& p) { points.push_back(p); }))
        return;
    GK_SimpleArray<GK_3dPoint> vertices;
    if (curve.IsPolyline(&vertices) > 0) {
        points.insert(points.end(), vertices.begin(), vertices.end());
        return;
    }
    if (const auto* chain = GK_CurveCast<GK_PolyCurve>(&curve)) {
        for (int i = 0; i < chain->Count(); ++i)
            if (const GK_Curve* seg = chain->SegmentCurve(i))
                GK_CurveControlPoints(*seg, points);
        return;
    }
    if (const auto* nurbs = GK_CurveCast<GK_NurbsCurve>(&curve)) {
        GK_3dPoint p;
        for (int i = 0; i < nurbs->CVCount(); ++i)
            if (nurbs->GetCV(i, p))
                points.push_back(p);
        return;
    }
    const GK_Interval d = curve.Domain();
    constexpr int kSamples = 64;
    for (int i = 0; i <= kSamples; ++i)
        points.push_back(curve.PointAt(d.ParameterAt(static_cast<double>(i) / kSamples)));
}

void GK_FlattenCurve(const GK_Curve& curve, double tolerance, std::vector<GK_3dPoint>& points) {
    if (ForEachVertex(curve, [&](const GK_3dPoint& p) { AppendPoint(points, p); }))
        return;
    GK_SimpleArray<GK_3dPoint> vertices;
    if (curve.IsPolyline(&vertices) > 0) {
        for (const GK_3dPoint& p : vertices)
            AppendPoint(points, p);
        return;
    }
    if (const auto* chain = GK_CurveCast<GK_PolyCurve>(&curve)) {
        for (int i = 0; i < chain->Count(); ++i)
            if (const GK_Curve* seg = chain->SegmentCurve(i))
                GK_FlattenCurve(*seg, tolerance, points);
        return;
    }
    if (const auto* nurbs = GK_CurveCast<GK_NurbsCurve>(&curve)) {
        if (!nurbs->IsValid())
            return;
        if (IsBezier(*nurbs)) {
            FlattenBezier(*nurbs, tolerance, points);
            return;
        }
        // Span by span, so that every knot, where the curve may bend sharply, is a vertex.
        const int p = nurbs->Degree();
        const int minDepth = p >= 3 ? 2 : 1;
        for (int span = p - 1; span <= nurbs->CVCount() - 2; ++span) {
            const double a = nurbs->Knot(span);
            const double b = nurbs->Knot(span + 1);
            if (a < b)
                FlattenRange(curve, a, b, tolerance, minDepth, points);
        }
        return;
    }
    const GK_Interval d = curve.Domain();
    for (int i = 0; i < kGenericPieces; ++i)
        FlattenRange(curve, d.ParameterAt(static_cast<double>(i) / kGenericPieces),
                     d.ParameterAt(static_cast<double>(i + 1) / kGenericPieces), tolerance, 0,
                     points);
}

double GK_DistanceFromLine(const GK_3dPoint& p, const GK_3dPoint& a, const GK_3dPoint& b,
                           double tolerance) {
    const GK_3dVector d = b - a;
    const GK_3dVector w = p - a;
    const double len = d.Length();
    if (!(len > tolerance) || len == 0.0)
        return w.Length();
    const GK_3dVector c{w.y * d.z - w.z * d.y, w.z * d.x - w.x * d.z, w.x * d.y - w.y * d.x};
    return c.Length() / len;
}
