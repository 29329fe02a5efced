#include "host/geometry/GK_PictureFrame.h"

#include <cmath>

GK_PictureFrame::~GK_PictureFrame() = default;

bool GK_PictureFrame::IsValid(GK_TextLog*) const {
    return m_plane.IsValidFrame() && std::isfinite(m_width) && std::isfinite(m_height) &&
           m_width > 0.0 && m_height > 0.0;
}

GK_3dPoint GK_PictureFrame::Corner(int u, int v) const {
    return m_plane.origin + m_plane.xaxis * (u * m_width) + m_plane.yaxis * (v * m_height);
}

GK_BoundingBox GK_PictureFrame::BoundingBox() const {
    GK_BoundingBox box;
    for (int u = 0; u <= 1; ++u)
        for (int v = 0; v <= 1; ++v)
            box.Set(Corner(u, v), true);
    return box;
}

bool GK_PictureFrame::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite())
        return false;
    const GK_3dPoint origin = xform * Corner(0, 0);
    const GK_3dVector x = xform * Corner(1, 0) - origin;
    const GK_3dVector y = xform * Corner(0, 1) - origin;
    m_plane = GK_Plane(origin, x, y);
    m_width = x.Length();
    m_height = y.Length();
    return true;
}
