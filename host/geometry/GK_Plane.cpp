#include "host/geometry/GK_Plane.h"

#include <cmath>

namespace {

double Dot(const GK_3dVector& a, const GK_3dVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

GK_3dVector Cross(const GK_3dVector& a, const GK_3dVector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// Unit vector, or the zero vector when `v` has no usable length.
GK_3dVector Unit(const GK_3dVector& v) {
    const double len = v.Length();
    if (!(len > 0.0) || !std::isfinite(len))
        return {};
    return v * (1.0 / len);
}

constexpr double kFrameTolerance = 1e-9;

} // namespace

const GK_Plane GK_Plane::World_xy;

// The x axis is the world x axis projected into the plane, or the world y axis when the
// normal is too near world x; so a plane parallel to world xy gets world x and y exactly.
GK_Plane::GK_Plane(const GK_3dPoint& point, const GK_3dVector& normal) : origin(point) {
    const GK_3dVector z = Unit(normal);
    if (z.Length() == 0.0 || !point.IsValid()) {
        xaxis = yaxis = zaxis = GK_3dVector{};
        return;
    }
    GK_3dVector ref{1.0, 0.0, 0.0};
    if (std::fabs(z.x) > 0.9)
        ref = GK_3dVector{0.0, 1.0, 0.0};
    GK_3dVector x = (z.x == 0.0 && z.y == 0.0) ? ref : Unit(ref - z * Dot(ref, z));
    zaxis = z;
    xaxis = x;
    yaxis = Cross(z, x);
}

GK_Plane::GK_Plane(const GK_3dPoint& point, const GK_3dVector& xdir, const GK_3dVector& ydir)
    : origin(point), xaxis(Unit(xdir)), yaxis(Unit(ydir)), zaxis(Unit(Cross(xaxis, yaxis))) {}

bool GK_Plane::IsValidFrame() const {
    return origin.IsValid() && std::fabs(xaxis.Length() - 1.0) <= kFrameTolerance &&
           std::fabs(yaxis.Length() - 1.0) <= kFrameTolerance &&
           std::fabs(zaxis.Length() - 1.0) <= kFrameTolerance;
}

bool GK_Plane::IsValid() const {
    if (!origin.IsValid())
        return false;
    const GK_3dVector* axes[3] = {&xaxis, &yaxis, &zaxis};
    for (const GK_3dVector* a : axes)
        if (!(std::fabs(a->Length() - 1.0) <= kFrameTolerance))
            return false;
    if (!(std::fabs(Dot(xaxis, yaxis)) <= kFrameTolerance) ||
        !(std::fabs(Dot(yaxis, zaxis)) <= kFrameTolerance) ||
        !(std::fabs(Dot(zaxis, xaxis)) <= kFrameTolerance))
        return false;
    // Right-handed: z is x cross y, not its opposite.
    return Dot(Cross(xaxis, yaxis), zaxis) > 0.0;
}

double GK_Plane::DistanceTo(const GK_3dPoint& point) const {
    return Dot(point - origin, zaxis);
}

GK_3dPoint GK_Plane::PointAt(double u, double v) const {
    return origin + xaxis * u + yaxis * v;
}

// The images of the x and y axes must stay perpendicular and of one length: a rotation, a
// mirror or a uniform scale. The normal is recomputed from them, so a mirror still leaves a
// right-handed frame on the moved plane.
bool GK_Plane::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite() || !IsValid())
        return false;
    const auto& m = xform.m_xform;
    if (m[3][0] != 0.0 || m[3][1] != 0.0 || m[3][2] != 0.0 || m[3][3] != 1.0)
        return false;
    auto linear = [&m](const GK_3dVector& v) {
        return GK_3dVector{m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
                           m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
                           m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
    };
    const GK_3dPoint o = xform * origin;
    const GK_3dVector x = linear(xaxis);
    const GK_3dVector y = linear(yaxis);
    const double lx = x.Length();
    const double ly = y.Length();
    if (!o.IsValid() || !(lx > 0.0) || !(ly > 0.0) || !std::isfinite(lx) || !std::isfinite(ly))
        return false;
    if (!(std::fabs(lx - ly) <= kFrameTolerance * lx) ||
        !(std::fabs(Dot(x, y)) <= kFrameTolerance * lx * ly))
        return false;
    origin = o;
    xaxis = x * (1.0 / lx);
    yaxis = Unit(y - xaxis * Dot(y, xaxis));
    zaxis = Cross(xaxis, yaxis);
    return true;
}
