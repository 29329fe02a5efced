// A content stream over arbitrary bytes straight into the output sink, then the finishing
// pass: strokes, dash rows, clipping, fills, hatch creation and text objects, with no file
// around them.
#include "graphics/PDFGraphics.h"
#include "host/base/VmFontList.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/ui/VmMessages.h"
#include "output/PDFToVelmo.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A fixed font list, so that no run depends on the machine's fonts; the missing-font lines
    // are kept from piling up.
    static const bool quiet = [] {
        VmSetFontFamilies(std::vector<std::wstring>{L"Arial", L"Times New Roman", L"Symbol"});
        VmMessages().SetEcho(nullptr);
        return true;
    }();
    (void)quiet;
    VmMessages().Clear();
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
    // The first byte picks the hatch or outline form and whether text is loaded, so every
    // path of the pass is reached.
    const bool boundaryCurves = size > 0 && (data[0] & 1) != 0;
    const bool loadText = size > 0 && (data[0] & 2) != 0;
    sink.CommitToDocument(2.0, GK_3dVector(-minX, -minY, 0.0), loadText, boundaryCurves, true,
                          false);
    return 0;
}
