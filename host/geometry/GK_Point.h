#pragma once
// Points, vectors, intervals, bounding boxes and transformations of the host's geometry library.
#include <cmath>

struct GK_3dVector {
    double x = 0.0, y = 0.0, z = 0.0;

    GK_3dVector() = default;
    GK_3dVector(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    void Reverse() {
        x = -x;
        y = -y;
        z = -z;
    }
    double Length() const { return std::sqrt(x * x + y * y + z * z); }
    GK_3dVector operator*(double s) const { return {x * s, y * s, z * s}; }
    GK_3dVector operator+(const GK_3dVector& v) const { return {x + v.x, y + v.y, z + v.z}; }
    GK_3dVector operator-(const GK_3dVector& v) const { return {x - v.x, y - v.y, z - v.z}; }
    bool operator==(const GK_3dVector&) const = default;
};

struct GK_3dPoint {
    double x = 0.0, y = 0.0, z = 0.0;

    GK_3dPoint() = default;
    GK_3dPoint(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    bool IsValid() const { return std::isfinite(x) && std::isfinite(y) && std::isfinite(z); }
    double DistanceTo(const GK_3dPoint& p) const { return (p - *this).Length(); }
    GK_3dVector operator-(const GK_3dPoint& p) const { return {x - p.x, y - p.y, z - p.z}; }
    GK_3dPoint operator+(const GK_3dVector& v) const { return {x + v.x, y + v.y, z + v.z}; }
    GK_3dPoint operator-(const GK_3dVector& v) const { return {x - v.x, y - v.y, z - v.z}; }
    bool operator==(const GK_3dPoint&) const = default;

    static const GK_3dPoint Origin;
};

// A homogeneous control point: x, y, z already multiplied by the weight w.
struct GK_4dPoint {
    double x = 0.0, y = 0.0, z = 0.0, w = 1.0;
};

struct GK_Interval {
    double t0 = 0.0, t1 = 1.0;

    GK_Interval() = default;
    GK_Interval(double a, double b) : t0(a), t1(b) {}
    double Min() const { return t0 < t1 ? t0 : t1; }
    double Max() const { return t0 < t1 ? t1 : t0; }
    double Length() const { return t1 - t0; }
    double ParameterAt(double s) const { return (1.0 - s) * t0 + s * t1; }
};

// An axis-aligned box. The empty box has min (1,0,0) and max (-1,0,0): it is not valid,
// and its centre is the origin, so code that centres on an empty union stays at 0.
class GK_BoundingBox {
public:
    GK_3dPoint m_min{1.0, 0.0, 0.0};
    GK_3dPoint m_max{-1.0, 0.0, 0.0};

    GK_BoundingBox() = default;
    GK_BoundingBox(const GK_3dPoint& mn, const GK_3dPoint& mx) : m_min(mn), m_max(mx) {}

    static const GK_BoundingBox EmptyBoundingBox;

    bool IsValid() const {
        return m_min.IsValid() && m_max.IsValid() && m_min.x <= m_max.x && m_min.y <= m_max.y &&
               m_min.z <= m_max.z;
    }
    const GK_3dPoint& Min() const { return m_min; }
    const GK_3dPoint& Max() const { return m_max; }
    GK_3dPoint Center() const {
        return {0.5 * (m_min.x + m_max.x), 0.5 * (m_min.y + m_max.y), 0.5 * (m_min.z + m_max.z)};
    }
    GK_3dVector Diagonal() const { return m_max - m_min; }
    void Destroy() { *this = GK_BoundingBox(); }

    // Grows the box to hold the point; an invalid (non-finite) point is ignored.
    void Set(const GK_3dPoint& p, bool growBox) {
        if (!p.IsValid())
            return;
        if (!growBox || !IsValid()) {
            m_min = p;
            m_max = p;
            return;
        }
        if (p.x < m_min.x)
            m_min.x = p.x;
        if (p.y < m_min.y)
            m_min.y = p.y;
        if (p.z < m_min.z)
            m_min.z = p.z;
        if (p.x > m_max.x)
            m_max.x = p.x;
        if (p.y > m_max.y)
            m_max.y = p.y;
        if (p.z > m_max.z)
            m_max.z = p.z;
    }
    // Unites with another box; returns false when both are empty.
    bool Union(const GK_BoundingBox& other);
    bool IsPointIn(const GK_3dPoint& p, double tolerance = 0.0) const;
};

// A 4x4 transformation applied to points as column vectors.
class GK_Xform {
public:
    double m_xform[4][4];

    GK_Xform();
    static GK_Xform Identity() { return GK_Xform(); }
    static GK_Xform Translation(const GK_3dVector& v);
    static GK_Xform Scale(double s); // uniform, about the origin
    // [a b c d e f] as a page-description matrix: x' = a*x + c*y + e, y' = b*x + d*y + f.
    static GK_Xform Affine2d(double a, double b, double c, double d, double e, double f);

    // Whether every entry is a finite number; geometry refuses other transformations.
    bool IsFinite() const;

    GK_3dPoint operator*(const GK_3dPoint& p) const;
    GK_4dPoint operator*(const GK_4dPoint& p) const;
    GK_Xform operator*(const GK_Xform& rhs) const;
};
