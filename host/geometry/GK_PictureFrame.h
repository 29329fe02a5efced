#pragma once
// The geometry of a picture frame: a rectangle of the given width and height on a frame
// whose axes may be skewed, as an image placed by a page-description matrix can be.
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Plane.h"

class GK_PictureFrame : public GK_Geometry {
public:
    GK_PictureFrame() = default;
    GK_PictureFrame(const GK_Plane& plane, double width, double height)
        : m_plane(plane), m_width(width), m_height(height) {}
    ~GK_PictureFrame() override;

    // A valid frame and a positive, finite width and height.
    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    // Moves the four corners and takes the frame again from them.
    bool Transform(const GK_Xform& xform) override;
    GK_Geometry* Duplicate() const override { return new GK_PictureFrame(*this); }

    const GK_Plane& Plane() const { return m_plane; }
    double Width() const { return m_width; }
    double Height() const { return m_height; }
    // Corner (u, v) of the unit square: (0, 0) the origin, (1, 1) the far corner.
    GK_3dPoint Corner(int u, int v) const;

private:
    GK_Plane m_plane;
    double m_width = 0.0;
    double m_height = 0.0;
};
