#include "host/geometry/VelmoCreateHatches.h"

#include "host/geometry/GK_CurvePoints.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <vector>

// Loops are classified on polygons in the coordinates of the hatch plane. Which loop holds
// which is found through a hierarchical grid: a loop is filed at the level whose cells are
// at least as large as its box, so it lands in at most four cells, and the loops that may
// hold another are found by looking up the one cell of each level under the middle of its
// box. Disjoint loops of similar size thus meet only their neighbours, and loops of very
// different sizes never crowd one cell the way they would in a single grid.

namespace {

struct UV {
    double u = 0.0, v = 0.0;
};

struct LoopInfo {
    const GK_Curve* curve = nullptr; // borrowed from the arguments
    int input = 0;                   // position in the argument list
    std::vector<UV> polygon;         // first vertex not repeated at the end
    double area = 0.0;               // absolute
    double flat = 0.0;               // how far the polygon may stray from the curve
    double umin = 0.0, vmin = 0.0, umax = 0.0, vmax = 0.0;
    int depth = 0;  // number of loops holding this one
    int owner = -1; // for a hole, the outer loop it belongs to
};

// The polygon for classification need not be as fine as the drawing tolerance demands of
// geometry; it is bounded relative to the loop's size both ways, to keep the work in
// proportion for tiny tolerances and the shapes recognisable for large ones.
double FlatteningTolerance(double tol, double size) {
    return std::clamp(0.5 * tol, 1e-5 * size, 1e-2 * size);
}

double Dot(const GK_3dVector& a, const GK_3dVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// Newell's normal of a closed polygon: twice its vector area, robust for non-convex loops.
GK_3dVector NewellNormal(const std::vector<GK_3dPoint>& pts) {
    GK_3dVector n;
    const std::size_t count = pts.size();
    for (std::size_t i = 0; i < count; ++i) {
        const GK_3dPoint& a = pts[i];
        const GK_3dPoint& b = pts[(i + 1) % count];
        n.x += (a.y - b.y) * (a.z + b.z);
        n.y += (a.z - b.z) * (a.x + b.x);
        n.z += (a.x - b.x) * (a.y + b.y);
    }
    return n;
}

// The plane of the first usable loop. A loop at one height gets the world xy plane moved to
// that height, so the usual flat drawing needs no projection; any other loop gets the plane
// through the middle of its control points, normal by Newell and turned up.
bool FitPlane(const std::vector<GK_3dPoint>& control, const std::vector<GK_3dPoint>& polygon,
              double tol, GK_Plane& plane) {
    if (control.empty() || polygon.size() < 3)
        return false;
    GK_3dVector n = NewellNormal(polygon);
    const double len = n.Length();
    if (!(len > 0.0) || !std::isfinite(len))
        return false;
    double zmin = control[0].z, zmax = control[0].z;
    for (const GK_3dPoint& p : control) {
        zmin = std::min(zmin, p.z);
        zmax = std::max(zmax, p.z);
    }
    if (std::fabs(n.z) > 0.5 * len && zmax - zmin <= 2.0 * tol) {
        const double z = zmin == zmax ? zmin : 0.5 * (zmin + zmax);
        plane = GK_Plane(GK_3dPoint(0.0, 0.0, z), GK_3dVector(0.0, 0.0, 1.0));
        return plane.IsValid();
    }
    if (n.z < 0.0 || (n.z == 0.0 && (n.y < 0.0 || (n.y == 0.0 && n.x < 0.0))))
        n.Reverse();
    GK_3dPoint c;
    for (const GK_3dPoint& p : control) {
        c.x += p.x;
        c.y += p.y;
        c.z += p.z;
    }
    const double k = 1.0 / static_cast<double>(control.size());
    plane = GK_Plane(GK_3dPoint(c.x * k, c.y * k, c.z * k), n);
    return plane.IsValid();
}

bool WithinPlane(const std::vector<GK_3dPoint>& points, const GK_Plane& plane, double tol) {
    for (const GK_3dPoint& p : points)
        if (!(std::fabs(plane.DistanceTo(p)) <= tol))
            return false;
    return true;
}

// Projects the flattened loop into the plane's frame and measures it. False for a loop
// with no area to speak of.
bool Measure(const std::vector<GK_3dPoint>& pts, const GK_Plane& plane, LoopInfo& loop) {
    loop.polygon.clear();
    loop.polygon.reserve(pts.size());
    for (const GK_3dPoint& p : pts) {
        const GK_3dVector d = p - plane.origin;
        const UV q{Dot(d, plane.xaxis), Dot(d, plane.yaxis)};
        if (loop.polygon.empty() || loop.polygon.back().u != q.u || loop.polygon.back().v != q.v)
            loop.polygon.push_back(q);
    }
    while (loop.polygon.size() > 1 && loop.polygon.back().u == loop.polygon.front().u &&
           loop.polygon.back().v == loop.polygon.front().v)
        loop.polygon.pop_back();
    const std::size_t n = loop.polygon.size();
    if (n < 3)
        return false;
    loop.umin = loop.umax = loop.polygon[0].u;
    loop.vmin = loop.vmax = loop.polygon[0].v;
    double twice = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const UV& a = loop.polygon[i];
        const UV& b = loop.polygon[(i + 1) % n];
        // Relative to the first vertex, so that far from the origin little is lost.
        twice += (a.u - loop.polygon[0].u) * (b.v - loop.polygon[0].v) -
                 (b.u - loop.polygon[0].u) * (a.v - loop.polygon[0].v);
        loop.umin = std::min(loop.umin, a.u);
        loop.umax = std::max(loop.umax, a.u);
        loop.vmin = std::min(loop.vmin, a.v);
        loop.vmax = std::max(loop.vmax, a.v);
    }
    loop.area = 0.5 * std::fabs(twice);
    const double w = loop.umax - loop.umin;
    const double h = loop.vmax - loop.vmin;
    return std::isfinite(loop.area) && loop.area > 1e-10 * (w * w + h * h);
}

// Whether `p` is inside the polygon by crossings, and its squared distance from the edges.
bool Classify(const UV& p, const std::vector<UV>& poly, double& dist2) {
    bool inside = false;
    dist2 = INFINITY;
    const std::size_t n = poly.size();
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const UV& a = poly[j];
        const UV& b = poly[i];
        if ((a.v > p.v) != (b.v > p.v)) {
            const double x = a.u + (p.v - a.v) / (b.v - a.v) * (b.u - a.u);
            if (p.u < x)
                inside = !inside;
        }
        const double du = b.u - a.u, dv = b.v - a.v;
        const double len2 = du * du + dv * dv;
        double s = len2 > 0.0 ? ((p.u - a.u) * du + (p.v - a.v) * dv) / len2 : 0.0;
        s = std::clamp(s, 0.0, 1.0);
        const double eu = a.u + s * du - p.u, ev = a.v + s * dv - p.v;
        dist2 = std::min(dist2, eu * eu + ev * ev);
    }
    return inside;
}

