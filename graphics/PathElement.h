#pragma once
// One point of a path, already in device space.
#include <cstdint>

struct PathElement {
    double x = 0.0;
    double y = 0.0;
    // 'm' starts a subpath, 'l' ends a line; a curve is always 'a', 'b' (control points) and
    // 'c' (end point) in a row. A closed subpath has no letter of its own: closing appends an
    // 'l' back to its start.
    char kind = 'm';

    bool operator==(const PathElement&) const = default;
};
