#include "host/geometry/GK_Text.h"

#include <cmath>

bool GK_Text::IsValid(GK_TextLog*) const {
    return !m_text.IsEmpty() && m_plane.IsValidFrame() && std::isfinite(m_height) && m_height > 0.0;
}

GK_BoundingBox GK_Text::BoundingBox() const {
    const double width = m_height * kCharacterWidth * m_text.Length();
    GK_BoundingBox box;
    for (double u : {0.0, width})
        for (double v : {0.0, m_height})
            box.Set(m_plane.PointAt(u, v), true);
    return box;
}

bool GK_Text::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite())
        return false;
    const GK_3dPoint origin = xform * m_plane.origin;
    const GK_3dVector x = xform * (m_plane.origin + m_plane.xaxis) - origin;
    const GK_3dVector y = xform * (m_plane.origin + m_plane.yaxis * m_height) - origin;
    m_plane = GK_Plane(origin, x, y);
    m_height = y.Length();
    return true;
}
