#pragma once
// Point sets standing in for a curve: its control points, which hold it in their hull, and a
// polygon that follows it within a flattening tolerance.
#include "host/geometry/GK_Curve.h"

#include <vector>

// Appends points whose convex hull holds the curve: polyline vertices, NURBS control points
// (Euclidean), those of every segment of a chain. A curve class not known here gives points
// sampled along it, which is only an approximation.
void GK_CurveControlPoints(const GK_Curve& curve, std::vector<GK_3dPoint>& points);

// Appends the vertices of a polygon from the curve's start to its end that stays within
// about `tolerance` of the curve: straight parts by their vertices, curved parts by
// adaptive halving. A point equal to the one before it is not repeated.
void GK_FlattenCurve(const GK_Curve& curve, double tolerance, std::vector<GK_3dPoint>& points);

// Distance of `p` from the line through `a` and `b`, or from `a` when the two are within
// `tolerance` of each other: a direction through nearly coincident ends means nothing.
double GK_DistanceFromLine(const GK_3dPoint& p, const GK_3dPoint& a, const GK_3dPoint& b,
                           double tolerance);
