#include "shell/PdfPlacement.h"

#include "output/PDFToVelmo.h"

#include <algorithm>

Placement ComputePlacement(const ImportFormatOptions& record, PDFToVelmo& sink) {
    Placement p;
    p.loadText = record.loadText;
    p.boundaryCurves = record.boundaryCurves;
    p.importLineWeights = record.importLineWeights;
    if (record.preserveUnits) {
        // PDF user space is read as points.
        p.scale = record.velmoScale / record.importScale;
        switch (record.importUnit) {
        case ImportUnitInch:
            p.scale /= 72.0;
            break;
        case ImportUnitCm:
            p.scale = p.scale / 72.0 * 2.54;
            break;
        case ImportUnitMm:
            p.scale = p.scale / 72.0 * 25.4;
            break;
        default: // points, and any unit not known, are taken as they are
            break;
        }
        return p;
    }
    double minX, minY, maxX, maxY;
    sink.GetPendingExtents(minX, minY, maxX, maxY);
    const double m = std::max(maxX - minX, maxY - minY);
    if (m > 0.0)
        p.scale = 40.0 / m;
    // Centred even when nothing has extent.
    p.offset = GK_3dVector(-(minX + maxX) / 2.0, -(minY + maxY) / 2.0, 0.0);
    return p;
}
