#include "output/PathClip.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <limits>

namespace {

// Edges per leaf of the index, and the fewest edges worth an index: a walk over a short chain
// is cheaper than the tree.
constexpr std::size_t kLeafEdges = 8;
constexpr std::size_t kMinIndexedEdges = 32;
// The band lists may hold this many entries per edge of the clip at most: enough for a clip
// whose horizontal lines meet a hundred edges, and a bound for one whose every edge spans
// the whole height.
constexpr std::size_t kBandEntriesPerEdge = 128;

bool Finite(double x, double y) {
    return std::isfinite(x) && std::isfinite(y);
}

} // namespace

// What ClipSegment carries along the chain: the segment, the parameters of the last crossing
// (which stand for a crossing whose own cannot be computed), and the parameters found.
struct PathClip::Crossing {
    double ax, ay, dx, dy;
    double t = 0.0, u = 0.0;
    std::vector<double>& ts;

    int Side(const PathElement& p) const {
        const double cross = dx * (p.y - ay) - dy * (p.x - ax);
        return (cross > 0.0) - (cross < 0.0);
    }
};

PathClip::PathClip(const std::vector<PathElement>* elements_) : elements(elements_) {
    active = elements && elements->size() >= 2;
    if (!active)
        return;
    // The box is what outcodes test against; it does not change during one painting
    // operation, so it is worked out once.
    minX = maxX = elements->front().x;
    minY = maxY = elements->front().y;
    for (const PathElement& e : *elements) {
        minX = std::min(minX, e.x);
        maxX = std::max(maxX, e.x);
        minY = std::min(minY, e.y);
        maxY = std::max(maxY, e.y);
    }
    BuildIndex();
}

void PathClip::BuildIndex() {
    const std::vector<PathElement>& v = *elements;
    const std::size_t edges = v.size() - 1;
    if (edges < kMinIndexedEdges)
        return;
    // Boxes of points that are not numbers bound nothing; such a clip is walked edge by edge.
    for (const PathElement& e : v)
        if (!Finite(e.x, e.y))
            return;
    const double inf = std::numeric_limits<double>::infinity();
    const std::size_t leaves = (edges + kLeafEdges - 1) / kLeafEdges;
    leafBase = std::bit_ceil(leaves);
    nodes.assign(2 * leafBase, Box{inf, inf, -inf, -inf});
    for (std::size_t k = 0; k < leaves; ++k) {
        Box& box = nodes[leafBase + k];
        // The vertices of edges 1 + k*kLeafEdges .. : from the start of the first one on.
        const std::size_t last = std::min((k + 1) * kLeafEdges, edges);
        for (std::size_t i = k * kLeafEdges; i <= last; ++i) {
            box.minX = std::min(box.minX, v[i].x);
            box.maxX = std::max(box.maxX, v[i].x);
            box.minY = std::min(box.minY, v[i].y);
            box.maxY = std::max(box.maxY, v[i].y);
        }
    }
    for (std::size_t i = leafBase - 1; i >= 1; --i) {
        const Box& l = nodes[2 * i];
        const Box& r = nodes[2 * i + 1];
        nodes[i] = {std::min(l.minX, r.minX), std::min(l.minY, r.minY), std::max(l.maxX, r.maxX),
                    std::max(l.maxY, r.maxY)};
    }
    BuildBands();
}

void PathClip::BuildBands() {
    const std::vector<PathElement>& v = *elements;
    bandY.reserve(v.size());
    for (const PathElement& e : v)
        bandY.push_back(e.y);
    std::sort(bandY.begin(), bandY.end());
    bandY.erase(std::unique(bandY.begin(), bandY.end()), bandY.end());
    const std::size_t bands = bandY.size() - 1;
    // The bands each edge spans, as indices into bandY of its lower and upper end.
    const auto span = [&](std::size_t edge) {
        const double a = v[edge - 1].y, b = v[edge].y;
        const auto at = [&](double y) {
            return static_cast<std::size_t>(std::lower_bound(bandY.begin(), bandY.end(), y) -
                                            bandY.begin());
        };
        return std::pair{at(std::min(a, b)), at(std::max(a, b))};
    };
    std::vector<std::int64_t> count(bands + 1, 0);
    std::size_t total = 0;
    for (std::size_t i = 1; i < v.size(); ++i) {
        const auto [lo, hi] = span(i);
        ++count[lo];
        --count[hi];
        total += hi - lo;
    }
    if (bands == 0 || total > kBandEntriesPerEdge * (v.size() - 1) || total > UINT32_MAX) {
        bandY.clear();
        return;
    }
    bandStart.assign(bands + 1, 0);
    std::int64_t running = 0;
    std::uint32_t start = 0;
    for (std::size_t k = 0; k < bands; ++k) {
        running += count[k]; // the edges that span band k
        bandStart[k] = start;
        start += static_cast<std::uint32_t>(running);
    }
    bandStart[bands] = start;
    bandEdges.resize(total);
    std::vector<std::uint32_t> next(bandStart.begin(), bandStart.end() - 1);
    for (std::size_t i = 1; i < v.size(); ++i) {
        const auto [lo, hi] = span(i);
        for (std::size_t k = lo; k < hi; ++k)
            bandEdges[next[k]++] = static_cast<std::uint32_t>(i);
    }
}