// Whether loop `a` lies inside loop `b`. A vertex of `a` clear of `b`'s boundary decides;
// vertices within the flattening tolerance of it are ambiguous and looked past. A loop
// running along `b`'s boundary all the way is taken as inside, `b` being the larger.
bool Inside(const LoopInfo& a, const LoopInfo& b, double tiny) {
    const double clear = a.flat + b.flat + tiny;
    double best = -1.0;
    bool bestInside = false;
    for (const UV& p : a.polygon) {
        double d2 = 0.0;
        const bool in = Classify(p, b.polygon, d2);
        const double d = std::sqrt(d2);
        if (d > clear)
            return in;
        if (d > best) {
            best = d;
            bestInside = in;
        }
    }
    return best > tiny ? bestInside : true;
}

struct GridEntry {
    int level = 0;
    std::int64_t ix = 0, iy = 0;
    int loop = 0;
    auto Key() const { return std::tie(level, ix, iy); }
};

std::int64_t CellIndex(double x) {
    constexpr double kLimit = 4611686018427387904.0; // 2^62
    if (!(x > 0.0))
        return 0;
    return static_cast<std::int64_t>(std::min(std::floor(x), kLimit));
}

class LoopGrid {
public:
    explicit LoopGrid(const std::vector<LoopInfo>& loops) {
        m_u0 = m_v0 = INFINITY;
        m_base = INFINITY;
        for (const LoopInfo& l : loops) {
            m_u0 = std::min(m_u0, l.umin - Reach(l));
            m_v0 = std::min(m_v0, l.vmin - Reach(l));
            m_base = std::min(m_base, Side(l));
        }
        for (int i = 0; i < static_cast<int>(loops.size()); ++i) {
            const LoopInfo& l = loops[i];
            const int level = LevelOf(Side(l));
            const double cell = std::ldexp(m_base, level);
            const std::int64_t x0 = CellIndex((l.umin - Reach(l) - m_u0) / cell);
            const std::int64_t x1 = CellIndex((l.umax + Reach(l) - m_u0) / cell);
            const std::int64_t y0 = CellIndex((l.vmin - Reach(l) - m_v0) / cell);
            const std::int64_t y1 = CellIndex((l.vmax + Reach(l) - m_v0) / cell);
            for (std::int64_t x = x0; x <= x1; ++x)
                for (std::int64_t y = y0; y <= y1; ++y)
                    m_entries.push_back({level, x, y, i});
            m_levels.push_back(level);
        }
        std::sort(m_entries.begin(), m_entries.end(), [](const GridEntry& a, const GridEntry& b) {
            return std::make_tuple(a.level, a.ix, a.iy, a.loop) <
                   std::make_tuple(b.level, b.ix, b.iy, b.loop);
        });
        std::sort(m_levels.begin(), m_levels.end());
        m_levels.erase(std::unique(m_levels.begin(), m_levels.end()), m_levels.end());
    }

