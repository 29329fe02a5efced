#pragma once
// The document's values in the forms DXF has for them: colour indexes, lineweights, table
// names, object coordinate systems, and the pixel size of an image file.
#include "host/doc/GK_Color.h"
#include "host/geometry/GK_Point.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

// The nearest entry of the standard 255-colour index, for readers that ignore true colour.
// Index 7 stands for both black and white, as it is drawn in the background's opposite.
int DxfColorIndex(const GK_Color& color);

// True colour as group 420 holds it: 0xRRGGBB.
int DxfTrueColor(const GK_Color& color);

// A plot weight in millimetres as the nearest of the lineweights DXF allows, in hundredths of
// a millimetre; -3 (the default lineweight) for a weight that is not positive.
int DxfLineweight(double millimetres);

// A table name that DXF allows: the characters it forbids in names (< > / \ " : ; ? * | = `)
// and control characters become '_', spaces at the ends are dropped, and the name is cut to
// 255 characters. An empty result becomes "_".
std::wstring DxfTableName(std::wstring_view name);

// An object coordinate system: the frame DXF derives from an extrusion direction by its
// arbitrary axis rule, in which planar entities give their coordinates.
struct DxfOcs {
    GK_3dVector normal{0.0, 0.0, 1.0};
    GK_3dVector xaxis{1.0, 0.0, 0.0};
    GK_3dVector yaxis{0.0, 1.0, 0.0};

    // The system of a normal (made of unit length); null for a zero or non-finite vector.
    static std::optional<DxfOcs> FromNormal(const GK_3dVector& normal);
    bool IsWorld() const { return normal.x == 0.0 && normal.y == 0.0 && normal.z > 0.0; }
    GK_3dPoint ToOcs(const GK_3dPoint& p) const;
};

double Dot(const GK_3dVector& a, const GK_3dVector& b);
GK_3dVector Cross(const GK_3dVector& a, const GK_3dVector& b);

// Width and height in pixels of a PNG or JPEG file, read from its header; null when the file
// cannot be read or is neither.
std::optional<std::pair<int, int>> ImagePixelSize(const std::wstring& path);
