#include "host/geometry/GK_Point.h"

#include <cmath>
#include <limits>

const GK_3dPoint GK_3dPoint::Origin(0.0, 0.0, 0.0);

const GK_BoundingBox GK_BoundingBox::EmptyBoundingBox;

bool GK_BoundingBox::Union(const GK_BoundingBox& other) {
    if (!other.IsValid())
        return IsValid();
    if (!IsValid()) {
        *this = other;
        return true;
    }
    Set(other.m_min, true);
    Set(other.m_max, true);
    return true;
}

bool GK_BoundingBox::IsPointIn(const GK_3dPoint& p, double tolerance) const {
    if (!IsValid() || !p.IsValid())
        return false;
    if (!(tolerance >= 0.0)) // a negative or NaN tolerance would shrink or poison the test
        tolerance = 0.0;
    return p.x >= m_min.x - tolerance && p.x <= m_max.x + tolerance && p.y >= m_min.y - tolerance &&
           p.y <= m_max.y + tolerance && p.z >= m_min.z - tolerance && p.z <= m_max.z + tolerance;
}

GK_Xform::GK_Xform() {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            m_xform[r][c] = r == c ? 1.0 : 0.0;
}

GK_Xform GK_Xform::Translation(const GK_3dVector& v) {
    GK_Xform x;
    x.m_xform[0][3] = v.x;
    x.m_xform[1][3] = v.y;
    x.m_xform[2][3] = v.z;
    return x;
}

GK_Xform GK_Xform::Scale(double s) {
    GK_Xform x;
    x.m_xform[0][0] = s;
    x.m_xform[1][1] = s;
    x.m_xform[2][2] = s;
    return x;
}

// The six numbers are a page-description matrix [a b c d e f], which maps
// (x, y) to (a*x + c*y + e, b*x + d*y + f); z is left alone.
GK_Xform GK_Xform::Affine2d(double a, double b, double c, double d, double e, double f) {
    GK_Xform x;
    x.m_xform[0][0] = a;
    x.m_xform[0][1] = c;
    x.m_xform[0][3] = e;
    x.m_xform[1][0] = b;
    x.m_xform[1][1] = d;
    x.m_xform[1][3] = f;
    return x;
}

GK_3dPoint GK_Xform::operator*(const GK_3dPoint& p) const {
    const double(&m)[4][4] = m_xform;
    double x = m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3];
    double y = m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3];
    double z = m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3];
    const double w = m[3][0] * p.x + m[3][1] * p.y + m[3][2] * p.z + m[3][3];
    if (w == 1.0)
        return {x, y, z};
    if (w == 0.0) {
        // Sent to infinity by a projective transformation: there is no Euclidean image.
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan, nan};
    }
    const double s = 1.0 / w;
    return {x * s, y * s, z * s};
}

GK_4dPoint GK_Xform::operator*(const GK_4dPoint& p) const {
    const double(&m)[4][4] = m_xform;
    GK_4dPoint r;
    r.x = m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3] * p.w;
    r.y = m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3] * p.w;
    r.z = m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3] * p.w;
    r.w = m[3][0] * p.x + m[3][1] * p.y + m[3][2] * p.z + m[3][3] * p.w;
    return r;
}

GK_Xform GK_Xform::operator*(const GK_Xform& rhs) const {
    GK_Xform r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            double s = 0.0;
            for (int k = 0; k < 4; ++k)
                s += m_xform[i][k] * rhs.m_xform[k][j];
            r.m_xform[i][j] = s;
        }
    return r;
}

bool GK_Xform::IsFinite() const {
    for (const auto& row : m_xform)
        for (double v : row)
            if (!std::isfinite(v))
                return false;
    return true;
}
