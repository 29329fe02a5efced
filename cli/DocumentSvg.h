#pragma once
// The document after an import as an SVG picture, for people to look at: one group per
// layer, nested as the layers are, the curves (dashed by their linetypes) and the filled
// hatches in the colours the modeller would show.
#include "host/doc/CVelmoDoc.h"

#include <string>
#include <string_view>

std::string DocumentToSvg(const CVelmoDoc& doc);

// Path data ("M ... L ... C ...") of a curve in picture coordinates, where y points down,
// so the model's y is negated.
std::string CurvePathData(const GK_Curve& curve);

// Text for XML content or a quoted attribute, as UTF-8. Characters XML cannot carry at all
// become U+FFFD so that the file always parses.
std::string XmlEscape(std::wstring_view text);
