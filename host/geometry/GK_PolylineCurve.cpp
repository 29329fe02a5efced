#include "host/geometry/GK_Curve.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

// m_t may be left empty by code that fills m_pline directly; the parameters are then the
// point indices 0, 1, 2, ...

namespace {

GK_3dPoint NanPoint() {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan, nan};
}

} // namespace

GK_PolylineCurve::GK_PolylineCurve(const GK_SimpleArray<GK_3dPoint>& points) : m_pline(points) {
    m_t.Reserve(points.Count());
    for (int i = 0; i < points.Count(); ++i)
        m_t.Append(static_cast<double>(i));
}

bool GK_PolylineCurve::IsValid(GK_TextLog*) const {
    const int n = m_pline.Count();
    if (n < 2)
        return false;
    if (!m_t.IsEmpty()) {
        if (m_t.Count() != n)
            return false;
        for (int i = 0; i < n; ++i) {
            if (!std::isfinite(m_t[i]))
                return false;
            if (i > 0 && !(m_t[i - 1] < m_t[i]))
                return false;
        }
    }
    bool allSame = true;
    for (int i = 0; i < n; ++i) {
        if (!m_pline[i].IsValid())
            return false;
        if (m_pline[i] != m_pline[0])
            allSame = false;
    }
    return !allSame;
}

GK_BoundingBox GK_PolylineCurve::BoundingBox() const {
    GK_BoundingBox box;
    for (const GK_3dPoint& p : m_pline)
        box.Set(p, true);
    return box;
}

bool GK_PolylineCurve::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite())
        return false;
    bool ok = true;
    for (GK_3dPoint& p : m_pline) {
        p = xform * p;
        ok = ok && p.IsValid();
    }
    return ok;
}

GK_Interval GK_PolylineCurve::Domain() const {
    const int n = m_pline.Count();
    if (n == 0)
        return {0.0, 0.0};
    if (m_t.Count() == n)
        return {m_t[0], m_t[n - 1]};
    return {0.0, static_cast<double>(n - 1)};
}

GK_3dPoint GK_PolylineCurve::PointAt(double t) const {
    const int n = m_pline.Count();
    if (n == 0)
        return NanPoint();
    if (n == 1)
        return m_pline[0];
    int i = 0;     // segment index, 0..n-2; outside the domain the end segments extend
    double s = 0.; // position along segment i
    if (m_t.Count() == n) {
        const double* t0 = m_t.Array();
        i = static_cast<int>(std::upper_bound(t0, t0 + n, t) - t0) - 1;
        i = std::clamp(i, 0, n - 2);
        const double len = m_t[i + 1] - m_t[i];
        s = len != 0.0 ? (t - m_t[i]) / len : 0.0;
    } else {
        if (std::isnan(t))
            return NanPoint();
        const double f = std::clamp(std::floor(t), 0.0, static_cast<double>(n - 2));
        i = static_cast<int>(f);
        s = t - f;
    }
    // The end vertices come out exactly at s = 0 and s = 1.
    const GK_3dPoint& a = m_pline[i];
    const GK_3dPoint& b = m_pline[i + 1];
    return {(1.0 - s) * a.x + s * b.x, (1.0 - s) * a.y + s * b.y, (1.0 - s) * a.z + s * b.z};
}

bool GK_PolylineCurve::Reverse() {
    m_pline.Reverse();
    if (m_t.Count() == m_pline.Count()) {
        // Negated, as for the other curves, so the reversed curve at -t is the original at t.
        m_t.Reverse();
        for (double& t : m_t)
            t = -t;
    }
    return true;
}

void GK_PolylineCurve::Compact() {
    bool indices = m_t.Count() == m_pline.Count();
    for (int i = 0; indices && i < m_t.Count(); ++i)
        indices = m_t[i] == static_cast<double>(i);
    if (indices)
        m_t.Destroy();
    m_pline.Compact();
}

int GK_PolylineCurve::IsPolyline(GK_SimpleArray<GK_3dPoint>* points) const {
    const int n = m_pline.Count();
    if (n < 2)
        return 0;
    if (points)
        *points = m_pline;
    return n;
}

// Kept points keep their parameters, so the domain and the parameter of every surviving
// vertex are unchanged; an empty m_t stays empty and the indices renumber themselves.
int GK_PolylineCurve::RemoveShortSegments(double tolerance) {
    const int n = m_pline.Count();
    if (n < 3 || !(tolerance > 0.0))
        return 0;
    const bool withT = m_t.Count() == n;
    std::vector<int> kept{0};
    kept.reserve(n);
    for (int i = 1; i < n - 1; ++i)
        if (m_pline[kept.back()].DistanceTo(m_pline[i]) >= tolerance)
            kept.push_back(i);
    // The end stays; interior points too near it give way, the start never does.
    while (kept.size() > 1 && m_pline[kept.back()].DistanceTo(m_pline[n - 1]) < tolerance)
        kept.pop_back();
    kept.push_back(n - 1);
    const int removed = n - static_cast<int>(kept.size());
    if (removed == 0)
        return 0;
    GK_SimpleArray<GK_3dPoint> points(static_cast<int>(kept.size()));
    GK_SimpleArray<double> params(withT ? static_cast<int>(kept.size()) : 0);
    for (int i : kept) {
        points.Append(m_pline[i]);
        if (withT)
            params.Append(m_t[i]);
    }
    m_pline = points;
    if (withT)
        m_t = params;
    return removed;
}