int PathClip::Outcode(double x, double y) const {
    if (!active)
        return 0;
    int code = 0;
    if (x < minX)
        code |= 1;
    if (y < minY)
        code |= 2;
    if (x > maxX)
        code |= 4;
    if (y > maxY)
        code |= 8;
    return code;
}

int PathClip::Winding(std::size_t edge, double x, double y) const {
    const PathElement& a = (*elements)[edge - 1];
    const PathElement& b = (*elements)[edge];
    const double cross = (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
    if (a.y <= y && b.y > y && cross > 0.0)
        return 1;
    if (a.y > y && b.y <= y && cross < 0.0)
        return -1;
    return 0;
}

int PathClip::WindingNumberByScan(double x, double y) const {
    if (!elements)
        return 0;
    int winding = 0;
    for (std::size_t i = 1; i < elements->size(); ++i)
        winding += Winding(i, x, y);
    return winding;
}

// An edge adds to the winding number only when y lies between its ends (the lower one
// included), so only the edges of y's band count, or where there are no bands, those in the
// boxes that reach y. The sum of whole numbers is the same in any order.
int PathClip::WindingNumber(double x, double y) const {
    if (!Indexed())
        return WindingNumberByScan(x, y);
    int winding = 0;
    if (!bandY.empty()) {
        // Band k runs from bandY[k] up to, not including, bandY[k+1]; y below the lowest or
        // at or above the highest vertex (or not a number) meets no edge.
        const auto above = std::upper_bound(bandY.begin(), bandY.end(), y);
        if (above == bandY.begin() || above == bandY.end())
            return 0;
        const std::size_t band = static_cast<std::size_t>(above - bandY.begin()) - 1;
        for (std::uint32_t k = bandStart[band]; k < bandStart[band + 1]; ++k)
            winding += Winding(bandEdges[k], x, y);
        return winding;
    }
    const std::vector<PathElement>& v = *elements;
    stack.assign(1, 1);
    while (!stack.empty()) {
        const std::size_t node = stack.back();
        stack.pop_back();
        const Box& box = nodes[node];
        if (!(box.minY <= y && y <= box.maxY))
            continue;
        if (node < leafBase) {
            stack.push_back(2 * node + 1);
            stack.push_back(2 * node);
            continue;
        }
        const std::size_t first = 1 + (node - leafBase) * kLeafEdges;
        const std::size_t end = std::min(first + kLeafEdges, v.size());
        for (std::size_t i = first; i < end; ++i)
            winding += Winding(i, x, y);
    }
    return winding;
}

// One edge of the walk: where its ends lie on different sides of the segment's line, the
// crossing's parameters, u on the edge and t on the segment. A parameter whose denominator is
// zero keeps its previous value.
void PathClip::CrossEdge(std::size_t edge, Crossing& c) const {
    const PathElement& p = (*elements)[edge - 1];
    const PathElement& q = (*elements)[edge];
    if (c.Side(p) == c.Side(q))
        return;
    const double ex = q.x - p.x;
    const double ey = q.y - p.y;
    // a + t*d = p + u*e, solved by cross products with d and with e.
    const double denominatorU = ex * c.dy - ey * c.dx;
    if (denominatorU != 0.0)
        c.u = ((c.ax - p.x) * c.dy - (c.ay - p.y) * c.dx) / denominatorU;
    const double denominatorT = c.dx * ey - c.dy * ex;
    if (denominatorT != 0.0)
        c.t = ((p.x - c.ax) * ey - (p.y - c.ay) * ex) / denominatorT;
    if (c.t >= 0.0 && c.t <= 1.0 && c.u >= 0.0 && c.u <= 1.0)
        c.ts.push_back(c.t);
}

// Sorts the parameters found and keeps the pieces between them whose middle is inside.
void PathClip::KeepInside(double ax, double ay, double bx, double by, bool indexed,
                          std::vector<double>& out) const {
    const double dx = bx - ax;
    const double dy = by - ay;
    std::vector<double>& ts = scratch;
    std::sort(ts.begin(), ts.end());
    for (std::size_t i = 1; i < ts.size(); ++i) {
        const double t0 = ts[i - 1];
        const double t1 = ts[i];
        if (t0 == t1)
            continue;
        const double mid = 0.5 * (t0 + t1);
        const double x = ax + mid * dx;
        const double y = ay + mid * dy;
        if ((indexed ? WindingNumber(x, y) : WindingNumberByScan(x, y)) != 0) {
            out.push_back(t0);
            out.push_back(t1);
        }
    }
}

void PathClip::ClipSegmentByScan(double ax, double ay, double bx, double by,
                                 std::vector<double>& out) const {
    out.clear();
    if (!active) {
        out.push_back(0.0);
        out.push_back(1.0);
        return;
    }
    // A crossing whose parameters cannot be computed keeps the previous ones, which at the
    // start are 0: a crossing at 0 adds nothing, as 0 is in the list already.
    scratch.assign({0.0, 1.0});
    Crossing crossing{ax, ay, bx - ax, by - ay, 0.0, 0.0, scratch};
    for (std::size_t i = 1; i < elements->size(); ++i)
        CrossEdge(i, crossing);
    KeepInside(ax, ay, bx, by, false, out);
}

// Only an edge whose ends lie on different sides of the segment's line takes part, and with
// the sides as computed, such an edge comes within the rounding of those computations of the
// line: so a box whose corners all lie farther than that on one side holds no such edge and
// is passed over. The others are visited left to right, which keeps the edges in their chain
// order, and the parameters carried from crossing to crossing are those of the full walk.
void PathClip::ClipSegment(double ax, double ay, double bx, double by,
                           std::vector<double>& out) const {
    if (!active || !Indexed() || !Finite(ax, ay) || !Finite(bx, by)) {
        ClipSegmentByScan(ax, ay, bx, by, out);
        return;
    }
    out.clear();
    const double dx = bx - ax;
    const double dy = by - ay;
    // Each cross product below and in Crossing::Side is off by at most a few units in the
    // last place of (|dx| + |dy|) times the distance from a of the clip's box; this reach is
    // well above the sum of both, and the last term covers subnormal results.
    const double reach = std::max(
        {std::fabs(minX - ax), std::fabs(maxX - ax), std::fabs(minY - ay), std::fabs(maxY - ay)});
    const double band =
        64.0 * DBL_EPSILON * (std::fabs(dx) + std::fabs(dy)) * reach + 64.0 * DBL_MIN;
    if (!(band < std::numeric_limits<double>::infinity())) {
        ClipSegmentByScan(ax, ay, bx, by, out);
        return;
    }
    scratch.assign({0.0, 1.0});
    Crossing crossing{ax, ay, dx, dy, 0.0, 0.0, scratch};
    const std::vector<PathElement>& v = *elements;
    stack.assign(1, 1);
    while (!stack.empty()) {
        const std::size_t node = stack.back();
        stack.pop_back();
        const Box& box = nodes[node];
        if (box.minX > box.maxX)
            continue; // a leaf past the last edge
        const double x0 = box.minX - ax, x1 = box.maxX - ax;
        const double y0 = box.minY - ay, y1 = box.maxY - ay;
        const double c00 = dx * y0 - dy * x0, c01 = dx * y1 - dy * x0;
        const double c10 = dx * y0 - dy * x1, c11 = dx * y1 - dy * x1;
        if ((c00 > band && c01 > band && c10 > band && c11 > band) ||
            (c00 < -band && c01 < -band && c10 < -band && c11 < -band))
            continue;
        if (node < leafBase) {
            stack.push_back(2 * node + 1);
            stack.push_back(2 * node);
            continue;
        }
        const std::size_t first = 1 + (node - leafBase) * kLeafEdges;
        const std::size_t end = std::min(first + kLeafEdges, v.size());
        for (std::size_t i = first; i < end; ++i)
            CrossEdge(i, crossing);
    }
    KeepInside(ax, ay, bx, by, true, out);
}
