// A content stream over arbitrary bytes straight into the output sink, then the finishing
// pass: strokes, dash rows, clipping, fills and hatch creation, with no file around them.
#include "graphics/PDFGraphics.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "output/PDFToVelmo.h"

#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CVelmoDoc doc;
    doc.SetHeadless(true);
    CVelmoFileReadOptions options;
    PDFToVelmo sink(&doc, &options);
    {
        PDFGraphics interpreter(nullptr, &sink, nullptr);
        interpreter.SetStream(
            new std::istringstream(std::string(reinterpret_cast<const char*>(data), size)), true);
        (void)interpreter.ParseUntil(nullptr);
    }
    double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
    sink.GetPendingExtents(minX, minY, maxX, maxY);
    // The first byte picks the hatch or outline form, so both paths of the pass are reached.
    const bool boundaryCurves = size > 0 && (data[0] & 1) != 0;
    sink.CommitToDocument(2.0, GK_3dVector(-minX, -minY, 0.0), false, boundaryCurves, true, false);
    return 0;
}