    // Calls `visit` with every loop filed in a cell under the point, once per loop.
    template <class Visit> void LoopsAt(double u, double v, Visit&& visit) const {
        for (int level : m_levels) {
            const double cell = std::ldexp(m_base, level);
            GridEntry key{level, CellIndex((u - m_u0) / cell), CellIndex((v - m_v0) / cell), 0};
            auto it = std::lower_bound(
                m_entries.begin(), m_entries.end(), key,
                [](const GridEntry& a, const GridEntry& b) { return a.Key() < b.Key(); });
            for (; it != m_entries.end() && it->Key() == key.Key(); ++it)
                visit(it->loop);
        }
    }

    // Boxes are widened by this much, so that a loop whose polygon strays outside another's
    // by the flattening is still found.
    static double Reach(const LoopInfo& l) { return 2.0 * l.flat; }

private:
    static double Side(const LoopInfo& l) {
        return std::max(l.umax - l.umin, l.vmax - l.vmin) + 2.0 * Reach(l);
    }

    int LevelOf(double side) const {
        int level = 0;
        const double ratio = side / m_base;
        if (ratio > 1.0)
            level = std::isfinite(ratio) ? static_cast<int>(std::ceil(std::log2(ratio))) : 2100;
        while (level > 0 && std::ldexp(m_base, level - 1) >= side)
            --level;
        while (std::ldexp(m_base, level) < side)
            ++level;
        return level;
    }

    double m_u0, m_v0, m_base;
    std::vector<GridEntry> m_entries;
    std::vector<int> m_levels;
};

