#pragma once
// The document after an import as an SVG picture, for people to look at: the curves (dashed
// by their linetypes) and the filled hatches in the colours the modeller would show, drawn in
// the document's order so that what comes later covers what came before. Every object names
// its layer (and the layers above it) in its class, so a layer can be shown or hidden by one
// style rule.
#include "host/doc/CVelmoDoc.h"

#include <ostream>
#include <string>
#include <string_view>

// Writes the picture to `out` as it goes; true when all of it got there.
[[nodiscard]] bool WriteDocumentSvg(std::ostream& out, const CVelmoDoc& doc);

// Text for XML content or a quoted attribute, as UTF-8. Characters XML cannot carry at all
// become U+FFFD so that the file always parses.
std::string XmlEscape(std::wstring_view text);
