#pragma once
// The geometry of a text object: a line of text standing on a frame. The frame's axes are
// unit vectors and may be skewed or mirrored, as text placed by a page-description matrix can
// be; the text's height runs along the y axis from the baseline at the origin.
#include "host/base/GK_String.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Plane.h"

class GK_Text : public GK_Geometry {
public:
    GK_Text() = default;
    GK_Text(const GK_wString& text, const GK_Plane& plane, double height)
        : m_text(text), m_plane(plane), m_height(height) {}

    // Some text, a valid frame and a positive, finite height.
    bool IsValid(GK_TextLog* log = nullptr) const override;
    // The host measures no glyphs: the box is that of the text's rectangle with each
    // character taken as wide as kCharacterWidth times the height.
    GK_BoundingBox BoundingBox() const override;
    // Moves the origin and the ends of the axes; the height follows the y axis.
    bool Transform(const GK_Xform& xform) override;
    GK_Geometry* Duplicate() const override { return new GK_Text(*this); }

    const GK_wString& Text() const { return m_text; }
    const GK_Plane& Plane() const { return m_plane; }
    double Height() const { return m_height; }

    static constexpr double kCharacterWidth = 0.6;

private:
    GK_wString m_text;
    GK_Plane m_plane;
    double m_height = 0.0;
};
