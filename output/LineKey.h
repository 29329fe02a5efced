#pragma once
// Straight lines as keys, and runs of segments along one of them: how a row of separate
// two-point subpaths is recognised as one dashed line, and how the broken straight edges of
// a fill are joined.
#include <utility>
#include <vector>

// Segments shorter than this have no usable direction.
inline constexpr double kDegenerateLength = 0.0009765625; // 2^-10

// The line a segment lies on, with a direction turned so that uy >= 0.
struct LineKey {
    double ux = 0.0;
    double uy = 0.0;
    // Signed distance of the line from the origin along the normal (-uy, ux).
    double offset = 0.0;
    // The segment was shorter than kDegenerateLength; the other fields are then unset.
    bool degenerate = true;

    // Exact comparison on purpose: lines that differ in the last bit are different runs.
    bool SameLine(const LineKey& other) const {
        return ux == other.ux && uy == other.uy && offset == other.offset;
    }
};

LineKey MakeLineKey(double x0, double y0, double x1, double y1);

// Positions of segments along one key: position s stands for the point
// (ux*s - uy*offset, uy*s + ux*offset).
struct SegmentRun {
    std::vector<std::pair<double, double>> pairs; // (start, end)
    LineKey key;
    bool empty = true; // no key in force

    double X(double s) const { return key.ux * s - key.uy * key.offset; }
    double Y(double s) const { return key.uy * s + key.ux * key.offset; }
    // Position of a point projected onto the key's line.
    double Position(double x, double y) const { return key.ux * x + key.uy * y; }
    void Clear() {
        pairs.clear();
        empty = true;
    }
};
