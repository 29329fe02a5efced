#pragma once
// Clipping of path pieces against the clip path. The clip is read as a plain chain of
// vertices: control points count as vertices, a move does not break the chain, and the
// chain is closed only if the path closed itself. Inside means a nonzero winding number.
#include "graphics/PathElement.h"

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

private:
    const std::vector<PathElement>* elements = nullptr; // borrowed
    bool active = false;
    double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
    mutable std::vector<double> scratch;
};