// Depth and owner of every loop, larger loops first, so that a loop's containers are
// settled before it is.
void SortLoops(std::vector<LoopInfo>& loops) {
    const int count = static_cast<int>(loops.size());
    std::vector<int> order(count);
    for (int i = 0; i < count; ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&loops](int a, int b) {
        return loops[a].area != loops[b].area ? loops[a].area > loops[b].area : a < b;
    });
    double scale = 0.0;
    for (const LoopInfo& l : loops)
        scale = std::max({scale, std::fabs(l.umin), std::fabs(l.umax), std::fabs(l.vmin),
                          std::fabs(l.vmax), l.umax - l.umin, l.vmax - l.vmin});
    const double tiny = 1e-12 * scale;
    const LoopGrid grid(loops);
    std::vector<int> containers;
    for (int index : order) {
        LoopInfo& a = loops[index];
        containers.clear();
        const double cu = 0.5 * (a.umin + a.umax);
        const double cv = 0.5 * (a.vmin + a.vmax);
        grid.LoopsAt(cu, cv, [&](int other) {
            const LoopInfo& b = loops[other];
            if (other == index || !(b.area > a.area))
                return;
            const double slack = a.flat + b.flat + tiny;
            if (a.umin < b.umin - slack || a.umax > b.umax + slack || a.vmin < b.vmin - slack ||
                a.vmax > b.vmax + slack)
                return;
            if (Inside(a, b, tiny))
                containers.push_back(other);
        });
        a.depth = static_cast<int>(containers.size());
        a.owner = -1;
        if (a.depth % 2 == 0)
            continue;
        // A hole belongs to its innermost container. Where loops overlap instead of nesting,
        // that one may itself be a hole; the innermost outer loop among the containers takes
        // it then, and with none the loop stands as an outer loop of its own.
        int owner = -1;
        for (int c : containers)
            if (loops[c].depth % 2 == 0 && (owner < 0 || loops[c].area < loops[owner].area))
                owner = c;
        a.owner = owner;
    }
}

// Moves the end of the curve onto `target`, keeping the rest; false, with the curve as it
// was, when the class cannot do it exactly.
bool MoveEnd(GK_Curve* curve, const GK_3dPoint& target) {
    if (auto* pl = GK_CurveCast<GK_PolylineCurve>(curve)) {
        const int n = pl->PointCount();
        if (n < 3)
            return false;
        const GK_3dPoint old = pl->m_pline[n - 1];
        pl->m_pline[n - 1] = target;
        if (pl->IsValid() && pl->PointAtEnd() == target)
            return true;
        pl->m_pline[n - 1] = old;
        return false;
    }
    if (auto* line = GK_CurveCast<GK_LineCurve>(curve)) {
        const GK_3dPoint old = line->m_line.to;
        line->m_line.to = target;
        if (line->IsValid() && line->PointAtEnd() == target)
            return true;
        line->m_line.to = old;
        return false;
    }
    if (auto* nurbs = GK_CurveCast<GK_NurbsCurve>(curve)) {
        const int last = nurbs->CVCount() - 1;
        GK_4dPoint old;
        if (last < 0 || !nurbs->GetCV(last, old))
            return false;
        const double w = old.w;
        nurbs->SetCV(last, GK_4dPoint{target.x * w, target.y * w, target.z * w, w});
        // Only a clamped end lies on its control point; rational rounding may also miss.
        if (nurbs->IsValid() && nurbs->PointAtEnd() == target)
            return true;
        nurbs->SetCV(last, old);
        return false;
    }
    if (auto* chain = GK_CurveCast<GK_PolyCurve>(curve)) {
        GK_Curve* seg = chain->SegmentCurve(chain->Count() - 1);
        return seg && MoveEnd(seg, target) && chain->PointAtEnd() == target;
    }
    return false;
}

// The hatch's own copy of a loop: exactly closed and exactly in the plane. Ends that meet
// only within the tolerance are joined by moving the end, or where that cannot be done
// exactly, by a closing segment.
GK_Curve* LoopCurve(const GK_Curve& source, const GK_Plane& plane) {
    GK_Curve* curve = source.DuplicateCurve();
    const GK_3dPoint start = curve->PointAtStart();
    const GK_3dPoint end = curve->PointAtEnd();
    if (!(start == end) && !MoveEnd(curve, start)) {
        // A chain may have moved its last segment and still missed; start from where it is.
        const GK_3dPoint now = curve->PointAtEnd();
        if (!(now == start)) {
            auto* chain = GK_CurveCast<GK_PolyCurve>(curve);
            if (!chain) {
                chain = new GK_PolyCurve;
                chain->Append(curve);
                curve = chain;
            }
            chain->Append(new GK_LineCurve(now, start));
        }
    }
    std::vector<GK_3dPoint> control;
    GK_CurveControlPoints(*curve, control);
    bool onPlane = true;
    for (const GK_3dPoint& p : control)
        if (plane.DistanceTo(p) != 0.0)
            onPlane = false;
    if (!onPlane) {
        // Orthogonal projection onto the plane: p - n (n.(p - o)).
        const GK_3dVector& n = plane.zaxis;
        const double d = Dot(n, GK_3dVector(plane.origin.x, plane.origin.y, plane.origin.z));
        GK_Xform project;
        const double nn[3] = {n.x, n.y, n.z};
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c)
                project.m_xform[r][c] = (r == c ? 1.0 : 0.0) - nn[r] * nn[c];
            project.m_xform[r][3] = nn[r] * d;
        }
        if (!curve->Transform(project)) {
            delete curve;
            return nullptr;
        }
    }
    if (!curve->IsValid() || !curve->IsClosed()) {
        delete curve;
        return nullptr;
    }
    curve->Compact(); // the hatch keeps it as it is now
    return curve;
}

} // namespace

