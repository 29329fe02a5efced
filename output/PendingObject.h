#pragma once
// What a read gathers before the finishing pass: everything in PDF page units, so that scale
// and placement can be chosen after the whole file has been interpreted.
#include <cstdint>
#include <string>
#include <vector>

class GK_Geometry;

// One curve or hatch waiting for CommitToDocument.
struct PendingObject {
    // Owned until handed to the document, then null. A GK_Curve or a GK_Hatch.
    GK_Geometry* geometry = nullptr;
    std::uint32_t colour = 0; // packed as the graphics state's colours
    double lineWidth = 0.0;   // PDF units at the painting operator; 0 for fills
    std::int32_t layerIndex = 0;
    // Empty, or 2 or 4 alternating positive dash and gap lengths in PDF units.
    std::vector<double> dashPattern;
};

// One text run, placed by the matrix [a b c d e f] in page space.
struct TextRecord {
    std::u16string text;
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0, e = 0.0, f = 0.0;
    std::uint32_t colour = 0; // the fill colour: text never takes the stroke colour
    std::int32_t layerIndex = 0;
    std::string fontFamily; // subset prefix included
    bool italic = false;
};
