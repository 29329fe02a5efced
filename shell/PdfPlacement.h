#pragma once
// Scale and offset of a PDF read, from the options record and what the sink gathered.
#include "shell/ImportFormat.h"

#include "host/geometry/GK_Point.h"

class PDFToVelmo;

struct Placement {
    double scale = 1.0;
    GK_3dVector offset;
    bool loadText = false;
    bool boundaryCurves = false;
    bool importLineWeights = false;
};

// Preserved units: the record's two scales and unit, the file's own origin. Otherwise the
// pending curves and hatches (not text or images) are fitted to 40 units about the origin.
Placement ComputePlacement(const ImportFormatOptions& record, PDFToVelmo& sink);
