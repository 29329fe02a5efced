#pragma once
// Clipping of path pieces against the clip path. The clip is read as a plain chain of
// vertices: control points count as vertices, a move does not break the chain, and the
// chain is closed only if the path closed itself. Inside means a nonzero winding number.
//
// A clip of many vertices is indexed once: a tree of boxes over runs of consecutive edges,
// so that a query looks only at the edges that can matter to it, in their chain order, and
// gets bit for bit the answer of a walk over every edge.
#include "graphics/PathElement.h"
#include "output/EdgeTree.h"

#include <cstdint>
#include <vector>

class PathClip {
public:
    PathClip() = default;
    // Borrows the elements; they must outlive this object and not change while it is used.
    explicit PathClip(const std::vector<PathElement>* elements);

    // Fewer than two vertices mean no clipping.
    bool Active() const { return active; }
    // 1: left of the chain's box, 2: below, 4: right, 8: above; 0 without clipping.
    int Outcode(double x, double y) const;
    int WindingNumber(double x, double y) const;
    // Parameter pairs (t0, t1) of the inside parts of a -> b, flattened into `out`; the
    // whole segment (0, 1) without clipping.
    void ClipSegment(double ax, double ay, double bx, double by, std::vector<double>& out) const;

    // How the winding number is found: by the bands of the clip's heights, or where their
    // lists would be too long, by the tree alone. For tests.
    bool HasBands() const { return !bandY.empty(); }

    // The same answers by a walk over every edge: the reference the index has to match, and
    // the way for clips too small to index or with coordinates that are not finite.
    int WindingNumberByScan(double x, double y) const;
    void ClipSegmentByScan(double ax, double ay, double bx, double by,
                           std::vector<double>& out) const;

private:
    // The state of a walk along the edges that ClipSegment carries from crossing to crossing.
    struct Crossing;
    static constexpr int kDirections = 64;
    static constexpr int kLengths = 16;

    bool Indexed() const { return !chain.Empty(); }
    void BuildIndex();
    // Which of kDirections equal slices of the half turn the direction (ex, ey) lies in.
    static int DirectionOf(double ex, double ey);
    // Whether a box may hold a point whose cross product with the segment's line is within
    // `band` of zero.
    static bool MeetsBand(const EdgeTree::Box& box, double ax, double ay, double dx, double dy,
                          double band);
    void ClipAlongLine(double ax, double ay, double bx, double by, double band,
                       std::vector<double>& out) const;
    // Works through `candidates` (in chain order) into `scratch`.
    void CrossCandidates(double ax, double ay, double dx, double dy) const;
    void BuildBands();
    // The winding contribution of edge `edge` at (x, y): +1, -1 or 0.
    int Winding(std::size_t edge, double x, double y) const;
    void CrossEdge(std::size_t edge, Crossing& crossing) const;
    void KeepInside(double ax, double ay, double bx, double by, bool indexed,
                    std::vector<double>& out) const;

    const std::vector<PathElement>* elements = nullptr; // borrowed
    bool active = false;
    double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
    // Every edge; the edges again, those not short, by their length (class k: the clip's
    // extent over 2^(k+1) to its extent over 2^k, the last class all the shorter ones), so that
    // a few long edges do not widen the boxes of many short ones; again by their direction;
    // and the short ones, shorter in x and y than shortLength but not of length zero.
    EdgeTree chain;
    EdgeTree lengths[kLengths];
    EdgeTree directions[kDirections];
    EdgeTree shortEdges;
    double shortLength = 0.0;
    // For the winding number: the distinct heights of the vertices, ascending, and for each
    // band between two neighbours the edges that span it; an edge spans whole bands, its ends
    // being vertices. Band k's edges are bandEdges[bandStart[k] .. bandStart[k+1]). Empty
    // when the lists would be too long, and then the tree serves.
    std::vector<double> bandY;
    std::vector<std::uint32_t> bandStart;
    std::vector<std::uint32_t> bandEdges;
    mutable std::vector<double> scratch;
    mutable std::vector<std::size_t> stack;
    mutable std::vector<std::size_t> candidates, others;
};
