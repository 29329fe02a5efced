#include "host/geometry/GK_Curve.h"

#include <cmath>
#include <utility>

bool GK_LineCurve::IsValid(GK_TextLog*) const {
    return m_line.from.IsValid() && m_line.to.IsValid() && m_line.from != m_line.to &&
           std::isfinite(m_t.t0) && std::isfinite(m_t.t1) && m_t.t0 < m_t.t1;
}

GK_BoundingBox GK_LineCurve::BoundingBox() const {
    GK_BoundingBox box;
    box.Set(m_line.from, true);
    box.Set(m_line.to, true);
    return box;
}

bool GK_LineCurve::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite())
        return false;
    m_line.from = xform * m_line.from;
    m_line.to = xform * m_line.to;
    return m_line.from.IsValid() && m_line.to.IsValid();
}

GK_3dPoint GK_LineCurve::PointAt(double t) const {
    const double len = m_t.t1 - m_t.t0;
    if (len == 0.0)
        return m_line.from;
    // Written so that both ends of the domain give the end points exactly.
    const double s = (t - m_t.t0) / len;
    const GK_3dPoint& a = m_line.from;
    const GK_3dPoint& b = m_line.to;
    return {(1.0 - s) * a.x + s * b.x, (1.0 - s) * a.y + s * b.y, (1.0 - s) * a.z + s * b.z};
}

// The domain is negated so that the reversed curve at -t is the original at t.
bool GK_LineCurve::Reverse() {
    std::swap(m_line.from, m_line.to);
    m_t = GK_Interval(-m_t.t1, -m_t.t0);
    return true;
}

int GK_LineCurve::IsPolyline(GK_SimpleArray<GK_3dPoint>* points) const {
    if (points) {
        points->Empty();
        points->Append(m_line.from);
        points->Append(m_line.to);
    }
    return 2;
}

// Every point of a segment lies on the line through its ends, and when the ends are within
// the tolerance the whole segment is within it of the start.
bool GK_LineCurve::IsLinear(double tolerance) const {
    return IsValid() && tolerance >= 0.0;
}
