#include "output/PathClip.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

// The fewest edges worth an index: a walk over a short chain is cheaper than the trees.
constexpr std::size_t kMinIndexedEdges = 32;
// Edges shorter than the clip's extent times this count as short (see ClipSegment).
constexpr double kShortEdge = 0x1p-30;
// Beyond these magnitudes the error bounds below would need care for overflow and
// underflow; such segments take the walk along their line.
constexpr double kLargest = 0x1p400, kSmallest = 0x1p-400;
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
    // The parameters of the crossing with the edge p -> q, each only where its denominator
    // is not zero; false when neither could be computed. a + t*d = p + u*e, solved by cross
    // products with d and with e.
    bool Parameters(const PathElement& p, const PathElement& q) {
        const double ex = q.x - p.x;
        const double ey = q.y - p.y;
        const double denominatorU = ex * dy - ey * dx;
        if (denominatorU != 0.0)
            u = ((ax - p.x) * dy - (ay - p.y) * dx) / denominatorU;
        const double denominatorT = dx * ey - dy * ex;
        if (denominatorT != 0.0)
            t = ((p.x - ax) * ey - (p.y - ay) * ex) / denominatorT;
        return denominatorU != 0.0 || denominatorT != 0.0;
    }
    void AppendIfOnBoth() {
        if (t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0)
            ts.push_back(t);
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
    if (edges < kMinIndexedEdges || edges > UINT32_MAX)
        return;
    // Boxes of points that are not numbers bound nothing; such a clip is walked edge by edge.
    for (const PathElement& e : v)
        if (!Finite(e.x, e.y))
            return;
    std::vector<std::uint32_t> all(edges);
    for (std::size_t i = 0; i < edges; ++i)
        all[i] = static_cast<std::uint32_t>(i + 1);
    chain = EdgeTree(v, std::move(all));

    // The edges again, by direction, and the short ones apart. An edge whose ends coincide
    // has both on one side of any line and never crosses.
    const double extent = std::max(maxX - minX, maxY - minY);
    shortLength = extent * kShortEdge;
    std::vector<std::uint32_t> byLength[kLengths], byDirection[kDirections], shortOnes;
    for (std::size_t i = 1; i < v.size(); ++i) {
        const double ex = v[i].x - v[i - 1].x;
        const double ey = v[i].y - v[i - 1].y;
        if (ex == 0.0 && ey == 0.0)
            continue;
        const double m = std::max(std::fabs(ex), std::fabs(ey));
        if (m < shortLength) {
            shortOnes.push_back(static_cast<std::uint32_t>(i));
            continue;
        }
        byDirection[DirectionOf(ex, ey)].push_back(static_cast<std::uint32_t>(i));
        const int k =
            std::clamp(static_cast<int>(std::floor(std::log2(extent / m))), 0, kLengths - 1);
        byLength[k].push_back(static_cast<std::uint32_t>(i));
    }
    for (int k = 0; k < kDirections; ++k)
        directions[k] = EdgeTree(v, std::move(byDirection[k]));
    for (int k = 0; k < kLengths; ++k)
        lengths[k] = EdgeTree(v, std::move(byLength[k]));
    shortEdges = EdgeTree(v, std::move(shortOnes));
    BuildBands();
}