bool VelmoCreateHatches(const CArgsVelmoHatch& args, double tolerance,
                        GK_SimpleArray<GK_Hatch*>& hatches) {
    const double tol = tolerance >= 0.0 && std::isfinite(tolerance) ? tolerance : 0.0;
    const GK_SimpleArray<const GK_Curve*>& curves = args.CurveList();

    GK_Plane plane;
    bool havePlane = false;
    std::vector<LoopInfo> loops;
    std::vector<GK_3dPoint> control;
    std::vector<GK_3dPoint> flat;
    for (int i = 0; i < curves.Count(); ++i) {
        const GK_Curve* curve = curves[i];
        if (!curve || !curve->IsValid())
            continue;
        const GK_3dPoint a = curve->PointAtStart();
        const GK_3dPoint b = curve->PointAtEnd();
        if (!a.IsValid() || !b.IsValid() || !(a.DistanceTo(b) <= tol))
            continue;
        control.clear();
        GK_CurveControlPoints(*curve, control);
        // The hull's box is near enough the curve's for choosing a flattening tolerance.
        GK_BoundingBox hull;
        for (const GK_3dPoint& p : control)
            hull.Set(p, true);
        const double size = hull.Diagonal().Length();
        if (!(size > 0.0) || !std::isfinite(size))
            continue;
        LoopInfo loop;
        loop.curve = curve;
        loop.input = i;
        loop.flat = FlatteningTolerance(tol, size);
        flat.clear();
        GK_FlattenCurve(*curve, loop.flat, flat);
        GK_Plane own = plane;
        if (!havePlane && !FitPlane(control, flat, tol, own))
            continue;
        if (!WithinPlane(control, own, tol) || !Measure(flat, own, loop))
            continue;
        plane = own;
        havePlane = true;
        loops.push_back(std::move(loop));
    }
    if (loops.empty())
        return false;

    SortLoops(loops);

    std::vector<std::vector<int>> holes(loops.size());
    for (int i = 0; i < static_cast<int>(loops.size()); ++i)
        if (loops[i].owner >= 0)
            holes[loops[i].owner].push_back(i); // in input order, as i runs

    std::vector<GK_Hatch*> made;
    for (int i = 0; i < static_cast<int>(loops.size()); ++i) {
        if (loops[i].owner >= 0)
            continue;
        GK_Curve* outer = LoopCurve(*loops[i].curve, plane);
        if (!outer)
            continue;
        auto* hatch = new GK_Hatch;
        hatch->SetPlane(plane);
        hatch->SetPatternIndex(args.PatternIndex());
        hatch->SetPatternRotation(args.PatternRotation());
        hatch->SetPatternScale(args.PatternScale());
        hatch->AddLoop(new GK_HatchLoop(outer, GK_HatchLoop::ltOuter));
        for (int h : holes[i])
            if (GK_Curve* inner = LoopCurve(*loops[h].curve, plane))
                hatch->AddLoop(new GK_HatchLoop(inner, GK_HatchLoop::ltInner));
        if (!hatch->IsValid()) {
            delete hatch;
            continue;
        }
        made.push_back(hatch);
    }
    if (made.empty())
        return false;
    for (GK_Hatch* hatch : made)
        hatches.Append(hatch);
    return true;
}
