#pragma once
// Curves as SVG path data ("M ... L ... C ..."), in picture coordinates where y points down,
// so the model's y is negated; and linetypes as SVG dash patterns.
#include "host/doc/CVelmoLinetypeTable.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Hatch.h"

#include <string>
#include <utility>
#include <vector>

// Appends the path data of a curve to `out`, closed where it comes back to its start.
void AppendCurvePathData(const GK_Curve& curve, std::string& out);
// Appends the boundary of a hatch: every loop a closed subpath of one path, so that with the
// even-odd rule the holes stay open.
void AppendHatchPathData(const GK_Hatch& hatch, std::string& out);

std::string CurvePathData(const GK_Curve& curve);

// Appends a number in its shortest round-trip form, whatever the locale, never as "-0".
void AppendNumber(double value, std::string& out);

// stroke-dasharray and stroke-dashoffset for a linetype, both in model units; empty for a
// continuous line.
std::pair<std::vector<double>, double> DashPattern(const GK_Linetype& linetype);