int PathClip::DirectionOf(double ex, double ey) {
    double angle = std::atan2(ey, ex); // -pi .. pi
    if (angle < 0.0)
        angle += std::numbers::pi;
    const int k = static_cast<int>(angle * (kDirections / std::numbers::pi));
    return std::clamp(k, 0, kDirections - 1);
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
    chain.Walk([y](const EdgeTree::Box& box) { return box.minY <= y && y <= box.maxY; },
               [&](std::size_t edge) { winding += Winding(edge, x, y); }, stack);
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
    c.Parameters(p, q);
    c.AppendIfOnBoth();
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

// The walk along the segment's whole line. Only an edge whose ends lie on different sides of
// the line takes part, and with the sides as computed, such an edge comes within the rounding
// of those computations of the line: so a box whose corners all lie farther than that on one
// side holds no such edge and is passed over.
void PathClip::ClipAlongLine(double ax, double ay, double bx, double by, double band,
                             std::vector<double>& out) const {
    const double dx = bx - ax;
    const double dy = by - ay;
    const auto onLine = [&](const EdgeTree::Box& box) {
        return MeetsBand(box, ax, ay, dx, dy, band);
    };
    candidates.clear();
    chain.Walk(
        onLine,
        [&](std::size_t edge) {
            if (onLine(EdgeTree::EdgeBox(*elements, edge)))
                candidates.push_back(edge);
        },
        stack);
    std::sort(candidates.begin(), candidates.end());
    CrossCandidates(ax, ay, dx, dy);
    KeepInside(ax, ay, bx, by, true, out);
}

// The candidates, in chain order, as the full walk meets them: every edge that crosses with
// both parameters in [0, 1] is among them. An edge whose parameters cannot be computed takes
// those of the last one before it in the chain that crossed with computable parameters,
// found by walking back: the full walk would carry them to it.
void PathClip::CrossCandidates(double ax, double ay, double dx, double dy) const {
    scratch.assign({0.0, 1.0});
    Crossing crossing{ax, ay, dx, dy, 0.0, 0.0, scratch};
    const std::vector<PathElement>& v = *elements;
    for (const std::size_t edge : candidates) {
        if (crossing.Side(v[edge - 1]) == crossing.Side(v[edge]))
            continue;
        if (!crossing.Parameters(v[edge - 1], v[edge])) {
            crossing.t = crossing.u = 0.0; // the starting ones, if no crossing came before
            for (std::size_t before = edge - 1; before >= 1; --before)
                if (crossing.Side(v[before - 1]) != crossing.Side(v[before]) &&
                    crossing.Parameters(v[before - 1], v[before]))
                    break;
        }
        crossing.AppendIfOnBoth();
    }
}

bool PathClip::MeetsBand(const EdgeTree::Box& box, double ax, double ay, double dx, double dy,
                         double band) {
    const double x0 = box.minX - ax, x1 = box.maxX - ax;
    const double y0 = box.minY - ay, y1 = box.maxY - ay;
    const double c00 = dx * y0 - dy * x0, c01 = dx * y1 - dy * x0;
    const double c10 = dx * y0 - dy * x1, c11 = dx * y1 - dy * x1;
    return !((c00 > band && c01 > band && c10 > band && c11 > band) ||
             (c00 < -band && c01 < -band && c10 < -band && c11 < -band));
}

// Most of the edges along the segment's line lie far from the segment itself, and an edge far
// from it makes no crossing that counts: t on the segment and u on the edge cannot both come
// out in [0, 1] unless rounding spoils them, and that takes an edge (nearly) parallel to the
// segment or a very short one. So three kinds of edges are looked at, each found through its
// own tree, and every other edge of the chain is passed over:
//
// - near ones. With u the unit roundoff, R the greatest distance of a clip vertex from a in x
//   or y, and m_d, m_e the greater of width and height of segment and edge, the error bounds
//   of the products give: when |d x e| >= 512 u R (m_d + m_e) + 250 u m_d m_e, computed t and
//   u in [0, 1] mean exact ones in [-0.03, 1.03], so that the two lines meet within 0.03 m_d
//   of the segment's box and 0.03 m_e of the edge's. A node none of whose edges' boxes, grown
//   by a sixteenth of their m_e, meets the segment's box grown by a sixteenth of m_d (both
//   grown by a few units in the last place of the coordinates as well) holds no such edge;
// - edges in the direction of the segment, to within the angle whose sine is
//   1024 u R / L + 256 u, L the short length: any other edge at least L long has |d x e|
//   large enough for the first case, if the segment is L long too;
// - edges shorter than L, wherever they are.
// Segments shorter than L, and coordinates whose products might overflow or underflow, take
// the walk along the line.
void PathClip::ClipSegment(double ax, double ay, double bx, double by,
                           std::vector<double>& out) const {
    if (!active || !Indexed() || !Finite(ax, ay) || !Finite(bx, by)) {
        ClipSegmentByScan(ax, ay, bx, by, out);
        return;
    }
    out.clear();
    const double dx = bx - ax;
    const double dy = by - ay;
    // Each cross product of the sides is off by at most a few units in the last place of
    // (|dx| + |dy|) times the distance from a of the clip's box; the band is well above
    // that, and its last term covers subnormal results.
    const double reach = std::max(
        {std::fabs(minX - ax), std::fabs(maxX - ax), std::fabs(minY - ay), std::fabs(maxY - ay)});
    const double band =
        64.0 * DBL_EPSILON * (std::fabs(dx) + std::fabs(dy)) * reach + 64.0 * DBL_MIN;
    if (!(band < std::numeric_limits<double>::infinity())) {
        ClipSegmentByScan(ax, ay, bx, by, out);
        return;
    }
    const double length = std::max(std::fabs(dx), std::fabs(dy));
    const double unit = 0.5 * DBL_EPSILON;
    const double sine = 1024.0 * unit * reach / shortLength + 256.0 * unit;
    if (!(length >= shortLength) || !(reach <= kLargest) || !(shortLength >= kSmallest) ||
        !(sine < 1e-3)) {
        ClipAlongLine(ax, ay, bx, by, band, out);
        return;
    }

    // The segment's box, grown as above; the slack covers the rounding of these sums.
    const double slack = 16.0 * DBL_EPSILON * (reach + std::max(std::fabs(ax), std::fabs(ay)));
    const double grow = 0.0625 * length + slack;
    const double sx0 = std::min(ax, bx) - grow, sx1 = std::max(ax, bx) + grow;
    const double sy0 = std::min(ay, by) - grow, sy1 = std::max(ay, by) + grow;
    const auto onLine = [&](const EdgeTree::Box& box) {
        return MeetsBand(box, ax, ay, dx, dy, band);
    };
    const auto near = [&](const EdgeTree::Box& box) {
        return box.nearMinX - slack <= sx1 && box.nearMaxX + slack >= sx0 &&
               box.nearMinY - slack <= sy1 && box.nearMaxY + slack >= sy0 && onLine(box);
    };
    // The trees sort out nodes; each edge of a leaf that is let in is tested on its own box.
    candidates.clear();
    for (const EdgeTree& tree : lengths)
        tree.Walk(
            near,
            [&](std::size_t edge) {
                if (near(EdgeTree::EdgeBox(*elements, edge)))
                    candidates.push_back(edge);
            },
            stack);
    others.clear();
    const auto takeOnLine = [&](std::size_t edge) {
        if (onLine(EdgeTree::EdgeBox(*elements, edge)))
            others.push_back(edge);
    };
    // The directions within the angle, which may wrap round from pi to 0.
    const double angle = std::asin(sine) + 1e-12;
    const int from =
        DirectionOf(std::cos(std::atan2(dy, dx) - angle), std::sin(std::atan2(dy, dx) - angle));
    const int to =
        DirectionOf(std::cos(std::atan2(dy, dx) + angle), std::sin(std::atan2(dy, dx) + angle));
    for (int k = from;; k = (k + 1) % kDirections) {
        directions[k].Walk(onLine, takeOnLine, stack);
        if (k == to)
            break;
    }
    shortEdges.Walk(onLine, takeOnLine, stack);
    // In chain order, each edge once.
    candidates.insert(candidates.end(), others.begin(), others.end());
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());

    CrossCandidates(ax, ay, dx, dy);
    KeepInside(ax, ay, bx, by, true, out);
}
