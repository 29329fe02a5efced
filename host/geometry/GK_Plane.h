#pragma once
// A plane with a frame: origin, x, y and z axes. Planes of geometry are orthonormal; the
// frame of a picture or a text may keep a skew between its axes.
#include "host/geometry/GK_Point.h"

class GK_Plane {
public:
    GK_3dPoint origin;
    GK_3dVector xaxis{1.0, 0.0, 0.0};
    GK_3dVector yaxis{0.0, 1.0, 0.0};
    GK_3dVector zaxis{0.0, 0.0, 1.0};

    GK_Plane() = default;
    // The plane through `point` with the given normal; x and y axes are chosen for it.
    GK_Plane(const GK_3dPoint& point, const GK_3dVector& normal);
    // The frame at `point` with the directions of `xdir` and `ydir`, each made of unit length
    // but not made perpendicular, so that a skewed or mirrored picture or text keeps its
    // shape; z is their normal. Such a frame is valid by IsValidFrame, not by IsValid.
    GK_Plane(const GK_3dPoint& point, const GK_3dVector& xdir, const GK_3dVector& ydir);

    static const GK_Plane World_xy;

    // An orthonormal, right-handed frame.
    bool IsValid() const;
    // A finite origin and two unit axes that are not parallel.
    bool IsValidFrame() const;
    // Signed distance of a point from the plane, along the z axis.
    double DistanceTo(const GK_3dPoint& point) const;
    GK_3dPoint PointAt(double u, double v) const;
    // Moves the origin and turns the axes; a transformation that does not keep the frame
    // orthonormal (other than a uniform scale) is refused.
    bool Transform(const GK_Xform& xform);
};
