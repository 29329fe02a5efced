#pragma once
// The drawing target of the interpreter and the one place of the PDF side that knows the
// host. Everything a read produces waits in pending collections, in page space, until the
// import shell has fixed scale and placement; only layers reach the document earlier, so a
// failed or cancelled read leaves no geometry behind.
#include "graphics/PDFGraphicsState.h"
#include "graphics/PathElement.h"
#include "host/base/GK_Array.h"
#include "host/base/GK_String.h"
#include "host/geometry/GK_Point.h"
#include "output/PendingObject.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class CVelmoDoc;
class CVelmoFileReadOptions;
class GK_Curve;

class PDFToVelmo : public PDFGraphicsState {
public:
    // Both pointers are borrowed. Creates nothing in the document but the solid fill pattern.
    PDFToVelmo(CVelmoDoc* doc, const CVelmoFileReadOptions* readOptions);

    // Keeps the image; it is released by the finishing pass.
    void DrawImage(PDFImage* image) override;
    // Pending geometry and images are left alone: only DiscardPendingObjects and
    // CommitToDocument release them.
    ~PDFToVelmo() override;
    // The even-odd rule is not told apart from the nonzero rule anywhere in the output.
    void EoFill() override;
    void ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue) override;
    void SetOptionalContentName(const std::string& name) override;
    void OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups) override;

    // Box of the valid pending geometry; invalid entries are deleted on the way. With nothing
    // valid the values are those of the empty box (min x 1 above max x -1).
    void GetPendingExtents(double& minX, double& minY, double& maxX, double& maxY);
    void DiscardPendingObjects();
    // The finishing pass: page space to model space by translation, then scale.
    void CommitToDocument(double scale, const GK_3dVector& translation, bool loadText,
                          bool boundaryCurves, bool importLineWeights, bool showMissingFontsDialog);
    // Index of the linetype for a dash of 2 or 4 lengths, added when its name is new.
    int FindOrAddLinetype(const std::vector<double>& dash);

    CVelmoDoc* doc = nullptr;
    const CVelmoFileReadOptions* readOptions = nullptr;
    std::vector<PendingObject> pendingObjects;
    GK_SimpleArray<GK_Curve*> segmentCurves; // owned; empty between painting operations
    std::string operationLabel;
    std::vector<std::vector<double>> segmentDashes;
    std::vector<double> currentDash;
    PathElement previousElement{0.0, 0.0, 'x'};
    PathElement control1{0.0, 0.0, 'x'};
    PathElement control2{0.0, 0.0, 'x'};
    std::vector<TextRecord> textRecords;
    std::vector<PDFImage*> images;
    std::int32_t hatchPatternIndex = -1;
    std::map<std::string, std::int32_t> layerIndexByName;
    std::map<std::int32_t, std::uint32_t> layerColours; // only layers this read created
    GK_ClassArray<GK_String> missingFonts;
};

// Layer names keep the bytes of the file: each byte is widened with its sign, so bytes of
// 128 and above become 0xFF80 to 0xFFFF. Names are not decoded as PDF text strings.
GK_wString WidenLayerName(const std::string& name);
