#include "host/geometry/GK_Curve.h"

#include <algorithm>
#include <cmath>
#include <limits>

GK_PolyCurve::GK_PolyCurve(const GK_PolyCurve& other) : GK_Curve(other), m_t(other.m_t) {
    m_segment.Reserve(other.m_segment.Count());
    for (const GK_Curve* seg : other.m_segment)
        m_segment.Append(seg ? seg->DuplicateCurve() : nullptr);
}

GK_PolyCurve::~GK_PolyCurve() {
    for (GK_Curve* seg : m_segment)
        delete seg;
}

bool GK_PolyCurve::Append(GK_Curve* segment) {
    if (!segment || segment == this)
        return false;
    // The first segment keeps its own parameters, so a one-segment chain is parameterised
    // like the segment; later segments follow on by their domain length.
    const GK_Interval d = segment->Domain();
    if (m_t.IsEmpty())
        m_t.Append(d.t0);
    m_t.Append(*m_t.Last() + d.Length());
    m_segment.Append(segment);
    return true;
}

GK_Curve* GK_PolyCurve::SegmentCurve(int index) const {
    if (index < 0 || index >= m_segment.Count())
        return nullptr;
    return m_segment[index];
}

bool GK_PolyCurve::IsValid(GK_TextLog* log) const {
    const int n = m_segment.Count();
    if (n < 1 || m_t.Count() != n + 1)
        return false;
    for (int i = 0; i <= n; ++i) {
        if (!std::isfinite(m_t[i]))
            return false;
        if (i > 0 && !(m_t[i - 1] < m_t[i]))
            return false;
    }
    for (const GK_Curve* seg : m_segment)
        if (!seg || !seg->IsValid(log))
            return false;
    return true;
}

GK_BoundingBox GK_PolyCurve::BoundingBox() const {
    GK_BoundingBox box;
    for (const GK_Curve* seg : m_segment)
        if (seg)
            box.Union(seg->BoundingBox());
    return box;
}

bool GK_PolyCurve::Transform(const GK_Xform& xform) {
    bool ok = true;
    for (GK_Curve* seg : m_segment)
        if (seg && !seg->Transform(xform))
            ok = false;
    return ok;
}

GK_Interval GK_PolyCurve::Domain() const {
    if (m_t.IsEmpty())
        return {0.0, 0.0};
    return {m_t[0], m_t[m_t.Count() - 1]};
}

GK_3dPoint GK_PolyCurve::PointAt(double t) const {
    const int n = m_segment.Count();
    if (n == 0 || m_t.Count() != n + 1) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan, nan};
    }
    // A parameter on a joint belongs to the segment that starts there.
    const double* t0 = m_t.Array();
    int i = static_cast<int>(std::upper_bound(t0, t0 + n + 1, t) - t0) - 1;
    i = std::clamp(i, 0, n - 1);
    const GK_Curve* seg = m_segment[i];
    const double len = m_t[i + 1] - m_t[i];
    const double s = len != 0.0 ? (t - m_t[i]) / len : 0.0;
    // Mapped through the segment's current domain, so that a segment changed in place
    // (reversed, say) is still followed correctly.
    return seg->PointAt(seg->Domain().ParameterAt(s));
}

bool GK_PolyCurve::Reverse() {
    bool ok = true;
    m_segment.Reverse();
    for (GK_Curve* seg : m_segment)
        if (seg && !seg->Reverse())
            ok = false;
    m_t.Reverse();
    for (double& t : m_t)
        t = -t;
    return ok;
}

int GK_PolyCurve::IsPolyline(GK_SimpleArray<GK_3dPoint>* points) const {
    if (m_segment.IsEmpty())
        return 0;
    GK_SimpleArray<GK_3dPoint> all;
    GK_SimpleArray<GK_3dPoint> part;
    for (const GK_Curve* seg : m_segment) {
        if (!seg)
            return 0;
        const int count = seg->IsPolyline(&part);
        if (count <= 0)
            return 0;
        int first = 0;
        if (!all.IsEmpty() && *all.Last() == part[0])
            first = 1; // the joint is shared with the previous segment
        for (int k = first; k < count; ++k)
            all.Append(part[k]);
    }
    if (points)
        *points = all;
    return all.Count();
}

void GK_PolyCurve::Compact() {
    for (GK_Curve* segment : m_segment)
        if (segment)
            segment->Compact();
    m_segment.Compact();
    m_t.Compact();
}

// Each segment against the chord of the whole chain, not against its own.
bool GK_PolyCurve::StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to,
                                 double tolerance) const {
    if (m_segment.IsEmpty())
        return false;
    for (const GK_Curve* seg : m_segment)
        if (!seg || !seg->StaysNearLine(from, to, tolerance))
            return false;
    return true;
}
