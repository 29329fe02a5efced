#include "host/geometry/GK_Hatch.h"

#include "host/geometry/GK_CurvePoints.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Loops are put into the plane by projection, which rounds; what is left is a few units in
// the last place of the coordinates. This allowance is far above that and far below any
// drawing tolerance.
constexpr double kPlaneAllowance = 1e-9;

bool InPlane(const GK_Curve& curve, const GK_Plane& plane) {
    std::vector<GK_3dPoint> points;
    GK_CurveControlPoints(curve, points);
    double scale =
        std::max({std::fabs(plane.origin.x), std::fabs(plane.origin.y), std::fabs(plane.origin.z)});
    for (const GK_3dPoint& p : points)
        scale = std::max({scale, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    const double allowance = kPlaneAllowance * scale;
    for (const GK_3dPoint& p : points)
        if (!(std::fabs(plane.DistanceTo(p)) <= allowance))
            return false;
    return true;
}

} // namespace

GK_HatchLoop::GK_HatchLoop(const GK_HatchLoop& other)
    : m_curve(other.m_curve ? other.m_curve->DuplicateCurve() : nullptr), m_type(other.m_type) {}

GK_HatchLoop::~GK_HatchLoop() {
    delete m_curve;
}

bool GK_HatchLoop::IsValid() const {
    return m_curve && m_curve->IsValid() && m_curve->IsClosed() &&
           (m_type == ltOuter || m_type == ltInner);
}

GK_Hatch::GK_Hatch(const GK_Hatch& other)
    : GK_Geometry(other), m_plane(other.m_plane), m_pattern_index(other.m_pattern_index),
      m_pattern_rotation(other.m_pattern_rotation), m_pattern_scale(other.m_pattern_scale),
      m_validity(other.m_validity) {
    m_loops.Reserve(other.m_loops.Count());
    for (const GK_HatchLoop* loop : other.m_loops)
        m_loops.Append(new GK_HatchLoop(*loop));
}

GK_Hatch::~GK_Hatch() {
    for (GK_HatchLoop* loop : m_loops)
        delete loop;
}

void GK_Hatch::AddLoop(GK_HatchLoop* loop) {
    if (loop) {
        m_loops.Append(loop);
        Changed();
    }
}

const GK_HatchLoop* GK_Hatch::Loop(int index) const {
    if (index < 0 || index >= m_loops.Count())
        return nullptr;
    return m_loops[index];
}

GK_Curve* GK_Hatch::LoopCurve3d(int index) const {
    const GK_HatchLoop* loop = Loop(index);
    if (!loop || !loop->m_curve)
        return nullptr;
    return loop->m_curve->DuplicateCurve();
}

bool GK_Hatch::IsValid(GK_TextLog*) const {
    if (m_validity == kUnknown) {
        bool valid =
            m_plane.IsValid() && !m_loops.IsEmpty() && m_loops[0]->Type() == GK_HatchLoop::ltOuter;
        for (int i = 0; valid && i < m_loops.Count(); ++i)
            valid = m_loops[i]->IsValid() && InPlane(*m_loops[i]->m_curve, m_plane);
        m_validity = valid ? 1 : 0;
    }
    return m_validity == 1;
}

GK_BoundingBox GK_Hatch::BoundingBox() const {
    GK_BoundingBox box;
    for (const GK_HatchLoop* loop : m_loops)
        if (loop->m_curve)
            box.Union(loop->m_curve->BoundingBox());
    return box;
}

// All or nothing: the plane and the loops are moved on copies, and the hatch changes only
// when every one of them could be moved.
bool GK_Hatch::Transform(const GK_Xform& xform) {
    GK_Plane plane = m_plane;
    if (!plane.Transform(xform))
        return false;
    // The plane refuses anything but a rotation, mirror or uniform scale within it, so the
    // image of its x axis tells the scale the pattern has to follow.
    const auto& m = xform.m_xform;
    const GK_3dVector& x = m_plane.xaxis;
    const double scale = GK_3dVector{m[0][0] * x.x + m[0][1] * x.y + m[0][2] * x.z,
                                     m[1][0] * x.x + m[1][1] * x.y + m[1][2] * x.z,
                                     m[2][0] * x.x + m[2][1] * x.y + m[2][2] * x.z}
                             .Length();
    std::vector<GK_Curve*> moved;
    moved.reserve(m_loops.Count());
    bool ok = true;
    for (const GK_HatchLoop* loop : m_loops) {
        GK_Curve* curve = loop->m_curve ? loop->m_curve->DuplicateCurve() : nullptr;
        moved.push_back(curve);
        if (curve && !curve->Transform(xform))
            ok = false;
    }
    if (!ok) {
        for (GK_Curve* curve : moved)
            delete curve;
        return false;
    }
    for (int i = 0; i < m_loops.Count(); ++i) {
        delete m_loops[i]->m_curve;
        m_loops[i]->m_curve = moved[i];
    }
    m_plane = plane;
    Changed();
    // A rotation leaves a length of one up to rounding; keep the scale exactly as it was.
    if (std::fabs(scale - 1.0) > 1e-12)
        m_pattern_scale *= scale;
    return true;
}
