#pragma once
// Small curves that tests of the host's geometry and of the reports build from, each new and
// owned by the caller.
#include "host/geometry/GK_Curve.h"

#include <initializer_list>

namespace tarquil::test {

inline GK_PolylineCurve* Polyline(std::initializer_list<GK_3dPoint> points) {
    GK_SimpleArray<GK_3dPoint> array;
    for (const GK_3dPoint& p : points)
        array.Append(p);
    return new GK_PolylineCurve(array);
}

// A closed square from (x, y) at height z, counter-clockwise.
inline GK_PolylineCurve* Square(double x, double y, double size, double z = 0.0) {
    return Polyline(
        {{x, y, z}, {x + size, y, z}, {x + size, y + size, z}, {x, y + size, z}, {x, y, z}});
}

} // namespace tarquil::test
