#pragma once
// The drawing target of the interpreter and the one place of the PDF side that knows the
// host. Everything a read produces waits in pending collections, in page space, until the
// import shell has fixed scale and placement; only layers reach the document earlier, so a
// failed or cancelled read leaves no geometry behind.
#include "graphics/PDFGraphicsState.h"
#include "graphics/PDFMatrix.h"
#include "graphics/PathElement.h"
#include "host/base/GK_Array.h"
#include "host/base/GK_String.h"
#include "host/geometry/GK_Point.h"
#include "output/LineKey.h"
#include "output/PathClip.h"
#include "output/PendingObject.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <unordered_set>
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
    // The current path as curves, with rows of two-point subpaths recognised as dashed lines.
    void Stroke() override;
    // The current path as hatches, or as outlines in the stroke colour when no hatch results.
    void Fill() override;
    // The even-odd rule is not told apart from the nonzero rule anywhere in the output.
    void EoFill() override;
    // Every path element on its way to curves, for strokes and fills: clips and builds.
    void AddPathElement(const PathElement& element) override;
    // Keeps the pending run as a record in page space, unless its first em square lies wholly
    // outside the page box; empties pendingText either way.
    void FlushTextRun(double start) override;
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
    // The text pass: a text object per record, in the installed family that matches its
    // font. Returns how many font names were newly found missing.
    std::uint32_t AddTextObjects(double scale, const GK_3dVector& translation);
    // Adds `name` to missingFonts and says so on the command line, once per name. True when
    // the name is new.
    bool NoteMissingFont(const std::string& name);
    // Index of the linetype for a dash of 2 or 4 lengths, added when its name is new.
    int FindOrAddLinetype(const std::vector<double>& dash);
    // Writes the image's file and frames it on its corners taken through `matrix` (page
    // space to model space).
    void PlaceImage(const PDFImage& image, const PDFMatrix& matrix);

    // The pieces of Stroke and Fill.
    void BuildStrokeSegments();
    // Emits the run through AddPathElement: with `merge` as one segment, otherwise with dash
    // recognition. Leaves the run empty.
    void FlushRun(SegmentRun& run, bool merge);
    void BuildFillSegments(double tolerance);
    // Joins the open curves, in their order, into closed chains appended to `closed`
    // (owned by the caller); `used` receives the indices of the curves taken. Returns the
    // number of curves in `closed`.
    static int ChainOpenCurves(const GK_SimpleArray<GK_Curve*>& open,
                               GK_SimpleArray<GK_Curve*>& closed, double tolerance,
                               GK_SimpleArray<int>& used);

    CVelmoDoc* doc = nullptr;
    const CVelmoFileReadOptions* readOptions = nullptr;
    // A deque, as there may be millions: growing it never copies what it holds nor needs
    // twice the room for a moment, as a vector would.
    std::deque<PendingObject> pendingObjects;
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

private:
    void EmitSegment(const SegmentRun& run, double from, double to);
    void AddLine(const PathElement& element);
    void AddBezier(const PathElement& element);
    // Sets `clip` up for the clip path in force, indexing it only when it has changed.
    void PrepareClip();
    PathClip clip;
    bool clipPrepared = false;
    std::uint64_t clipPreparedVersion = 0;
    std::size_t clipPreparedSize = 0;
    std::vector<double> clipPairs;
    // The names of missingFonts, for finding them fast.
    std::unordered_set<std::string> missingFontNames;
};

// The curve that goes to the model for a curve built from the path: straight work as a
// polyline without zero-length segments, anything else duplicated; null for a curve that
// is only a point. The caller owns the result.
GK_Curve* NormaliseCurve(const GK_Curve& curve);

// Layer names keep the bytes of the file: each byte is widened with its sign, so bytes of
// 128 and above become 0xFF80 to 0xFFFF. Names are not decoded as PDF text strings.
GK_wString WidenLayerName(const std::string& name);
